// Inside of the table of graphic files: one codec a format. Nobody but graphic_file.cpp, the codecs and what
// lies below them includes this.
#pragma once

#include <filesystem>
#include <new>
#include <span>

#include "base/file.h"
#include "base/limits.h"
#include "image/graphic_file.h"
#include "image/picture_rows.h"

namespace vellum {

using FileBytes = std::span<const std::uint8_t>;

/// What a reader gives: a picture of header and table alone, or all of it.
enum class Part { Header, Whole };

Picture JPGGetFileInformation(const std::filesystem::path&, const GraphicSwitches&);
Picture JPGReadGraphicFile(const std::filesystem::path&, const GraphicSwitches&);
bool JPGWriteGraphicFile(const std::filesystem::path&, const GraphicSwitches&, const Picture&);
Picture BMPGetFileInformation(const std::filesystem::path&, const GraphicSwitches&);
Picture BMPReadGraphicFile(const std::filesystem::path&, const GraphicSwitches&);
bool BMPWriteGraphicFile(const std::filesystem::path&, const GraphicSwitches&, const Picture&);
Picture GIFGetFileInformation(const std::filesystem::path&, const GraphicSwitches&);
Picture GIFReadGraphicFile(const std::filesystem::path&, const GraphicSwitches&);
bool GIFWriteGraphicFile(const std::filesystem::path&, const GraphicSwitches&, const Picture&);
Picture PCXGetFileInformation(const std::filesystem::path&, const GraphicSwitches&);
Picture PCXReadGraphicFile(const std::filesystem::path&, const GraphicSwitches&);
bool PCXWriteGraphicFile(const std::filesystem::path&, const GraphicSwitches&, const Picture&);
Picture TGAGetFileInformation(const std::filesystem::path&, const GraphicSwitches&);
Picture TGAReadGraphicFile(const std::filesystem::path&, const GraphicSwitches&);
bool TGAWriteGraphicFile(const std::filesystem::path&, const GraphicSwitches&, const Picture&);
Picture PNGGetFileInformation(const std::filesystem::path&, const GraphicSwitches&);
Picture PNGReadGraphicFile(const std::filesystem::path&, const GraphicSwitches&);
bool PNGWriteGraphicFile(const std::filesystem::path&, const GraphicSwitches&, const Picture&);
Picture WEBPGetFileInformation(const std::filesystem::path&, const GraphicSwitches&);
Picture WEBPReadGraphicFile(const std::filesystem::path&, const GraphicSwitches&);
bool WEBPWriteGraphicFile(const std::filesystem::path&, const GraphicSwitches&, const Picture&);

/// The decoders behind them, from memory: null for a damaged file or one that passes a limit.
Picture decode_jpg(FileBytes file, Part part, bool exif_orientation);
Picture decode_bmp(FileBytes file, Part part);
Picture decode_gif(FileBytes file, Part part);
Picture decode_pcx(FileBytes file, Part part);
Picture decode_tga(FileBytes file, Part part);
Picture decode_webp(FileBytes file, Part part);

/// The whole file through `decode(FileBytes)`; null when it cannot be read or memory is exhausted.
template <class Decode>
Picture read_through(const std::filesystem::path& path, const Decode& decode) {
  try {
    std::string reason;
    const auto file = read_file(path, reason, kMaximumFileBytes);
    return file ? decode(FileBytes(*file)) : Picture();
  } catch (const std::bad_alloc&) {
    return {};
  }
}

/// Writes a file by `encode(SafeFile&)`; nothing of it is left when that, or the disk, fails.
template <class Encode>
bool write_through(const std::filesystem::path& path, const Picture& picture, const Encode& encode) {
  if (!has_rows(picture)) return false;
  try {
    SafeFile file(path);
    return file.ok() && encode(file) && file.commit();
  } catch (const std::bad_alloc&) {
    return false;
  }
}

/// The palette of a table with `size` bytes an entry, blue first; entries from `colours` on are black.
Palette palette_from_bgr(const std::uint8_t* table, std::size_t colours, std::size_t size);

/// A field of 1 to 8 bits as eight: its bits repeated from the top, so that the largest value gives 255.
constexpr std::uint8_t widened(std::uint32_t value, int width) {
  std::uint32_t result = 0;
  for (int shift = 8 - width; shift > -width; shift -= width)
    result |= shift >= 0 ? value << shift : value >> -shift;
  return static_cast<std::uint8_t>(result);
}

/// A picture without alpha: 32 bits are flattened over `DefaultBackgroundColour`, the others come as they
/// are.
Picture without_alpha(const Picture& picture);
/// 24 bits with the colors that the picture shows: indexed pictures of every depth go through their table.
Picture true_colour_shown(const Picture& picture);
/// Whether index i of the table is the grey (i, i, i) throughout.
bool has_grey_ramp(const Picture& picture);

}  // namespace vellum
