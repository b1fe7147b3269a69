#include "image/palette_file.h"

#include "image/builtin_palette.h"
#include "image/palette_from_pictures.h"
#include "image/remap.h"
#include "random_pictures.h"
#include "support/corpus.h"

namespace vellum {
namespace {

std::vector<std::uint8_t> bytes_of(std::string_view text) { return {text.begin(), text.end()}; }

std::string color_list(const std::optional<PaletteColors>& colors) {
  std::string text;
  for (std::size_t i = 0; colors && i < 3 * std::size_t{colors->count}; ++i)
    text += std::to_string(colors->palette[i]) + (i % 3 == 2 ? " " : ",");
  return text;
}

/// 768 bytes that all differ from their neighbors.
std::string raw_colors() {
  std::string bytes;
  for (int i = 0; i < 768; ++i) bytes += static_cast<char>(i * 7 + 1);
  return bytes;
}

std::string cmp_head(std::size_t bytes) {
  std::string head(bytes, '\0');
  head.replace(0, 8, "TARNRSRC").replace(75, 4, "CMAP").replace(79, 1, "\1");
  head[84] = 3;  // 768, little-endian
  return head;
}

TEST(PaletteFile, TextFormsAreReadWhateverTheirLineEnds) {
  const struct {
    const char* file;
    const char* colors;
  } cases[] = {
      {"JASC-PAL\r\n0100\r\n2\r\n1 2 3\r\n255 254 253\r\n", "1,2,3 255,254,253 "},
      {"JASC-PAL\n0100\n2\n1 2 3\n4 5 6", "1,2,3 4,5,6 "},
      {"GIMP Palette\nName: x\nColumns: 2\n# 1 2 3\n  9  10 11\tblack 1\n 0 0 0\n", "9,10,11 0,0,0 "},
      {"GIMP Palette\nName: 300 2 3\n300 1 1\n-1 2 3\n1 2\n", ""},
      {"GIMP Palettes are not this\n", ""},
      {"1 2 3\n", ""},
      {"", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(color_list(parse_palette(bytes_of(c.file))), c.colors) << c.file;
}

TEST(PaletteFile, TablesAreReadFromTheirPlace) {
  const std::string colors = raw_colors();
  const struct {
    const char* name;
    std::string file;
    std::uint32_t count;
    std::string first;
  } cases[] = {
      {"raw", colors, 256, colors.substr(0, 3)},
      {"with a count", colors + std::string("\0\5\xFF\xFF", 4), 5, colors.substr(0, 3)},
      {"a count beyond the table", colors + std::string("\xFF\xFF\0\0", 4), 256, colors.substr(0, 3)},
      {"CMP of a resource, which ends early", cmp_head(88) + colors.substr(0, 765), 256, colors.substr(0, 3)},
      {"CMP of its own length", cmp_head(87) + colors, 256, colors.substr(0, 3)},
  };
  for (const auto& c : cases) {
    const auto read = parse_palette(bytes_of(c.file));
    ASSERT_TRUE(read) << c.name;
    EXPECT_EQ(read->count, c.count) << c.name;
    EXPECT_TRUE(std::equal(c.first.begin(), c.first.end(), read->palette.begin(), [](char a, std::uint8_t b) {
      return static_cast<std::uint8_t>(a) == b;
    })) << c.name;
  }
  EXPECT_EQ(parse_palette(bytes_of(cmp_head(88) + colors.substr(0, 765)))->palette[767], 0);
  EXPECT_FALSE(parse_palette(bytes_of(colors + "x")));
}

TEST(PaletteFile, MoreThan256ColorsAreCut) {
  std::string file = "JASC-PAL\n0100\n300\n";
  for (int i = 0; i < 300; ++i) file += "1 2 3\n";
  const auto read = parse_palette(bytes_of(file));
  ASSERT_TRUE(read);
  EXPECT_EQ(read->count, 256u);
  EXPECT_TRUE(read->cut);
}

TEST(PaletteFile, WhatIsWrittenIsReadBack) {
  const testing::ScratchFolder folder;
  for (const PaletteForm& form : palette_forms())
    for (const std::uint32_t count : {1u, 16u, 255u, 256u}) {
      PaletteColors colors;
      BuiltInPalette(&colors.palette, nullptr, 6);
      std::fill(colors.palette.begin() + 3 * count, colors.palette.end(), std::uint8_t{0});
      colors.count = count;
      const auto path = folder / ("p." + std::string(form.extension));
      std::string reason;
      ASSERT_TRUE(write_palette_file(path, colors, reason)) << reason;
      const auto read = read_palette_file(path, reason);
      ASSERT_TRUE(read) << form.name << count;
      EXPECT_EQ(read->count, count) << form.name;
      EXPECT_EQ(read->palette, colors.palette) << form.name;
    }
  std::string reason;
  EXPECT_FALSE(read_palette_file(folder / "none", reason));
  EXPECT_FALSE(reason.empty());
}

TEST(Remap, TakesTheExactColorThenTheNearest) {
  const Palette palette = {0, 0, 0, 10, 0, 0, 10, 0, 0, 0, 9, 0, 255, 255, 255};
  EXPECT_EQ(NearestPaletteIndex(10, 0, 0, palette, 5), 1u) << "the lower of two equal ones";
  EXPECT_EQ(NearestPaletteIndex(5, 5, 0, palette, 5), 3u) << "3*25 + 4*16 is less than 3*25 + 4*25";
  EXPECT_EQ(NearestPaletteIndex(250, 250, 250, palette, 3), 1u) << "entries behind the count don't exist";
}

TEST(PaletteFromPictures, KeepsFewColorsAndMergesMany) {
  Picture few = PictureCreateFilled(5, 3, make_colour(1, 2, 3));
  PicturePutPixel(few, 2, 2, make_colour(200, 100, 50));
  const Picture alone[] = {few};
  EXPECT_EQ(color_list(palette_from_pictures(alone, 256)), "1,2,3 200,100,50 ");

  Picture ramp = PictureCreateFilled(256, 4, 0);
  for (std::uint32_t x = 0; x < 256; ++x)
    for (std::uint32_t y = 0; y < 4; ++y) PicturePutPixel(ramp, x, y, make_colour(x, x, x));
  const Picture both[] = {few, ramp};
  for (const std::uint32_t most : {2u, 7u, 255u}) {
    const PaletteColors colors = palette_from_pictures(both, most);
    EXPECT_LE(colors.count, most);
    EXPECT_GE(colors.count, 2u);
    const std::uint32_t nearest = NearestPaletteIndex(250, 250, 250, colors.palette, colors.count);
    EXPECT_GT(colors.palette[3 * nearest], 150) << "the light half is there with " << most;
  }
  EXPECT_EQ(palette_from_pictures({}, 16).count, 0u);
}

TEST(PaletteFromPictures, MethodsCountSortAndKeepAsTheySay) {
  // A drawing: two inks on paper, with edges in many colors that each cover a pixel.
  Picture drawing = PictureCreateFilled(64, 64, make_colour(250, 240, 230));
  for (std::uint32_t i = 0; i < 64; ++i) {
    for (std::uint32_t y = 0; y < 8; ++y) PicturePutPixel(drawing, i, y, make_colour(33, 44, 155));
    for (std::uint32_t y = 8; y < 12; ++y) PicturePutPixel(drawing, i, y, make_colour(222, 17, 3));
    PicturePutPixel(drawing, i, 20, make_colour(i * 4, 255 - i * 3, i * 2 + 1));
  }
  const Picture pictures[] = {drawing};
  const auto has = [](const PaletteColors& colors, std::uint8_t r, std::uint8_t g, std::uint8_t b) {
    const std::uint32_t at = NearestPaletteIndex(r, g, b, colors.palette, colors.count);
    return std::equal(&colors.palette[3 * at], &colors.palette[3 * at] + 3, std::array{r, g, b}.begin());
  };
  const PaletteColors sketch = palette_from_pictures(pictures, 6, nullptr, {.sketch = true});
  EXPECT_LE(sketch.count, 6u);
  EXPECT_TRUE(has(sketch, 250, 240, 230) && has(sketch, 33, 44, 155) && has(sketch, 222, 17, 3));

  const PaletteColors coarse = palette_from_pictures(pictures, 200, nullptr, {.fifteenBits = true});
  EXPECT_LT(coarse.count, 67u) << "colors that differ in their low bits are one";
  for (std::uint32_t i = 0; i < 3 * coarse.count; ++i) EXPECT_EQ(coarse.palette[i] & 7, 0) << i;

  const PaletteColors sorted = palette_from_pictures(pictures, 200, nullptr, {.sorted = true});
  ASSERT_EQ(sorted.count, 67u);
  unsigned before = 0;
  for (std::uint32_t i = 0; i < sorted.count; ++i) {
    const std::uint8_t* color = &sorted.palette[3 * i];
    const unsigned luminance = (77u * color[0] + 150u * color[1] + 28u * color[2]) / 255;
    EXPECT_GE(luminance, before) << i;
    before = luminance;
  }
}

TEST(PaletteFromPictures, TakesTheTableOfAnIndexedPicture) {
  const Palette palette = {9, 8, 7, 6, 5, 4};
  EXPECT_EQ(color_list(palette_of_picture(PictureCreate(3, 3, &palette, 1))), "9,8,7 6,5,4 ");
}

}  // namespace
}  // namespace vellum
