#include "image/palette_from_pictures.h"

#include <algorithm>

#include "image/picture_operations.h"

namespace vellum {

PaletteColors palette_from_pictures(std::span<const Picture> pictures, std::uint32_t colors, Host* host,
                                    const PaletteMethod& method) try {
  std::vector<Picture> given(pictures.begin(), pictures.end());
  std::erase_if(given, [](const Picture& picture) { return !picture; });
  Host nobody;
  return superpalette(
      given.size(), [&](std::size_t i) { return given[i]; }, colors, host ? *host : nobody, method);
} catch (const std::bad_alloc&) {
  return {};
}

PaletteColors palette_of_picture(const Picture& picture) {
  if (!picture || picture.bits() > 8) return palette_from_pictures({&picture, picture ? 1u : 0u}, 256);
  PaletteColors colors;
  colors.count = PictureGetPalette(picture, colors.palette);
  return colors;
}

}  // namespace vellum
