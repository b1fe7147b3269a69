#include "shell/forms/number_edit.h"

#include <QLineEdit>
#include <cmath>

#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr int kLeastLetters = 12;  // wide enough for any number of 32 bits

}  // namespace

NumberEdit::NumberEdit(const Field& field, QWidget* parent) : QAbstractSpinBox(parent), field_(field) {
  connect(lineEdit(), &QLineEdit::textChanged, this, &NumberEdit::edited);
}

FieldValue NumberEdit::value() const { return parse_field_value(field_, text().toStdString()); }

void NumberEdit::set_value(const FieldValue& value) {
  lineEdit()->setText(to_qt(field_value_text(field_, value)));
}

void NumberEdit::stepBy(int steps) {
  const FieldValue now = value();
  if (const auto* number = std::get_if<std::int64_t>(&now)) set_value(clamped(field_, *number + steps));
  if (const auto* real = std::get_if<double>(&now))
    set_value(clamped(field_, *real + steps * std::pow(10.0, -field_.decimals)));
  selectAll();
}

QValidator::State NumberEdit::validate(QString&, int&) const { return QValidator::Acceptable; }

QSize NumberEdit::sizeHint() const {
  QSize size = QAbstractSpinBox::sizeHint();
  size.setWidth(fontMetrics().horizontalAdvance(QLatin1Char('0')) * kLeastLetters + size.height() * 2);
  return size;
}

QAbstractSpinBox::StepEnabled NumberEdit::stepEnabled() const {
  const FieldValue now = value();
  StepEnabled steps = StepNone;
  if (std::holds_alternative<std::string>(now)) return steps;
  const auto* number = std::get_if<std::int64_t>(&now);
  const double at = number ? static_cast<double>(*number) : std::get<double>(now);
  if (at > (number ? static_cast<double>(field_.least) : field_.leastReal)) steps |= StepDownEnabled;
  if (at < (number ? static_cast<double>(field_.most) : field_.mostReal)) steps |= StepUpEnabled;
  return steps;
}

}  // namespace vellum
