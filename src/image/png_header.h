// The image header of a PNG stream and the geometry that follows from it (PNG standard, "IHDR" and
// "Interlacing").
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "image/picture.h"

namespace vellum {

/// The IHDR fields, as in the file.
struct PngHeader {
  std::uint32_t width = 0, height = 0;  ///< pixels
  std::uint8_t bitDepth = 8;            ///< bits of a sample (of an index for color type 3)
  std::uint8_t colorType =
      2;  ///< 0 grey, 2 true color, 3 palette, 4 grey with alpha, 6 true color with alpha
  std::uint8_t compression = 0, filter = 0;
  std::uint8_t interlace = 0;  ///< 0 none, 1 Adam7

  bool operator==(const PngHeader&) const = default;
};

/// To and from the 13 bytes of an IHDR payload.
PngHeader parse_png_header(std::span<const std::uint8_t, 13> payload);
std::array<std::uint8_t, 13> png_header_payload(const PngHeader& header);

/// Samples of a pixel for a color type; 0 for a type that does not exist.
constexpr std::uint32_t png_samples(std::uint8_t colorType) {
  constexpr std::uint8_t samples[] = {1, 0, 3, 1, 2, 0, 4};
  return colorType < 7 ? samples[colorType] : 0;
}

/// Why a header can't be (a sentence part), or null for a valid one: sizes from 1 to the limit, a pair of
/// depth and type that exists, methods 0, interlace 0 or 1.
const char* png_header_fault(const PngHeader& header);

/// Bits of the picture that holds such an image: depths 1, 4 and 8 of grey and palette stay, 2 becomes 8,
/// 16-bit samples lose their low byte, grey with alpha becomes true color with alpha.
std::uint32_t png_picture_bits(const PngHeader& header);

/// The color table of a grey image without a PLTE: the built-in grey palette of its depth.
Palette png_grey_palette(std::uint8_t bitDepth);

/// One pass over an image: the pixels at x0 + i * dx, y0 + j * dy. An image that is not interlaced is one
/// pass of all.
struct PngPass {
  std::uint32_t x0, y0, dx, dy;
  std::uint32_t width,
      height;  ///< pixels of the pass; either may be 0, and the pass is then absent from the stream
};

/// The passes of an image, in the order of the stream.
struct PngPasses {
  std::array<PngPass, 7> passes;
  std::size_t count = 0;
  const PngPass* begin() const { return passes.data(); }
  const PngPass* end() const { return passes.data() + count; }
};
PngPasses png_passes(const PngHeader& header);

/// Bytes of a row of `width` pixels, without its filter byte.
std::uint64_t png_row_bytes(const PngHeader& header, std::uint32_t width);
/// Bytes of the whole filtered image: each row with its filter byte, over all passes.
std::uint64_t png_filtered_bytes(const PngHeader& header);
/// Whole bytes of a pixel, at least 1: how far back the filters look.
std::size_t png_filter_distance(const PngHeader& header);

}  // namespace vellum
