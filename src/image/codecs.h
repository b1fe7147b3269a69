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

// The functions of the table's rows.
bool is_jpg(FileBytes file);
GraphicReading decode_jpg(FileBytes file, Part part, const GraphicSwitches& switches);
bool JPGWriteGraphicFile(const std::filesystem::path&, const GraphicSwitches&, const Picture&);
bool is_bmp(FileBytes file);
GraphicReading decode_bmp(FileBytes file, Part part, const GraphicSwitches& switches);
bool BMPWriteGraphicFile(const std::filesystem::path&, const GraphicSwitches&, const Picture&);
bool is_gif(FileBytes file);
GraphicReading decode_gif(FileBytes file, Part part, const GraphicSwitches& switches);
bool GIFWriteGraphicFile(const std::filesystem::path&, const GraphicSwitches&, const Picture&);
bool is_pcx(FileBytes file);
GraphicReading decode_pcx(FileBytes file, Part part, const GraphicSwitches& switches);
bool PCXWriteGraphicFile(const std::filesystem::path&, const GraphicSwitches&, const Picture&);
bool is_tga(FileBytes file);
GraphicReading decode_tga(FileBytes file, Part part, const GraphicSwitches& switches);
bool TGAWriteGraphicFile(const std::filesystem::path&, const GraphicSwitches&, const Picture&);
bool is_png(FileBytes file);
GraphicReading decode_png(FileBytes file, Part part, const GraphicSwitches& switches);
bool PNGWriteGraphicFile(const std::filesystem::path&, const GraphicSwitches&, const Picture&);
bool is_webp(FileBytes file);
GraphicReading decode_webp(FileBytes file, Part part, const GraphicSwitches& switches);
bool WEBPWriteGraphicFile(const std::filesystem::path&, const GraphicSwitches&, const Picture&);

/// A picture whose pixels are zero, or of header and table alone; a null one with its reason when it passes a
/// limit, or when `file_bytes` bytes of a file can't mean so many pixels.
GraphicReading reading_of_size(std::uint32_t width, std::uint32_t height, const Palette* palette,
                               std::uint32_t bits, Part part, std::size_t file_bytes);

/// The same when rows are missing: `rows` of `height` are there. Without any the picture is lost.
GraphicReading cut_reading(GraphicReading reading, std::uint32_t rows, std::uint32_t height);

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
