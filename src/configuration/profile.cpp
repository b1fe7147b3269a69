#include "configuration/profile.h"

#include <cstdlib>

#include "base/text.h"
#include "configuration/config_file.h"

namespace vellum {
namespace {

std::string_view unquoted(std::string_view text) {
  const bool quoted =
      text.size() >= 2 && (text.front() == '"' || text.front() == '\'') && text.front() == text.back();
  return quoted ? text.substr(1, text.size() - 2) : text;
}

bool is_head_of(std::string_view line, std::string_view section) {
  return line.ends_with(']') && equal_ignoring_case(trimmed(line.substr(1, line.size() - 2)), section);
}

}  // namespace

std::string profile_string(std::string_view section, std::string_view key, std::string_view fallback) {
  const std::string content = config_read(config_file());
  bool inside = false;
  for (std::string_view rest = content; !rest.empty();) {
    const std::string_view line = trimmed(take_line(rest));
    if (line.starts_with('[')) inside = is_head_of(line, section);
    const auto parting = line.find('=');
    if (!inside || line.starts_with(';') || parting == std::string_view::npos) continue;
    if (!equal_ignoring_case(trimmed(line.substr(0, parting)), key)) continue;
    return std::string(unquoted(trimmed(line.substr(parting + 1))));
  }
  return std::string(fallback);
}

int profile_int(std::string_view section, std::string_view key, int fallback) {
  const std::string text = profile_string(section, key, std::to_string(fallback));
  return static_cast<int>(std::strtoll(text.c_str(), nullptr, 10));
}

}  // namespace vellum
