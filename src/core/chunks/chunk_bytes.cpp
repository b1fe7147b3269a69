#include "core/chunks/chunk_bytes.h"

#include "base/file.h"
#include "base/text.h"
#include "base/translation.h"

namespace vellum {
namespace {

constexpr std::uint64_t kLongestChunk = 0x7FFFFFFF;  // PNG standard: a length has 31 bits
constexpr std::string_view kPrefix = "hex:", kDigits = "0123456789abcdef";

std::optional<std::vector<std::uint8_t>> parse_hexadecimal(std::string_view text) {
  std::vector<std::uint8_t> bytes;
  int high = -1;
  for (const char c : text) {
    if (c == ' ') continue;
    const auto digit = kDigits.find(lower_case(std::string_view(&c, 1)));
    if (digit == std::string_view::npos) return std::nullopt;
    if (high >= 0) bytes.push_back(static_cast<std::uint8_t>(high << 4 | static_cast<int>(digit)));
    high = high >= 0 ? -1 : static_cast<int>(digit);
  }
  return high >= 0 ? std::nullopt : std::optional(bytes);
}

}  // namespace

std::optional<std::vector<std::uint8_t>> parse_bytes(std::string_view text, std::string& reason) {
  if (text.starts_with('@')) {
    const auto file = read_file(std::string(text.substr(1)), reason, kLongestChunk);
    if (!file) return std::nullopt;
    return std::vector<std::uint8_t>(file->data(), file->data() + file->size());
  }
  auto bytes = text.starts_with(kPrefix) ? parse_hexadecimal(text.substr(kPrefix.size())) : std::nullopt;
  if (!bytes)
    reason =
        translated("bytes are \"hex:\" and pairs of hexadecimal digits, or \"@\" and the name of a file");
  return bytes;
}

std::string bytes_text(std::span<const std::uint8_t> bytes) {
  std::string text(kPrefix);
  text.reserve(text.size() + 2 * bytes.size());
  for (const std::uint8_t byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

}  // namespace vellum
