#include "shell/forms/setting_page.h"

#include <QAbstractSpinBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>

#include "configuration/setting_values.h"
#include "shell/look/style.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr int kFewValues = 4;            // stand below each other
constexpr std::int64_t kRgb = 0xFFFFFF;  // a color setting has no alpha

FieldValue field_value(const SettingField& row, const SettingValue& value) {
  if (row.field.type == FieldType::Text) return value.text;
  const bool color = row.field.type == FieldType::Color;
  return clamped(row.field, std::int64_t{value.number} & (color ? kRgb : -1));
}

/// Nothing for a text that is no number.
std::optional<SettingValue> setting_of(const SettingField& row, const FieldValue& typed) {
  if (row.field.type == FieldType::Text) {
    const auto* text = std::get_if<std::string>(&typed);
    return text ? std::optional(SettingValue{0, *text}) : std::nullopt;
  }
  const FieldValue held = clamped(row.field, typed);
  const auto* number = std::get_if<std::int64_t>(&held);
  if (!number) return std::nullopt;
  const std::int64_t value = row.field.type == FieldType::Color ? *number & kRgb : *number;
  return SettingValue{static_cast<int>(value), {}};
}

FieldValue default_of(const SettingField& row, const SettingRow& setting) {
  if (row.pageDefault) return *row.pageDefault;
  return field_value(row, default_value(setting));
}

/// Wide fields beside each other would make a wide window.
bool is_wide(const Field& field) { return field.type == FieldType::Text; }

QFormLayout* value_form() {
  auto* layout = new QFormLayout;
  layout->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
  layout->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
  layout->setRowWrapPolicy(QFormLayout::WrapLongRows);
  layout->setHorizontalSpacing(style::kGap);
  layout->setVerticalSpacing(style::kGap);
  return layout;
}

}  // namespace

SettingPage::SettingPage(std::span<const SettingField> rows, int columns, QWidget* parent) : QWidget(parent) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(style::kWideGap, style::kWideGap, style::kWideGap, style::kWideGap);
  layout->setSpacing(style::kWideGap);
  placed_.reserve(rows.size());
  for (const SettingField& row : rows) {
    const SettingRow* setting = find_setting(row.field.name);
    if (!setting) continue;
    const std::size_t number = placed_.size();
    const auto touch = [this, number] {
      if (!filling_) placed_[number].touched = true;
    };
    filling_ = true;
    placed_.push_back({&row, setting, make_control(row.field, this, touch), false});
  }
  std::vector<Placed*> flags, values;
  for (Placed& placed : placed_)
    (placed.row->field.type == FieldType::Flag ? flags : values).push_back(&placed);
  if (!flags.empty()) place_flags(flags, columns);
  if (!values.empty()) place_values(values, columns);
  layout->addStretch(1);
  show_values();
}

void SettingPage::place_flags(const std::vector<Placed*>& flags, int columns) {
  auto* grid = new QGridLayout;
  grid->setHorizontalSpacing(2 * style::kWideGap);
  grid->setVerticalSpacing(style::kGap * 3 / 4);
  const int deep = (static_cast<int>(flags.size()) + columns - 1) / columns;
  for (int i = 0; i < static_cast<int>(flags.size()); ++i)
    grid->addWidget(flags[static_cast<std::size_t>(i)]->control.row, i % deep, i / deep);
  grid->setColumnStretch(columns, 1);
  static_cast<QVBoxLayout*>(layout())->addLayout(grid);
}

void SettingPage::place_values(const std::vector<Placed*>& values, int most_columns) {
  auto* grid = new QGridLayout;
  grid->setHorizontalSpacing(2 * style::kWideGap);
  const auto wide = std::ranges::count_if(values, [](const Placed* p) { return is_wide(p->row->field); });
  const auto narrow = static_cast<int>(values.size()) - static_cast<int>(wide);
  const int columns = narrow > kFewValues ? most_columns : 1;
  const int deep = (narrow + columns - 1) / columns;
  std::vector<QFormLayout*> forms;
  for (int i = 0; i < columns; ++i) grid->addLayout(forms.emplace_back(value_form()), 0, i);
  QFormLayout* below = wide > 0 && columns > 1 ? value_form() : forms.front();
  int at = 0;
  for (Placed* placed : values) {
    const bool own_line = is_wide(placed->row->field);
    QFormLayout* form = own_line ? below : forms[static_cast<std::size_t>(at++ / deep)];
    auto* label = new QLabel(shown(placed->row->field.label), this);
    label->setBuddy(placed->control.input);
    form->addRow(label, placed->control.row);
    if (auto* button = placed->control.row->findChild<QPushButton*>(); button && placed->row->browse)
      button->setText(shown(placed->row->browse));
    if (auto* number = qobject_cast<QAbstractSpinBox*>(placed->control.input))
      connect(number, &QAbstractSpinBox::editingFinished, this, [this, placed] { hold_to_range(*placed); });
  }
  auto* page = static_cast<QVBoxLayout*>(layout());
  page->addLayout(grid);
  if (below != forms.front()) page->addLayout(below);
}

void SettingPage::add_buttons(std::initializer_list<QWidget*> buttons) {
  auto* line = new QHBoxLayout;
  line->setSpacing(style::kGap);
  for (QWidget* button : buttons) line->addWidget(button);
  line->addStretch(1);
  auto* page = static_cast<QVBoxLayout*>(layout());
  page->insertLayout(page->count() - 1, line);
}

void SettingPage::show_values() {
  filling_ = true;
  for (Placed& placed : placed_) placed.control.set(field_value(*placed.row, setting_value(*placed.setting)));
  filling_ = false;
}

/// What was typed out of the range becomes the nearest value in it, what can't be read the value before.
void SettingPage::hold_to_range(Placed& placed) {
  const auto typed = setting_of(*placed.row, placed.control.get());
  placed.control.set(field_value(*placed.row, typed ? *typed : setting_value(*placed.setting)));
}

void SettingPage::set_defaults() {
  for (Placed& placed : placed_) {
    placed.control.set(default_of(*placed.row, *placed.setting));
    placed.touched = true;
  }
}

bool SettingPage::store() {
  bool restart = false;
  for (const Placed& placed : placed_) {
    if (!placed.touched) continue;
    const auto typed = setting_of(*placed.row, placed.control.get());
    if (!typed || *typed == setting_value(*placed.setting)) continue;
    change_setting(*placed.setting, *typed);
    restart = restart || placed.row->restart;
  }
  return restart;
}

}  // namespace vellum
