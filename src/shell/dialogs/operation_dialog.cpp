#include "shell/dialogs/operation_dialog.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QComboBox>
#include <QPushButton>
#include <QRadioButton>

#include "configuration/config_file.h"
#include "configuration/history.h"
#include "operations/preview_operation.h"
#include "shell/dialogs/change_preview.h"
#include "shell/dialogs/operation_decorations.h"
#include "shell/forms/dialog_state.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr const char* kScope = "scope";
constexpr FieldChoice kScopes[] = {{0, "All frames"}, {1, "Selected frames"}};

std::vector<Field> dialog_fields(const Operation& operation, const DocumentWindow& window) {
  std::vector<Field> fields = operation_fields(operation, window);
  if (operation.scoped)
    fields.push_back({.name = kScope,
                      .label = "Apply to",
                      .type = FieldType::Choice,
                      .choices = kScopes,
                      .look = FieldLook::Radio,
                      .locked = selected_frames(window).empty()});
  return fields;
}

FieldValues first_values(const Operation& operation, const DocumentWindow& window) {
  FieldValues values = setting_values(operation_fields(operation, window));
  values.set(kScope, std::int64_t{0});
  return values;
}

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

/// Gives the controls the names by which the state file and tests find them: that of the field, and for radio
/// buttons a number behind it.
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

/// The lines of the state file, one for each field that has a number there.
std::vector<DialogStateRow> state_rows(const Operation& operation) {
  std::vector<DialogStateRow> rows;
  for (const Field& field : operation.fields) {
    if (field.stateId == 0 || !operation.stateFile) continue;
    rows.push_back({.id = field.stateId,
                    .tag = state_tag(field),
                    .control = field.name,
                    .members = field.look == FieldLook::Radio ? static_cast<int>(field.choices.size()) : 1,
                    .decimals = field.decimals});
  }
  return rows;
}

/// The values of a row of the history: as they are typed, with blanks between.
std::string history_line(std::span<const Field> fields, const FieldValues& values) {
  std::string line;
  for (const Field& field : fields)
    if (const FieldValue* value = values.find(field.name)) {
      const auto* number = std::get_if<std::int64_t>(value);
      line +=
          (line.empty() ? "" : " ") + (number ? std::to_string(*number) : field_value_text(field, *value));
    }
  return line;
}

}  // namespace

OperationDialog::OperationDialog(const Operation& operation, const DocumentWindow& window, Services& services,
                                 QWidget* parent)
    : FormDialog(tr(operation.title), QString::fromLatin1(operation.name).toUpper(),
                 dialog_fields(operation, window), first_values(operation, window), services.host, parent),
      operation_(operation),
      window_(window),
      services_(services) {
  name_controls(form());
  if (operation.history) add_history();
  add_scope_and_notes();
  add_preview();
  decorate_operation(*this);
  const auto rows = state_rows(operation);
  if (!rows.empty()) restore_dialog_state(*this, rows, config_path(operation.stateFile));
  check = [this](const FieldValues& values) { return check_operation(operation_, values, window_); };
  apply = [this](const FieldValues&) { return keep(); };
  connect(&form(), &Form::edited, this, &OperationDialog::follow);
  connect(buttons().button(QDialogButtonBox::Reset), &QPushButton::clicked, this, [this] {
    for (const Field& field : form().fields()) form().set_value(field.name, initial_value(field));
    follow();
  });
  follow();
}

OperationChoice OperationDialog::choice() const {
  const FieldValues values = form().values();
  const bool some = operation_.scoped && values.number(kScope) == 1;
  return {values, some ? selected_frames(window_) : all_frames(frame_entries(window_).size())};
}

void OperationDialog::add_scope_and_notes() {
  if (operation_.note) {
    note_ = new QLabel(this);
    note_->setObjectName(QStringLiteral("note"));
    form().add_row_behind({}, {}, note_);
  }
  const OperationChoice now = choice();
  if (!(operation_needs(operation_, window_, now.values, now.frames) & kWholeCanvases)) return;
  form().add_note(text_of(StringId::ReconstructedFirst));
  auto* box = new QCheckBox(tr("Reconstruct first"), this);
  box->setChecked(true);
  box->setEnabled(false);
  form().add_row_behind({}, {}, box);
}

void OperationDialog::add_preview() {
  if (operation_.preview == OperationPreview::None) return;
  const bool full = operation_.preview == OperationPreview::Full;
  preview_ = new ChangePreview(
      window_,
      [this](const ChangePreview::Shown& shown) {
        const FieldValues values = form().values();
        if (check_operation(operation_, values, window_)) return Picture();
        return preview_operation(operation_, shown.picture, values, window_);
      },
      [this](const Picture&) {
        const FieldValues values = form().values();
        const bool grows = operation_.growth && !check_operation(operation_, values, window_);
        return grows ? operation_.growth(values, window_) : 1.0;
      },
      this, full ? ChangePreview::Source::Canvas : ChangePreview::Source::ReducedFrame);
  static_cast<QBoxLayout*>(layout())->insertWidget(1, preview_, 1);
}

void OperationDialog::add_history() {
  const auto lines = load_history(config_path(operation_.history), HistoryKind::Values);
  if (lines.empty()) return;
  auto* list = new QComboBox(this);
  list->setObjectName(QStringLiteral("history"));
  list->setPlaceholderText(tr("Choose earlier values"));
  for (const std::string& line : lines) list->addItem(to_qt(line));
  list->setCurrentIndex(-1);
  connect(list, &QComboBox::textActivated, this, [this](const QString& line) {
    const QStringList parts = line.split(u' ');
    for (std::size_t i = 0; i < operation_.fields.size() && static_cast<qsizetype>(i) < parts.size(); ++i) {
      const Field& field = operation_.fields[i];
      form().set_value(
          field.name,
          clamped(field, parse_field_value(field, parts[static_cast<qsizetype>(i)].toStdString())));
    }
    follow();
  });
  form().add_row_behind({}, tr("Last values"), list);
}

void OperationDialog::follow() {
  if (note_) {
    const FieldValues values = form().values();
    const bool fine = !check_fields(operation_fields(operation_, window_), values);
    note_->setText(fine ? to_qt(operation_.note(values, window_)) : QString());
  }
  if (preview_) preview_->refresh();
}

bool OperationDialog::keep() {
  const FieldValues values = form().values();
  keep_in_settings(operation_.fields, values);
  const auto rows = state_rows(operation_);
  if (!rows.empty()) store_dialog_state(*this, rows, config_path(operation_.stateFile));
  if (!operation_.history) return true;
  auto lines = load_history(config_path(operation_.history), HistoryKind::Values);
  remember_text(lines, history_line(operation_.fields, values), HistoryKind::Values);
  save_history(config_path(operation_.history), lines);
  return true;
}

std::optional<OperationChoice> ask_for_operation(const Operation& operation, const DocumentWindow& window,
                                                 Services& services, QWidget* parent) {
  if (operation.fields.empty() && !operation.scoped)
    return OperationChoice{{}, all_frames(frame_entries(window).size())};
  OperationDialog dialog(operation, window, services, parent);
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return dialog.choice();
}

}  // namespace vellum
