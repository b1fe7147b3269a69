// Cursors and icons: pictures as device-independent bitmaps with a mask, or as PNG, in a file of one or
// several.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "image/picture.h"

namespace vellum {

/// Most pixels of a side.
inline constexpr std::uint32_t kMostCursor = 256;

struct HotSpot {
  std::uint32_t x = 0, y = 0;
};

/// Whether bytes begin like a cursor file with at least one entry.
bool is_cursor(std::span<const std::uint8_t> bytes);

/// What the first entry's words 10 and 12 tell; 0 where they are missing.
HotSpot hot_spot_of(std::span<const std::uint8_t> cursor);
/// The hot spot of the largest entry, whose number this is, from 0.
std::size_t largest_entry(std::span<const std::uint8_t> cursor);

/// The picture of an entry: 32 bits where any pixel is transparent, by its alpha or else by the mask; else as
/// it is stored, 16 bits as 24. Null for one that is damaged or incomplete but for its mask.
Picture read_cursor(std::span<const std::uint8_t> cursor, std::size_t entry = 0);
/// The same of a bitmap that stands for itself, without a mask.
Picture read_bare_bitmap(std::span<const std::uint8_t> bitmap);

/// Bytes of a cursor of one entry for pictures of this size and depth: 1, 4 or 32.
std::size_t cursor_bytes(std::uint32_t width, std::uint32_t height, std::uint32_t bits);
/// That cursor. `picture` has 32 bits, and alpha below `threshold` makes a pixel transparent; with `bits` 1
/// or 4 its colors are those of the palette.
std::vector<std::uint8_t> write_cursor(const Picture& picture, std::uint32_t bits, const Palette& palette,
                                       HotSpot hot, std::uint32_t threshold);

}  // namespace vellum
