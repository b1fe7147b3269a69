#include "image/lay.h"

#include <algorithm>
#include <cstring>

#include "image/alpha_rows.h"
#include "image/alpha_runs.h"
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

/// The part of a rectangle at (x, y) that lies on a picture.
struct Overlap {
  std::int64_t left, up, right, bottom;

  Overlap(const Picture& picture, std::int64_t x, std::int64_t y, std::uint32_t width, std::uint32_t height)
      : left(std::max<std::int64_t>(x, 0)),
        up(std::max<std::int64_t>(y, 0)),
        right(std::min<std::int64_t>(x + width, picture.width())),
        bottom(std::min<std::int64_t>(y + height, picture.height())) {}
  bool empty() const { return left >= right || up >= bottom; }
};

/// Calls use(pixel, value of the mask) for each pixel under the mask that isn't 0.
template <class Use>
bool for_each_masked(Picture& picture, std::int64_t x, std::int64_t y, const Mask& mask, const Use& use) {
  const Overlap on(picture, x, y, mask.width, mask.height);
  if (on.empty()) return true;
  const EditRows rows(picture);
  if (!rows) return false;
  const std::size_t bytes = picture.bits() / 8;
  for (std::int64_t row = on.up; row < on.bottom; ++row) {
    std::uint8_t* out = rows[static_cast<std::size_t>(row)] + bytes * static_cast<std::size_t>(on.left);
    const std::uint8_t* in = mask.row(static_cast<std::uint32_t>(row - y)) + (on.left - x);
    for (std::int64_t i = on.left; i < on.right; ++i, out += bytes, ++in)
      if (*in != 0) use(out, *in);
  }
  return true;
}

/// Pixels with alpha over opaque ones of 24 bits.
void lay_row_on_24(std::uint8_t* out, const std::uint8_t* in, std::size_t width, std::uint32_t percent) {
  std::array<std::uint8_t, 4 * kPixelRun> pixels;
  for (std::size_t x = 0; x < width; x += kPixelRun, out += 3 * kPixelRun, in += 4 * kPixelRun) {
    const std::size_t count = std::min(kPixelRun, width - x);
    if (percent != 100 || !is_opaque_run(in, count)) {
      cover_row(pixels.data(), 4, out, count);
      lay_row(pixels.data(), in, count, percent, true);
      take_colors(out, pixels.data(), count);
    } else {
      take_colors(out, in, count);
    }
  }
}

}  // namespace

bool lay_picture(Picture& picture, std::int64_t x, std::int64_t y, const Picture& top, std::uint32_t percent,
                 Lay how) {
  if (picture.bits() < 24 || top.bits() < 24) return false;
  const Overlap on(picture, x, y, top.width(), top.height());
  if (on.empty() || percent == 0) return true;
  const EditRows rows(picture);
  if (!rows) return false;
  const bool deep = picture.bits() == 32, clear = top.bits() == 32;
  const std::size_t out_bytes = deep ? 4 : 3, in_bytes = clear ? 4 : 3;
  const std::uint32_t whole = (255 * percent + 50) / 100;
  const auto count = static_cast<std::size_t>(on.right - on.left);
  for (std::int64_t row = on.up; row < on.bottom; ++row) {
    std::uint8_t* out = rows[static_cast<std::size_t>(row)] + out_bytes * static_cast<std::size_t>(on.left);
    const std::uint8_t* in =
        top.row(static_cast<std::uint32_t>(row - y)) + in_bytes * static_cast<std::size_t>(on.left - x);
    if (whole == 255 && !clear && !deep) {
      std::memcpy(out, in, 3 * count);
      continue;
    }
    if (clear && deep) {
      lay_row(out, in, count, percent, how == Lay::Atop);
      continue;
    }
    if (clear) {
      lay_row_on_24(out, in, count, percent);
      continue;
    }
    for (std::size_t i = 0; i < count; ++i, out += out_bytes, in += in_bytes)
      if (whole != 0) lay_pixel(out, deep, in, whole, how);
  }
  return true;
}

bool lay_mask(Picture& picture, std::int64_t x, std::int64_t y, const Mask& mask, Colour color,
              std::uint32_t percent) {
  if (picture.bits() < 24) return false;
  const bool deep = picture.bits() == 32;
  const std::uint8_t bytes[] = {blue_of(color), green_of(color), red_of(color)};
  return for_each_masked(picture, x, y, mask, [&](std::uint8_t* out, std::uint32_t value) {
    const std::uint32_t alpha = percent == 100 ? value : (value * percent + 50) / 100;
    if (alpha != 0) lay_pixel(out, deep, bytes, alpha, Lay::Over);
  });
}

bool erase_mask(Picture& picture, std::int64_t x, std::int64_t y, const Mask& mask) {
  if (picture.bits() != 32) return true;
  return for_each_masked(picture, x, y, mask, [](std::uint8_t* out, std::uint32_t value) {
    out[3] = static_cast<std::uint8_t>((out[3] * (255 - value) + 127) / 255);
    if (out[3] == 0) out[0] = out[1] = out[2] = 0;
  });
}

}  // namespace vellum
