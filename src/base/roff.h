// Text of manual pages (man(7)).
#pragma once

#include <string>
#include <string_view>

namespace vellum {

/// Plain text as roff takes it: what would be a request or an escape stands for itself.
std::string roff_text(std::string_view text);
/// The same in lines of at most 80 bytes, where blanks allow it.
std::string roff_lines(std::string_view text);

/// An option or an argument with its value and what it does: a tagged paragraph.
std::string roff_item(std::string_view name, std::string_view value, std::string_view help);

}  // namespace vellum
