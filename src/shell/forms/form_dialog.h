// A dialog around a form: checks on OK, Reset, Help.
#pragma once

#include <QDialog>
#include <QDialogButtonBox>

#include "base/host.h"
#include "shell/forms/form.h"
#include "shell/widgets/dialog_frame.h"

namespace vellum {

class FormDialog : public QDialog {
  Q_OBJECT
 public:
  /// `topic` is what Help and F1 show. Messages and questions go to the host, which outlives the dialog.
  FormDialog(const QString& title, const QString& topic, std::vector<Field> fields, const FieldValues& values,
             Host& host, QWidget* parent = nullptr);

  Form& form() { return *form_; }
  const Form& form() const { return *form_; }
  QDialogButtonBox& buttons() { return *buttons_; }

  /// The first fault of what was typed; without this the ranges of the fields alone.
  std::function<std::optional<FieldFault>(const FieldValues&)> check;
  /// Repairs values after a fault that is a question was answered with Yes.
  std::function<void(FieldValues&)> repair;
  /// Called with checked values; false keeps the dialog open.
  std::function<bool(const FieldValues&)> apply;

  /// Checks and applies what is typed, and leaves the dialog open; false where that can't be.
  bool apply_now();
  /// Shows other fields in place of these, at the same place.
  void replace_form(std::vector<Field> fields, const FieldValues& values);

  void accept() override;

 private:
  bool settle_faults();

  Form* form_;
  QDialogButtonBox* buttons_;
  Host& host_;
};

}  // namespace vellum
