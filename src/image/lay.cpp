#include "image/lay.h"

#include <algorithm>
#include <cstring>

#include "image/picture_operations.h"
#include "image/picture_rows.h"

namespace vellum {

void lay_straight(std::uint8_t* out, const std::uint8_t* color, std::uint32_t alpha) {
  const std::uint32_t above = alpha * 255, below = out[3] * (255 - alpha), both = above + below;
  for (int c = 0; c < 3; ++c)
    out[c] = static_cast<std::uint8_t>((color[c] * above + out[c] * below + both / 2) / both);
  out[3] = static_cast<std::uint8_t>((both + 127) / 255);
}

namespace {

void lay_pixel(std::uint8_t* out, bool deep, const std::uint8_t* color, std::uint32_t alpha, Lay how) {
  if (alpha == 255 && (how == Lay::Over || !deep)) {
    std::memcpy(out, color, 3);
    if (deep) out[3] = 255;
  } else if (deep && how == Lay::Over && out[3] != 255) {
    lay_straight(out, color, alpha);
  } else {
    for (int c = 0; c < 3; ++c) out[c] = blend_channel(color[c], out[c], alpha);
  }
}

}  // namespace

bool lay_picture(Picture& picture, std::int64_t x, std::int64_t y, const Picture& top, std::uint32_t percent,
                 Lay how) {
  if (picture.bits() < 24 || top.bits() < 24) return false;
  const std::int64_t left = std::max<std::int64_t>(x, 0), up = std::max<std::int64_t>(y, 0),
                     right = std::min<std::int64_t>(x + top.width(), picture.width()),
                     bottom = std::min<std::int64_t>(y + top.height(), picture.height());
  if (left >= right || up >= bottom || percent == 0) return true;
  const EditRows rows(picture);
  if (!rows) return false;
  const bool deep = picture.bits() == 32, clear = top.bits() == 32;
  const std::size_t out_bytes = deep ? 4 : 3, in_bytes = clear ? 4 : 3;
  const std::uint32_t whole = (255 * percent + 50) / 100;
  const std::size_t count = static_cast<std::size_t>(right - left);
  for (std::int64_t row = up; row < bottom; ++row) {
    std::uint8_t* out = rows[static_cast<std::size_t>(row)] + out_bytes * static_cast<std::size_t>(left);
    const std::uint8_t* in =
        top.row(static_cast<std::uint32_t>(row - y)) + in_bytes * static_cast<std::size_t>(left - x);
    if (whole == 255 && !clear && !deep) {
      std::memcpy(out, in, 3 * count);
      continue;
    }
    for (std::size_t i = 0; i < count; ++i, out += out_bytes, in += in_bytes) {
      const std::uint32_t alpha = !clear ? whole : percent == 100 ? in[3] : (in[3] * percent + 50) / 100;
      if (alpha != 0) lay_pixel(out, deep, in, alpha, how);
    }
  }
  return true;
}

}  // namespace vellum
