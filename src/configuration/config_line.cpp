#include "configuration/config_line.h"

#include <algorithm>

#include "base/text.h"

namespace vellum {
namespace {

bool is_control(char c) { return static_cast<unsigned char>(c) < ' '; }

std::string_view without_leading(std::string_view text, char c) {
  return text.substr(std::min(text.find_first_not_of(c), text.size()));
}

int low_32_bits(std::string_view text) {
  text = without_leading(text, ' ');
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  unsigned number = 0;
  for (const char c : text) {
    if (c < '0' || c > '9') break;
    number = number * 10 + static_cast<unsigned>(c - '0');
  }
  return static_cast<int>(negative ? 0 - number : number);
}

}  // namespace

std::string_view take_config_line(std::string_view& text) {
  const std::size_t end = std::min(text.substr(0, kConfigLineLimit).find('\n'), kConfigLineLimit);
  std::string_view line = text.substr(0, end);
  const bool line_end = end < text.size() && text[end] == '\n';
  text.remove_prefix(line.size() + (line_end ? 1 : 0));
  return line.substr(0, static_cast<std::size_t>(std::ranges::find_if(line, is_control) - line.begin()));
}

std::optional<ConfigLine> split_config_line(std::string_view line) {
  if (line.starts_with(';')) return std::nullopt;
  const std::string_view key = line.substr(0, line.find_first_of("= "));
  if (key.empty()) return std::nullopt;
  const std::string_view behind = without_leading(line.substr(key.size()), ' ');
  return ConfigLine{key, without_leading(without_leading(behind, '='), ' ')};
}

SettingValue read_config_value(const SettingRow& row, std::string_view text) {
  if (row.text) return {0, std::string(text)};
  return {low_32_bits(text), {}};
}

std::string config_line(const SettingRow& row, const SettingValue& value) {
  if (!row.text) return std::string(row.name) + " = " + std::to_string(static_cast<unsigned>(value.number));
  std::string line = std::string(row.name) + " = " + value.text;
  std::ranges::replace_if(line, is_control, ' ');
  return cut_utf8(std::move(line), kConfigLineLimit);
}

}  // namespace vellum
