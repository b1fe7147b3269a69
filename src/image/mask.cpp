#include "image/mask.h"

#include <algorithm>
#include <vector>

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

void blur_row(const std::uint8_t* in, std::uint8_t* out, std::uint32_t count, std::uint32_t radius) {
  const BoxMean mean(radius);
  std::uint32_t sum = 0;
  for (std::uint32_t i = 0; i < std::min(radius, count); ++i) sum += in[i];
  for (std::uint32_t i = 0; i < count; ++i) {
    if (i + radius < count) sum += in[i + radius];
    out[i] = mean.of(sum);
    if (i >= radius) sum -= in[i - radius];
  }
}

/// Columns from `left` on, so few that their sums stay at hand.
void blur_columns(const Mask& in, Mask& out, std::uint32_t left, std::uint32_t count, std::uint32_t radius) {
  const BoxMean mean(radius);
  std::vector<std::uint32_t> sums(count);
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

}  // namespace

void blur_mask(Mask& mask, std::uint32_t radius) {
  if (radius == 0 || mask.values.empty()) return;
  constexpr std::uint32_t kColumns = 256;
  Mask other(mask.width, mask.height);
  for (int pass = 0; pass < 3; ++pass) {
    for_each_row((mask.width + kColumns - 1) / kColumns, std::size_t{kColumns} * mask.height,
                 [&](std::uint32_t strip) {
                   const std::uint32_t left = strip * kColumns;
                   blur_columns(mask, other, left, std::min(kColumns, mask.width - left), radius);
                 });
    for_each_row(mask.height, mask.width,
                 [&](std::uint32_t y) { blur_row(other.row(y), mask.row(y), mask.width, radius); });
  }
}

}  // namespace vellum
