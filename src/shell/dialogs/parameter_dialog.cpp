#include "shell/dialogs/parameter_dialog.h"

#include <QComboBox>
#include <QPlainTextEdit>
#include <QPushButton>

#include "configuration/config_file.h"
#include "configuration/history.h"
#include "shell/dialogs/document_browser.h"
#include "shell/forms/dialog_state.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr int kLeastLines = 3;  ///< of a text

std::vector<Field> all_fields(const Parameters& parameters, const DocumentWindow& window,
                              const std::vector<Field>& more, const FieldValues& asked) {
  std::vector<Field> fields = fields_for(parameters, window);
  std::erase_if(fields, [&](const Field& field) { return asked.find(field.name) != nullptr; });
  // What is not asked any more switches nothing.
  for (Field& field : fields) {
    if (!field.enabledBy || !asked.find(field.enabledBy)) continue;
    const std::int64_t value = asked.number(field.enabledBy);
    if (field.enabledAt < 0 ? value != 0 : value == field.enabledAt) field.enabledBy = nullptr;
  }
  fields.insert(fields.end(), more.begin(), more.end());
  return fields;
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

/// The field whose last texts a file keeps.
const Field* text_of(const Parameters& parameters) {
  const auto field = std::ranges::find(parameters.fields, FieldType::Text, &Field::type);
  return parameters.texts && field != parameters.fields.end() ? &*field : nullptr;
}

/// As one line of a list shows it.
QString first_line(const std::string& text) { return to_qt(text).section(u'\n', 0, 0); }

}  // namespace

ParameterDialog::ParameterDialog(const Parameters& parameters, const DocumentWindow& window,
                                 const std::vector<Field>& more, Services& services, QWidget* parent,
                                 const FieldValues& asked)
    : ParameterDialog(parameters, window, services, parent, all_fields(parameters, window, more, asked),
                      asked) {}

ParameterDialog::ParameterDialog(const Parameters& parameters, const DocumentWindow& window,
                                 Services& services, QWidget* parent, const std::vector<Field>& fields,
                                 const FieldValues& asked)
    : FormDialog(tr(parameters.title), QString::fromLatin1(guide_page(parameters)).toUpper(), fields,
                 setting_values(fields), services.host, parent),
      parameters_(parameters),
      window_(window),
      services_(services),
      asked_(asked) {
  name_controls(form());
  // Texts that are drawn are short; they give way before the form must be scrolled.
  for (auto* text : form().findChildren<QPlainTextEdit*>())
    text->setMinimumHeight(text->fontMetrics().lineSpacing() * kLeastLines);
  if (parameters.second)
    form().set_browser(parameters.second, [this](const QString& now) {
      return browse_documents({.title = tr("Choose a file"), .now = now}, this).value(0);
    });
  if (parameters.history) add_history();
  if (text_of(parameters)) add_texts();
  if (parameters.note) {
    note_ = new QLabel(this);
    note_->setObjectName(QStringLiteral("note"));
    form().add_row_behind({}, {}, note_);
  }
}

FieldValues ParameterDialog::values() const {
  FieldValues all = asked_;
  const FieldValues typed = form().values();
  for (const Field& field : form().fields()) all.set(field.name, *typed.find(field.name));
  return all;
}

std::optional<FieldFault> ParameterDialog::fault() const {
  const FieldValues all = values();
  if (auto found = check_fields(form().fields(), all)) return found;
  return parameters_.check ? parameters_.check(all, window_) : std::nullopt;
}

void ParameterDialog::begin() {
  const auto rows = state_rows(parameters_);
  if (!rows.empty()) restore_dialog_state(*this, rows, config_path(parameters_.stateFile));
  check = [this](const FieldValues&) { return fault(); };
  apply = [this](const FieldValues&) { return keep(); };
  connect(&form(), &Form::edited, this, &ParameterDialog::follow);
  connect(buttons().button(QDialogButtonBox::Reset), &QPushButton::clicked, this, [this] {
    // A text without an initial value stays: names and folders come from elsewhere.
    for (const Field& field : form().fields())
      if (field.type != FieldType::Text || *field.initialText)
        form().set_value(field.name, initial_value(field));
    follow();
  });
  buttons().button(QDialogButtonBox::Reset)->setVisible(!form().fields().empty());
  follow();
}

void ParameterDialog::add_history() {
  const auto lines = load_history(config_path(parameters_.history), HistoryKind::Values);
  if (lines.empty()) return;
  auto* list = new QComboBox(this);
  list->setObjectName(QStringLiteral("history"));
  list->setPlaceholderText(tr("Choose earlier values"));
  for (const std::string& line : lines) list->addItem(to_qt(line));
  list->setCurrentIndex(-1);
  connect(list, &QComboBox::textActivated, this, [this](const QString& line) {
    const QStringList parts = line.split(u' ');
    for (std::size_t i = 0; i < parameters_.fields.size() && static_cast<qsizetype>(i) < parts.size(); ++i) {
      const Field& field = parameters_.fields[i];
      form().set_value(
          field.name,
          clamped(field, parse_field_value(field, parts[static_cast<qsizetype>(i)].toStdString())));
    }
    follow();
  });
  form().add_row_behind({}, tr("Last values"), list);
}

void ParameterDialog::add_texts() {
  const Field& field = *text_of(parameters_);
  const auto texts = load_history(config_path(parameters_.texts), HistoryKind::Texts);
  if (texts.empty()) return;
  auto* list = new QComboBox(this);
  list->setObjectName(QStringLiteral("texts"));
  list->setPlaceholderText(tr("Choose an earlier text"));
  list->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  list->setMinimumContentsLength(24);
  for (const std::string& text : texts) list->addItem(first_line(text));
  list->setCurrentIndex(-1);
  connect(list, &QComboBox::activated, this, [this, texts, name = field.name](int row) {
    form().set_value(name, texts[static_cast<std::size_t>(row)]);
    follow();
  });
  form().add_row_behind(field.name, tr("Earlier texts"), list);
  if (form().values().text(field.name).empty()) form().set_value(field.name, texts.front());
}

void ParameterDialog::follow() {
  if (!note_) return;
  const bool fine = !check_fields(form().fields(), values());
  note_->setText(fine ? to_qt(parameters_.note(values(), window_)) : QString());
  note_->setVisible(!note_->text().isEmpty());
}

std::string ParameterDialog::kept_text() const {
  const Field* field = text_of(parameters_);
  return field ? values().text(field->name) : std::string();
}

void ParameterDialog::keep_text() const {
  if (text_of(parameters_)) keep_in_history(config_path(parameters_.texts), kept_text(), HistoryKind::Texts);
}

bool ParameterDialog::keep() {
  keep_in_settings(form().fields(), values());
  const auto rows = state_rows(parameters_);
  if (!rows.empty()) store_dialog_state(*this, rows, config_path(parameters_.stateFile));
  keep_text();
  if (parameters_.history)
    keep_in_history(config_path(parameters_.history), history_line(parameters_.fields, values()),
                    HistoryKind::Values);
  return true;
}

}  // namespace vellum
