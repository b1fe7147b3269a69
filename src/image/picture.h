// Picture: the one raster of the system, a block in device-independent-bitmap layout.
//
// The block holds, in this order: a 40-byte header (little-endian; width, height above 0, 1, 4, 8, 24 or 32
// bits per pixel), a color table of 2, 16 or 256 entries (blue, green, red, 0) when the bits are below 9, and
// the rows, bottom row first, each padded to a multiple of 4 bytes. 24 bits are blue, green, red; 32 bits
// blue, green, red, alpha; alpha is straight. A 24-bit picture has no alpha; who wants one takes 255.
//
// Every public coordinate is top-down: (0,0) is the top left pixel.
#pragma once

#include <array>
#include <cstdint>

#include "base/chunk_handle.h"

namespace vellum {

/// Up to 256 colors as red, green, blue triples in index order, unused entries zero: how palettes travel.
using Palette = std::array<std::uint8_t, 768>;

/// A color as it crosses every interface: red in the low byte, 0x00BBGGRR for 24 bits and 0xAABBGGRR for 32;
/// the plain index for 1, 4 and 8 bits.
using Colour = std::uint32_t;

constexpr Colour make_colour(std::uint32_t red, std::uint32_t green, std::uint32_t blue,
                             std::uint32_t alpha = 0) {
  return red | green << 8 | blue << 16 | alpha << 24;
}
constexpr std::uint8_t red_of(Colour colour) { return static_cast<std::uint8_t>(colour); }
constexpr std::uint8_t green_of(Colour colour) { return static_cast<std::uint8_t>(colour >> 8); }
constexpr std::uint8_t blue_of(Colour colour) { return static_cast<std::uint8_t>(colour >> 16); }
constexpr std::uint8_t alpha_of(Colour colour) { return static_cast<std::uint8_t>(colour >> 24); }
/// A color (red lowest) as the number that four bytes of a row or of a WebP header are (blue lowest), and the
/// reverse.
constexpr std::uint32_t swap_red_and_blue(std::uint32_t value) {
  return (value & 0xFF00FF00) | (value & 0xFF) << 16 | (value >> 16 & 0xFF);
}

/// A thin value over a block; null when default-made or when memory was exhausted. Copies share the block
/// until one of them is written. The rows of a kept block stay in memory while a picture of it lives, once
/// they were asked for; records hold the block alone.
class Picture {
 public:
  static constexpr std::size_t kHeaderBytes = 40;

  Picture() = default;
  /// Takes a block that holds a picture; null when the block is no picture (see `is_picture`).
  explicit Picture(ChunkHandle block);

  explicit operator bool() const { return static_cast<bool>(block_); }
  const ChunkHandle& handle() const { return block_; }

  std::uint32_t width() const;
  std::uint32_t height() const;
  /// 1, 4, 8, 24 or 32.
  std::uint32_t bits() const;
  /// Bytes from one row to the next.
  std::size_t stride() const;
  /// Entries of the color table: 2, 16, 256, or 0 above 8 bits.
  std::uint32_t colours() const { return bits() > 8 ? 0 : 1u << bits(); }

  /// The color table (4 bytes an entry: blue, green, red, 0) and the row y, counted from the top.
  const std::uint8_t* table() const { return block_.head() + kHeaderBytes; }
  const std::uint8_t* row(std::uint32_t y) const;
  /// The stored row, counted from the bottom as the block holds them.
  const std::uint8_t* stored_row(std::uint32_t y) const { return row(height() - 1 - y); }

  /// The same for writing: the first call detaches the block. Null when memory is
  /// exhausted, and of a null picture.
  std::uint8_t* edit_table();
  std::uint8_t* edit_row(std::uint32_t y);
  std::uint8_t* edit_block();

 private:
  std::size_t row_offset(std::uint32_t y) const;
  ChunkHandle block_;
  BlockPin pin_;
};

/// The block of a picture as one of the memory budget, which may let its rows go and have them made again.
/// Where the source can't make them, or is null, they are packed before they go.
ChunkHandle kept_picture(const Picture& picture, std::shared_ptr<const BlockSource> source);
/// The same of a picture that was just made, as a record holds it. A small one, or one that is kept already,
/// stays what it is.
ChunkHandle block_to_keep(const Picture& picture);

/// Whether a block is laid out as a picture: header, size, depth and length all agree.
bool is_picture(const ChunkHandle& block);

/// Bytes of a row of `width` pixels with `bits` bits each: ((width * bits + 31) / 32) * 4.
constexpr std::size_t picture_stride(std::uint32_t width, std::uint32_t bits) {
  return static_cast<std::size_t>((std::uint64_t{width} * bits + 31) / 32 * 4);
}

/// The bit count that a picture gets for an asked depth: 0 gives 32; 1: 1; 2 to 4: 4; 5 to 8: 8; 9 to 24: 24;
/// above: 32.
std::uint32_t picture_bits(std::uint32_t depth);

/// A zero-filled picture. `palette` is copied into the color table of an indexed one (null leaves it black).
/// Null when a dimension is 0, a limit is passed or memory is exhausted.
Picture PictureCreate(std::uint32_t width, std::uint32_t height, const Palette* palette, std::uint32_t depth);
/// The same with unspecified rows (padding included), for a caller that writes every byte of every row.
Picture PictureCreateForOverwrite(std::uint32_t width, std::uint32_t height, const Palette* palette,
                                  std::uint32_t depth);
/// A picture of header and color table alone, without rows: what `GetFileInformation` gives.
Picture PictureCreateHeaderOnly(std::uint32_t width, std::uint32_t height, const Palette* palette,
                                std::uint32_t depth);
/// Zero-filled 32-bit picture: fully transparent black.
Picture PictureCreateAlpha(std::uint32_t width, std::uint32_t height);
/// 24-bit picture filled with `colour`.
Picture PictureCreateFilled(std::uint32_t width, std::uint32_t height, Colour colour);
/// Byte-for-byte copy of the block in memory of its own.
Picture PictureDuplicate(const Picture& picture);

/// The color value or index; all ones when x or y is outside. (A white opaque pixel of 32 bits reads as all
/// ones too: test coordinates, not values.)
Colour PictureGetPixel(const Picture& picture, std::int64_t x, std::int64_t y);
/// Writes the low bits of `value` that fit the depth; ignored outside.
void PicturePutPixel(Picture& picture, std::int64_t x, std::int64_t y, Colour value);
/// As PictureGetPixel, with alpha 255 on 24-bit pictures.
Colour PictureGetPixelOpaque(const Picture& picture, std::int64_t x, std::int64_t y);

/// Clears `palette` and fills it from the color table. Returns the number of colors, 0 above 8 bits.
std::uint32_t PictureGetPalette(const Picture& picture, Palette& palette);
/// Replaces the color table of an indexed picture; nothing happens above 8 bits.
void PictureSetPalette(Picture& picture, const Palette& palette);
/// Width, height, bits and palette; any output may be null. False for a null picture.
bool PictureInfo(const Picture& picture, std::uint32_t* width, std::uint32_t* height, std::uint32_t* bits,
                 Palette* palette);

}  // namespace vellum
