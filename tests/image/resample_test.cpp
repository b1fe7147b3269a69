// Resampling against the definition: a plain weighted sum of doubles for each channel, two passes.
#include "image/resample.h"

#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "image/lanes.h"
#include "image/picture_operations.h"
#include "image/png_encode.h"
#include "image/stored_image.h"
#include "random_pictures.h"

namespace vellum {
namespace {

using testing::same_block;

Picture noise(std::uint32_t width, std::uint32_t height, std::uint32_t bits, unsigned seed) {
  std::minstd_rand dice(seed);
  Palette palette;
  for (auto& value : palette) value = static_cast<std::uint8_t>(dice() >> 8);
  Picture picture = PictureCreate(width, height, &palette, bits);
  for (std::uint32_t y = 0; y < height; ++y)
    for (std::uint32_t x = 0; x < width; ++x) {
      const std::uint32_t alpha = dice() % 3 == 0 ? 0 : dice() % 2 ? 255 : dice() % 256;
      const auto color = static_cast<std::uint32_t>(dice());
      PicturePutPixel(picture, x, y, (color & 0xFFFFFF) | alpha << 24);
    }
  return picture;
}

/// Vectors of every processor, or the best of this one, while it lives.
struct WithoutAvx2 {
  explicit WithoutAvx2(bool without) { without_avx2 = without; }
  ~WithoutAvx2() { without_avx2 = false; }
};

// ------------------------------------------------------------------------------------ the plain
// implementation

const ResampleFilterRow& row_of(ResampleFilter filter) {
  return resample_filter_table()[static_cast<std::size_t>(filter)];
}

struct Sum {
  std::vector<std::pair<std::uint32_t, double>> parts;  ///< source position, weight
};

Sum plain_sum(std::uint32_t at, std::uint32_t source, std::uint32_t target, ResampleFilter filter,
              double blur) {
  const double scale = 1.0 * target / source, center = (at + 0.5) / scale;
  const double stretch = std::max(1 / scale, 1.0) * blur, support = stretch * row_of(filter).support;
  Sum sum;
  double total = 0;
  for (std::uint32_t j = 0; support >= 0.5 && j < source; ++j) {
    const double x = j + 0.5 - center, edge = std::abs(x) - support;
    const bool on_edge = std::abs(edge) < 1e-9, box = filter == ResampleFilter::Box;
    if (on_edge ? box && x > 0 : edge > 0) continue;
    sum.parts.emplace_back(j, box ? 1 : row_of(filter).kernel(x / stretch));
    total += sum.parts.back().second;
  }
  if (total == 0) return {{{std::min(static_cast<std::uint32_t>(center), source - 1), 1.0}}};
  for (auto& part : sum.parts) part.second /= total;
  return sum;
}

/// Channels of a pixel: color (red lowest) and, with 32 bits, alpha.
Colour summed(const Sum& sum, bool has_alpha, const std::function<Colour(std::uint32_t)>& pixel) {
  double channels[4] = {}, alpha = 0;
  for (const auto& [position, weight] : sum.parts) {
    const Colour value = pixel(position);
    const double share = has_alpha ? weight * alpha_of(value) : weight;
    alpha += share;
    for (int c = 0; c < 3; ++c) channels[c] += share * (value >> 8 * c & 255);
  }
  const auto byte = [](double v) { return static_cast<Colour>(std::clamp(std::floor(v + 0.5), 0.0, 255.0)); };
  const Colour a = has_alpha ? byte(alpha) : 0;
  if (has_alpha && a == 0) return 0;
  Colour result = a << 24;
  for (int c = 0; c < 3; ++c) result |= byte(has_alpha ? channels[c] / alpha : channels[c]) << 8 * c;
  return result;
}

Picture plain_pass(const Picture& source, std::uint32_t width, std::uint32_t height, ResampleFilter filter,
                   double blur) {
  Picture result = PictureCreate(width, height, nullptr, source.bits());
  const bool down = width == source.width();
  for (std::uint32_t i = 0; i < (down ? height : width); ++i) {
    const Sum sum = down ? plain_sum(i, source.height(), height, filter, blur)
                         : plain_sum(i, source.width(), width, filter, blur);
    for (std::uint32_t j = 0; j < (down ? width : height); ++j) {
      const Colour value = summed(sum, source.bits() == 32, [&](std::uint32_t at) {
        return PictureGetPixel(source, down ? j : at, down ? at : j);
      });
      PicturePutPixel(result, down ? j : i, down ? i : j, value);
    }
  }
  return result;
}

Picture plain(const Picture& source, std::uint32_t width, std::uint32_t height, ResampleFilter filter,
              double blur) {
  const bool down_first = (source.height() + height) * width <= (source.width() + width) * height;
  const Picture between = plain_pass(source, down_first ? source.width() : width,
                                     down_first ? height : source.height(), filter, blur);
  // One of the two passes of a square change would be taken for the other.
  return plain_pass(between, width, height, filter, blur);
}

std::size_t differences(const Picture& a, const Picture& b) {
  std::size_t count = 0;
  for (std::uint32_t y = 0; y < a.height(); ++y)
    for (std::uint32_t x = 0; x < a.width(); ++x)
      count += PictureGetPixel(a, x, y) != PictureGetPixel(b, x, y);
  return count;
}

TEST(Resample, IsTheWeightedSumToTheLastBit) {
  struct Size {
    std::uint32_t fromWidth, fromHeight, width, height;
  };
  const Size sizes[] = {{37, 29, 18, 14}, {37, 29, 74, 58}, {40, 13, 7, 61}, {1, 9, 5, 4},
                        {300, 3, 21, 9},  {17, 250, 40, 3}, {6, 6, 3, 12},   {1, 1, 9, 3},
                        {350, 90, 1, 1},  {9, 300, 6, 2},   {48, 30, 32, 20}};
  unsigned seed = 0;
  struct Form {
    std::uint32_t bits;
    bool opaque;
  };
  for (const auto& [bits, opaque] : {Form{24, false}, Form{32, false}, Form{32, true}})
    for (const Size& s : sizes)
      for (int number = 2; number < 16; ++number)
        for (const double blur : {1.0, 1.5, 0.3}) {
          const WithoutAvx2 guard(number % 2 == static_cast<int>(bits / 8) % 2);
          const ResampleFilter filter = resample_filter_of(number);
          Picture source = noise(s.fromWidth, s.fromHeight, bits, ++seed);
          if (opaque) source = PictureToTrueColorAlpha(source);
          const Picture result = PictureResample(source, s.width, s.height, filter, blur);
          ASSERT_TRUE(result);
          ASSERT_EQ(result.bits(), bits);
          EXPECT_EQ(differences(result, plain(source, s.width, s.height, filter, blur)), 0u)
              << s.fromWidth << 'x' << s.fromHeight << " to " << s.width << 'x' << s.height << ", filter "
              << static_cast<int>(filter) << ", blur " << blur << ", bits " << bits;
        }
}

TEST(Resample, EverySourcePixelWeighsIn) {
  for (int number = 2; number < 16; ++number)
    for (const auto& [source, target] :
         {std::pair{1920u, 1280u}, {1366u, 683u}, {1000u, 7u}, {999u, 998u}, {48u, 36u}, {17u, 40u}}) {
      const ResampleAxis axis = resample_axis(source, target, resample_filter_of(number), 1);
      std::vector<double> share(source);
      for (const auto& position : axis.positions)
        for (std::uint32_t k = 0; k < position.count; ++k)
          share[position.first + k] += std::abs(axis.weights_of(position)[k]);
      EXPECT_GT(std::ranges::min(share), 0.0) << number << ": " << source << " to " << target;
    }
}

/// A picture that came from a stream and whose rows are not in memory.
Picture cold_picture(const Picture& picture, const PngHeader& header, std::size_t missing) {
  auto stream = png_encode(header, picture, 1);
  stream.resize(stream.size() - missing);
  const std::size_t middle = stream.size() / 3;
  const auto owner = std::make_shared<const FileContent>(ChunkHandle::copy_of(stream, 0));
  const StoredImage::Bytes bytes(*owner);
  const std::vector pieces{bytes.first(middle), bytes.subspan(middle)};
  return Picture(
      kept_with_stream(png_expect(header, pieces, {}), header, pieces, owner, nullptr, StreamSeen::NotYet));
}

TEST(Resample, LargeImagesComeOutTheSameWhileTheirStreamsAreUnpacked) {
  struct Case {
    std::uint32_t bits;
    bool opaque;
    std::uint32_t width, height;
    ResampleFilter filter;
  };
  constexpr std::uint32_t kWidth = 701, kHeight = 4100;
  const Case cases[] = {{24, false, 350, 2050, ResampleFilter::Lanczos},
                        {24, false, 100, 900, ResampleFilter::Box},
                        {32, false, 300, 2000, ResampleFilter::Sinc},
                        {32, true, 701, 4101, ResampleFilter::Mitchell}};
  for (const Case& c : cases) {
    Picture source = noise(kWidth, kHeight, c.bits, c.width);
    // Its lower half alone, so that some bands are opaque and others aren't.
    for (std::uint32_t y = c.opaque ? kHeight / 2 : kHeight; y < kHeight; ++y)
      for (std::uint32_t x = 0; x < kWidth; ++x) source.edit_row(y)[4 * x + 3] = 255;
    const PngHeader header{kWidth, kHeight, 8, static_cast<std::uint8_t>(c.bits == 24 ? 2 : 6), 0, 0, 0};
    const Picture cold = cold_picture(source, header, 0);
    const Picture result = PictureResample(cold, c.width, c.height, c.filter);
    EXPECT_FALSE(cold.handle().at_hand()) << "unpacked whole: " << c.width << 'x' << c.height;
    EXPECT_TRUE(same_block(result, PictureResample(source, c.width, c.height, c.filter)))
        << c.bits << " bits to " << c.width << 'x' << c.height;
    EXPECT_TRUE(stored_image_of(cold.handle())->whole());
    if (c.opaque) continue;
    // Of one that is cut, what is there counts, as always.
    const Picture cut = cold_picture(source, header, source.handle().size() / 5);
    const Picture rest = PictureResample(cut, c.width, c.height, c.filter);
    EXPECT_TRUE(cut.handle().at_hand());
    EXPECT_TRUE(same_block(rest, PictureResample(PictureDuplicate(cut), c.width, c.height, c.filter)));
    EXPECT_FALSE(stored_image_of(cut.handle())->whole());
  }
}

TEST(Resample, MirrorAndResizeCommute) {
  // To or from an even number a box's ends lie on pixels, which go to one side.
  for (int number = 2; number < 16; ++number)
    for (const auto& [source, target] : {std::pair{99u, 33u}, {105u, 45u}, {61u, 97u}, {33u, 99u}}) {
      const Picture picture = noise(source, target, 24, static_cast<unsigned>(number));
      const ResampleFilter filter = resample_filter_of(number);
      const auto flipped = [](const Picture& p) { return PictureMirrorVertical(PictureMirrorHorizontal(p)); };
      const Picture a = PictureResample(flipped(picture), target, source, filter),
                    b = flipped(PictureResample(picture, target, source, filter));
      int most = 0;
      for (std::uint32_t y = 0; y < source; ++y)
        for (std::uint32_t x = 0; x < target; ++x)
          for (int c = 0; c < 24; c += 8)
            most = std::max(most, std::abs(static_cast<int>(PictureGetPixel(a, x, y) >> c & 255) -
                                           static_cast<int>(PictureGetPixel(b, x, y) >> c & 255)));
      EXPECT_LE(most, 2) << "halves may be rounded apart in both passes, filter " << number;
    }
}

TEST(Resample, DoesNotDependOnTheProcessor) {
  for (const std::uint32_t bits : {24u, 32u})
    for (const auto& [width, height] : {std::pair{523u, 401u}, {91u, 702u}, {1033u, 97u}})
      for (const ResampleFilter filter :
           {ResampleFilter::Box, ResampleFilter::Mitchell, ResampleFilter::Lanczos}) {
        const Picture source = noise(517, 389, bits, width);
        const Picture result = PictureResample(source, width, height, filter);
        const WithoutAvx2 guard(true);
        EXPECT_EQ(differences(result, PictureResample(source, width, height, filter)), 0u)
            << width << 'x' << height << ", filter " << static_cast<int>(filter) << ", bits " << bits;
      }
}

TEST(Resample, HalvesAreRoundedUp) {
  Picture source = PictureCreate(512, 2, nullptr, 24);
  for (std::uint32_t x = 0; x < 512; ++x) PicturePutPixel(source, x, 0, (x / 2) * 0x010101 + x % 2);
  for (std::uint32_t x = 0; x < 512; ++x) PicturePutPixel(source, x, 1, (x / 2) * 0x010101 + x % 2);
  const Picture result = PictureResample(source, 256, 2, ResampleFilter::Box);
  for (std::uint32_t x = 0; x < 255; ++x)
    ASSERT_EQ(PictureGetPixel(result, x, 1), x * 0x010101 + 1) << "red lies between two levels";
}

TEST(Resample, KernelsAreThoseOfTheTable) {
  struct Value {
    ResampleFilter filter;
    double x, value;
  };
  const Value values[] = {{ResampleFilter::Box, -0.5, 1},
                          {ResampleFilter::Box, 0.5, 0},
                          {ResampleFilter::Triangle, 0.25, 0.75},
                          {ResampleFilter::Hermite, 0.5, 0.5},
                          {ResampleFilter::Hanning, 0.5, 0.5},
                          {ResampleFilter::Hamming, 1, 0.08},
                          {ResampleFilter::Blackman, 0.5, 0.34},
                          {ResampleFilter::Gaussian, 0, 0.797884561},
                          {ResampleFilter::Quadratic, 0.5, 0.5},
                          {ResampleFilter::Quadratic, 1, 0.125},
                          {ResampleFilter::Cubic, 0, 2.0 / 3},
                          {ResampleFilter::Cubic, -1.5, 1.0 / 48},
                          {ResampleFilter::Catrom, 0.5, 0.5625},
                          {ResampleFilter::Catrom, 1.5, -0.0625},
                          {ResampleFilter::Mitchell, 0, 8.0 / 9},
                          {ResampleFilter::Mitchell, 1, 1.0 / 18},
                          {ResampleFilter::Mitchell, 2, 0},
                          {ResampleFilter::Lanczos, 0, 1},
                          {ResampleFilter::Lanczos, 1.5, -0.135095},
                          {ResampleFilter::Bessel, 0, 0.785398163},
                          {ResampleFilter::Bessel, 1.2196699, 0},
                          {ResampleFilter::Sinc, 0.5, 0.597473},
                          {ResampleFilter::Sinc, 4, 0}};
  for (const Value& v : values)
    EXPECT_NEAR(row_of(v.filter).kernel(v.x), v.value, 2e-6) << static_cast<int>(v.filter) << " at " << v.x;
}

TEST(Resample, SupportsBelowHalfAPixelTakeTheNearestOne) {
  const Picture source = noise(7, 5, 24, 1);
  for (const auto& [filter, blur] : {std::pair{ResampleFilter::Point, 1.0}, {ResampleFilter::Box, 0.4}}) {
    const Picture result = PictureResample(source, 16, 11, filter, blur);
    for (std::uint32_t y = 0; y < 11; ++y)
      for (std::uint32_t x = 0; x < 16; ++x)
        ASSERT_EQ(PictureGetPixel(result, x, y), PictureGetPixel(source, static_cast<int>((x + 0.5) * 7 / 16),
                                                                 static_cast<int>((y + 0.5) * 5 / 11)))
            << x << ',' << y;
  }
}

TEST(Resample, AutomaticGoesByTheArea) {
  const Picture source = noise(12, 12, 24, 5);
  EXPECT_EQ(differences(PictureResample(source, 24, 13, ResampleFilter::Automatic),
                        PictureResample(source, 24, 13, ResampleFilter::Mitchell)),
            0u);
  EXPECT_EQ(differences(PictureResample(source, 24, 6, ResampleFilter::Automatic),
                        PictureResample(source, 24, 6, ResampleFilter::Lanczos)),
            0u);
}

TEST(Resample, IndexedPicturesKeepDepthAndPalette) {
  for (const std::uint32_t bits : {1u, 4u, 8u})
    for (const ResampleFilter filter : {ResampleFilter::Point, ResampleFilter::Mitchell}) {
      const Picture source = noise(21, 10, bits, 7);
      const Picture result = PictureResample(source, 33, 30, filter);
      ASSERT_TRUE(result);
      EXPECT_EQ(result.bits(), bits);
      Palette before, after;
      PictureGetPalette(source, before);
      PictureGetPalette(result, after);
      EXPECT_EQ(before, after);
      EXPECT_EQ(PictureGetPixel(result, 0, 0), PictureGetPixel(source, 0, 0)) << "a corner of one color";
    }
}

TEST(Resample, PalettesKeepTheirTransparencyAndTheirCount) {
  // Entry 1 is transparent, the black ones behind the third are none of the picture's.
  const Palette palette = {200, 0, 0, 0, 255, 0, 0, 0, 200};
  const std::uint8_t table[] = {255, 0};
  Picture picture = PictureCreate(8, 8, &palette, 8);
  for (std::uint32_t y = 0; y < 8; ++y)
    for (std::uint32_t x = 0; x < 8; ++x) PicturePutPixel(picture, x, y, x < 4 ? 1 : y < 4 ? 0 : 2);
  const Picture result =
      PictureResample(picture, 4, 4, ResampleFilter::Triangle, 1, {.entries = 3, .transparency = table});
  ASSERT_EQ(result.bits(), 8u);
  for (std::uint32_t y = 0; y < 4; ++y)
    for (std::uint32_t x = 0; x < 4; ++x)
      EXPECT_EQ(PictureGetPixel(result, x, y), x < 2 ? 1u : y < 2 ? 0u : 2u) << x << ' ' << y;
}

TEST(Resample, TransparentPixelsLendNoColor) {
  Picture source = PictureCreateAlpha(2, 1);
  PicturePutPixel(source, 0, 0, 0xFF0000FF);
  PicturePutPixel(source, 1, 0, 0x0000FF00);
  const Picture result = PictureResample(source, 1, 1, ResampleFilter::Box);
  EXPECT_EQ(PictureGetPixel(result, 0, 0), 0x800000FFu);
}

TEST(Resample, SizesOutOfRangeGiveNothing) {
  const Picture source = noise(4, 4, 24, 1);
  for (const auto& [width, height] :
       {std::pair{0u, 5u}, {5u, 0u}, {1'000'001u, 1u}, {1'000'000u, 1'000'000u}, {0xFFFFFFFFu, 0xFFFFFFFFu}})
    EXPECT_FALSE(PictureResample(source, width, height, ResampleFilter::Box)) << width << 'x' << height;
  EXPECT_FALSE(PictureResample({}, 4, 4, ResampleFilter::Box));
  EXPECT_EQ(PictureScalePercent(source, 0, 1, ResampleFilter::Box).width(), 1u);
  EXPECT_EQ(PictureScalePercent(source, 112.5, 37.5, ResampleFilter::Point).width(), 5u);
}

}  // namespace
}  // namespace vellum
