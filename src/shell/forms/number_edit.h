// A number to type or to step.
#pragma once

#include <QAbstractSpinBox>

#include "base/fields.h"

namespace vellum {

/// Anything may be typed: whoever reads the field checks it, and can then say what is wrong. Steps stay
/// within the field's range.
class NumberEdit : public QAbstractSpinBox {
  Q_OBJECT
 public:
  explicit NumberEdit(const Field& field, QWidget* parent = nullptr);

  FieldValue value() const;
  void set_value(const FieldValue& value);
  /// The same with the nearest value that the field can have.
  void set_within_range(const FieldValue& value) { set_value(clamped(field_, value)); }

  void stepBy(int steps) override;
  QValidator::State validate(QString& input, int& position) const override;
  QSize sizeHint() const override;

 signals:
  void edited();

 protected:
  StepEnabled stepEnabled() const override;

 private:
  Field field_;
};

}  // namespace vellum
