// Files that hold a palette: read by what they contain, written by their extension.
#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "image/picture.h"

namespace vellum {

struct PaletteColors {
  Palette palette{};
  std::uint32_t count = 0;  ///< 1 to 256
  bool cut = false;         ///< the file held more, and its first 256 are here
};

/// The colors of a file in one of the known forms: CMP, JASC and GIMP text, tables of 768 bytes (772 with a
/// count). Empty when it is none or holds no color.
std::optional<PaletteColors> parse_palette(std::span<const std::uint8_t> file);
/// The same from disk; `reason` is set only when the file couldn't be read.
std::optional<PaletteColors> read_palette_file(const std::filesystem::path& path, std::string& reason);

/// A form that palettes are written in.
struct PaletteForm {
  std::string_view extension;  ///< lower case, without a dot
  std::string_view name;       ///< for people
  std::vector<std::uint8_t> (*bytes)(const PaletteColors&);
};
/// CMP, gpl, pal.
std::span<const PaletteForm> palette_forms();
/// The form of the path's extension; CMP for any other.
const PaletteForm& palette_form_of(const std::filesystem::path& path);
/// False, with `reason` set, when the file can't be written.
bool write_palette_file(const std::filesystem::path& path, const PaletteColors& colors, std::string& reason);

}  // namespace vellum
