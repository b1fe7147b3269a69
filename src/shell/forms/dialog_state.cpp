#include "shell/forms/dialog_state.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QSpinBox>
#include <algorithm>

#include "base/file.h"
#include "base/text.h"
#include "configuration/dialog_lines.h"
#include "shell/forms/color_button.h"
#include "shell/forms/number_edit.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr std::uint64_t kLongestFile = 1 << 20;

/// A control on its way to or from the file.
struct Item {
  QWidget* widget;  ///< null for a plain value
  const DialogStateRow& row;
};

std::string signed_text(int value) { return std::to_string(value); }
std::string unsigned_text(std::uint32_t value) { return std::to_string(value); }
QString number_part(std::string_view text) { return to_qt(text).trimmed(); }

std::optional<std::string> get_check(const Item& item) {
  auto* box = qobject_cast<QAbstractButton*>(item.widget);
  return box ? std::optional(unsigned_text(box->isChecked())) : std::nullopt;
}
void set_check(const Item& item, std::string_view text) {
  if (auto* box = qobject_cast<QAbstractButton*>(item.widget))
    box->setChecked(number_part(text).toUInt() != 0);
}

std::optional<std::string> get_index(const Item& item) {
  auto* list = qobject_cast<QComboBox*>(item.widget);
  return list ? std::optional(signed_text(list->currentIndex())) : std::nullopt;
}
void set_index(const Item& item, std::string_view text) {
  auto* list = qobject_cast<QComboBox*>(item.widget);
  const int index = number_part(text).toInt();
  if (list && index >= 0 && index < list->count()) list->setCurrentIndex(index);
}

std::optional<std::string> get_chosen_text(const Item& item) {
  auto* list = qobject_cast<QComboBox*>(item.widget);
  if (!list) return std::nullopt;
  const QVariant source = list->currentData(kSourceRole);
  return escaped_line((source.isValid() ? source.toString() : list->currentText()).toStdString());
}
/// A text that is no longer in the list leaves what is chosen.
void set_chosen_text(const Item& item, std::string_view text) {
  auto* list = qobject_cast<QComboBox*>(item.widget);
  if (!list) return;
  const QString wanted = to_qt(unescaped_line(text));
  const Qt::MatchFlags exactly = Qt::MatchExactly | Qt::MatchCaseSensitive;
  const int source = list->findData(wanted, kSourceRole, exactly);
  const int index = source >= 0 ? source : list->findText(wanted, exactly);
  if (index >= 0) list->setCurrentIndex(index);
}

std::optional<std::string> get_color(const Item& item) {
  auto* button = qobject_cast<ColorButton*>(item.widget);
  return button ? std::optional(unsigned_text(button->color())) : std::nullopt;
}
void set_color(const Item& item, std::string_view text) {
  if (auto* button = qobject_cast<ColorButton*>(item.widget)) button->set_color(number_part(text).toUInt());
}

std::optional<std::string> get_text(const Item& item) {
  if (auto* line = qobject_cast<QLineEdit*>(item.widget)) return escaped_line(line->text().toStdString());
  if (auto* lines = qobject_cast<QPlainTextEdit*>(item.widget))
    return escaped_line(lines->toPlainText().toStdString());
  if (auto* list = qobject_cast<QComboBox*>(item.widget))
    return escaped_line(list->currentText().toStdString());
  return std::nullopt;
}
void set_text(const Item& item, std::string_view text) {
  const QString value = to_qt(unescaped_line(text));
  if (auto* line = qobject_cast<QLineEdit*>(item.widget)) line->setText(value);
  if (auto* lines = qobject_cast<QPlainTextEdit*>(item.widget)) lines->setPlainText(value);
  if (auto* list = qobject_cast<QComboBox*>(item.widget)) list->setEditText(value);
}

/// The control brings what is out of its range within it.
std::optional<std::string> get_spin(const Item& item) {
  if (auto* number = qobject_cast<NumberEdit*>(item.widget)) {
    const FieldValue value = number->value();
    const auto* whole = std::get_if<std::int64_t>(&value);
    return whole ? std::optional(std::to_string(*whole)) : std::nullopt;
  }
  auto* spin = qobject_cast<QSpinBox*>(item.widget);
  return spin ? std::optional(signed_text(spin->value())) : std::nullopt;
}
void set_spin(const Item& item, std::string_view text) {
  bool good = false;
  const qlonglong value = number_part(text).toLongLong(&good);
  if (!good) return;
  if (auto* number = qobject_cast<NumberEdit*>(item.widget)) number->set_within_range(std::int64_t{value});
  if (auto* spin = qobject_cast<QSpinBox*>(item.widget))
    spin->setValue(static_cast<int>(std::clamp<qlonglong>(value, spin->minimum(), spin->maximum())));
}

std::optional<std::string> get_floating(const Item& item) {
  if (auto* number = qobject_cast<NumberEdit*>(item.widget)) {
    const FieldValue value = number->value();
    const auto* real = std::get_if<double>(&value);
    return real ? std::optional(format_text("%0.*f", item.row.decimals, *real)) : std::nullopt;
  }
  auto* spin = qobject_cast<QDoubleSpinBox*>(item.widget);
  return spin ? std::optional(format_text("%0.*f", item.row.decimals, spin->value())) : std::nullopt;
}
void set_floating(const Item& item, std::string_view text) {
  bool good = false;
  const double value = number_part(text).toDouble(&good);
  if (!good) return;
  if (auto* number = qobject_cast<NumberEdit*>(item.widget)) number->set_within_range(value);
  if (auto* spin = qobject_cast<QDoubleSpinBox*>(item.widget)) spin->setValue(value);
}

std::optional<std::string> get_position(const Item& item) {
  auto* slider = qobject_cast<QAbstractSlider*>(item.widget);
  return slider ? std::optional(signed_text(slider->value())) : std::nullopt;
}
void set_position(const Item& item, std::string_view text) {
  if (auto* slider = qobject_cast<QAbstractSlider*>(item.widget)) slider->setValue(number_part(text).toInt());
}

std::optional<std::string> get_row(const Item& item) {
  auto* list = qobject_cast<QListWidget*>(item.widget);
  return list ? std::optional(signed_text(list->currentRow())) : std::nullopt;
}
void set_row(const Item& item, std::string_view text) {
  auto* list = qobject_cast<QListWidget*>(item.widget);
  const int row = number_part(text).toInt();
  if (list && row >= 0 && row < list->count()) list->setCurrentRow(row);
}

std::optional<std::string> get_value(const Item& item) {
  return item.row.value ? std::optional(unsigned_text(*item.row.value)) : std::nullopt;
}
void set_value(const Item& item, std::string_view text) {
  bool good = false;
  const std::uint32_t value = number_part(text).toUInt(&good);
  if (good && item.row.value) *item.row.value = value;
}

struct TagRow {
  std::string_view tag;
  std::optional<std::string> (*get)(const Item&);
  void (*set)(const Item&, std::string_view);
};

constexpr std::string_view kRadio = "RADB";  // the line carries the id of the member that is chosen

constexpr TagRow kTags[] = {
    {"UINT", get_value, set_value},              // a plain value
    {"CHKB", get_check, set_check},              // check box
    {"CBOX", get_index, set_index},              // list, by index
    {"CBSL", get_chosen_text, set_chosen_text},  // list, by text
    {"CBTN", get_color, set_color},              // color button
    {"TEDT", get_text, set_text},                // text
    {"SPNI", get_spin, set_spin},                // whole number
    {"SPNF", get_floating, set_floating},        // floating number
    {kRadio, get_check, set_check},              // radio group
    {"SCRB", get_position, set_position},        // scroll bar, slider
    {"LSTB", get_row, set_row},                  // list box
};

const TagRow* find_tag(std::string_view tag) {
  const auto row = std::ranges::find(kTags, tag, &TagRow::tag);
  return row == std::end(kTags) ? nullptr : row;
}

QWidget* find_widget(const QDialog& dialog, const DialogStateRow& row, int member) {
  QString name = QLatin1String(row.control);
  if (name.isEmpty()) return nullptr;
  if (row.tag == kRadio) name += QStringLiteral("_%1").arg(member);
  return dialog.findChild<QWidget*>(name);
}

std::string line_of(const Item& item, int member) {
  const TagRow* tag = find_tag(item.row.tag);
  const auto text = tag ? tag->get(item) : std::nullopt;
  if (!text || (item.row.tag == kRadio && *text != "1")) return {};
  return dialog_line({item.row.id + member, item.row.tag, *text});
}

void take_state(QDialog& dialog, std::span<const DialogStateRow> rows, const DialogLine& line) {
  for (const DialogStateRow& row : rows) {
    const std::int64_t member = std::int64_t{line.id} - row.id;
    if (member < 0 || member >= std::max(row.members, 1) || row.tag != line.tag) continue;
    if (const TagRow* found = find_tag(line.tag))
      found->set({find_widget(dialog, row, static_cast<int>(member)), row}, line.text);
    return;
  }
}

}  // namespace

void store_dialog_state(const QDialog& dialog, std::span<const DialogStateRow> rows,
                        const std::filesystem::path& file) {
  std::string text;
  for (const DialogStateRow& row : rows)
    for (int member = 0; member < std::max(row.members, 1); ++member)
      text += line_of({find_widget(dialog, row, member), row}, member);
  std::error_code error;
  if (file.has_parent_path()) std::filesystem::create_directories(file.parent_path(), error);
  SafeFile out(file);
  if (out.ok() && out.write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()})) out.commit();
}

void restore_dialog_state(QDialog& dialog, std::span<const DialogStateRow> rows,
                          const std::filesystem::path& file) {
  std::string reason;
  const auto content = read_file(file, reason, kLongestFile);
  if (!content) return;
  std::string_view rest(reinterpret_cast<const char*>(content->data()), content->size());
  while (!rest.empty())
    if (const auto line = parse_dialog_line(take_line(rest))) take_state(dialog, rows, *line);
}

}  // namespace vellum
