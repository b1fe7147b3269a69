#include "configuration/dialog_lines.h"

#include <algorithm>
#include <charconv>

#include "base/text.h"

namespace vellum {
namespace {

constexpr std::string_view kKey = "DlgItem_";
constexpr std::size_t kTagLetters = 4;

struct Escape {
  char letter, meaning;
};
constexpr Escape kEscapes[] = {{'\\', '\\'}, {'n', '\n'}, {'r', '\r'}};

}  // namespace

std::optional<DialogLine> parse_dialog_line(std::string_view line) {
  const std::size_t equals = line.find('=');
  if (!line.starts_with(kKey) || equals == std::string_view::npos ||
      line.find(',', equals) != equals + 1 + kTagLetters)
    return std::nullopt;
  DialogLine found{0, line.substr(equals + 1, kTagLetters), line.substr(equals + kTagLetters + 2)};
  const auto [end, error] = std::from_chars(line.data() + kKey.size(), line.data() + equals, found.id);
  if (error != std::errc() || end != line.data() + equals) return std::nullopt;
  return found;
}

std::string dialog_line(const DialogLine& line) {
  std::string text = format_text("%s%06d=", kKey.data(), line.id);
  return text.append(line.tag).append(",").append(line.text).append("\n");
}

std::string escaped_line(std::string_view text) {
  std::string line;
  for (const char c : text) {
    const auto* const escape = std::ranges::find(kEscapes, c, &Escape::meaning);
    if (escape == std::end(kEscapes))
      line += c;
    else
      line.append({'\\', escape->letter});
  }
  return line;
}

std::string unescaped_line(std::string_view line) {
  std::string text;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const bool escaped = line[i] == '\\' && i + 1 < line.size();
    if (escaped) ++i;
    const auto* const escape = std::ranges::find(kEscapes, line[i], &Escape::letter);
    text += escaped && escape != std::end(kEscapes) ? escape->meaning : line[i];
  }
  return text;
}

}  // namespace vellum
