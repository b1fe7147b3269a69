#include "shell/forms/form_controls.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>

#include "configuration/shell_settings.h"
#include "shell/forms/color_button.h"
#include "shell/forms/default_folders.h"
#include "shell/forms/number_edit.h"
#include "shell/look/language.h"
#include "shell/look/style.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

using Edited = std::function<void()>;

constexpr int kTextLines = 8;     // a text of several lines begins with room for these
constexpr int kTextLetters = 52;  // and this wide
constexpr int kLineLetters = 24;

std::int64_t number_of(const FieldValue& value) {
  const auto* number = std::get_if<std::int64_t>(&value);
  return number ? *number : 0;
}

std::string utf8(const QString& text) { return text.toStdString(); }

int letters(const QWidget* widget, int count) {
  return widget->fontMetrics().horizontalAdvance(QLatin1Char('x')) * count;
}

/// A row of widgets, the first of which takes the keyboard.
QWidget* side_by_side(QWidget* parent, std::initializer_list<QWidget*> widgets, bool stretch) {
  auto* row = new QWidget(parent);
  auto* layout = new QHBoxLayout(row);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(style::kGap);
  for (QWidget* widget : widgets) layout->addWidget(widget);
  if (stretch) layout->addStretch(1);
  row->setFocusProxy(*widgets.begin());
  return row;
}

FormControl make_shown(const Field& field, QWidget* parent, const Edited&) {
  auto* label = new QLabel(parent);
  label->setTextFormat(Qt::PlainText);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  const auto held = std::make_shared<FieldValue>();
  return {field,
          label,
          label,
          false,
          false,
          [held] { return *held; },
          [field, label, held](const FieldValue& value) {
            *held = value;
            const bool flag = field.type == FieldType::Flag;
            label->setText(flag ? (number_of(value) ? QObject::tr("Yes") : QObject::tr("No"))
                                : shown(field_value_text(field, value)));
          }};
}

FormControl make_flag(const Field& field, QWidget* parent, const Edited& edited) {
  auto* box = new QCheckBox(shown(field.label), parent);
  QObject::connect(box, &QCheckBox::toggled, parent, edited);
  return {field,
          box,
          box,
          true,
          false,
          [box] { return FieldValue(std::int64_t{box->isChecked()}); },
          [box](const FieldValue& value) { box->setChecked(number_of(value) != 0); }};
}

FormControl make_list(const Field& field, QWidget* parent, const Edited& edited) {
  auto* list = new QComboBox(parent);
  for (const FieldChoice& choice : field.choices)
    list->addItem(shown_in(field.name, choice.name), qlonglong{choice.value});
  QObject::connect(list, &QComboBox::currentIndexChanged, parent, edited);
  return {field,
          list,
          list,
          false,
          false,
          [list] { return FieldValue(std::int64_t{list->currentData().toLongLong()}); },
          [list](const FieldValue& value) {
            list->setCurrentIndex(list->findData(qlonglong{number_of(value)}));
          }};
}

FormControl make_radio(const Field& field, QWidget* parent, const Edited& edited) {
  auto* box = new QWidget(parent);
  auto* group = new QButtonGroup(box);
  auto* layout = new QVBoxLayout(box);
  layout->setContentsMargins(0, 0, 0, 0);
  for (const FieldChoice& choice : field.choices) {
    auto* button = new QRadioButton(shown(choice.name), box);
    group->addButton(button, static_cast<int>(choice.value));
    layout->addWidget(button);
  }
  QObject::connect(group, &QButtonGroup::idToggled, parent, edited);
  QWidget* first = group->buttons().isEmpty() ? box : group->buttons().first();
  return {field,
          box,
          first,
          false,
          false,
          [group] { return FieldValue(std::int64_t{group->checkedId()}); },
          [group](const FieldValue& value) {
            if (QAbstractButton* button = group->button(static_cast<int>(number_of(value))))
              button->setChecked(true);
          }};
}

/// A number, and a box beside it for the value that has a word.
FormControl make_special(const Field& field, QWidget* parent, NumberEdit* number, const Edited& edited) {
  auto* box = new QCheckBox(shown(field.special), parent);
  box->setAccessibleName(QStringLiteral("%1: %2").arg(shown(field.label), shown(field.special)));
  QWidget* row = side_by_side(parent, {number, box}, true);
  QObject::connect(box, &QCheckBox::toggled, number, [number, field](bool on) {
    number->setEnabled(!on);
    const bool was_special = number_of(number->value()) == field.specialValue;
    if (on || was_special)
      number->set_value(on ? field.specialValue : std::max<std::int64_t>(field.least, 1));
  });
  QObject::connect(box, &QCheckBox::toggled, parent, edited);
  return {field,
          row,
          number,
          false,
          false,
          [number] { return number->value(); },
          [number, box, field](const FieldValue& value) {
            box->setChecked(std::holds_alternative<std::int64_t>(value) &&
                            number_of(value) == field.specialValue);
            number->set_value(value);
          }};
}

/// A number in hexadecimal, and a box for each bit that has a name; both ways.
FormControl make_bits(const Field& field, QWidget* parent, NumberEdit* number) {
  auto* column = new QWidget(parent);
  auto* layout = new QVBoxLayout(column);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(number, 0, Qt::AlignLeft);
  for (const FieldChoice& bit : field.choices) {
    auto* box = new QCheckBox(shown(bit.name), column);
    layout->addWidget(box);
    QObject::connect(box, &QCheckBox::clicked, number, [number, mask = bit.value](bool on) {
      const std::int64_t now = number_of(number->value());
      number->set_value(on ? now | mask : now & ~mask);
    });
    QObject::connect(number, &NumberEdit::edited, box, [number, box, mask = bit.value] {
      box->setChecked((number_of(number->value()) & mask) != 0);
    });
  }
  return {field,
          column,
          number,
          false,
          false,
          [number] { return number->value(); },
          [number](const FieldValue& value) { number->set_value(value); }};
}

FormControl make_number(const Field& field, QWidget* parent, const Edited& edited) {
  auto* number = new NumberEdit(field, parent);
  QObject::connect(number, &NumberEdit::edited, parent, edited);
  if (field.look == FieldLook::Bits) return make_bits(field, parent, number);
  if (field.special) return make_special(field, parent, number, edited);
  return {field,
          side_by_side(parent, {number}, true),
          number,
          false,
          false,
          [number] { return number->value(); },
          [number](const FieldValue& value) { number->set_value(value); }};
}

FormControl make_color(const Field& field, QWidget* parent, const Edited& edited) {
  auto* button = new ColorButton(field.most > 0xFFFFFF, parent);
  QObject::connect(button, &ColorButton::chosen, parent, edited);
  return {field,
          side_by_side(parent, {button}, true),
          button,
          false,
          false,
          [button] { return FieldValue(std::int64_t{button->color()}); },
          [button, edited](const FieldValue& value) {
            button->set_color(static_cast<Colour>(number_of(value)));
            edited();
          }};
}

FormControl make_line(const Field& field, QWidget* parent, const Edited& edited) {
  auto* line = new QLineEdit(parent);
  line->setMinimumWidth(letters(line, kLineLetters));
  QObject::connect(line, &QLineEdit::textChanged, parent, edited);
  FormControl control{
      field,
      line,
      line,
      false,
      false,
      [line] { return FieldValue(utf8(line->text())); },
      [field, line](const FieldValue& value) { line->setText(to_qt(field_value_text(field, value))); }};
  if (field.look != FieldLook::Path) return control;
  auto* browse = new QPushButton(QObject::tr("Browse..."), parent);
  browse->setAutoDefault(false);
  QObject::connect(browse, &QPushButton::clicked, line, [line] {
    const QString start = line->text().isEmpty() ? usable_folder(settings::RecentFolder) : line->text();
    const QString name = QFileDialog::getOpenFileName(line->window(), {}, start);
    if (name.isEmpty()) return;
    line->setText(name);
    settings::RecentFolder = to_path(name).parent_path().string();
  });
  control.row = side_by_side(parent, {line, browse}, false);
  control.browse = browse;
  return control;
}

FormControl make_suggestions(const Field& field, QWidget* parent, const Edited& edited) {
  auto* list = new QComboBox(parent);
  list->setEditable(true);
  list->setInsertPolicy(QComboBox::NoInsert);
  list->setCompleter(nullptr);
  for (const FieldChoice& choice : field.choices) list->addItem(to_qt(choice.name));
  QObject::connect(list, &QComboBox::editTextChanged, parent, edited);
  return {
      field,
      list,
      list,
      false,
      false,
      [list] { return FieldValue(utf8(list->currentText())); },
      [field, list](const FieldValue& value) { list->setEditText(to_qt(field_value_text(field, value))); }};
}

FormControl make_lines(const Field& field, QWidget* parent, const Edited& edited) {
  auto* text = new QPlainTextEdit(parent);
  text->setTabChangesFocus(true);
  text->setMinimumSize(letters(text, kTextLetters), text->fontMetrics().lineSpacing() * kTextLines);
  QObject::connect(text, &QPlainTextEdit::textChanged, parent, edited);
  return {
      field,
      text,
      text,
      false,
      true,
      [text] { return FieldValue(utf8(text->toPlainText())); },
      [field, text](const FieldValue& value) { text->setPlainText(to_qt(field_value_text(field, value))); }};
}

/// Bytes are loaded and saved by who shows the form; here they are told by their number.
FormControl make_bytes(const Field& field, QWidget* parent, const Edited& edited) {
  auto* label = new QLabel(parent);
  const auto held = std::make_shared<std::string>();
  return {field,
          label,
          label,
          false,
          false,
          [held] { return FieldValue(*held); },
          [field, label, held, edited](const FieldValue& value) {
            *held = field_value_text(field, value);
            const auto bytes = static_cast<qulonglong>(std::max<std::size_t>(held->size(), 4) - 4) / 2;
            label->setText(to_qt(count_text(StringId::OneByte, bytes)));
            edited();
          }};
}

using Make = FormControl (*)(const Field&, QWidget*, const Edited&);

Make maker_of(const Field& field) {
  if (field.locked) return make_shown;
  if (field.look == FieldLook::Radio) return make_radio;
  switch (field.type) {
    case FieldType::Flag:
      return make_flag;
    case FieldType::Choice:
      return make_list;
    case FieldType::Color:
      return make_color;
    case FieldType::Text:
      return field.look == FieldLook::Bytes         ? make_bytes
             : field.look == FieldLook::Lines       ? make_lines
             : field.look == FieldLook::Suggestions ? make_suggestions
                                                    : make_line;
    default:
      return make_number;
  }
}

}  // namespace

FormControl make_control(const Field& field, QWidget* parent, const std::function<void()>& edited) {
  FormControl control = maker_of(field)(field, parent, edited);
  control.input->setObjectName(QLatin1String(field.name));
  control.input->setAccessibleName(shown_in(field.name, field.label));
  if (field.tip) {
    control.row->setToolTip(shown(field.tip));
    control.input->setAccessibleDescription(shown(field.tip));
  }
  return control;
}

}  // namespace vellum
