// The built-in palettes against their description.
#include "image/builtin_palette.h"

#include <gtest/gtest.h>

namespace vellum {
namespace {

using Color = std::array<int, 3>;

Color color_at(const Palette& palette, std::size_t i) {
  return {palette[3 * i], palette[3 * i + 1], palette[3 * i + 2]};
}

TEST(BuiltInPalettes, EvenStepsHaveRedOutermostAndBlueInnermost) {
  struct Steps {
    int id;
    std::uint32_t count, bits;
    int red, green, blue;
  };
  const Steps rows[] = {{2, 32, 5, 4, 4, 2},  {3, 64, 6, 4, 4, 4},  {4, 128, 7, 4, 8, 4},
                        {5, 216, 8, 6, 6, 6}, {6, 256, 8, 8, 8, 4}, {9, 16777216, 24, 8, 8, 4}};
  for (const Steps& row : rows) {
    Palette palette;
    std::uint32_t bits = 0;
    EXPECT_EQ(BuiltInPalette(&palette, &bits, row.id), row.count);
    EXPECT_EQ(bits, row.bits) << row.id;
    const auto level = [](int i, int steps) { return i * 255 / (steps - 1); };
    std::size_t at = 0;
    for (int r = 0; r < row.red; ++r)
      for (int g = 0; g < row.green; ++g)
        for (int b = 0; b < row.blue; ++b)
          ASSERT_EQ(color_at(palette, at++),
                    (Color{level(r, row.red), level(g, row.green), level(b, row.blue)}))
              << row.id << ", entry " << at - 1;
    for (; at < 256; ++at) ASSERT_EQ(color_at(palette, at), (Color{0, 0, 0})) << row.id;
  }
}

TEST(BuiltInPalettes, GreysAndTheirCounts) {
  struct Greys {
    int id;
    std::uint32_t count, bits, entries;
    int (*grey)(int);
  };
  const Greys rows[] = {{0, 2, 1, 2, [](int i) { return i * 255; }},
                        {8, 256, 8, 256, [](int i) { return i; }},
                        {10, 16, 4, 16, [](int i) { return 17 * i; }},
                        {11, 16, 3, 8, [](int i) { return (2 * 255 * i + 7) / 14; }},
                        {12, 4, 2, 4, [](int i) { return 85 * i; }},
                        {7, 256, 8, 32, [](int i) { return i * 255 / 31; }}};
  for (const Greys& row : rows) {
    Palette palette;
    std::uint32_t bits = 0;
    EXPECT_EQ(BuiltInPalette(&palette, &bits, row.id), row.count);
    EXPECT_EQ(bits, row.bits) << row.id;
    for (std::uint32_t i = 0; i < row.entries; ++i) {
      const int grey = row.grey(static_cast<int>(i));
      EXPECT_EQ(color_at(palette, i), (Color{grey, grey, grey})) << row.id << ", entry " << i;
    }
  }
  EXPECT_EQ(BuiltInPalette(nullptr, nullptr, 13), 0u);
}

}  // namespace
}  // namespace vellum
