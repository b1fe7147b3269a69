#include "shell/forms/form_dialog.h"

#include <QPushButton>

#include "shell/widgets/dialog_frame.h"

namespace vellum {

FormDialog::FormDialog(const QString& title, const QString& topic, std::vector<Field> fields,
                       const FieldValues& values, Host& host, QWidget* parent)
    : QDialog(parent), host_(host) {
  setWindowTitle(title);
  form_ = new Form(std::move(fields), values, this);
  buttons_ =
      new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel | QDialogButtonBox::Reset, this);
  buttons_->button(QDialogButtonBox::Ok)->setDefault(true);
  connect(buttons_, &QDialogButtonBox::accepted, this, &FormDialog::accept);
  connect(buttons_, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(buttons_->button(QDialogButtonBox::Reset), &QPushButton::clicked, this, [this] { form_->reset(); });
  add_help(*this, *buttons_, [topic] { return topic; });
  QVBoxLayout* layout = dialog_layout(*this);
  layout->addWidget(form_, 1);
  layout->addWidget(buttons_);
}

bool FormDialog::settle_faults() {
  FieldValues values = form_->values();
  const auto fault = check ? check(values) : check_fields(form_->fields(), values);
  if (!fault) return true;
  const Message message{fault->id, {}, fault->text, {}, nullptr};
  if (!fault->question) {
    if (host_.message) host_.message(message);
  } else if (repair && (!host_.ask || host_.ask(message, false) == Answer::Yes)) {
    repair(values);
    for (const Field& field : form_->fields())
      if (field.type == FieldType::Text && !field.locked)
        form_->set_value(field.name, *values.find(field.name));
    return settle_faults();
  }
  form_->show_fault(*fault);
  return false;
}

bool FormDialog::apply_now() { return settle_faults() && (!apply || apply(form_->values())); }

void FormDialog::replace_form(std::vector<Field> fields, const FieldValues& values) {
  auto* other = new Form(std::move(fields), values, this);
  delete layout()->replaceWidget(form_, other, Qt::FindChildrenRecursively);
  other->setVisible(form_->isVisible());
  delete std::exchange(form_, other);
}

void FormDialog::accept() {
  if (apply_now()) QDialog::accept();
}

}  // namespace vellum
