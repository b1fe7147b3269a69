// Animated cursors: the bytes that are written, what real files show, and the limits.
#include <gtest/gtest.h>

#include "base/byte_order.h"
#include "core/model/frame_values.h"
#include "exchange/exporter.h"
#include "exchange/importer.h"
#include "exchange/riff.h"
#include "operations/build_stills.h"
#include "operations/frames.h"
#include "support/corpus.h"
#include "support/documents.h"
#include "support/judge.h"

namespace vellum {
namespace {

using testing::Recorder;
using Bytes = std::vector<std::uint8_t>;

DocumentWindow animation_of(std::span<const Picture> pictures, std::uint32_t delay) {
  DocumentWindow window;
  Recorder recorder;
  EXPECT_TRUE(build_from_stills(window, hold_pictures(pictures), {DocumentKind::MING, delay, 0, true},
                                recorder.host));
  return window;
}

Bytes exported(const DocumentWindow& window, const char* hot_x = "16") {
  testing::ScratchFolder folder;
  FieldValues values = initial_values(find_exporter("ani")->parameters.fields);
  values.set("hotX", std::int64_t{std::atoi(hot_x)});
  Recorder recorder;
  const auto path = folder / "a.ani";
  EXPECT_TRUE(export_document(*find_exporter("ani"), window, values, path, recorder.host));
  return testing::file_bytes(path);
}

/// Little-endian numbers of four bytes, then text as it stands.
std::string le(std::initializer_list<std::uint32_t> values) {
  std::string bytes;
  for (const std::uint32_t value : values)
    for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(value >> shift);
  return bytes;
}

TEST(AniOut, TheLayoutIsTheStandardsByteForByte) {
  // Two pixels: red, and one that is transparent; 16 ms, which no sixtieth can tell.
  Picture picture = PictureCreateAlpha(2, 1);
  PicturePutPixel(picture, 0, 0, 0xFF0000FF);
  const Bytes bytes = exported(animation_of(std::array{picture}, 16));
  const std::string icon = std::string("\0\0\2\0\1\0\2\1\0\0\1\0\0\0", 14) + le({40 + 8 + 4, 22}) +
                           le({40, 2, 2}) + std::string("\1\0\40\0", 4) + le({0, 12, 0, 0, 0, 0}) +
                           le({0xFFFF0000, 0}) + std::string("\x40\0\0\0", 4);
  const std::string wanted = "RIFF" + le({static_cast<std::uint32_t>(4 + 44 + 20 + icon.size() + 12)}) +
                             "ACONanih" + le({36, 36, 1, 1, 2, 1, 32, 1, 1, 1}) + "LIST" +
                             le({static_cast<std::uint32_t>(12 + icon.size())}) + "framicon" +
                             le({static_cast<std::uint32_t>(icon.size())}) + icon + "rate" + le({4, 0});
  EXPECT_EQ(std::string(bytes.begin(), bytes.end()), wanted);
}

TEST(AniOut, PalettesOfOneAndFourBitsStayWhereAllFramesHaveThem) {
  for (const std::uint32_t bits : {1u, 4u, 8u, 24u}) {
    const std::array pictures{testing::small_picture(5, 3, bits, 1), testing::small_picture(5, 3, bits, 2)};
    const Bytes bytes = exported(animation_of(pictures, 100));
    EXPECT_EQ(read_le32(&bytes[20 + 20]), bits < 8 ? bits : 32u);
    Recorder recorder;
    DocumentWindow again;
    FieldValues values = initial_values(find_importer("import-ani")->parameters.fields);
    ASSERT_TRUE(import_bytes(*find_importer("import-ani"), again, "a.ani", bytes, values, recorder.host));
    const auto images = testing::images_of(again);
    ASSERT_EQ(images.size(), 2u);
    for (std::size_t i = 0; i < 2; ++i)
      EXPECT_EQ(testing::rgba_of(again, images[i]), testing::rgba_of(again, pictures[i])) << bits;
  }
}

TEST(AniOut, CursorsAreAtMost256PixelsWideAndHigh) {
  for (const auto& [width, height, fits] :
       {std::tuple(256u, 256u, true), {257u, 1u, false}, {1u, 257u, false}}) {
    Recorder recorder;
    const auto run =
        prepare_export(*find_exporter("ani"),
                       animation_of(std::array{PictureCreateFilled(width, height, 0xFF)}, 10), recorder.host);
    EXPECT_EQ(run.has_value(), fits);
    EXPECT_EQ(recorder.messages.size(), fits ? 0u : 1u);
  }
}

TEST(AniIn, FilesOfTheCorpusGiveTheirFramesAndTimes) {
  VELLUM_NEEDS_CORPUS();
  std::size_t same = 0, seen = 0;
  for (const auto& row : testing::corpus_rows({"ani"})) {
    SCOPED_TRACE(row.at("path"));
    const auto bytes = testing::file_bytes(testing::corpus_file(row));
    Recorder recorder;
    DocumentWindow window;
    FieldValues values = initial_values(find_importer("import-ani")->parameters.fields);
    const bool read =
        import_bytes(*find_importer("import-ani"), window, "a.ani", bytes, values, recorder.host);
    if (row.at("verdict") == "rejected") continue;
    ASSERT_TRUE(read);
    EXPECT_EQ(testing::tags_of(window.list).find("MHDR tEXt LOOP PNGI"), 0u) << testing::tags_of(window.list);
    const auto parts = riff_chunks(riff_chunks(bytes).front().data);
    const RiffChunk* sequence = find_chunk(parts, "seq ");
    const auto entries = frame_entries(window);
    const auto images = testing::images_of(window);
    for (const auto& step : testing::corpus_frames(row.at("path"))) {
      std::size_t frame = std::stoul(step.at("frame"));
      const bool first = !sequence || frame == 0;
      if (sequence && sequence->data.size() >= 4 * frame + 4) frame = read_le32(&sequence->data[4 * frame]);
      ASSERT_LT(frame, images.size());
      const auto rgba = testing::rgba_of(window, images[frame]);
      // One of the oracles multiplies colors by alpha on its way.
      if (step.at("agreeing_oracles").find("pil") == std::string::npos) continue;
      ++seen;
      same += testing::md5_of(rgba.data(), rgba.size()) == step.at("rgba_md5");
      if (first) {
        const auto delay = frame_delay_ms(window.list.record(entries[frame]), DocumentKind::MING, 1000);
        EXPECT_NEAR(delay, std::stod(step.at("delay_ms")), 1.0);
      }
    }
  }
  EXPECT_GT(seen, 100u);
  EXPECT_EQ(same, seen);
}

}  // namespace
}  // namespace vellum
