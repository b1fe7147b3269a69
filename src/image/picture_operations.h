// Operations that make a new picture from another, and drawing into one. Each leaves its source untouched and
// gives null when memory is exhausted or the source is null. Fast row loops give byte for byte what
// PictureGetPixel and PicturePutPixel define.
#pragma once

#include <cstdint>
#include <span>

#include "image/picture.h"

namespace vellum {

/// Pixels: left and top inclusive, right and bottom exclusive. May lie outside the picture.
struct PictureRect {
  std::int32_t left = 0, top = 0, right = 0, bottom = 0;
};

/// The grey of true color: R*77/255 + G*150/255 + B*28/255, each term truncated, modulo 256.
constexpr std::uint8_t grey_of(std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
  return static_cast<std::uint8_t>(red * 77 / 255 + green * 150 / 255 + blue * 28 / 255);
}

/// One channel composed: src*a/255 + dst*(255-a)/255, the two divisions truncated apart, so that an opaque
/// pixel comes through exactly.
constexpr std::uint8_t blend_channel(std::uint32_t src, std::uint32_t dst, std::uint32_t alpha) {
  return static_cast<std::uint8_t>(src * alpha / 255 + dst * (255 - alpha) / 255);
}

/// 24-bit copy. 1-bit sources become pure black and white by the bit alone, whatever their color table says;
/// 4 and 8 bits go through the table; 32-bit sources lose alpha without blending.
Picture PictureToTrueColor(const Picture& picture);
/// 32-bit copy with alpha 255 on every pixel, whatever the source's alpha: an opaque promotion. 1, 4 and 8
/// bits go through the color table.
Picture PictureToTrueColorAlpha(const Picture& picture);
/// 32-bit copy that applies a tRNS `table`. Indexed sources (1 bit too go through their color table): alpha
/// of index i is table[i], 255 behind the table's end. 24 bits: the six-byte form, whose bytes 1, 3, 5 are
/// the transparent red, green, blue; shorter tables make nothing transparent. 32 bits: a copy.
Picture PictureWithTransparency(const Picture& picture, std::span<const std::uint8_t> table);
/// 8 bits with the grey ramp. True color by `grey_of`; indexed pixels take the red component of their entry.
Picture PictureToGrey(const Picture& picture);
/// 8 bits with the grey ramp: the alpha channel; all 255 for a source without alpha.
Picture PictureAlphaToGrey(const Picture& picture);
/// 24 bits: a 32-bit source composed over the solid `colour`; null for any other source.
Picture PictureFlattenAlpha(const Picture& picture, Colour colour);
/// The same, and a 24-bit source comes through as a copy. Null for indexed sources.
Picture PictureFlatten(const Picture& picture, Colour colour);
/// 24 bits of the smaller width and height: a*(255-amount)/255 + b*amount/255 for each channel. `amount`
/// 0..255.
Picture PictureCrossFade(const Picture& a, const Picture& b, std::uint32_t amount);
/// The rectangle with the source's depth and palette; pixels outside the source read as all ones.
Picture PictureCrop(const Picture& picture, const PictureRect& rect);
/// A new canvas of the same depth filled with `colour` (an index for indexed pictures), the source at (x, y),
/// clipped.
Picture PictureExtendCanvas(const Picture& picture, std::uint32_t width, std::uint32_t height, std::int32_t x,
                            std::int32_t y, Colour colour);
Picture PictureMirrorHorizontal(const Picture& picture);
Picture PictureMirrorVertical(const Picture& picture);

/// Copies a rectangle of raw values; pixels outside either picture are skipped. Both have the same depth and
/// palette.
void PictureBlit(Picture& dst, std::int32_t dst_x, std::int32_t dst_y, const Picture& src, std::int32_t src_x,
                 std::int32_t src_y, std::int32_t width, std::int32_t height);
/// Alpha-composes the top left `width` x `height` of `src` (24 or 32 bits; alpha 255 for 24) over `dst` (24
/// or 32 bits) at (x, y). Alpha of a 32-bit destination becomes a + da*(255-a)/255.
void PictureComposite(Picture& dst, std::int32_t x, std::int32_t y, const Picture& src, std::int32_t width,
                      std::int32_t height);
void PictureFillRect(Picture& picture, std::int32_t x, std::int32_t y, std::int32_t width,
                     std::int32_t height, Colour colour);
/// A hollow rectangle whose border of `thickness` pixels lies inside it.
void PictureFrameRect(Picture& picture, std::int32_t x, std::int32_t y, std::int32_t width,
                      std::int32_t height, Colour colour, std::int32_t thickness);

}  // namespace vellum
