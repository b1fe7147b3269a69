#include "shell/forms/parameter_state.h"

#include <QRadioButton>

namespace vellum {
namespace {

/// What a line of the state file calls the control of a field.
const char* state_tag(const Field& field) {
  switch (field.type) {
    case FieldType::Flag:
      return "CHKB";
    case FieldType::Choice:
      return field.look == FieldLook::Radio ? "RADB" : "CBOX";
    case FieldType::Color:
      return "CBTN";
    case FieldType::Text:
      return "TEDT";
    case FieldType::Real:
      return "SPNF";
    default:
      return "SPNI";
  }
}

}  // namespace

std::vector<DialogStateRow> state_rows(const Parameters& parameters) {
  std::vector<DialogStateRow> rows;
  for (const Field& field : parameters.fields) {
    if (field.stateId == 0 || !parameters.stateFile) continue;
    rows.push_back({.id = field.stateId,
                    .tag = state_tag(field),
                    .control = field.name,
                    .members = field.look == FieldLook::Radio ? static_cast<int>(field.choices.size()) : 1,
                    .decimals = field.decimals});
  }
  return rows;
}

void name_controls(Form& form) {
  for (const Field& field : form.fields()) {
    QWidget* input = form.input(field.name);
    if (!input) continue;
    const QString name = QLatin1String(field.name);
    if (field.type != FieldType::Choice || field.look != FieldLook::Radio) {
      input->setObjectName(name);
      continue;
    }
    const auto buttons = input->parentWidget()->findChildren<QRadioButton*>(Qt::FindDirectChildrenOnly);
    for (qsizetype i = 0; i < buttons.size(); ++i)
      buttons[i]->setObjectName(QStringLiteral("%1_%2").arg(name).arg(i));
  }
}

}  // namespace vellum
