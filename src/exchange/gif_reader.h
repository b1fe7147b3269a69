// A GIF file as its frames: where each lies, and its pixels when they are asked for.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "image/picture.h"

namespace vellum {

/// A color table in the file.
struct GifTable {
  std::size_t at = 0, colors = 0;  ///< 0 colors: there is none
};

/// An image and the control extension in front of it.
struct GifFrame {
  std::size_t at = 0, end = 0;  ///< of the block: from its 0x2C to behind its data
  std::uint32_t left = 0, top = 0, width = 0, height = 0;
  GifTable table;  ///< its own, else the global one
  std::optional<std::uint8_t> transparent;
  std::uint32_t delay = 0;    ///< hundredths of a second
  std::uint8_t disposal = 0;  ///< 0 and 1: stays; 2: its place becomes empty; 3: as it was before
};

/// Read from bytes that outlive it.
struct GifFile {
  std::span<const std::uint8_t> bytes;
  std::uint32_t width = 0, height = 0;
  std::size_t headEnd = 0;  ///< behind the global table
  std::vector<GifFrame> frames;
  std::optional<std::uint32_t> plays;  ///< as the file has it: 0 for ever
  std::vector<std::string> comments;   ///< their bytes as they stand
  std::string damage;                  ///< what ended the reading early, and where; a sentence part
};

/// Walks the blocks. A file that breaks off keeps what is in front of that; nothing for what is no GIF.
std::optional<GifFile> read_gif(std::span<const std::uint8_t> bytes);

/// Number of colors and the palette in force for a frame. A file may bring no table at all, which leaves the
/// colors to the reader: black, white, and greys.
std::uint32_t gif_colors(const GifFile& file, const GifFrame& frame, Palette& palette);

/// The pixels of a frame, rows from the top, interlacing undone.
struct GifPixels {
  std::vector<std::uint8_t> indexes;  ///< one byte a pixel; those of missing rows are 0
  std::vector<bool> there;            ///< which rows the file has
  std::uint32_t rows = 0;             ///< how many
};
/// Throws std::bad_alloc.
GifPixels gif_pixels(const GifFile& file, const GifFrame& frame);

}  // namespace vellum
