#include "base/page_text.h"

#include "base/text.h"

namespace vellum {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

bool is_plain(unsigned char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_' ||
         c == '.' || c == '~';
}

/// Bytes of the character that begins here; 0 where none does.
std::size_t character_at(std::string_view text, std::size_t at) {
  for (std::size_t bytes = 1; bytes <= 4 && at + bytes <= text.size(); ++bytes)
    if (is_utf8(text.substr(at, bytes))) return bytes;
  return 0;
}

}  // namespace

std::string html_text(std::string_view utf8) {
  std::string out;
  for (std::size_t at = 0; at < utf8.size();) {
    const std::size_t bytes = character_at(utf8, at);
    const auto c = static_cast<unsigned char>(utf8[at]);
    // U+0080 to U+009F are controls too.
    const bool control = (bytes == 1 && (c == 0x7F || (c < ' ' && c != '\n' && c != '\t'))) ||
                         (bytes == 2 && c == 0xC2 && static_cast<unsigned char>(utf8[at + 1]) < 0xA0);
    if (bytes == 0 || control)
      out += kReplacement;
    else if (c == '&')
      out += "&amp;";
    else if (c == '<')
      out += "&lt;";
    else if (c == '>')
      out += "&gt;";
    else if (c == '"')
      out += "&quot;";
    else
      out += utf8.substr(at, bytes);
    at += std::max<std::size_t>(bytes, 1);
  }
  return out;
}

std::string url_part(std::string_view name) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string out;
  for (const char byte : name) {
    const auto c = static_cast<unsigned char>(byte);
    if (is_plain(c)) {
      out += byte;
      continue;
    }
    out += '%';
    out += kDigits[c >> 4];
    out += kDigits[c & 15];
  }
  return out;
}

std::string url_path(const std::filesystem::path& path) {
  std::string out;
  for (const auto& part : path) out += (out.empty() ? "" : "/") + url_part(part.string());
  return out;
}

std::string base64(std::span<const std::uint8_t> bytes, std::size_t line) {
  constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string out;
  out.reserve(bytes.size() / 3 * 4 + 4 + (line > 0 ? bytes.size() / line * 2 : 0));
  std::size_t inLine = 0;
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    if (line > 0 && inLine >= line) out += '\n', inLine = 0;
    const std::size_t left = std::min<std::size_t>(bytes.size() - at, 3);
    std::uint32_t word = 0;
    for (std::size_t i = 0; i < 3; ++i) word = word << 8 | (i < left ? bytes[at + i] : 0u);
    for (std::size_t i = 0; i < 4; ++i) out += i <= left ? kDigits[word >> (18 - 6 * i) & 63] : '=';
    inLine += 4;
  }
  return out;
}

std::string css_color(std::uint32_t color) {
  return format_text("#%02X%02X%02X", color & 255, color >> 8 & 255, color >> 16 & 255);
}

}  // namespace vellum
