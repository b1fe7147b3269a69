// Texts in pages: what a name, an address or bytes become in HTML.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>

namespace vellum {

/// As text and as the value of an attribute in double quotes; wrong UTF-8 and control characters become
/// replacement characters.
std::string html_text(std::string_view utf8);
/// One part of a path as that of an address, byte by byte: letters, digits and "-_.~" as they are.
std::string url_part(std::string_view name);
/// A relative path with its slashes.
std::string url_path(const std::filesystem::path& path);
/// `line` characters a line, 0: one line.
std::string base64(std::span<const std::uint8_t> bytes, std::size_t line = 0);
/// "#RRGGBB" of a color 0xBBGGRR.
std::string css_color(std::uint32_t color);

}  // namespace vellum
