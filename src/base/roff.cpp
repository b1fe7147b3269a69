#include "base/roff.h"

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

std::string roff_item(std::string_view name, std::string_view value, std::string_view help) {
  std::string text = ".TP\n\\fB" + roff_text(name) + "\\fR";
  if (!value.empty()) text += " \\fI" + roff_text(value) + "\\fR";
  return text + "\n" + roff_text(help) + ".\n";
}

}  // namespace vellum
