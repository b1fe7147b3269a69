#include "image/palette_from_pictures.h"

#include "image/picture_operations.h"
#include "image/quantize.h"

namespace vellum {
namespace {

/// A picture's colors in 24 bits, through its color table in every depth.
Picture true_colors(const Picture& picture) {
  return picture.bits() == 24
             ? picture
             : PictureToTrueColor(picture.bits() == 1 ? PictureToTrueColorAlpha(picture) : picture);
}

}  // namespace

PaletteColors palette_from_pictures(std::span<const Picture> pictures, std::uint32_t most, Host* host) {
  PaletteColors result;
  const std::uint32_t target = std::clamp(most, 2u, 256u);
  std::vector<Picture> frames;
  for (const Picture& picture : pictures)
    if (picture) frames.push_back(true_colors(picture));
  // Few colors stay as they are, which the octree alone doesn't promise.
  if (const auto count = few_colours(frames, target, result.palette))
    result.count = *count;
  else
    result.count = QuantizeFrames(frames, target, result.palette, host);
  return result;
}

PaletteColors palette_of_picture(const Picture& picture) {
  if (!picture || picture.bits() > 8) return palette_from_pictures({&picture, picture ? 1u : 0u}, 256);
  PaletteColors colors;
  colors.count = PictureGetPalette(picture, colors.palette);
  return colors;
}

}  // namespace vellum
