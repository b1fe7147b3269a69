#include "image/mask.h"

#include <algorithm>
#include <array>

#include "image/lanes.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

/// Means of boxes of values. What is divided is below 2^16 and the divisor below 2^9, so that a half more
/// than a whole number keeps the product of floats on the right side of each whole number.
struct BoxMean {
  explicit BoxMean(std::uint32_t radius) : half(radius), share(1.0f / static_cast<float>(2 * radius + 1)) {}
  std::uint8_t of(std::uint32_t sum) const {
    return static_cast<std::uint8_t>(static_cast<std::int32_t>(
        (static_cast<float>(static_cast<std::int32_t>(sum + half)) + 0.5f) * share));
  }

  std::uint32_t half;
  float share;
};

/// Columns that are summed side by side: so few that their sums stay at hand.
constexpr std::uint32_t kColumns = 256;

/// Columns from `left` on, at most kColumns.
VELLUM_INLINE void blur_some(const Mask& in, Mask& out, std::uint32_t left, std::uint32_t count,
                             std::uint32_t radius) {
  const BoxMean mean(radius);
  std::array<std::uint32_t, kColumns> sums{};
  const auto add = [&](std::uint32_t y) {
    const std::uint8_t* row = in.row(y) + left;
    for (std::uint32_t x = 0; x < count; ++x) sums[x] += row[x];
  };
  for (std::uint32_t y = 0; y < std::min(radius, in.height); ++y) add(y);
  for (std::uint32_t y = 0; y < in.height; ++y) {
    if (y + radius < in.height) add(y + radius);
    std::uint8_t* to = out.row(y) + left;
    for (std::uint32_t x = 0; x < count; ++x) to[x] = mean.of(sums[x]);
    if (y < radius) continue;
    const std::uint8_t* gone = in.row(y - radius) + left;
    for (std::uint32_t x = 0; x < count; ++x) sums[x] -= gone[x];
  }
}

VELLUM_AVX2 void blur_some_avx2(const Mask& in, Mask& out, std::uint32_t left, std::uint32_t count,
                                std::uint32_t radius) {
  blur_some(in, out, left, count, radius);
}

void blur_columns(const Mask& in, Mask& out, std::uint32_t left, std::uint32_t count, std::uint32_t radius) {
  return has_avx2() ? blur_some_avx2(in, out, left, count, radius) : blur_some(in, out, left, count, radius);
}

/// Columns become rows: of `width` x `height` values with `in_step` from a row to the next.
void transpose(const std::uint8_t* in, std::size_t in_step, std::uint32_t width, std::uint32_t height,
               std::uint8_t* out, std::size_t out_step) {
  std::uint8_t square[64];
  for (std::uint32_t y = 0; y < height; y += 8)
    for (std::uint32_t x = 0; x < width; x += 8) {
      const std::uint32_t wide = std::min(8u, width - x), high = std::min(8u, height - y);
      const std::uint8_t* from[8];
      for (std::uint32_t i = 0; i < 8; ++i) from[i] = in + in_step * (y + std::min(i, high - 1)) + x;
      std::uint8_t ends[8][8] = {};
      for (std::uint32_t i = 0; i < 8 && wide < 8; ++i) from[i] = std::copy_n(from[i], wide, ends[i]) - wide;
      transpose_8x8(from, square);
      for (std::uint32_t i = 0; i < wide; ++i)
        std::copy_n(square + 8 * i, high, out + out_step * (x + i) + y);
    }
}

/// Rows from `top` on, at most kColumns: as columns, whose sums go side by side.
void blur_rows(const Mask& in, Mask& out, std::uint32_t top, std::uint32_t count, std::uint32_t radius) {
  Mask turned(count, in.width), blurred(count, in.width);
  transpose(in.row(top), in.width, in.width, count, turned.row(0), count);
  blur_columns(turned, blurred, 0, count, radius);
  transpose(blurred.row(0), count, count, in.width, out.row(top), out.width);
}

}  // namespace

Mask alpha_of(const Picture& picture, std::uint32_t room) {
  const std::uint32_t width = picture.width();
  Mask mask(width + 2 * room, picture.height() + 2 * room);
  for (std::uint32_t y = 0; y < picture.height(); ++y) {
    std::uint8_t* out = mask.row(room + y) + room;
    const std::uint8_t* in = picture.row(y);
    if (picture.bits() != 32)
      std::fill_n(out, width, std::uint8_t{255});
    else
      for (std::uint32_t x = 0; x < width; ++x) out[x] = in[4 * x + 3];
  }
  return mask;
}

bool same_alpha(const Picture& a, const Picture& b) {
  if (a.width() != b.width() || a.height() != b.height()) return false;
  if (a.bits() != 32 && b.bits() != 32) return true;
  const auto bits_that_differ = [](const std::uint8_t* row, const std::uint8_t* other, std::size_t width) {
    std::uint8_t bits = 0;
    for (std::size_t x = 0; x < width; ++x)
      bits |= static_cast<std::uint8_t>(row[4 * x + 3] ^ (other ? other[4 * x + 3] : 255));
    return bits;
  };
  const Picture &deep = a.bits() == 32 ? a : b, &other = a.bits() == 32 ? b : a;
  for (std::uint32_t y = 0; y < a.height(); ++y)
    if (bits_that_differ(deep.row(y), other.bits() == 32 ? other.row(y) : nullptr, a.width()) != 0)
      return false;
  return true;
}

void blur_mask(Mask& mask, std::uint32_t radius) {
  if (radius == 0 || mask.values.empty()) return;
  constexpr std::uint32_t kRows = 64;
  Mask other(mask.width, mask.height);
  const auto strips = [](std::uint32_t length, std::uint32_t width, std::uint32_t of, const auto& blur) {
    for_each_row((length + of - 1) / of, std::size_t{of} * width,
                 [&](std::uint32_t strip) { blur(strip * of, std::min(of, length - strip * of)); });
  };
  for (int pass = 0; pass < 3; ++pass) {
    strips(mask.width, mask.height, kColumns,
           [&](std::uint32_t left, std::uint32_t count) { blur_columns(mask, other, left, count, radius); });
    strips(mask.height, mask.width, kRows,
           [&](std::uint32_t top, std::uint32_t count) { blur_rows(other, mask, top, count, radius); });
  }
}

}  // namespace vellum
