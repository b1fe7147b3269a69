// The quantizer against a plain tree that is walked down with every pixel.
#include "image/quantize.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <random>
#include <set>

#include "image/lanes.h"
#include "image/picture_operations.h"
#include "image/superpalette.h"

namespace vellum {
namespace {

// ------------------------------------------------------------------------------------ the plain
// implementation

struct PlainNode {
  std::array<std::unique_ptr<PlainNode>, 8> children;
  double count = 0, error = 0, sums[3] = {};
};

struct PlainTree {
  int depth = 0;
  PlainNode root;
  unsigned colors = 0;
  double threshold = 0, next = 0;

  explicit PlainTree(unsigned target) {
    for (unsigned rest = target; rest != 0; rest >>= 2) ++depth;
    depth = std::clamp(depth, 2, 8);
  }

  void add(const std::array<int, 3>& color) {
    PlainNode* node = &root;
    double middle[3] = {127.5, 127.5, 127.5}, step = 128;
    for (int level = 1; level <= depth; ++level) {
      step /= 2;
      std::size_t child = 0;
      for (int c = 0; c < 3; ++c) {
        const int bit = color[static_cast<std::size_t>(c)] >> (8 - level) & 1;
        child = 2 * child + static_cast<std::size_t>(bit);
        middle[c] += bit ? step : -step;
      }
      auto& slot = node->children[child];
      if (!slot) {
        slot = std::make_unique<PlainNode>();
        colors += level == depth;
      }
      node = slot.get();
      double error = 0;
      for (int c = 0; c < 3; ++c) {
        const double d = color[static_cast<std::size_t>(c)] - middle[c];
        error += d * d;
      }
      node->error += error;
      root.error += error;
    }
    node->count += 1;
    for (std::size_t c = 0; c < 3; ++c) node->sums[c] += color[c];
  }

  void prune(PlainNode& parent, std::size_t child) {
    const std::unique_ptr<PlainNode> node = std::move(parent.children[child]);
    for (std::size_t i = 0; i < 8; ++i)
      if (node->children[i]) prune(*node, i);
    parent.count += node->count;
    for (std::size_t c = 0; c < 3; ++c) parent.sums[c] += node->sums[c];
  }

  bool walk(PlainNode& node) {
    for (std::size_t i = 0; i < 8; ++i)
      if (node.children[i] && walk(*node.children[i])) prune(node, i);
    if (&node != &root && node.error <= threshold) return true;
    if (node.count > 0) {
      ++colors;
      next = std::min(next, node.error);
    }
    return false;
  }

  std::vector<std::array<int, 3>> reduced(unsigned target) {
    next = 0;
    while (colors > target) {
      threshold = next;
      next = root.error - 1;
      colors = 0;
      walk(root);
    }
    std::vector<std::array<int, 3>> palette;
    collect(root, palette);
    return palette;
  }

  static void collect(const PlainNode& node, std::vector<std::array<int, 3>>& palette) {
    for (const auto& child : node.children)
      if (child) collect(*child, palette);
    if (node.count == 0) return;
    const auto channel = [&](int c) {
      return static_cast<int>(
          (static_cast<std::int64_t>(node.count) / 2 + static_cast<std::int64_t>(node.sums[c])) /
          static_cast<std::int64_t>(node.count));
    };
    palette.push_back({channel(0), channel(1), channel(2)});
  }
};

Colour colour_of(std::minstd_rand& dice, int style, std::uint32_t x, std::uint32_t y) {
  const auto noise = [&](unsigned n) { return static_cast<std::uint32_t>(dice()) % n; };
  if (style == 0) return make_colour(noise(256), noise(256), noise(256));
  if (style == 1) return make_colour((x * 3 + noise(5)) & 255, (y * 2) & 255, (x + y) & 255);
  return make_colour(120 + noise(16), 120 + noise(16), 120 + noise(16));
}

TEST(Quantize, MakesThePaletteOfThePlainTree) {
  std::minstd_rand dice(1);
  for (const std::uint32_t target : {256u, 255u, 200u, 64u, 63u, 17u, 16u, 5u, 3u, 2u, 1u})
    for (int style = 0; style < 3; ++style) {
      without_avx2 = style == 1;
      Picture picture = PictureCreate(97, 61, nullptr, 24);
      PlainTree plain(target);
      for (std::uint32_t y = 0; y < 61; ++y)
        for (std::uint32_t x = 0; x < 97; ++x) {
          const Colour colour = colour_of(dice, style, x, y);
          PicturePutPixel(picture, x, y, colour);
          plain.add({red_of(colour), green_of(colour), blue_of(colour)});
        }
      const auto expected = plain.reduced(target);
      Palette palette;
      const std::uint32_t count = QuantizePicture(picture, target, palette);
      ASSERT_EQ(count, expected.size()) << target << ", style " << style;
      ASSERT_LE(count, target);
      for (std::uint32_t i = 0; i < count; ++i)
        ASSERT_EQ((std::array<int, 3>{palette[3 * i], palette[3 * i + 1], palette[3 * i + 2]}), expected[i])
            << "entry " << i << " of " << target << ", style " << style;
    }
  without_avx2 = false;
}

TEST(Quantize, FewColorsStayInTheOrderOfTheirAppearanceFromTheBottom) {
  Picture picture = PictureCreate(16, 16, nullptr, 24);
  for (std::uint32_t i = 0; i < 256; ++i)
    PicturePutPixel(picture, i % 16, 15 - i / 16, 0x10000 * i + 255 - i);
  Palette palette;
  ASSERT_EQ(QuantizePicture(picture, 256, palette), 256u);
  for (std::uint32_t i = 0; i < 256; ++i) {
    ASSERT_EQ(palette[3 * i], 255 - i);
    ASSERT_EQ(palette[3 * i + 2], i);
  }
  EXPECT_LE(QuantizePicture(picture, 255, palette), 255u) << "one color too many";
}

TEST(Quantize, PicturesOfOtherDepthsAreReadAsTheyFall) {
  std::minstd_rand dice(3);
  for (const std::uint32_t bits : {1u, 4u, 8u, 32u}) {
    Palette ramp{};
    Picture picture = PictureCreate(33, 9, &ramp, bits);
    for (std::uint32_t y = 0; y < 9; ++y)
      for (std::uint32_t x = 0; x < 33; ++x) PicturePutPixel(picture, x, y, static_cast<Colour>(dice()));
    std::vector<std::uint8_t> bytes(picture.stored_row(0), picture.stored_row(0) + picture.stride() * 9);
    bytes.resize(bytes.size() + 3 * 33);
    std::set<std::array<int, 3>> expected;
    for (std::size_t y = 0; y < 9; ++y)
      for (std::size_t x = 0; x < 33; ++x) {
        const std::uint8_t* p = &bytes[y * picture.stride() + 3 * x];
        expected.insert({p[2], p[1], p[0]});
      }
    Palette palette;
    const std::uint32_t count = QuantizePicture(picture, 256, palette);
    if (expected.size() > 256) continue;
    std::set<std::array<int, 3>> found;
    for (std::uint32_t i = 0; i < count; ++i)
      found.insert({palette[3 * i], palette[3 * i + 1], palette[3 * i + 2]});
    EXPECT_EQ(found, expected) << bits;
  }
}

TEST(Quantize, SeveralPicturesMakeOnePalette) {
  Picture red = PictureCreateFilled(200, 100, 0x0000F0), blue = PictureCreateFilled(10, 10, 0xF00000);
  ColorOctree octree;
  Palette palette;
  EXPECT_EQ(octree.palette(256, palette), 0u);
  octree.add(red);
  octree.add(blue);
  octree.add({});
  ASSERT_EQ(octree.palette(0, palette), 2u);
  EXPECT_EQ((std::array<int, 6>{palette[0], palette[1], palette[2], palette[3], palette[4], palette[5]}),
            (std::array<int, 6>{0, 0, 240, 240, 0, 0}));
  EXPECT_EQ(octree.palette(1, palette), 1u);
  EXPECT_GT(palette[0], palette[2]);
}

TEST(Superpalette, IsThePlainTreesOfAllPicturesWithoutWhatIsHiddenDarkColorsFirst) {
  std::minstd_rand dice(5);
  for (const std::uint32_t most : {256u, 255u, 20u}) {
    PlainTree plain(most);
    std::vector<Picture> pictures;
    for (const int style : {0, 1, 2}) {
      Picture picture = PictureCreate(31, 23, nullptr, style == 1 ? 32 : 24);
      for (std::uint32_t y = 0; y < 23; ++y)
        for (std::uint32_t x = 0; x < 31; ++x) {
          const Colour color = colour_of(dice, style, x, y);
          const bool hidden = style == 1 && x < 9;
          PicturePutPixel(picture, x, y, color | (hidden ? 127u : 128u) << 24);
          if (!hidden) plain.add({red_of(color), green_of(color), blue_of(color)});
        }
      pictures.push_back(picture);
    }
    Picture two = PictureCreate(8, 8, nullptr, 1);
    Palette inks{1, 200, 30, 90, 4, 250};
    PictureSetPalette(two, inks);
    for (int i = 0; i < 64; ++i) {
      PicturePutPixel(two, i / 8, i % 8, i % 3 == 0);
      plain.add(i % 3 == 0 ? std::array{90, 4, 250} : std::array{1, 200, 30});
    }
    pictures.push_back(two);
    auto expected = plain.reduced(most);
    const auto light = [](const auto& c) { return (77 * c[0] + 150 * c[1] + 28 * c[2]) / 255; };
    for (std::size_t i = 0; i < expected.size(); ++i)
      for (std::size_t j = i + 1; j < expected.size(); ++j)
        if (light(expected[i]) > light(expected[j])) std::swap(expected[i], expected[j]);
    Host host;
    const PaletteColors colors = superpalette(
        pictures.size(), [&](std::size_t i) { return pictures[i]; }, most, host);
    ASSERT_EQ(colors.count, expected.size());
    for (std::uint32_t i = 0; i < colors.count; ++i)
      for (std::size_t c = 0; c < 3; ++c) ASSERT_EQ(colors.palette[3 * i + c], expected[i][c]) << most;
  }
  Host host;
  const auto clear = [](std::size_t) { return PictureCreateAlpha(3, 3); };
  EXPECT_EQ(superpalette(2, clear, 256, host).count, 1u) << "black";
  EXPECT_EQ(superpalette(0, clear, 256, host).count, 0u);
}

}  // namespace
}  // namespace vellum
