// Readers against real files, and against what is left of them when they are damaged.
#include <map>
#include <random>
#include <set>

#include "image/codecs.h"
#include "image/settings.h"
#include "pixels_of.h"
#include "support/corpus.h"

namespace vellum {
namespace {

using testing::corpus_file;
using testing::corpus_rows;
using testing::greatest_difference;
using testing::md5_of;
using testing::rgba_of;
using testing::TableRow;

const GraphicFileModule& module_of(const TableRow& row) {
  const std::string kind = row.at("kind").substr(0, row.at("kind").find('-'));
  for (const auto& module : graphic_file_modules())
    if (module.extension == (kind == "jpeg" ? "jpg" : kind)) return module;
  throw std::logic_error("no module for " + kind);
}

std::vector<TableRow> rows_of_codecs() {
  return corpus_rows({"jpeg", "bmp", "gif", "pcx", "tga", "webp", "webp-bad"});
}

std::string md5_of_picture(const Picture& picture) {
  const std::string bytes = rgba_of(picture);
  return md5_of(bytes.data(), bytes.size());
}

/// The mean alpha, as the corpus states it.
double stated_alpha(const TableRow& row) {
  const std::string& mean = row.at("mean_rgba_premultiplied");
  return std::stod(mean.substr(mean.rfind(',') + 1));
}

/// Files that decoders read apart, each in its own way.
const std::set<std::string> kReadApart = {
    "bmp/bmpsuite-badrle4bis.bmp",  // runs that leave the picture
    "bmp/bmpsuite-badrlebis.bmp",
    "bmp/bmpsuite-rgb32-7187.bmp",  // the one oracle does not bring narrow fields to 255
    "bmp/bmpsuite-rgba16-1924.bmp",
    "bmp/bmpsuite-rgba32-1010102.bmp",
    "bmp/bmpsuite-rgba32-61754.bmp",
    "gif/pygif-invalid-colors.gif",  // an index behind the table
    "pcx/pillow-01r_00.pcx",         // rows shorter than the picture is wide
    "tga/gdkpixbuf-colormap-image-without-colormap.tga"};

GraphicReading reading_of(const TableRow& row, Part part = Part::Whole) {
  return read_graphic_file(corpus_file(row).string(), part);
}

Picture corpus_picture(const std::string& path) {
  for (const TableRow& row : rows_of_codecs())
    if (row.at("path") == path) return reading_of(row).picture;
  return {};
}

class Corpus : public ::testing::Test {
 protected:
  void SetUp() override {
    if (rows_of_codecs().empty()) GTEST_SKIP() << "the corpus of real files is not here";
  }
};

TEST_F(Corpus, FilesThatLoadHaveThePixelsOfTheIndex) {
  std::map<std::string_view, int> compared;
  for (const TableRow& row : rows_of_codecs()) {
    const std::string& name = row.at("path");
    if (row.at("pixel_md5").empty() || kReadApart.contains(name)) continue;
    const GraphicFileModule& module = module_of(row);
    const Picture picture = reading_of(row).picture, information = reading_of(row, Part::Header).picture;
    ASSERT_TRUE(picture && information) << name;
    if (row.at("verdict") == "loads") EXPECT_EQ(reading_of(row).told, "") << name;
    EXPECT_EQ(information.handle().size(), Picture::kHeaderBytes + 4 * information.colours()) << name;
    EXPECT_TRUE(std::ranges::equal(information.handle().bytes(),
                                   picture.handle().bytes().first(information.handle().size())))
        << name << ": the information differs from the picture";
    // A transparent index is not applied: such pixels keep their color.
    if (picture.bits() < 32 && stated_alpha(row) < 255) continue;
    ++compared[module.extension];
    EXPECT_THAT((std::array{row.at("pixel_md5"), row.at("pixel_md5_alt")}),
                ::testing::Contains(md5_of_picture(picture)))
        << name;
  }
  for (const auto& [extension, least] : std::map<std::string_view, int>{
           {"jpg", 30}, {"bmp", 24}, {"gif", 25}, {"pcx", 14}, {"tga", 17}, {"webp", 40}})
    EXPECT_GE(compared[extension], least) << extension;
}

TEST_F(Corpus, FilesThatToolsRejectGiveNullOrSayWhatIsMissing) {
  for (const TableRow& row : rows_of_codecs()) {
    if (row.at("verdict") != "rejected" || row.at("path") == "bmp/bmpsuite-pal2.bmp") continue;
    EXPECT_NE(reading_of(row).told, "") << row.at("path");
  }
}

TEST_F(Corpus, TwoBitsOfABitmapBecomeFour) {
  const Picture picture = corpus_picture("bmp/bmpsuite-pal2.bmp");
  ASSERT_TRUE(picture);
  EXPECT_EQ(picture.bits(), 4u);
  std::set<Colour> used;
  for (std::uint32_t y = 0; y < picture.height(); ++y)
    for (std::uint32_t x = 0; x < picture.width(); ++x) used.insert(PictureGetPixel(picture, x, y));
  EXPECT_EQ(used, (std::set<Colour>{0, 1, 2, 3}));
}

TEST_F(Corpus, FieldsOfAnyWidthReachTheirWholeRange) {
  // The same picture: 7 bits of red and blue are off by 1 at most.
  EXPECT_LE(greatest_difference(rgba_of(corpus_picture("bmp/bmpsuite-rgb32-7187.bmp")),
                                rgba_of(corpus_picture("bmp/bmpsuite-rgb24.bmp"))),
            2);
  for (const std::string name : {"rgba16-1924", "rgba32-1010102", "rgba32-61754"}) {
    const std::string pixels = rgba_of(corpus_picture("bmp/bmpsuite-" + name + ".bmp"));
    for (std::size_t channel = 0; channel < 4; ++channel) {
      std::set<char> values;
      for (std::size_t i = channel; i < pixels.size(); i += 4) values.insert(pixels[i]);
      EXPECT_TRUE(values.contains('\0') && values.contains('\xFF')) << name << " channel " << channel;
    }
  }
}

std::vector<std::uint8_t> bytes_of(const std::filesystem::path& path) {
  std::string reason;
  const auto file = read_file(path, reason, kMaximumFileBytes);
  return file ? std::vector<std::uint8_t>(file->data(), file->data() + file->size())
              : std::vector<std::uint8_t>();
}

/// Sizes stay small: this is no test of large pictures.
void decode_when_small(const GraphicFileModule& module, FileBytes bytes) {
  const GraphicSwitches switches{true, {}, {}};
  const Picture information = module.decode(bytes, Part::Header, switches).picture;
  if (information && std::uint64_t{information.width()} * information.height() >= 4'000'000) return;
  const GraphicReading reading = module.decode(bytes, Part::Whole, switches);
  EXPECT_TRUE(!reading.picture || reading.fault == GraphicFault::None);
}

// Each file is cut and changed in a copy of exactly its length, so that the sanitizers see a read behind its
// end.
TEST_F(Corpus, CutAndChangedFilesNeverLeaveTheirBytes) {
  std::mt19937 random(99);
  for (const TableRow& row : rows_of_codecs()) {
    const auto whole = bytes_of(corpus_file(row));
    if (whole.empty() || whole.size() > 40'000) continue;
    for (int i = 0; i < 12; ++i) {
      const std::vector<std::uint8_t> cut(
          whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(random() % whole.size()));
      decode_when_small(module_of(row), cut);
      auto changed = whole;
      for (int k = 0; k < 4; ++k) {
        // Half of the changes hit the headers.
        const std::size_t at = random() % (k & 1 ? std::min<std::size_t>(whole.size(), 64) : whole.size());
        changed[at] = static_cast<std::uint8_t>(random() % 3 ? random() % 16 : random());
      }
      decode_when_small(module_of(row), changed);
    }
  }
}

}  // namespace
}  // namespace vellum
