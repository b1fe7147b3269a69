#include "base/roff.h"

#include <algorithm>

namespace vellum {

std::string roff_text(std::string_view text) {
  std::string result;
  bool line_start = true;
  for (const char c : text) {
    if (line_start && (c == '.' || c == '\'')) result += "\\&";
    if (c == '\\')
      result += "\\e";
    else if (c == '-')
      result += "\\-";
    else
      result += c;
    line_start = c == '\n';
  }
  return result;
}

std::string roff_lines(std::string_view text) {
  constexpr std::size_t kMostBytes = 80;
  std::string lines;
  std::size_t length = 0;  // of the line so far
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(' '), text.size());
    const std::string word = roff_text(text.substr(0, end));
    const bool breaks = length > 0 && length + 1 + word.size() > kMostBytes;
    if (length > 0) lines += breaks ? '\n' : ' ';
    lines += word;
    const std::size_t last = word.rfind('\n');
    length = last != std::string::npos ? word.size() - last - 1
                                       : (breaks || length == 0 ? 0 : length + 1) + word.size();
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return lines;
}

std::string roff_item(std::string_view name, std::string_view value, std::string_view help) {
  std::string text = ".TP\n\\fB" + roff_text(name) + "\\fR";
  if (!value.empty()) text += " \\fI" + roff_text(value) + "\\fR";
  return text + "\n" + roff_lines(std::string(help) + ".") + "\n";
}

}  // namespace vellum
