// Pictures of fixed seeds, and comparing pictures byte for byte.
#pragma once

#include <gtest/gtest.h>

#include <random>

#include "image/picture.h"

namespace vellum::testing {

struct Shape {
  std::uint32_t width, height;
};
inline constexpr Shape kShapes[] = {{1, 1}, {1, 9}, {7, 5}, {8, 3}, {33, 3}, {600, 2}, {1031, 4}};
inline constexpr std::uint32_t kDepths[] = {1, 4, 8, 24, 32};

inline Palette random_palette(std::mt19937& random) {
  Palette palette;
  for (auto& byte : palette) byte = static_cast<std::uint8_t>(random());
  return palette;
}

/// Every value is as likely; alpha is 0, 255 or anything, a third each. Padding is zero.
inline Picture random_picture(std::mt19937& random, std::uint32_t width, std::uint32_t height,
                              std::uint32_t depth) {
  const Palette palette = random_palette(random);
  Picture picture = PictureCreate(width, height, &palette, depth);
  for (std::uint32_t y = 0; y < height; ++y)
    for (std::uint32_t x = 0; x < width; ++x) {
      Colour value = static_cast<Colour>(random());
      if (random() % 3 == 0) value |= 0xFF000000;
      if (random() % 3 == 0) value &= 0x00FFFFFF;
      PicturePutPixel(picture, x, y, value);
    }
  return picture;
}

/// Header, table, rows and padding: nothing may differ.
inline ::testing::AssertionResult same_block(const Picture& a, const Picture& b) {
  if (!a || !b) return ::testing::AssertionFailure() << "a picture is null: " << !a << !b;
  if (a.bits() != b.bits() || a.width() != b.width() || a.height() != b.height())
    return ::testing::AssertionFailure() << a.width() << "x" << a.height() << "x" << a.bits() << " and "
                                         << b.width() << "x" << b.height() << "x" << b.bits();
  const auto x = a.handle().bytes(), y = b.handle().bytes();
  const auto at = std::ranges::mismatch(x, y);
  if (at.in1 == x.end() && at.in2 == y.end()) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure()
         << "byte " << at.in1 - x.begin() << " of " << x.size() << " and " << y.size();
}

}  // namespace vellum::testing
