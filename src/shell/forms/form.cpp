#include "shell/forms/form.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QVBoxLayout>
#include <algorithm>

#include "shell/forms/number_edit.h"
#include "shell/look/language.h"
#include "shell/look/style.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr const char* kDialogLetters = "OCRH";  // the buttons below: OK, Cancel, Reset, Help

// At the least: pixels and lines of a text, letters of a list.
constexpr int kNarrowText = 120, kNarrowLines = 4, kNarrowLetters = 8;
constexpr int kNoteLetters = 44;  // width that a note wraps at, at the least

/// Marks the first letter of the label that no other one on its page has.
QString marked(QString label, QString& used) {
  label.replace(u'&', QStringLiteral("&&"));
  for (qsizetype i = 0; i < label.size(); ++i) {
    if (!label[i].isLetter() || used.contains(label[i], Qt::CaseInsensitive)) continue;
    used += label[i];
    return label.insert(i, u'&');
  }
  return label;
}

/// Whether no field that vanishes, of those that switch this one in turn and itself, is out of use.
bool is_shown(std::span<const Field> fields, const Field& field, const FieldValues& values) {
  for (const Field* at = &field; at; at = at->enabledBy ? find_field(fields, at->enabledBy) : nullptr)
    if (at->vanishes && !field_enabled(fields, *at, values)) return false;
  return true;
}

void select_from(QWidget* input, std::size_t at) {
  if (auto* text = qobject_cast<QPlainTextEdit*>(input)) {
    QTextCursor cursor = text->textCursor();
    cursor.setPosition(std::min(static_cast<int>(at), std::max(text->document()->characterCount() - 1, 0)));
    cursor.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor);
    text->setTextCursor(cursor);
  }
  if (auto* number = qobject_cast<QAbstractSpinBox*>(input)) number->selectAll();
  if (auto* list = qobject_cast<QComboBox*>(input); list && list->isEditable()) list->lineEdit()->selectAll();
  if (auto* line = qobject_cast<QLineEdit*>(input)) line->selectAll();
}

}  // namespace

Form::Form(std::vector<Field> fields, const FieldValues& values, QWidget* parent)
    : QWidget(parent), fields_(std::move(fields)), first_(values) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  setting_ = true;
  for (const Field& field : fields_) add_field(field);
  setting_ = false;
  if (pages_.empty()) page_of({});
  if (!tabs_ && pages_.size() == 1) layout->addWidget(pages_.front().second);
  reset();
}

QFormLayout* Form::page_of(const Field& field) {
  const QString title = field.page ? shown(field.page) : tr("Fields");
  for (const auto& [name, page] : pages_)
    if (name == title) return static_cast<QFormLayout*>(page->layout());
  auto* page = new QWidget(this);
  auto* layout = new QFormLayout(page);
  layout->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
  layout->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
  layout->setHorizontalSpacing(style::kWideGap);
  layout->setVerticalSpacing(style::kGap);
  usedLetters_[layout] = QLatin1String(kDialogLetters);
  pages_.emplace_back(title, page);
  if (pages_.size() > 1) show_tabs();
  return layout;
}

void Form::show_tabs() {
  if (!tabs_) {
    tabs_ = new QTabWidget(this);
    layout()->addWidget(tabs_);
  }
  for (const auto& [title, page] : pages_) {
    if (tabs_->indexOf(page) >= 0) continue;
    if (page->layout())
      page->layout()->setContentsMargins(style::kWideGap, style::kWideGap, style::kWideGap, style::kWideGap);
    tabs_->addTab(page, title);
  }
}

void Form::add_field(const Field& field) {
  QFormLayout* page = page_of(field);
  const auto edit = [this, name = field.name] {
    if (setting_) return;
    update_enabled();
    emit edited(QLatin1String(name));
  };
  Placed placed{make_control(field, page->parentWidget(), edit), nullptr, page};
  FormControl& control = placed.control;
  const QString label = marked(shown_in(field.name, field.label), usedLetters_[page]);
  if (control.ownLabel) {
    control.row->setProperty("text", label);
    page->addRow(nullptr, control.row);
  } else {
    placed.label = new QLabel(field.locked ? shown_in(field.name, field.label) + u':' : label + u':');
    placed.label->setBuddy(field.locked ? nullptr : control.input);
    page->addRow(placed.label, control.row);
  }
  if (control.tall) control.row->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
  placed_.push_back(std::move(placed));
}

const Form::Placed* Form::find(std::string_view name) const {
  const auto found = std::ranges::find(
      placed_, name, [](const Placed& placed) { return std::string_view(placed.control.field.name); });
  return found == placed_.end() ? nullptr : &*found;
}

FieldValues Form::values() const {
  FieldValues values;
  for (const Placed& placed : placed_) values.set(placed.control.field.name, placed.control.get());
  return values;
}

void Form::set_value(std::string_view name, const FieldValue& value) {
  if (const Placed* placed = find(name)) placed->control.set(value);
}

void Form::reset() {
  for (const Placed& placed : placed_)
    if (const FieldValue* value = first_.find(placed.control.field.name)) placed.control.set(*value);
  update_enabled();
}

bool Form::has(std::string_view name) const { return find(name) != nullptr; }

QWidget* Form::input(std::string_view name) const {
  const Placed* placed = find(name);
  return placed ? placed->control.input : nullptr;
}

void Form::set_browser(std::string_view name, std::function<QString(const QString& now)> browse) {
  const Placed* placed = find(name);
  if (!placed || !placed->control.browse) return;
  placed->control.browse->disconnect();
  const auto look = [control = placed->control, browse = std::move(browse)] {
    const QString found = browse(to_qt(field_value_text(control.field, control.get())));
    if (!found.isEmpty()) control.set(FieldValue(found.toStdString()));
  };
  connect(placed->control.browse, &QPushButton::clicked, this, look);
}

void Form::set_choices(std::string_view name, std::span<const FieldChoice> choices) {
  auto* list = qobject_cast<QComboBox*>(input(name));
  if (!list) return;
  const QVariant chosen = list->currentData();
  setting_ = true;
  list->clear();
  for (const FieldChoice& choice : choices) list->addItem(shown(choice.name), qlonglong{choice.value});
  list->setCurrentIndex(std::max(list->findData(chosen), 0));
  setting_ = false;
}

void Form::add_row_behind(std::string_view name, const QString& label, QWidget* widget) {
  const Placed* placed = find(name);
  QFormLayout* page = placed ? placed->page : page_of({});
  int row = page->rowCount() - 1;
  if (placed) page->getWidgetPosition(placed->control.row, &row, nullptr);
  if (label.isEmpty())
    page->insertRow(row + 1, nullptr, widget);
  else
    page->insertRow(row + 1, marked(label, usedLetters_[page]) + u':', widget);
  // Tab goes where the eye goes.
  if (placed) QWidget::setTabOrder(placed->control.input, widget);
}

void Form::add_page(const QString& title, QWidget* page) {
  pages_.emplace_back(title, page);
  show_tabs();
}

void Form::show_page(QWidget* page) {
  if (tabs_) tabs_->setCurrentWidget(page);
}

void Form::set_narrow() {
  for (const auto& [title, page] : pages_)
    if (auto* rows = qobject_cast<QFormLayout*>(page->layout()))
      rows->setRowWrapPolicy(QFormLayout::WrapLongRows);
  for (QWidget* child : findChildren<QWidget*>()) {
    if (qobject_cast<QLineEdit*>(child) || qobject_cast<QLabel*>(child)) child->setMinimumWidth(0);
    if (qobject_cast<QPlainTextEdit*>(child))
      child->setMinimumSize(kNarrowText, child->fontMetrics().lineSpacing() * kNarrowLines);
    if (auto* list = qobject_cast<QComboBox*>(child)) {
      list->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
      list->setMinimumContentsLength(kNarrowLetters);
    }
  }
}

void Form::add_note(const QString& text) {
  auto* note = new QLabel(text, this);
  note->setTextFormat(Qt::PlainText);
  note->setWordWrap(true);
  note->setMinimumWidth(note->fontMetrics().averageCharWidth() * kNoteLetters);
  static_cast<QFormLayout*>(pages_.front().second->layout())->addRow(note);
}

void Form::update_enabled() {
  const FieldValues now = values();
  for (const Placed& placed : placed_) {
    const bool enabled = field_enabled(fields_, placed.control.field, now);
    placed.control.row->setEnabled(enabled);
    if (placed.label) placed.label->setEnabled(enabled);
    int row = -1;
    placed.page->getWidgetPosition(placed.control.row, &row, nullptr);
    const bool shown = is_shown(fields_, placed.control.field, now);
    if (row >= 0 && placed.page->isRowVisible(row) != shown) placed.page->setRowVisible(row, shown);
  }
}

void Form::show_fault(const FieldFault& fault) {
  const Placed* placed = find(fault.field);
  if (!placed) return;
  if (tabs_) tabs_->setCurrentWidget(placed->page->parentWidget());
  placed->control.input->setFocus(Qt::OtherFocusReason);
  select_from(placed->control.input, fault.at);
}

}  // namespace vellum
