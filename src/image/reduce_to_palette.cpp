#include "image/reduce_to_palette.h"

#include "image/picture_rows.h"
#include "image/quantize.h"
#include "image/to_colors.h"

namespace vellum {

Picture reduce_to_palette(const Picture& picture) {
  if (!has_rows(picture) || picture.bits() != 24) return {};
  GivenColors colors;
  colors.count = QuantizePicture(picture, 256, colors.palette);
  return colors.count == 0 ? Picture() : to_colors(picture, colors, false);
}

}  // namespace vellum
