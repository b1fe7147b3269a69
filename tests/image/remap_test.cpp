// Matching and dithering against plain loops over pixels.
#include "image/remap.h"
#include "image/dither.h"

#include "base/string_table.h"
#include "image/picture_operations.h"
#include "image/settings.h"
#include "image/to_colors.h"
#include "random_pictures.h"

namespace vellum {
namespace {

using testing::random_palette;
using testing::random_picture;
using testing::same_block;

/// The same loops, one pixel at a time, on RGB values.
struct Plain {
  Palette palette;
  std::uint32_t count;

  bool grey_cut() const { return count == 2 && exact(0, 0, 0) && exact(255, 255, 255); }

  std::uint32_t nearest(int r, int g, int b) const {
    std::uint32_t found = 0;
    long best = 1'000'000;
    for (std::uint32_t i = 0; i < count; ++i) {
      const long dr = r - palette[3 * i], dg = g - palette[3 * i + 1], db = b - palette[3 * i + 2];
      if (3 * dr * dr + 4 * dg * dg + 2 * db * db < best) {
        best = 3 * dr * dr + 4 * dg * dg + 2 * db * db;
        found = i;
      }
    }
    return found;
  }
  std::optional<std::uint32_t> exact(int r, int g, int b) const {
    for (std::uint32_t i = 0; i < count; ++i)
      if (palette[3 * i] == r && palette[3 * i + 1] == g && palette[3 * i + 2] == b) return i;
    return std::nullopt;
  }
  std::uint32_t fast(int r, int g, int b) const {
    return exact(r, g, b).value_or(nearest(r & 248, g & 248, b & 248));
  }
  std::uint32_t pick(int r, int g, int b) const {
    return settings::FastRemap ? fast(r, g, b) : nearest(r, g, b);
  }
};

struct Rgb {
  int r, g, b;
};

Rgb color_at(const Picture& picture, std::int64_t x, std::int64_t y) {
  const Colour value = PictureGetPixel(picture, x, y);
  if (picture.bits() > 8) return {red_of(value), green_of(value), blue_of(value)};
  Palette own;
  PictureGetPalette(picture, own);
  return {own[3 * value], own[3 * value + 1], own[3 * value + 2]};
}

Picture plain_remap(const Picture& picture, const Plain& plain, std::uint32_t depth) {
  Picture result = PictureCreate(picture.width(), picture.height(), &plain.palette, depth);
  for (std::uint32_t y = 0; y < picture.height(); ++y)
    for (std::uint32_t x = 0; x < picture.width(); ++x) {
      const Rgb c = color_at(picture, x, y);
      const std::uint32_t grey =
          grey_of(static_cast<unsigned>(c.r), static_cast<unsigned>(c.g), static_cast<unsigned>(c.b));
      const int level = grey >= 129 ? 255 : 0;
      const std::uint32_t index = plain.grey_cut()      ? *plain.exact(level, level, level)
                                  : picture.bits() <= 8 ? plain.nearest(c.r, c.g, c.b)
                                                        : plain.pick(c.r, c.g, c.b);
      PicturePutPixel(result, x, y, index);
    }
  return result;
}

Picture plain_dither(const Picture& picture, const Plain& plain, std::uint32_t depth) {
  const auto width = static_cast<std::int64_t>(picture.width()),
             height = static_cast<std::int64_t>(picture.height());
  Picture result = PictureCreate(picture.width(), picture.height(), &plain.palette, depth);
  // Row 0 of these is the bottom row of the picture.
  std::vector<std::array<int, 3>> errors(static_cast<std::size_t>(width * height));
  const auto spread = [&](std::int64_t x, std::int64_t y, const std::array<int, 3>& d, int part) {
    if (x < 0 || x >= width || y >= height) return;
    for (std::size_t c = 0; c < 3; ++c)
      errors[static_cast<std::size_t>(y * width + x)][c] += d[c] * part / 16;
  };
  for (std::int64_t y = 0; y < height; ++y)
    for (std::int64_t x = 0; x < width; ++x) {
      const Rgb c = color_at(picture, x, height - 1 - y);
      const auto& e = errors[static_cast<std::size_t>(y * width + x)];
      const auto held = [](int v) { return std::clamp(v, 0, 255); };
      const int r = held(c.r + e[0]), g = held(c.g + e[1]), b = held(c.b + e[2]);
      const std::uint32_t i = plain.pick(r, g, b);
      PicturePutPixel(result, x, height - 1 - y, i);
      const std::array<int, 3> d = {r - plain.palette[3 * i], g - plain.palette[3 * i + 1],
                                    b - plain.palette[3 * i + 2]};
      spread(x + 1, y, d, 7);
      if (x >= 2) spread(x - 1, y + 1, d, 3);
      spread(x + 1, y + 1, d, 1);
      spread(x, y + 1, d, 5);
    }
  return result;
}

Picture plain_dither_black_and_white(const Picture& picture, const Plain& plain) {
  const auto width = static_cast<std::int64_t>(picture.width()),
             height = static_cast<std::int64_t>(picture.height());
  std::vector<int> greys;
  for (std::int64_t y = height; y-- > 0;)
    for (std::int64_t x = 0; x < width; ++x) {
      const Rgb c = color_at(picture, x, y);
      greys.push_back(
          grey_of(static_cast<unsigned>(c.r), static_cast<unsigned>(c.g), static_cast<unsigned>(c.b)));
    }
  const auto [low, high] = std::ranges::minmax(greys);
  const auto spread = [&](std::int64_t x, std::int64_t y, int amount) {
    if (x < 0 || x >= width || y >= height) return;
    int& grey = greys[static_cast<std::size_t>(y * width + x)];
    grey = std::clamp(grey + amount, 0, 255);
  };
  Picture result = PictureCreate(picture.width(), picture.height(), &plain.palette, 1);
  for (std::int64_t y = 0; y < height; ++y)
    for (std::int64_t x = 0; x < width; ++x) {
      const int value = std::clamp(greys[static_cast<std::size_t>(y * width + x)] * 32 / 27, 1, 254);
      const bool white = value >= (low + high) / 2;
      PicturePutPixel(result, x, height - 1 - y, white ? plain.pick(255, 255, 255) : plain.pick(0, 0, 0));
      const int e = (value - (white ? high : low)) / 16;
      spread(x + 1, y, 7 * e);
      if (x >= 2) spread(x - 1, y + 1, 3 * e);
      spread(x, y + 1, 5 * e);
      spread(x + 1, y + 1, e);
    }
  return result;
}

TEST(Remap, NearestColorIsTheFirstExactOneElseTheLeastWeightedDistance) {
  const Palette palette = {10, 10, 10, 200, 0, 0, 10, 10, 10, 0, 200, 0, 0, 0, 200};
  struct Case {
    std::uint32_t red, green, blue, count, index;
  };
  for (const Case& c : {Case{10, 10, 10, 5, 0},
                        {200, 0, 0, 5, 1},
                        {180, 20, 20, 5, 1},
                        {9, 11, 10, 5, 0},
                        {0, 0, 199, 5, 4},
                        {0, 0, 199, 2, 0},
                        {255, 255, 255, 0, 0},
                        {0, 200, 0, 500, 3}})
    EXPECT_EQ(NearestPaletteIndex(c.red, c.green, c.blue, palette, c.count), c.index)
        << c.red << ' ' << c.count;
}

TEST(Remap, EveryDepthAndPaletteSizeAgreesWithThePixelLoops) {
  std::mt19937 random(7);
  for (const int fast : {0, 1}) {
    settings::FastRemap = fast;
    for (const std::uint32_t depth : testing::kDepths)
      for (const std::uint32_t colors : {0u, 1u, 2u, 3u, 16u, 17u, 216u, 256u})
        for (const auto& [width, height] : {testing::Shape{1, 1}, {2, 5}, {33, 9}}) {
          Plain plain{random_palette(random), colors};
          if (colors == 0)
            plain = {random() % 2 ? Palette{255, 255, 255} : Palette{0, 0, 0, 255, 255, 255}, 2};
          const Picture picture = random_picture(random, width, height, depth);
          const std::uint32_t result_depth = picture_bits(depth_of_colors(plain.count));
          const auto where = ::testing::Message() << depth << " bits to " << colors << (fast ? " fast" : "");
          EXPECT_TRUE(same_block(RemapPicture(picture, plain.palette, plain.count, kRemapColors),
                                 plain_remap(picture, plain, result_depth)))
              << where;
          const Picture dithered = DitherPicture(picture, plain.palette, plain.count, kRemapColors);
          if (depth == 1) {
            EXPECT_FALSE(dithered) << where;
            continue;
          }
          EXPECT_TRUE(same_block(dithered, plain.grey_cut() ? plain_dither_black_and_white(picture, plain)
                                                            : plain_dither(picture, plain, result_depth)))
              << where;
        }
  }
  settings::FastRemap = 0;
}

TEST(Remap, LargePicturesInBandsAgreeWithThePixelLoops) {
  std::mt19937 random(9);
  const Picture picture = random_picture(random, 1200, 700, 24);
  Plain plain{random_palette(random), 250};
  // Crowded colors: cells then have more candidates than fit one block.
  for (std::size_t i = 0; i < 3 * 100; ++i) plain.palette[i] = static_cast<std::uint8_t>(128 + random() % 12);
  const GivenColors given{plain.palette, 250};
  EXPECT_TRUE(same_block(to_colors(picture, given, false), plain_remap(picture, plain, 8)));
  EXPECT_TRUE(same_block(to_colors(picture, given, true), plain_dither(picture, plain, 8)));
  Ditherer ditherer(plain.palette, 250, false, 0);
  for (const Picture& next :
       {picture, random_picture(random, 37, 22, 24), random_picture(random, 40, 3, 24)}) {
    std::vector<std::uint8_t> indexes(std::size_t{next.width()} * next.height());
    ditherer.dither(next, indexes);
    const Picture expected = plain_dither(next, plain, 8);
    for (std::uint32_t y = 0; y < next.height(); ++y)
      ASSERT_EQ(std::memcmp(indexes.data() + std::size_t{y} * next.width(), expected.row(y), next.width()), 0)
          << y;
  }
}

TEST(Remap, FlagsTellCountsFromDepthsAndStopWhenAsked) {
  std::mt19937 random(8);
  const Picture picture = random_picture(random, 20, 70, 24);
  const Palette palette = random_palette(random);
  EXPECT_EQ(RemapPicture(picture, palette, 4, 0).bits(), 4u);
  EXPECT_EQ(RemapPicture(picture, palette, 5, kRemapColors).bits(), 4u);
  EXPECT_TRUE(same_block(RemapPicture(picture, palette, 4, 0), to_colors(picture, {palette, 16}, false)));
  EXPECT_EQ(RemapPicture(picture, palette, 257, kRemapColors).bits(), 24u);
  Host host;
  std::string told;
  host.progress_begin = [&](std::string_view caption) { told += caption; };
  host.stop_requested = [] { return true; };
  EXPECT_FALSE(RemapPicture(picture, palette, 8, kRemapProgress | kRemapCancel, &host));
  EXPECT_FALSE(DitherPicture(picture, palette, 8, kRemapProgress | kRemapCancel, &host));
  EXPECT_TRUE(RemapPicture(picture, palette, 8, 0, &host)) << "it was not allowed to stop";
  EXPECT_EQ(told, "RemappingDithering");
}

/// A picture of exactly these colors, in each form that can hold it: indexed with them in another order, 24
/// bits, 32 bits with holes of stray colors.
std::vector<Picture> pictures_of_colors(std::mt19937& random, const Palette& palette, std::uint32_t colors) {
  constexpr std::uint32_t kWidth = 37, kHeight = 29;
  Palette turned{};
  for (std::uint32_t i = 0; i < colors; ++i) std::copy_n(&palette[3 * (colors - 1 - i)], 3, &turned[3 * i]);
  std::vector<Picture> pictures = {PictureCreate(kWidth, kHeight, &turned, depth_of_colors(colors)),
                                   PictureCreate(kWidth, kHeight, nullptr, 24),
                                   PictureCreateAlpha(kWidth, kHeight)};
  for (std::uint32_t y = 0; y < kHeight; ++y)
    for (std::uint32_t x = 0; x < kWidth; ++x) {
      const std::uint32_t at = y * kWidth + x, i = at < colors ? at : random() % colors;
      const Colour color = make_colour(palette[3 * i], palette[3 * i + 1], palette[3 * i + 2], 255);
      PicturePutPixel(pictures[0], x, y, colors - 1 - i);
      PicturePutPixel(pictures[1], x, y, color);
      PicturePutPixel(pictures[2], x, y,
                      at >= colors && random() % 4 == 0 ? static_cast<Colour>(random() & 0x7FFFFFFF) : color);
    }
  return pictures;
}

TEST(ToColors, WhatThePaletteHoldsComesBackEqual) {
  std::mt19937 random(10);
  for (const int fast : {0, 1})
    for (const std::uint32_t colors : {1u, 2u, 3u, 16u, 17u, 255u, 256u})
      for (const bool hole : {false, true})
        for (const bool dither : {false, true}) {
          if (hole && colors == 256) continue;
          settings::FastRemap = fast;
          GivenColors given{random_palette(random), colors + (hole ? 1 : 0)};
          if (colors == 2 && fast) given.palette = {255, 255, 255};
          if (hole) given.alpha.assign(colors + 1, 255);
          if (hole) given.alpha.back() = 0;
          const auto pictures = pictures_of_colors(random, given.palette, colors);
          for (std::size_t form = 0; form < (hole ? 3u : 2u); ++form) {
            const Picture& picture = pictures[form];
            const Picture result = to_colors(picture, given, dither);
            ASSERT_EQ(result.bits(), picture_bits(depth_of_colors(given.count)));
            int wrong = 0;
            for (std::uint32_t y = 0; y < picture.height(); ++y)
              for (std::uint32_t x = 0; x < picture.width(); ++x) {
                const Colour index = PictureGetPixel(result, x, y), before = PictureGetPixel(picture, x, y);
                const bool clear = form == 2 && alpha_of(before) < 128;
                const Rgb a = color_at(picture, x, y), b = color_at(result, x, y);
                wrong += clear ? index != colors : a.r != b.r || a.g != b.g || a.b != b.b || index >= colors;
              }
            EXPECT_EQ(wrong, 0) << colors << " colors, form " << form << (hole ? ", holes" : "")
                                << (dither ? ", dithered" : "") << (fast ? ", fast" : "");
          }
        }
  settings::FastRemap = 0;
}

TEST(ToColors, IndexesThatMeanTheColorsAreCopied) {
  std::mt19937 random(11);
  GivenColors given{random_palette(random), 16};
  std::copy_n(&given.palette[0], 3, &given.palette[21]);  // the same color twice
  const Picture picture = random_picture(random, 33, 9, 4);
  Picture same = picture;
  PictureSetPalette(same, given.palette);
  EXPECT_TRUE(same_block(to_colors(same, given, true), same));
}

}  // namespace
}  // namespace vellum
