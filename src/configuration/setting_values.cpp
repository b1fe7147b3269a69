#include "configuration/setting_values.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include "base/text.h"
// The defaults below are taken from these variables, so they have to come first.
#include "base/translation.h"
#include "batch/settings.h"
#include "configuration/settings.h"
#include "configuration/shell_settings.h"
#include "core/settings.h"
#include "exchange/settings.h"
#include "extension/settings.h"
#include "generators/settings.h"
#include "operations/settings.h"
#include "playback/settings.h"

namespace vellum {
namespace {

/// Taken before `main`, when no variable has been changed.
const std::vector<SettingValue> kDefaults = all_setting_values();

/// A setting that has another value for this run.
struct RunValue {
  const SettingRow* row;
  SettingValue before, during;
};

std::vector<RunValue>& run_values() {
  static std::vector<RunValue> values;
  return values;
}

void forget_run_value(const SettingRow& row) {
  std::erase_if(run_values(), [&](const RunValue& value) { return value.row->name == row.name; });
}

}  // namespace

SettingValue setting_value(const SettingRow& row) {
  return row.text ? SettingValue{0, *row.text} : SettingValue{*row.number, {}};
}

void set_setting_value(const SettingRow& row, const SettingValue& value) {
  if (row.text)
    *row.text = cut_utf8(value.text, kSettingTextLimit);
  else
    *row.number = value.number;
}

const SettingValue& default_value(const SettingRow& row) {
  return kDefaults[static_cast<std::size_t>(&row - setting_table().data())];
}

std::vector<SettingValue> all_setting_values() {
  std::vector<SettingValue> values;
  values.reserve(setting_table().size());
  std::ranges::transform(setting_table(), std::back_inserter(values), setting_value);
  return values;
}

void set_all_setting_values(std::span<const SettingValue> values) {
  const auto rows = setting_table();
  for (std::size_t i = 0; i < rows.size(); ++i) set_setting_value(rows[i], values[i]);
}

void reset_settings() {
  run_values().clear();
  set_all_setting_values(kDefaults);
}

std::string setting_text(const SettingRow& row, const SettingValue& value) {
  return row.text ? value.text : std::to_string(value.number);
}

std::optional<SettingValue> parse_setting(const SettingRow& row, std::string_view text, std::string& reason) {
  if (row.text) return SettingValue{0, cut_utf8(std::string(text), kSettingTextLimit)};
  // Both forms of a negative number are taken: with its sign, and the unsigned one of the file.
  long long number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool fits =
      number >= std::numeric_limits<int>::min() && number <= std::numeric_limits<unsigned>::max();
  if (error == std::errc{} && end == text.data() + text.size() && fits)
    return SettingValue{static_cast<int>(static_cast<unsigned>(number)), {}};
  reason = std::string(row.name) + " must be a whole number";
  return std::nullopt;
}

bool set_setting_for_run(std::string_view assignment, std::string& reason) {
  const auto parting = assignment.find('=');
  if (parting == std::string_view::npos) {
    reason = translated("a setting is given as Key=Value");
    return false;
  }
  const std::string_view key = trimmed(assignment.substr(0, parting));
  const SettingRow* row = find_setting(key);
  if (!row) {
    reason = translated("there is no setting \"") + std::string(key) + '"';
    return false;
  }
  const auto value = parse_setting(*row, trimmed(assignment.substr(parting + 1)), reason);
  if (!value) return false;
  const SettingValue before = stored_value(*row);
  forget_run_value(*row);
  set_setting_value(*row, *value);
  run_values().push_back({row, before, *value});
  return true;
}

void change_setting(const SettingRow& row, const SettingValue& value) {
  forget_run_value(row);
  set_setting_value(row, value);
}

SettingValue stored_value(const SettingRow& row) {
  SettingValue now = setting_value(row);
  for (const RunValue& value : run_values())
    if (value.row->name == row.name && value.during == now) return value.before;
  return now;
}

}  // namespace vellum
