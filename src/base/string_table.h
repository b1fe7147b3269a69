// The numbered string table: every text that the program shows in a message has its row in strings.inc.
#pragma once

#include <string_view>

namespace vellum {

enum class StringId : int {
#define VELLUM_STRING(name, number, text) name = number,
#include "base/strings.inc"
#undef VELLUM_STRING
};

/// The text with this number, or "String table error - this application may be damaged". Never empty; the
/// view lives as long as the program and ends in a NUL.
std::string_view string_text(int number);
inline std::string_view string_text(StringId id) { return string_text(static_cast<int>(id)); }

}  // namespace vellum
