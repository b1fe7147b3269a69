#include "base/text.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

namespace vellum {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";

char ascii_lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

}  // namespace

std::string format_text(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  std::string text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
  if (length > 0) std::vsnprintf(text.data(), text.size() + 1, format, again);
  va_end(again);
  va_end(arguments);
  return text;
}

std::string with_value(std::string_view format, std::string_view value) {
  std::string text(format);
  if (const auto at = text.find("%s"); at != std::string::npos) text.replace(at, 2, value);
  return text;
}

std::string utf8_from_latin1(std::string_view latin1) {
  std::string text;
  text.reserve(latin1.size());
  for (const char c : latin1) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80) {
      text += c;
    } else {
      text += static_cast<char>(0xC0 | byte >> 6);
      text += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  return text;
}

std::string latin1_from_utf8(std::string_view utf8) {
  std::string text;
  for (std::size_t i = 0; i < utf8.size(); ++i) {
    const auto byte = static_cast<unsigned char>(utf8[i]);
    const bool follows = i + 1 < utf8.size() && (static_cast<unsigned char>(utf8[i + 1]) & 0xC0) == 0x80;
    if (byte < 0x80) {
      text += utf8[i];
    } else if ((byte == 0xC2 || byte == 0xC3) && follows) {
      text += static_cast<char>((byte & 3) << 6 | (static_cast<unsigned char>(utf8[++i]) & 0x3F));
    } else if ((byte & 0xC0) != 0x80) {
      text += '?';
    }
  }
  return text;
}

bool is_utf8(std::string_view bytes) {
  const auto at = [&](std::size_t i) { return i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0u; };
  for (std::size_t i = 0; i < bytes.size();) {
    const unsigned first = at(i), second = at(i + 1);
    const std::size_t more = first < 0x80   ? 0
                             : first < 0xC2 ? 4
                             : first < 0xE0 ? 1
                             : first < 0xF0 ? 2
                             : first < 0xF5 ? 3
                                            : 4;
    const unsigned least = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    const unsigned most = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    if (more == 4 || (more > 0 && (second < least || second > most))) return false;
    for (std::size_t k = 2; k <= more; ++k)
      if ((at(i + k) & 0xC0) != 0x80) return false;
    i += 1 + more;
  }
  return true;
}

std::string cut_utf8(std::string text, std::size_t bytes) {
  if (text.size() <= bytes) return text;
  while (bytes > 0 && (static_cast<unsigned char>(text[bytes]) & 0xC0) == 0x80) --bytes;
  text.resize(bytes);
  return text;
}

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string_view take_line(std::string_view& rest) {
  const std::size_t end = std::min(rest.find('\n'), rest.size());
  std::string_view line = rest.substr(0, end);
  if (line.ends_with('\r')) line.remove_suffix(1);
  rest.remove_prefix(std::min(end + 1, rest.size()));
  return line;
}

std::string grouped(std::uint64_t value) {
  std::string digits = std::to_string(value);
  for (auto at = static_cast<std::ptrdiff_t>(digits.size()) - 3; at > 0; at -= 3)
    digits.insert(static_cast<std::size_t>(at), 1, ',');
  return digits;
}

bool equal_ignoring_case(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, {}, ascii_lower, ascii_lower);
}

std::string lower_case(std::string_view text) {
  std::string lower(text);
  std::ranges::transform(lower, lower.begin(), ascii_lower);
  return lower;
}

}  // namespace vellum
