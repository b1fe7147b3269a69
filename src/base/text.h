// Small operations on text: Latin-1 and UTF-8, printf-style forms, grouping of numbers.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vellum {

/// printf into a string. The format is one of the string table or a literal.
[[gnu::format(printf, 1, 2)]] std::string format_text(const char* format, ...);

/// Replaces the first "%s" of `format` by `value` (for formats that come from the string table).
std::string with_value(std::string_view format, std::string_view value);

/// Latin-1 (the text of tEXt, zTXt and their keywords) as UTF-8.
std::string utf8_from_latin1(std::string_view latin1);

/// UTF-8 as Latin-1; characters that it does not have become "?".
std::string latin1_from_utf8(std::string_view utf8);

/// Whether the bytes are UTF-8 (RFC 3629: no overlong forms, no surrogates).
bool is_utf8(std::string_view bytes);

/// `text` cut to at most `bytes` bytes at a character boundary of UTF-8.
std::string cut_utf8(std::string text, std::size_t bytes);

/// The number with a comma every three digits: "16,777,216".
std::string grouped(std::uint64_t value);

/// `text` without blanks, tabs and line ends at its ends.
std::string_view trimmed(std::string_view text);

/// The first line of `rest` without its end ("\n" or "\r\n"); both are taken off `rest`.
std::string_view take_line(std::string_view& rest);

/// ASCII without regard to case, as extensions are compared.
bool equal_ignoring_case(std::string_view a, std::string_view b);
std::string lower_case(std::string_view text);

}  // namespace vellum
