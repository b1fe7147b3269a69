// The settings table: every setting's name, variable and type. What reads or writes settings as text goes
// through it.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace vellum {

/// One setting. Exactly one of `number` and `text` is set.
struct SettingRow {
  std::string_view name;
  int* number;        ///< flags (0 or 1), numbers and colors (0xBBGGRR)
  std::string* text;  ///< at most 260 bytes
};

std::span<const SettingRow> setting_table();

/// Sets a setting for this run from "Key=Value" (blanks around the parts are passed over). False, with
/// `reason` set, when there is no such key or a number is not a number.
bool set_setting(std::string_view assignment, std::string& reason);

}  // namespace vellum
