// Values of settings through their rows: reading, setting, defaults, and what holds for one run only.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "configuration/setting_table.h"

namespace vellum {

/// The value of a setting of either kind.
struct SettingValue {
  int number = 0;
  std::string text;
  bool operator==(const SettingValue&) const = default;
};

SettingValue setting_value(const SettingRow& row);
/// Text is cut to the limit at a character boundary.
void set_setting_value(const SettingRow& row, const SettingValue& value);

/// The value that the variable began with.
const SettingValue& default_value(const SettingRow& row);

/// The values of all rows, in the table's order.
std::vector<SettingValue> all_setting_values();
void set_all_setting_values(std::span<const SettingValue> values);
/// Back to the defaults, with nothing set for the run.
void reset_settings();

/// The value as people write it: numbers with their sign.
std::string setting_text(const SettingRow& row, const SettingValue& value);

/// A value from what people write. Empty, with `reason` set, when a number is none or has more than 32 bits.
std::optional<SettingValue> parse_setting(const SettingRow& row, std::string_view text, std::string& reason);

/// Sets a setting for this run from "Key=Value" (blanks around the parts are passed over): the file keeps
/// what it had. False, with `reason` set, when there is no such key or a number is not a number.
bool set_setting_for_run(std::string_view assignment, std::string& reason);

/// Sets a setting to stay.
void change_setting(const SettingRow& row, const SettingValue& value);

/// The value that belongs into the file: that from before `set_setting_for_run`, until the setting is changed
/// to something else.
SettingValue stored_value(const SettingRow& row);

}  // namespace vellum
