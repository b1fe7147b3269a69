// Every operation against its definition in terms of PictureGetPixel and PicturePutPixel.
#include "image/picture_operations.h"
#include "image/alpha_rows.h"
#include "image/hue_shift.h"
#include "image/lanes.h"
#include "image/lay.h"
#include "image/orientation.h"
#include "image/rotate.h"

#include <array>
#include <cmath>
#include <numbers>
#include <random>

#include "random_pictures.h"

namespace vellum {
namespace {

using testing::kDepths;
using testing::kShapes;
using testing::random_picture;
using testing::same_block;

Palette grey_palette() {
  Palette palette;
  for (std::size_t i = 0; i < 768; ++i) palette[i] = static_cast<std::uint8_t>(i / 3);
  return palette;
}

Palette palette_of(const Picture& picture) {
  Palette palette;
  PictureGetPalette(picture, palette);
  return palette;
}

/// The color that a pixel shows, with alpha.
Colour shown(const Picture& picture, std::int64_t x, std::int64_t y) {
  if (picture.bits() > 8) return PictureGetPixelOpaque(picture, x, y);
  const Palette palette = palette_of(picture);
  const std::size_t i = 3 * PictureGetPixel(picture, x, y);
  return make_colour(palette[i], palette[i + 1], palette[i + 2], 255);
}

Colour true_colour(const Picture& picture, std::int64_t x, std::int64_t y) {
  if (picture.bits() == 1) return PictureGetPixel(picture, x, y) ? 0xFFFFFF : 0;
  return shown(picture, x, y);
}

Colour blended(Colour src, Colour dst, std::uint32_t alpha) {
  return make_colour(
      blend_channel(red_of(src), red_of(dst), alpha), blend_channel(green_of(src), green_of(dst), alpha),
      blend_channel(blue_of(src), blue_of(dst), alpha), alpha + alpha_of(dst) * (255 - alpha) / 255);
}

/// The picture that a definition of its pixels gives.
template <class Define>
Picture defined(std::uint32_t width, std::uint32_t height, const Palette& palette, std::uint32_t depth,
                const Define& define) {
  Picture picture = PictureCreate(width, height, &palette, depth);
  for (std::int64_t y = 0; y < height; ++y)
    for (std::int64_t x = 0; x < width; ++x) PicturePutPixel(picture, x, y, define(x, y));
  return picture;
}

template <class Define>
Picture like(const Picture& picture, std::uint32_t depth, const Define& define) {
  return defined(picture.width(), picture.height(),
                 depth == picture.bits() ? palette_of(picture) : grey_palette(), depth, define);
}

/// Sets every bit of the rows that belongs to no pixel: no operation may pass it on.
void soil_padding(Picture& picture) {
  for (std::uint32_t y = 0; y < picture.height(); ++y) {
    std::uint8_t* row = picture.edit_row(y);
    for (std::size_t bit = std::size_t{picture.width()} * picture.bits(); bit < 8 * picture.stride(); ++bit)
      row[bit / 8] = static_cast<std::uint8_t>(row[bit / 8] | 0x80 >> bit % 8);
  }
}

/// Calls `check` with random pictures of every depth and shape.
template <class Check>
void for_every_picture(const Check& check) {
  std::mt19937 random(20240611);
  for (const std::uint32_t depth : kDepths)
    for (const auto& shape : kShapes) {
      SCOPED_TRACE(::testing::Message() << shape.width << "x" << shape.height << "x" << depth);
      Picture picture = random_picture(random, shape.width, shape.height, depth);
      soil_padding(picture);
      const Picture before = PictureDuplicate(picture);
      check(picture, random);
      EXPECT_TRUE(same_block(picture, before)) << "the source was touched";
    }
}

TEST(PictureConvert, GivesWhatThePixelsDefine) {
  for_every_picture([](const Picture& p, std::mt19937&) {
    EXPECT_TRUE(
        same_block(PictureToTrueColor(p), like(p, 24, [&](auto x, auto y) { return true_colour(p, x, y); })));
    EXPECT_TRUE(same_block(PictureToTrueColorAlpha(p),
                           like(p, 32, [&](auto x, auto y) { return shown(p, x, y) | 0xFF000000; })));
    const auto grey = [&](auto x, auto y) -> Colour {
      const Colour c = shown(p, x, y);
      return p.bits() < 9 ? red_of(c) : grey_of(red_of(c), green_of(c), blue_of(c));
    };
    Picture expected = like(p, 8, grey);
    PictureSetPalette(expected, grey_palette());
    EXPECT_TRUE(same_block(PictureToGrey(p), expected));
    expected = like(p, 8, [&](auto x, auto y) { return p.bits() == 32 ? alpha_of(shown(p, x, y)) : 255; });
    PictureSetPalette(expected, grey_palette());
    EXPECT_TRUE(same_block(PictureAlphaToGrey(p), expected));
  });
}

TEST(PictureConvert, GreyOfKnownColours) {
  Palette palette{200, 0, 0, 255, 255, 255};
  EXPECT_EQ(PictureGetPixel(PictureToGrey(PictureCreate(1, 1, &palette, 8)), 0, 0), 200u);
  EXPECT_EQ(PictureGetPixel(PictureToGrey(PictureCreateFilled(1, 1, 0xFFFFFF)), 0, 0), 255u);
  // 200*77/255 = 60, 100*150/255 = 58, 50*28/255 = 5.
  EXPECT_EQ(PictureGetPixel(PictureToGrey(PictureCreateFilled(1, 1, make_colour(200, 100, 50))), 0, 0), 123u);
}

TEST(PictureConvert, Transparency) {
  for_every_picture([](const Picture& p, std::mt19937& random) {
    const Colour key = PictureGetPixel(p, p.width() / 2, 0) & 0xFFFFFF;
    const std::uint8_t form[] = {9, red_of(key), 9, green_of(key), 9, blue_of(key)};
    std::vector<std::uint8_t> table(p.bits() < 9 ? random() % (p.colours() + 2) : 6);
    for (auto& alpha : table) alpha = static_cast<std::uint8_t>(random());
    if (p.bits() == 24) table.assign(form, form + 6);
    const auto alpha = [&](std::int64_t x, std::int64_t y) -> Colour {
      const Colour value = PictureGetPixel(p, x, y);
      if (p.bits() == 32) return alpha_of(value);
      if (p.bits() == 24) return value == key ? 0 : 255;
      return value < table.size() ? table[value] : 255;
    };
    const auto expected =
        like(p, 32, [&](auto x, auto y) { return (shown(p, x, y) & 0xFFFFFF) | alpha(x, y) << 24; });
    EXPECT_TRUE(same_block(PictureWithTransparency(p, table), expected));
    if (p.bits() != 24) return;
    EXPECT_TRUE(same_block(PictureWithTransparency(p, std::span(form).first(5)), PictureToTrueColorAlpha(p)));
  });
}

TEST(PictureAlpha, FlattenAndCrossFade) {
  for_every_picture([](const Picture& p, std::mt19937& random) {
    const Colour ground = static_cast<Colour>(random()) & 0xFFFFFF;
    const auto flat = [&](auto x, auto y) {
      const Colour c = shown(p, x, y);
      return blended(c, ground, alpha_of(c));
    };
    const Picture expected = like(p, 24, flat);
    EXPECT_TRUE(p.bits() == 32 ? same_block(PictureFlattenAlpha(p, ground), expected)
                               : ::testing::AssertionResult(!PictureFlattenAlpha(p, ground)));
    EXPECT_TRUE(p.bits() > 8 ? same_block(PictureFlatten(p, ground), expected)
                             : ::testing::AssertionResult(!PictureFlatten(p, ground)));
    const Picture q = random_picture(random, p.width() + 3, p.height() > 2 ? p.height() - 1 : 2, 24);
    for (const std::uint32_t amount : {0u, 1u, 128u, 254u, 255u})
      EXPECT_TRUE(
          same_block(PictureCrossFade(p, q, amount),
                     defined(p.width(), std::min(p.height(), q.height()), {}, 24, [&](auto x, auto y) {
                       return blended(PictureGetPixel(q, x, y), true_colour(p, x, y), amount);
                     })));
  });
}

TEST(PictureAlpha, EveryPairOfValueAndAlphaIsExact) {
  Picture src = PictureCreateAlpha(256, 256);
  for (std::uint32_t y = 0; y < 256; ++y)
    for (std::uint32_t x = 0; x < 256; ++x) PicturePutPixel(src, x, y, make_colour(x, 255 - x, x ^ 85, y));
  for (const Colour ground : {0u, 0xFFFFFFu, 0x80FE01u})
    EXPECT_TRUE(same_block(PictureFlattenAlpha(src, ground), like(src, 24, [&](auto x, auto y) {
                             const Colour c = PictureGetPixel(src, x, y);
                             return blended(c, ground, alpha_of(c));
                           })));
}

/// Placements of a small thing on a picture: inside, over every edge, outside, far outside.
std::vector<std::int32_t> places(std::uint32_t size) {
  const auto n = static_cast<std::int32_t>(size);
  return {-n - 40, -3, -1, 0, 1, n / 2, n - 1, n, 2'000'000'000};
}

TEST(PictureAlpha, Composite) {
  std::mt19937 random(7);
  for (const std::uint32_t dst_depth : {24u, 32u})
    for (const std::uint32_t src_depth : {24u, 32u}) {
      const Picture ground = random_picture(random, 23, 11, dst_depth),
                    src = random_picture(random, 9, 14, src_depth);
      for (const std::int32_t x : places(23))
        for (const std::int32_t y : places(11))
          for (const std::int32_t size : {-1, 5, 40}) {
            Picture dst = ground;
            PictureComposite(dst, x, y, src, size, size);
            EXPECT_TRUE(same_block(dst, like(ground, dst_depth,
                                             [&](std::int64_t u, std::int64_t v) {
                                               const Colour old = PictureGetPixel(ground, u, v);
                                               if (u < x || v < y || u - x >= std::min(size, 9) ||
                                                   v - y >= std::min(size, 14))
                                                 return old;
                                               const Colour over = PictureGetPixelOpaque(src, u - x, v - y);
                                               return blended(over, old, alpha_of(over));
                                             })))
                << x << "," << y << " " << size << " depths " << dst_depth << " " << src_depth;
          }
    }
  Picture wide = random_picture(random, 1300, 3, 32);
  const Picture before = wide;
  PictureComposite(wide, 1, 1, wide, 1300, 3);
  EXPECT_TRUE(same_block(wide, like(before, 32,
                                    [&](std::int64_t u, std::int64_t v) {
                                      const Colour old = PictureGetPixel(before, u, v),
                                                   over = PictureGetPixel(before, u - 1, v - 1);
                                      return u < 1 || v < 1 ? old : blended(over, old, alpha_of(over));
                                    })))
      << "a picture over itself";
}

TEST(PictureGeometry, CropInsideAndOutside) {
  for_every_picture([](const Picture& p, std::mt19937& random) {
    const auto w = static_cast<std::int32_t>(p.width()), h = static_cast<std::int32_t>(p.height());
    std::vector<PictureRect> rects = {
        {0, 0, w, h}, {-5, -2, w + 3, h + 1}, {w, h, w + 9, h + 2}, {-90, -9, -50, -3}};
    for (int i = 0; i < 20; ++i) {
      const auto left = static_cast<std::int32_t>(random() % (p.width() + 8)) - 4;
      const auto top = static_cast<std::int32_t>(random() % (p.height() + 8)) - 4;
      rects.push_back({left, top, left + 1 + static_cast<std::int32_t>(random() % (p.width() + 4)),
                       top + 1 + static_cast<std::int32_t>(random() % (p.height() + 4))});
    }
    for (const PictureRect& r : rects)
      EXPECT_TRUE(
          same_block(PictureCrop(p, r),
                     defined(static_cast<std::uint32_t>(r.right - r.left),
                             static_cast<std::uint32_t>(r.bottom - r.top), palette_of(p), p.bits(),
                             [&](auto x, auto y) { return PictureGetPixel(p, r.left + x, r.top + y); })))
          << r.left << "," << r.top << " to " << r.right << "," << r.bottom;
    EXPECT_FALSE(PictureCrop(p, {3, 0, 3, 1}));
    EXPECT_FALSE(PictureCrop(p, {0, 2, 5, 1}));
    EXPECT_FALSE(PictureCrop(p, {-2'000'000'000, 0, 2'000'000'000, 1}));
  });
}

TEST(PictureGeometry, MirrorsAndCanvas) {
  for_every_picture([](const Picture& p, std::mt19937& random) {
    const std::int64_t right = p.width() - 1, bottom = p.height() - 1;
    EXPECT_TRUE(same_block(PictureMirrorHorizontal(p), like(p, p.bits(), [&](auto x, auto y) {
                             return PictureGetPixel(p, right - x, y);
                           })));
    EXPECT_TRUE(same_block(PictureMirrorVertical(p), like(p, p.bits(), [&](auto x, auto y) {
                             return PictureGetPixel(p, x, bottom - y);
                           })));
    const auto colour = static_cast<Colour>(random());
    for (const std::int32_t at : {-4, 0, 3})
      EXPECT_TRUE(same_block(PictureExtendCanvas(p, p.width() + 2, p.height() + 5, at, at / 2, colour),
                             defined(p.width() + 2, p.height() + 5, palette_of(p), p.bits(),
                                     [&](std::int64_t x, std::int64_t y) {
                                       const std::int64_t u = x - at, v = y - at / 2;
                                       const bool in = u >= 0 && v >= 0 && u <= right && v <= bottom;
                                       return in ? PictureGetPixel(p, u, v) : colour;
                                     })));
  });
}

TEST(PictureDraw, Blit) {
  std::mt19937 random(11);
  for (const std::uint32_t depth : kDepths) {
    const Picture ground = random_picture(random, 41, 7, depth), src = random_picture(random, 37, 9, depth);
    for (const std::int32_t dst_x : places(41))
      for (const std::int32_t src_x : places(37))
        for (const std::int32_t shift : {-2, 0, 3}) {
          Picture dst = ground;
          PictureBlit(dst, dst_x, shift, src, src_x, 1 - shift, 30, 6);
          EXPECT_TRUE(same_block(
              dst, like(ground, depth,
                        [&](std::int64_t x, std::int64_t y) {
                          const std::int64_t i = x - dst_x, k = y - shift, u = src_x + i, v = 1 - shift + k;
                          const bool in =
                              i >= 0 && k >= 0 && i < 30 && k < 6 && u >= 0 && v >= 0 && u < 37 && v < 9;
                          return in ? PictureGetPixel(src, u, v) : PictureGetPixel(ground, x, y);
                        })))
              << depth << ": " << src_x << " to " << dst_x;
        }
  }
}

TEST(PictureDraw, FillAndFrame) {
  std::mt19937 random(12);
  for (const std::uint32_t depth : kDepths) {
    const Picture ground = random_picture(random, 41, 13, depth);
    for (const std::int32_t x : places(41))
      for (const std::int32_t width : {-4, 0, 1, 9, 50, 2'000'000'000})
        for (const std::int32_t thickness : {-1, 0, 1, 2, 5}) {
          const auto colour = static_cast<Colour>(random());
          const auto in_rect = [&](std::int64_t u, std::int64_t v, std::int64_t inset) {
            return u >= x + inset && u < std::int64_t{x} + width - inset && v >= -1 + inset && v < 10 - inset;
          };
          Picture filled = ground, framed = ground;
          PictureFillRect(filled, x, -1, width, 11, colour);
          EXPECT_TRUE(same_block(filled, like(ground, depth, [&](auto u, auto v) {
                                   return in_rect(u, v, 0) ? colour : PictureGetPixel(ground, u, v);
                                 })));
          PictureFrameRect(framed, x, -1, width, 11, colour, thickness);
          EXPECT_TRUE(same_block(framed, like(ground, depth,
                                              [&](auto u, auto v) {
                                                const bool border = thickness > 0 && in_rect(u, v, 0) &&
                                                                    !in_rect(u, v, thickness);
                                                return border ? colour : PictureGetPixel(ground, u, v);
                                              })))
              << x << " " << width << " " << thickness;
        }
  }
}

// Large pictures are worked on in bands, on several threads.
TEST(PictureOperations, EveryRowOfALargePictureIsDone) {
  std::mt19937 random(13);
  Picture picture = PictureCreate(1201, 1100, nullptr, 32);
  for (std::uint32_t y = 0; y < picture.height(); ++y)
    std::generate_n(picture.edit_row(y), picture.stride(),
                    [&] { return static_cast<std::uint8_t>(random()); });
  const auto flatten = [](const Picture& p) { return PictureFlattenAlpha(p, 0x336699); };
  const auto opaque = [](const Picture& p) { return PictureToTrueColorAlpha(PictureToGrey(p)); };
  for (const auto& operation : {+flatten, +opaque, &PictureToTrueColor, &PictureMirrorHorizontal}) {
    const Picture whole = operation(picture);
    for (std::int32_t y = 0; y < 1100; ++y)
      ASSERT_TRUE(same_block(PictureCrop(whole, {0, y, 1201, y + 1}),
                             operation(PictureCrop(picture, {0, y, 1201, y + 1}))));
  }
}

TEST(PictureOperations, PicturesWithoutRowsGiveNull) {
  for (const Picture& empty : {Picture(), PictureCreateHeaderOnly(90, 90, nullptr, 32)}) {
    for (const auto operation : {PictureToTrueColor, PictureToTrueColorAlpha, PictureToGrey,
                                 PictureAlphaToGrey, PictureMirrorHorizontal, PictureMirrorVertical})
      EXPECT_FALSE(operation(empty));
    EXPECT_FALSE(PictureWithTransparency(empty, {}));
    EXPECT_FALSE(PictureFlatten(empty, 0));
    EXPECT_FALSE(PictureCrossFade(empty, PictureCreate(2, 2, nullptr, 24), 9));
    EXPECT_FALSE(PictureCrop(empty, {0, 0, 1, 1}));
    EXPECT_FALSE(PictureExtendCanvas(empty, 2, 2, 0, 0, 0));
    Picture dst = empty;
    PictureFillRect(dst, 0, 0, 5, 5, 1);
    PictureBlit(dst, 0, 0, PictureCreate(2, 2, nullptr, 32), 0, 0, 2, 2);
    PictureComposite(dst, 0, 0, PictureCreate(2, 2, nullptr, 32), 2, 2);
  }
}

TEST(Rotate, QuartersAreExactAndOtherAnglesKeepWhatTheyTurn) {
  Picture picture = PictureCreateFilled(40, 25, 0);
  picture = PictureToTrueColor(picture);
  PictureFillRect(picture, 30, 10, 6, 5, make_colour(255, 0, 0, 255));
  // A quarter counterclockwise takes what is right to the top.
  const Picture quarter = rotated(picture, 90, 0);
  ASSERT_EQ(quarter.width(), 25u);
  ASSERT_EQ(quarter.height(), 40u);
  EXPECT_EQ(PictureGetPixel(quarter, 12, 6) & 0xFF, 255u);
  const auto weight = [](const Picture& p, double& x, double& y) {
    double sum = x = y = 0;
    for (std::uint32_t row = 0; row < p.height(); ++row)
      for (std::uint32_t column = 0; column < p.width(); ++column) {
        const double red = PictureGetPixel(p, column, row) & 0xFF;
        sum += red, x += red * (column + 0.5), y += red * (row + 0.5);
      }
    x = x / sum - p.width() / 2.0, y = y / sum - p.height() / 2.0;
    return sum;
  };
  double x0 = 0, y0 = 0;
  const double whole = weight(picture, x0, y0);
  for (int angle = 0; angle < 360; angle += 7) {
    const Picture turned = rotated(picture, angle, 0);
    const auto [width, height] = rotated_size(40, 25, angle);
    ASSERT_EQ(turned.width(), width);
    ASSERT_EQ(turned.height(), height);
    double x = 0, y = 0;
    EXPECT_NEAR(weight(turned, x, y) / whole, 1, 0.02) << angle;
    const double a = angle * 3.14159265358979 / 180;
    EXPECT_NEAR(x, x0 * std::cos(a) + y0 * std::sin(a), 0.7) << angle;
    EXPECT_NEAR(y, y0 * std::cos(a) - x0 * std::sin(a), 0.7) << angle;
  }
}

/// Rows of pixels of four channels, and what lies around them.
struct PlainPicture {
  using Pixel = std::array<int, 4>;
  std::vector<std::vector<Pixel>> rows;
  Pixel around{};

  PlainPicture turned() const {
    PlainPicture result{{}, around};
    for (std::size_t x = 0; x < rows[0].size(); ++x) {
      result.rows.emplace_back();
      for (const auto& row : rows) result.rows.back().push_back(row[x]);
    }
    return result;
  }
  /// Each row moved by `factor` for every row that it is away from the middle, in 256ths of a pixel.
  PlainPicture sheared(double factor) const {
    const long count = static_cast<long>(rows.size()), width = static_cast<long>(rows[0].size());
    const long margin = static_cast<long>(std::ceil(std::abs(factor) * static_cast<double>(count) / 2)) + 1;
    PlainPicture result{{}, around};
    for (const auto& row : rows) {
      const double pixels =
          factor * (static_cast<double>(&row - rows.data()) + 0.5 - static_cast<double>(count) / 2);
      long whole = static_cast<long>(std::floor(pixels));
      int part = static_cast<int>(std::lround((pixels - std::floor(pixels)) * 256));
      if (part == 256) ++whole, part = 0;
      const auto at = [&](long x) { return x < 0 || x >= width ? around : row[static_cast<std::size_t>(x)]; };
      result.rows.emplace_back();
      for (long x = -margin; x < width + margin; ++x) {
        const Pixel here = at(x - whole), before = at(x - whole - 1);
        Pixel mixed{};
        for (std::size_t c = 0; c < 4; ++c)
          mixed[c] = (here[c] * (256 - part) + before[c] * part + 128) / 256;
        result.rows.back().push_back(mixed);
      }
    }
    return result;
  }
};

TEST(Rotate, IsThreePlainShearsOfPixelsThatWeighAsMuchAsTheirAlpha) {
  std::minstd_rand dice(3);
  constexpr Colour kGround = 0x102030;
  for (const auto& [w, h] : {std::pair(1u, 1u), {1u, 9u}, {7u, 1u}, {19u, 13u}, {40u, 70u}})
    for (const bool deep : {false, true})
      for (const int angle : {1, 30, 45, 46, 133, 200, 314, 359}) {
        without_avx2 = angle % 2 != 0;
        Picture picture = PictureCreate(w, h, nullptr, deep ? 32 : 24);
        for (std::uint32_t i = 0; i < w * h; ++i)
          PicturePutPixel(picture, i % w, i / w, static_cast<Colour>(dice()) | (dice() % 3 ? 0xFF000000 : 0));
        int rest = 360 - angle, quarters = 0;  // clockwise
        for (; rest > 45; rest -= 90) ++quarters;
        const Picture upright = rotated(picture, (360 - 90 * quarters) % 360, kGround);
        PlainPicture plain;
        if (!deep) plain.around = {0x30, 0x20, 0x10, 255};
        for (std::uint32_t y = 0; y < upright.height(); ++y) {
          plain.rows.emplace_back();
          for (std::uint32_t x = 0; x < upright.width(); ++x) {
            const Colour c = PictureGetPixel(upright, x, y);
            const int a = deep ? static_cast<int>(c >> 24) : 255;
            const auto weighed = [&](int channel) { return (channel * a + 127) / 255; };
            plain.rows.back().push_back({weighed(red_of(c)), weighed(green_of(c)), weighed(blue_of(c)), a});
          }
        }
        const double turn = rest * std::numbers::pi / 180, along = -std::tan(turn / 2);
        plain = plain.sheared(along).turned().sheared(std::sin(turn)).turned().sheared(along);
        const Picture made = rotated(picture, angle, kGround);
        const std::size_t left = (plain.rows[0].size() - made.width()) / 2,
                          top = (plain.rows.size() - made.height()) / 2;
        for (std::uint32_t y = 0; y < made.height(); ++y)
          for (std::uint32_t x = 0; x < made.width(); ++x) {
            PlainPicture::Pixel expected = plain.rows[top + y][left + x];
            const int a = expected[3];
            for (std::size_t c = 0; c < 3; ++c)
              expected[c] = a == 0 ? 0 : std::min(255, static_cast<int>(expected[c] * 255.0 / a + 0.5));
            const Colour c = PictureGetPixel(made, x, y);
            const PlainPicture::Pixel found{red_of(c), green_of(c), blue_of(c),
                                            deep ? static_cast<int>(c >> 24) : 255};
            ASSERT_EQ(found, expected)
                << w << " x " << h << ", " << deep << ", " << angle << ": " << x << ", " << y;
          }
      }
  without_avx2 = false;
}

TEST(AlphaRows, AreTheRoundedQuotientsOfAllColorsAndAlphas) {
  constexpr std::size_t kWidth = 261;  // a rest behind whole vectors
  for (const bool plain : {false, true})
    for (int alpha = 0; alpha < 256; ++alpha)
      for (const int below : {0, 1, 7, 128, 254, 255}) {
        std::vector<std::uint8_t> in, weighed, straight, laid, out(4 * kWidth);
        for (std::size_t x = 0; x < kWidth; ++x) {
          const int both = alpha * 255 + below * (255 - alpha);
          for (const std::size_t step : {1u, 3u, 7u}) {
            const int c = static_cast<int>(x * step % 256);
            in.push_back(static_cast<std::uint8_t>(c));
            weighed.push_back(static_cast<std::uint8_t>((c * alpha + 127) / 255));
            straight.push_back(
                static_cast<std::uint8_t>(alpha == 0 ? 0 : std::min((c * 510 + alpha) / (2 * alpha), 255)));
            laid.push_back(static_cast<std::uint8_t>(both == 0 ? 0 : (c * alpha * 255 + both / 2) / both));
          }
          for (auto* row : {&in, &weighed, &straight}) row->push_back(static_cast<std::uint8_t>(alpha));
          laid.push_back(static_cast<std::uint8_t>((both + 127) / 255));
          out[4 * x + 3] = static_cast<std::uint8_t>(below);
        }
        without_avx2 = plain;
        lay_over_black(out.data(), in.data(), kWidth);
        ASSERT_EQ(out, laid) << alpha << " over " << below;
        weigh_row(out.data(), in.data(), kWidth);
        ASSERT_EQ(out, weighed) << alpha;
        straighten_row(in.data(), kWidth);
        ASSERT_EQ(in, straight) << alpha;
      }
  without_avx2 = false;
}

TEST(AlphaRows, LayAsSinglePixelsAreLaid) {
  std::minstd_rand dice(9);
  const auto any = [&] {
    std::vector<std::uint8_t> row(4 * 40'003);
    for (std::uint8_t& byte : row) byte = static_cast<std::uint8_t>(dice() >> 8);
    // Most pixels are opaque or clear.
    for (std::size_t i = 3; i < row.size(); i += 4)
      if (dice() % 3 != 0) row[i] = i / 400 % 3 == 0 || dice() % 2 == 0 ? 255 : 0;
    return row;
  };
  for (const std::uint32_t percent : {100u, 0u, 1u, 50u, 99u})
    for (const bool atop : {false, true})
      for (const bool plain : {false, true}) {
        std::vector<std::uint8_t> out = any(), expected = out;
        const std::vector<std::uint8_t> in = any();
        for (std::size_t i = 0; i < out.size(); i += 4) {
          const std::uint32_t alpha = (in[i + 3] * percent + 50) / 100;
          if (alpha != 0 && !atop && expected[i + 3] != 255) {
            lay_straight(&expected[i], &in[i], alpha);
            continue;
          }
          for (std::size_t c = i; c < i + 3; ++c) expected[c] = blend_channel(in[c], expected[c], alpha);
        }
        without_avx2 = plain;
        lay_row(out.data(), in.data(), out.size() / 4, percent, atop);
        ASSERT_EQ(out, expected) << percent << ", " << atop << ", " << plain;
      }
  without_avx2 = false;
}

TEST(Orientation, MovesEachPixelToItsPlace) {
  std::mt19937 random(11);
  for (const auto& [w, h] : kShapes)
    for (const std::uint32_t bits : kDepths)
      for (int orientation = 1; orientation <= 8; ++orientation) {
        const Picture picture = random_picture(random, w, h, bits), made = oriented(picture, orientation);
        const bool swaps = orientation > 4;
        ASSERT_EQ(made.width(), swaps ? h : w);
        for (std::uint32_t y = 0; y < made.height(); ++y)
          for (std::uint32_t x = 0; x < made.width(); ++x) {
            // The sides of the picture at which its first row and its first column are seen.
            constexpr bool kAcross[] = {false, true, true, false, false, true, true, false},
                           kDown[] = {false, false, true, true, false, false, true, true};
            const std::uint32_t across = kAcross[orientation - 1] ? made.width() - 1 - x : x,
                                down = kDown[orientation - 1] ? made.height() - 1 - y : y;
            ASSERT_EQ(PictureGetPixel(made, x, y),
                      swaps ? PictureGetPixel(picture, down, across) : PictureGetPixel(picture, across, down))
                << bits << " bits, " << orientation << ": " << x << ", " << y;
          }
      }
}

TEST(HueShift, OfARowIsThatOfEachColor) {
  std::minstd_rand dice(5);
  constexpr HueShift kShifts[] = {{0, 0.3, 0},       {0, -1, 0},       {0, -0.25, 0.5},
                                  {0, 1, -0.07},     {0.5, 0, 0},      {-1.0 / 3, 0.1, 0},
                                  {1.0 / 360, 0, 0}, {-0.5, -0.4, -1}, {61.0 / 360, 1, 0.99}};
  for (const HueShift& shift : kShifts)
    for (const std::size_t bytes : {3u, 4u})
      for (const bool plain : {false, true}) {
        // Any colors, and such as are grey, full, or have two channels alike.
        std::vector<std::uint8_t> row(bytes * 20011);
        for (std::size_t i = 0; i < row.size(); ++i)
          row[i] = dice() % 4 == 0   ? static_cast<std::uint8_t>(255 * (dice() & 1))
                   : dice() % 3 == 0 ? row[i < bytes ? i : i - bytes]
                   : dice() % 3 == 0 ? row[i == 0 ? i : i - 1]
                                     : static_cast<std::uint8_t>(dice() >> 8);
        std::vector<std::uint8_t> expected = row;
        for (std::size_t i = 0; i < row.size(); i += bytes) shift_color(&expected[i], shift);
        without_avx2 = plain;
        shift_row(row.data(), row.size() / bytes, bytes, shift);
        ASSERT_EQ(row, expected) << &shift - kShifts << ", " << bytes << ", " << plain;
      }
  without_avx2 = false;
}

}  // namespace
}  // namespace vellum
