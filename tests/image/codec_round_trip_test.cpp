// What the writers write: read back by our readers, and judged by outside tools where they are installed.
#include <map>

#include "base/byte_order.h"
#include "base/file.h"
#include "image/graphic_file.h"
#include "image/picture_operations.h"
#include "image/reduce_to_palette.h"
#include "image/settings.h"
#include "pixels_of.h"
#include "random_pictures.h"
#include "support/corpus.h"
#include "support/judge.h"

namespace vellum {
namespace {

using testing::greatest_difference;
using testing::kShapes;
using testing::random_picture;
using testing::rgba_of;
using testing::run_tool;
using testing::same_block;
using testing::ScratchFolder;

struct Case {
  std::string extension;
  std::uint32_t bits;       ///< of what is written
  std::uint32_t read_bits;  ///< of what comes back; the block is the same when both agree
};

const std::vector<Case> kExact = {
    {"bmp", 1, 1},   {"bmp", 4, 4},   {"bmp", 8, 8},   {"bmp", 24, 24}, {"bmp", 32, 32}, {"gif", 1, 1},
    {"gif", 4, 4},   {"gif", 8, 8},   {"pcx", 1, 4},   {"pcx", 4, 4},   {"pcx", 8, 8},   {"pcx", 24, 24},
    {"tga", 1, 8},   {"tga", 4, 8},   {"tga", 8, 8},   {"tga", 24, 24}, {"tga", 32, 32}, {"webp", 24, 24},
    {"webp", 8, 24}, {"webp", 1, 24}, {"png", 24, 24}, {"png", 32, 32}};

TEST(RoundTrip, FormatsWithoutLossGiveBackEveryPixel) {
  const ScratchFolder folder;
  std::mt19937 random(5);
  for (const Case& c : kExact)
    for (const auto& shape : kShapes) {
      SCOPED_TRACE(c.extension + " " + std::to_string(c.bits) + " " + std::to_string(shape.width));
      const Picture picture = random_picture(random, shape.width, shape.height, c.bits);
      const std::string name = (folder / ("a." + c.extension)).string() + (c.extension == "webp" ? "/L" : "");
      ASSERT_TRUE(GraphicFileWrite(name, picture));
      const Picture read = GraphicFileRead(name);
      ASSERT_TRUE(read);
      if (shape.width * shape.height == 1 && c.bits == 32) continue;  // one pixel without alpha is 24 bits
      EXPECT_EQ(read.bits(), c.read_bits);
      EXPECT_TRUE(rgba_of(read) == rgba_of(picture));
      if (c.bits == c.read_bits) {
        EXPECT_TRUE(same_block(read, picture));
      }
    }
}

TEST(RoundTrip, WebpKeepsColoursUnderNoAlpha) {
  const ScratchFolder folder;
  std::mt19937 random(6);
  const Picture picture = random_picture(random, 33, 17, 32);
  ASSERT_TRUE(GraphicFileWrite((folder / "a.webp/L").string(), picture));
  EXPECT_TRUE(same_block(GraphicFileRead((folder / "a.webp").string()), picture));
}

TEST(RoundTrip, GreyStaysGrey) {
  const ScratchFolder folder;
  std::mt19937 random(7);
  const Picture grey = PictureToGrey(random_picture(random, 40, 30, 24));
  for (const std::string name : {"a.tga", "a.jpg", "a.bmp"}) {
    ASSERT_TRUE(GraphicFileWrite((folder / name).string(), grey));
    const Picture read = GraphicFileRead((folder / name).string());
    EXPECT_EQ(read.bits(), 8u) << name;
    EXPECT_EQ(std::memcmp(read.table(), grey.table(), 1024), 0) << name;
  }
  Palette black_and_white{0, 0, 0, 255, 255, 255};
  Picture bits = random_picture(random, 21, 9, 1);
  PictureSetPalette(bits, black_and_white);
  ASSERT_TRUE(GraphicFileWrite((folder / "a.pcx").string(), bits));
  EXPECT_TRUE(same_block(GraphicFileRead((folder / "a.pcx").string()), bits));
}

TEST(RoundTrip, AlphaIsFlattenedOverTheBackgroundColour) {
  const ScratchFolder folder;
  std::mt19937 random(8);
  const Picture picture = random_picture(random, 15, 12, 32);
  settings::DefaultBackgroundColour = 0x4080F0;
  const Picture flat = PictureFlattenAlpha(picture, 0x4080F0);
  for (const std::string name : {"a.pcx", "a.gif"}) {
    ASSERT_TRUE(GraphicFileWrite((folder / name).string(), picture));
    EXPECT_TRUE(rgba_of(GraphicFileRead((folder / name).string())) == rgba_of(flat)) << name;
  }
  const Picture clear = PictureCreateAlpha(16, 16);
  ASSERT_TRUE(GraphicFileWrite((folder / "a.jpg").string(), clear));
  EXPECT_LE(greatest_difference(rgba_of(GraphicFileRead((folder / "a.jpg").string())),
                                rgba_of(PictureCreateFilled(16, 16, 0x4080F0))),
            3);
  settings::DefaultBackgroundColour = 0xFFFFFF;
}

/// A smooth picture: what lossy formats are made for.
Picture gradient(std::uint32_t width, std::uint32_t height, std::uint32_t depth) {
  Picture picture = PictureCreate(width, height, nullptr, depth);
  for (std::uint32_t y = 0; y < height; ++y)
    for (std::uint32_t x = 0; x < width; ++x)
      PicturePutPixel(
          picture, x, y,
          make_colour(x * 255 / width, y * 255 / height, (x + y) * 127 / (width + height), 255 - y % 200));
  return picture;
}

TEST(RoundTrip, LossyFormatsComeClose) {
  const ScratchFolder folder;
  for (const std::string name : {"a.jpg", "a.webp"}) {
    const Picture picture = gradient(200, 150, 24);
    const std::string path = (folder / name).string();
    std::uintmax_t before = 0;
    for (const std::string quality : {"/Q:10", "", "/Q:98"}) {
      ASSERT_TRUE(GraphicFileWrite(path + quality, picture));
      EXPECT_LE(greatest_difference(rgba_of(GraphicFileRead(path)), rgba_of(picture)),
                quality == "/Q:10" ? 60 : 16);
      EXPECT_GT(std::filesystem::file_size(path), before) << path << quality;
      before = std::filesystem::file_size(path);
    }
  }
}

TEST(ReduceToPalette, ExactUpTo256ColoursInTheSmallestDepth) {
  for (const auto& [colours, bits] :
       std::map<std::uint32_t, std::uint32_t>{{1, 1}, {2, 1}, {3, 4}, {16, 4}, {17, 8}, {256, 8}}) {
    Picture picture = PictureCreate(30, 30, nullptr, 24);
    for (std::uint32_t i = 0; i < 900; ++i) PicturePutPixel(picture, i % 30, i / 30, i % colours * 65'000);
    const Picture reduced = reduce_to_palette(picture);
    ASSERT_TRUE(reduced);
    EXPECT_EQ(reduced.bits(), bits) << colours;
    EXPECT_TRUE(rgba_of(reduced) == rgba_of(picture)) << colours;
  }
}

TEST(ReduceToPalette, MoreColoursComeClose) {
  const Picture picture = gradient(120, 90, 24);
  const Picture reduced = reduce_to_palette(picture);
  ASSERT_TRUE(reduced);
  EXPECT_EQ(reduced.bits(), 8u);
  EXPECT_LE(greatest_difference(rgba_of(reduced), rgba_of(picture)), 40);
}

TEST(Writers, AFailureLeavesWhatStoodThere) {
  const ScratchFolder folder;
  const Picture good = gradient(9, 9, 24);
  const Picture wide = PictureCreate(70'000, 1, nullptr, 8);
  for (const std::string name : {"a.jpg", "a.gif", "a.pcx", "a.tga", "a.webp"}) {
    const std::string path = (folder / name).string();
    ASSERT_TRUE(GraphicFileWrite(path, good));
    const auto size = std::filesystem::file_size(path);
    EXPECT_FALSE(GraphicFileWrite(path, wide)) << name;
    EXPECT_FALSE(GraphicFileWrite(path, {})) << name;
    EXPECT_FALSE(GraphicFileWrite(path, PictureCreateHeaderOnly(5, 5, nullptr, 24))) << name;
    EXPECT_EQ(std::filesystem::file_size(path), size) << name;
    EXPECT_FALSE(GraphicFileWrite((folder / "none" / name).string(), good)) << name;
  }
  const auto files = std::filesystem::directory_iterator(folder.path());
  EXPECT_EQ(std::distance(begin(files), end(files)), 5);
}

TEST(Readers, SizesAboveTheLimitsGiveNull) {
  const ScratchFolder folder;
  std::vector<std::uint8_t> tga(64), pcx(200), bmp(200);
  tga[2] = 10;  // run-length coded, so that the file need not be long
  write_le16(tga.data() + 12, 65535);
  write_le16(tga.data() + 14, 65535);
  tga[16] = 32;
  std::ranges::copy(std::array<std::uint8_t, 12>{10, 5, 1, 8, 0, 0, 0, 0, 255, 255, 255, 255}, pcx.begin());
  pcx[65] = 3;
  write_le16(pcx.data() + 66, 65535);
  bmp[0] = 'B', bmp[1] = 'M', bmp[14] = 40, bmp[26] = 1, bmp[28] = 8, bmp[30] = 1;
  write_le32(bmp.data() + 18, 1'000'000);
  write_le32(bmp.data() + 22, 1'000'000);
  for (const auto& [name, bytes] :
       std::map<std::string, std::vector<std::uint8_t>>{{"a.tga", tga}, {"a.pcx", pcx}, {"a.bmp", bmp}}) {
    SafeFile file(folder / name);
    ASSERT_TRUE(file.write(bytes) && file.commit());
    EXPECT_FALSE(GraphicFileRead((folder / name).string())) << name;
    EXPECT_FALSE(GraphicFileInfo((folder / name).string(), nullptr, nullptr, nullptr, nullptr)) << name;
  }
}

/// The pixels that an outside program sees, as RGBA bytes; empty where it is not installed.
std::string seen_by(const std::string& tool, const std::string& path) {
  const std::vector<std::string> command =
      tool == "ffmpeg" ? std::vector<std::string>{"ffmpeg", "-v",       "error",    "-i",   path,
                                                  "-f",     "rawvideo", "-pix_fmt", "rgba", "-"}
                       : std::vector<std::string>{"convert", path, "-depth", "8", "RGBA:-"};
  const auto result = run_tool(command);
  return result.there ? result.output : "";
}

TEST(Judges, SeeThePixelsThatWeWrote) {
  const ScratchFolder folder;
  std::mt19937 random(10);
  int judged = 0;
  for (const Case& c : kExact)
    for (const std::string tool : {"ffmpeg", "convert"}) {
      // ImageMagick leaves a TGA whose origin is below upside down.
      if (tool == "convert" && c.extension == "tga") continue;
      const Picture picture = random_picture(random, 37, 11, c.bits);
      const std::string path = (folder / ("a." + c.extension)).string();
      ASSERT_TRUE(GraphicFileWrite(path + (c.extension == "webp" ? "/L" : ""), picture));
      const std::string seen = seen_by(tool, path);
      if (seen.empty()) continue;
      ++judged;
      EXPECT_TRUE(seen == rgba_of(picture))
          << tool << " " << c.extension << " " << c.bits << ": " << seen.size() << " bytes";
    }
  if (judged == 0) GTEST_SKIP() << "neither ffmpeg nor ImageMagick is installed";
}

TEST(Judges, FindNothingWrongAndTheSettingsThatWereAsked) {
  const ScratchFolder folder;
  const Picture picture = gradient(64, 48, 24);
  const struct {
    std::string name;
    std::vector<std::string> command;
    std::string expected;
  } table[] = {
      {"a.gif", {"gifsicle", "--info"}, "logical screen 64x48"},
      {"a.webp", {"webpinfo"}, "No error detected"},
      {"a.webp/L", {"webpinfo"}, "Lossless"},
      {"a.jpg", {"identify", "-format", "%m %Q %[jpeg:sampling-factor]"}, "JPEG 75 2x2"},
      {"a.jpg/Q:31/S:1", {"identify", "-format", "%m %Q %[jpeg:sampling-factor]"}, "JPEG 31 2x1"},
      {"a.jpg/S:0", {"identify", "-format", "%m %Q %[jpeg:sampling-factor]"}, "JPEG 75 1x1"},
  };
  for (const auto& row : table) {
    ASSERT_TRUE(GraphicFileWrite((folder / row.name).string(), picture));
    auto command = row.command;
    command.push_back((folder / row.name.substr(0, row.name.find('/'))).string());
    const auto result = run_tool(command);
    if (!result.there) continue;
    EXPECT_EQ(result.status, 0) << row.name << result.output;
    EXPECT_THAT(result.output, ::testing::HasSubstr(row.expected)) << row.name;
  }
}

}  // namespace
}  // namespace vellum
