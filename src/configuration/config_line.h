// One line of the configuration file, read and written.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "configuration/setting_values.h"

namespace vellum {

/// Longest piece of a line that is read at once, in bytes; the rest of a longer one is the next line.
inline constexpr std::size_t kConfigLineLimit = 260;

/// Takes the next line, or the next piece of one, off the front of `text`. It ends before its first control
/// character (a tab, the CR of CR LF).
std::string_view take_config_line(std::string_view& text);

struct ConfigLine {
  std::string_view key, value;
};

/// Key and value of a line; empty for a comment and for a line without a key. "=" between them may be
/// missing.
std::optional<ConfigLine> split_config_line(std::string_view line);

/// The value that the text of a line gives a row. A text that begins with no number is 0; of a number the low
/// 32 bits count, so that negative ones come back from their unsigned form.
SettingValue read_config_value(const SettingRow& row, std::string_view text);

/// "Key = Value", without a line end. Control characters of a text are written as blanks. The line is no
/// longer than what is read back as one, or the end of a text would be taken for a setting of its own.
std::string config_line(const SettingRow& row, const SettingValue& value);

}  // namespace vellum
