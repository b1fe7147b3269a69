#include "operations/cover.h"

#include <algorithm>
#include <cmath>

#include "image/picture_operations.h"
#include "image/resample.h"

namespace vellum {

Picture covering(const Picture& picture, const Extent& size) {
  const double scale = std::max(1.0 * size.width / picture.width(), 1.0 * size.height / picture.height());
  const auto side = [&](std::uint32_t length, std::uint32_t least) {
    return std::max(least, static_cast<std::uint32_t>(std::lround(length * scale)));
  };
  const Picture large = PictureResample(picture, side(picture.width(), size.width),
                                        side(picture.height(), size.height), ResampleFilter::Automatic);
  if (!large) return {};
  const auto left = static_cast<std::int32_t>((large.width() - size.width) / 2),
             top = static_cast<std::int32_t>((large.height() - size.height) / 2);
  return PictureCrop(large, {left, top, left + static_cast<std::int32_t>(size.width),
                             top + static_cast<std::int32_t>(size.height)});
}

}  // namespace vellum
