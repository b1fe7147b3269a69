#include "image/graphic_file.h"

#include <fstream>

#include "base/byte_order.h"
#include "base/file.h"
#include "image/picture_operations.h"
#include "image/resample.h"
#include "image/settings.h"
#include "pixels_of.h"
#include "random_pictures.h"
#include "support/corpus.h"

namespace vellum {
namespace {

using testing::random_picture;
using testing::rgba_of;
using testing::same_block;
using testing::ScratchFolder;

TEST(GraphicName, TypesAndSwitches) {
  const struct {
    std::string name;
    std::size_t type;
    std::string path;
    GraphicSwitches switches;
  } table[] = {
      {"picture.JPG/Q:75", 0, "picture.JPG", {false, 75, {}}},
      {"a/b.bmp", 1, "a/b.bmp", {}},
      {"/tmp/x.Gif/V", 2, "/tmp/x.Gif", {}},
      {"x.pcx", 3, "x.pcx", {}},
      {"x.tga", 4, "x.tga", {}},
      {"/home/V/x.png", 5, "/home/V/x.png", {}},
      {"x.webp/L/Q:5/S:1/X", 6, "x.webp", {true, 5, 1, true}},
      {"x.jpg/Q:99999999999", 0, "x.jpg", {false, 100, {}}},
      {"/home/L/Q:3/x.jpg/S:0", 0, "/home/L/Q:3/x.jpg", {false, {}, 0}},
      {"x.jpg/Q:", kNoGraphicFile, "x.jpg/Q:", {}},
      {"x.jpg/Q:7a", kNoGraphicFile, "x.jpg/Q:7a", {}},
      {"x.jpg/W", kNoGraphicFile, "x.jpg/W", {}},
      {"x.jpg/q:75", kNoGraphicFile, "x.jpg/q:75", {}},
      {"x.txt/L", kNoGraphicFile, "x.txt/L", {}},
      {"x.jpeg", kNoGraphicFile, "x.jpeg", {}},
      {"x.jpe", kNoGraphicFile, "x.jpe", {}},
      {"x.tif", kNoGraphicFile, "x.tif", {}},
      {"folder.png/x", kNoGraphicFile, "folder.png/x", {}},
      {"jpg", kNoGraphicFile, "jpg", {}},
      {"/L", kNoGraphicFile, "/L", {}},
      {"", kNoGraphicFile, "", {}},
  };
  for (const auto& row : table) {
    EXPECT_EQ(GraphicFileType(row.name), row.type) << row.name;
    const GraphicName parsed = parse_graphic_name(row.name);
    EXPECT_EQ(parsed.path, row.path) << row.name;
    EXPECT_EQ(parsed.switches.exif_orientation, row.switches.exif_orientation) << row.name;
    EXPECT_EQ(parsed.switches.quality, row.switches.quality) << row.name;
    EXPECT_EQ(parsed.switches.subsampling, row.switches.subsampling) << row.name;
    EXPECT_EQ(parsed.switches.lossless, row.switches.lossless) << row.name;
  }
}

TEST(GraphicName, AnExistingFileIsNoSwitch) {
  const ScratchFolder folder;
  std::filesystem::create_directory(folder / "x.png");
  const std::string name = (folder / "x.png/V").string();
  EXPECT_EQ(GraphicFileType(name), 5u);
  std::ofstream{name} << "a file";
  EXPECT_EQ(GraphicFileType(name), kNoGraphicFile);
}

TEST(GraphicFile, StatusAndInformation) {
  const ScratchFolder folder;
  std::mt19937 random(1);
  const Picture picture = random_picture(random, 13, 7, 4);
  const std::string name = (folder / "a.bmp").string();
  std::string status = "before";
  EXPECT_FALSE(GraphicFileRead(name, &status));
  EXPECT_EQ(status, "");
  ASSERT_TRUE(GraphicFileWrite(name, picture));
  EXPECT_TRUE(same_block(GraphicFileRead(name, &status), picture));
  EXPECT_EQ(status, name);
  std::uint32_t width = 0, height = 0, bits = 0;
  Palette palette, expected;
  PictureGetPalette(picture, expected);
  ASSERT_TRUE(GraphicFileInfo(name, &width, &height, &bits, &palette));
  EXPECT_TRUE(width == 13 && height == 7 && bits == 4 && palette == expected);
  EXPECT_TRUE(GraphicFileInfo(name, nullptr, nullptr, nullptr, nullptr));
  EXPECT_FALSE(GraphicFileInfo((folder / "none.bmp").string(), nullptr, nullptr, nullptr, nullptr));
  EXPECT_FALSE(GraphicFileWrite((folder / "a.tif").string(), picture));
}

TEST(GraphicFile, WebpFollowsItsSettings) {
  const ScratchFolder folder;
  std::mt19937 random(2);
  const Picture picture = random_picture(random, 40, 40, 24);
  const std::string name = (folder / "a.webp").string();
  const auto bytes_with = [&](int quality, int lossless, const std::string& switches) {
    settings::WEBPQualityFactor = quality;
    settings::WEBPLossless = lossless;
    EXPECT_TRUE(GraphicFileWrite(name + switches, picture));
    settings::WEBPQualityFactor = 75;
    settings::WEBPLossless = 0;
    return std::filesystem::file_size(name);
  };
  EXPECT_LT(bytes_with(5, 0, ""), bytes_with(95, 0, ""));
  EXPECT_EQ(bytes_with(5, 0, "/Q:95"), bytes_with(95, 0, ""));
  EXPECT_EQ(bytes_with(900, 0, ""), bytes_with(100, 0, ""));
  EXPECT_EQ(bytes_with(-9, 0, ""), bytes_with(0, 0, ""));
  bytes_with(75, 1, "");
  EXPECT_TRUE(same_block(GraphicFileRead(name), picture));
}

/// A JPEG with an APP1 block that holds an orientation and nothing else.
std::vector<std::uint8_t> with_orientation(std::span<const std::uint8_t> plain, std::uint8_t orientation) {
  std::vector<std::uint8_t> jpeg(plain.begin(), plain.end());
  const std::uint8_t block[] = {0xFF, 0xE1, 0, 34, 'E', 'x',         'i', 'f', 0, 0,  'M', 'M',
                                0,    42,   0, 0,  0,   8,           0,   1,   1, 18, 0,   3,
                                0,    0,    0, 1,  0,   orientation, 0,   0,   0, 0,  0,   0};
  jpeg.insert(jpeg.begin() + 2, std::begin(block), std::end(block));
  return jpeg;
}

TEST(GraphicFile, JpegOrientations) {
  const ScratchFolder folder;
  std::mt19937 random(3);
  const std::string name = (folder / "a.JPG").string();
  ASSERT_TRUE(GraphicFileWrite(name, random_picture(random, 70, 41, 24)));
  std::string reason;
  const auto plain = *read_file(name, reason, 1 << 20);
  const Picture stored = GraphicFileRead(name);
  // Where the pixel of the picture as seen stands in the stored one: EXIF 2.3, tag 0x0112.
  const auto source = [&](int orientation, std::int64_t x, std::int64_t y) -> Colour {
    const std::int64_t right = 69, bottom = 40;
    switch (orientation) {
      case 2:
        return PictureGetPixel(stored, right - x, y);
      case 3:
        return PictureGetPixel(stored, right - x, bottom - y);
      case 4:
        return PictureGetPixel(stored, x, bottom - y);
      case 5:
        return PictureGetPixel(stored, y, x);
      case 6:
        return PictureGetPixel(stored, y, bottom - x);
      case 7:
        return PictureGetPixel(stored, right - y, bottom - x);
      case 8:
        return PictureGetPixel(stored, right - y, x);
      default:
        return PictureGetPixel(stored, x, y);
    }
  };
  for (int orientation = 0; orientation <= 9; ++orientation) {
    SafeFile file(name);
    ASSERT_TRUE(file.write(with_orientation(plain, static_cast<std::uint8_t>(orientation))) && file.commit());
    const bool turned = orientation >= 5 && orientation <= 8;
    Picture expected = PictureCreate(turned ? 41 : 70, turned ? 70 : 41, nullptr, 24);
    for (std::uint32_t y = 0; y < expected.height(); ++y)
      for (std::uint32_t x = 0; x < expected.width(); ++x)
        PicturePutPixel(expected, x, y, source(orientation, x, y));
    EXPECT_TRUE(same_block(GraphicFileRead(name), expected)) << orientation;
    std::uint32_t width = 0;
    EXPECT_TRUE(GraphicFileInfo(name, &width, nullptr, nullptr, nullptr));
    EXPECT_EQ(width, expected.width()) << orientation;
    settings::ImageJpegExifOrientation = 0;
    EXPECT_TRUE(same_block(GraphicFileRead(name), stored)) << orientation;
    EXPECT_TRUE(same_block(GraphicFileRead(name + "/X"), expected)) << orientation;
    settings::ImageJpegExifOrientation = 1;
  }
}

TEST(GraphicFile, AJpegIsDecodedNoLargerThanEnough) {
  const ScratchFolder folder;
  const std::string name = (folder / "a.jpg").string();
  Picture picture = PictureCreate(600, 404, nullptr, 24);
  for (std::uint32_t y = 0; y < 404; ++y)
    for (std::uint32_t x = 0; x < 600; ++x)
      PicturePutPixel(picture, x, y, make_colour(x * 255 / 600, y * 255 / 404, (x + y) * 255 / 1004));
  ASSERT_TRUE(GraphicFileWrite(name, picture));
  for (const auto& [enough, width, height] : {std::array{0u, 600u, 404u},
                                              {203u, 600u, 404u},
                                              {202u, 300u, 202u},
                                              {101u, 150u, 101u},
                                              {1u, 75u, 51u}}) {
    const Picture read = read_graphic_file(name, Part::Whole, enough).picture;
    ASSERT_TRUE(read.width() == width && read.height() == height) << enough;
    const Picture wanted = PictureResample(picture, width, height, ResampleFilter::Box);
    for (std::uint32_t y = 0; y < height; y += 7)
      for (std::uint32_t x = 0; x < width; x += 5) {
        const Colour a = PictureGetPixel(read, x, y), b = PictureGetPixel(wanted, x, y);
        ASSERT_LE(std::abs(red_of(a) - red_of(b)) + std::abs(green_of(a) - green_of(b)), 10) << enough;
      }
  }
}

/// How many rows from the top are equal; `bottom`: from the bottom.
std::uint32_t equal_rows(const Picture& a, const Picture& b, bool bottom) {
  std::uint32_t count = 0;
  for (; count < a.height(); ++count) {
    const std::uint32_t y = bottom ? a.height() - 1 - count : count;
    for (std::uint32_t x = 0; x < a.width(); ++x)
      if (PictureGetPixel(a, x, y) != PictureGetPixel(b, x, y)) return count;
  }
  return count;
}

TEST(GraphicFile, CutFilesShowWhatIsThereAndSaySo) {
  const ScratchFolder folder;
  std::mt19937 random(4);
  for (const auto& module : graphic_file_modules()) {
    if (module.extension == "png") continue;  // documents: they have recovery of their own
    const bool bottom = module.extension == "bmp" || module.extension == "tga";
    const std::string name = (folder / ("a." + std::string(module.extension))).string();
    ASSERT_TRUE(GraphicFileWrite(name, random_picture(random, 160, 160, module.extension == "gif" ? 8 : 24)));
    const GraphicReading whole = read_graphic_file(name);
    EXPECT_EQ(whole.told, "") << name;
    std::filesystem::resize_file(name, std::filesystem::file_size(name) * 6 / 10);
    const GraphicReading cut = read_graphic_file(name);
    ASSERT_TRUE(cut.picture) << name;
    EXPECT_EQ(cut.fault, GraphicFault::None) << name;
    EXPECT_NE(cut.told, "") << name;
    const std::uint32_t rows = equal_rows(cut.picture, whole.picture, bottom);
    EXPECT_TRUE(rows > 48 && rows < 160) << name << " has " << rows << " rows";
    Host host;
    std::string notes;
    host.note = [&](std::string_view text) { notes += text; };
    EXPECT_TRUE(read_picture_file(name, host));
    EXPECT_TRUE(notes.starts_with("a.")) << notes;
  }
}

TEST(GraphicFile, ContentTellsTheKindAndFailuresTellTheirReason) {
  const ScratchFolder folder;
  std::mt19937 random(5);
  const Picture picture = random_picture(random, 9, 9, 8);
  for (const auto& module : graphic_file_modules()) {
    const auto path = folder / ("a." + std::string(module.extension)), other = folder / "a.jpeg";
    ASSERT_TRUE(GraphicFileWrite(path.string(), picture));
    const Picture read = GraphicFileRead(path.string());
    std::filesystem::rename(path, other);
    EXPECT_TRUE(same_block(GraphicFileRead(other.string()), read)) << module.name;
  }
  std::vector<std::uint8_t> huge(64);  // a run-length bitmap of 40000 x 40000
  std::ranges::copy(std::array<std::uint8_t, 2>{'B', 'M'}, huge.begin());
  huge[14] = 40, huge[26] = 1, huge[28] = 8, huge[30] = 1, huge[46] = 1;
  for (const std::size_t at : {18, 22}) huge[at] = 0x40, huge[at + 1] = 0x9C;
  const std::vector<std::uint8_t> text(200, 'x'),
      damaged = {'B', 'M', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 40, 0, 0, 0, 0, 0};
  const struct {
    const std::vector<std::uint8_t>& bytes;
    GraphicFault fault;
    StringId shown;
  } table[] = {{huge, GraphicFault::TooLarge, StringId::ErrorReadingFile},
               {text, GraphicFault::UnknownKind, StringId::ErrorReadingFile},
               {damaged, GraphicFault::Damaged, StringId::FileCorrupted},
               {{}, GraphicFault::Missing, StringId::ErrorReadingFile}};
  for (const auto& row : table) {
    const auto path = folder / "b.bmp";
    std::filesystem::remove(path);
    SafeFile file(path);
    if (!row.bytes.empty()) ASSERT_TRUE(file.write(row.bytes) && file.commit());
    EXPECT_EQ(read_graphic_file(path.string()).fault, row.fault);
    Host host;
    StringId shown{};
    host.message = [&](const Message& message) { shown = message.id; };
    EXPECT_FALSE(read_picture_file(path, host));
    EXPECT_EQ(shown, row.shown);
  }
}

}  // namespace
}  // namespace vellum
