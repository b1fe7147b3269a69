// The blocks of a GIF89a file, as bytes.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>

#include "exchange/gif_lzw.h"
#include "image/picture.h"

namespace vellum {

/// Most pixels of a side, hundredths of a second of a delay, and plays.
inline constexpr std::uint32_t kMostGif = 65535;

/// A color table with 2^bits entries, those in use in front.
struct GifColors {
  Palette palette{};
  std::uint32_t count = 0;  ///< entries in use, the transparent one among them
  std::optional<std::uint8_t> transparent = {};
};
/// Bits of the least table that holds the colors: 1 to 8.
std::uint32_t table_bits(std::uint32_t colors);

/// Signature, logical screen and global color table.
void put_gif_head(Bytes& out, std::uint32_t width, std::uint32_t height, const GifColors& colors,
                  std::uint8_t background);
/// The extension that says how often it plays, 0 for ever.
void put_gif_plays(Bytes& out, std::uint32_t plays);
/// Comment extensions with this text.
void put_gif_comment(Bytes& out, std::span<const std::uint8_t> text);
inline constexpr std::uint8_t kGifTrailer = 0x3B;

enum class GifDisposal : std::uint8_t { None = 0, Keep = 1, Background = 2, Previous = 3 };

struct GifImage {
  std::uint32_t left = 0, top = 0, width = 0, height = 0;
  std::span<const std::uint8_t> indexes;             ///< one byte a pixel, rows from the top
  std::span<const PixelChoice> choices = {};         ///< in their place: then the data are made smaller
  const std::vector<std::size_t>* clears = nullptr;  ///< of these
  std::uint32_t delay = 0;                           ///< hundredths of a second
  GifDisposal disposal = GifDisposal::None;
  std::optional<std::uint8_t> transparent = {};
  const GifColors* local = nullptr;  ///< a table of its own
  std::uint8_t packed = 0;           ///< the low bits of the descriptor where it has none
};
/// Its control extension, descriptor, own table and data; its indexes are below 2^bits. Gives
/// those that were taken where there was a choice.
std::vector<std::uint8_t> put_gif_image(Bytes& out, const GifImage& image, std::uint32_t bits);

}  // namespace vellum
