// The settings table: every setting's name, variable and kind. What reads or writes settings as text goes
// through it.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vellum {

/// What a row is. A row without `kText` is a number.
enum SettingFlag : unsigned {
  kFlag = 0x1,           ///< 0 or 1
  kText = 0x2,           ///< at most `kSettingTextLimit` bytes
  kNumber = 0x4,         ///< 32 bits
  kColour = 0x8,         ///< 0xBBGGRR
  kChoice = 0x10,        ///< chosen from a list in Setup
  kLimited = 0x40,       ///< held to a range by Setup
  kUnstored = 0x80,      ///< neither read from the file nor written to it
  kInformation = 0x100,  ///< written to the file, never read
  kPath = 0x200,         ///< a file chosen in Setup
};

inline constexpr std::size_t kSettingTextLimit = 260;

/// One setting. Exactly one of `number` and `text` is set.
struct SettingRow {
  std::string_view name;
  int* number;
  std::string* text;
  unsigned flags;
};

/// All rows in the order of the file. One variable has two rows of the same name.
std::span<const SettingRow> setting_table();

/// The row of exactly this name; of two, the first.
const SettingRow* find_setting(std::string_view name);

/// The first row in the table's order whose name begins with `prefix`, of those that are read from the file.
const SettingRow* find_setting_by_prefix(std::string_view prefix);

/// Whether an earlier row has the same variable.
bool is_repeated(const SettingRow& row);

}  // namespace vellum
