#include "image/reduce_to_palette.h"

#include "image/palette_match.h"
#include "image/picture_rows.h"
#include "image/quantize.h"

namespace vellum {

Picture reduce_to_palette(const Picture& picture) {
  if (!has_rows(picture) || picture.bits() != 24) return {};
  Palette palette;
  const std::uint32_t count = QuantizePicture(picture, 256, palette);
  return count == 0 ? Picture()
                    : match_to_palette(picture, palette, count,
                                       count <= 2    ? 1
                                       : count <= 16 ? 4
                                                     : 8);
}

}  // namespace vellum
