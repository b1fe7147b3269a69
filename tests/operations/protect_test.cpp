// The protection matrix: tiles that are the picture again, pages that lead to them, groups as a file keeps
// them.
#include <gtest/gtest.h>

#include <fstream>

#include "core/files/open_document.h"
#include "core/model/record_picture.h"
#include "image/picture_operations.h"
#include "operations/operation.h"
#include "operations/tile_groups.h"
#include "support/corpus.h"
#include "support/documents.h"
#include "support/judge.h"

namespace vellum {
namespace {

using testing::Recorder;

DocumentWindow still_of(std::uint32_t width, std::uint32_t height, std::uint8_t color_type) {
  DocumentWindow window = testing::small_document(DocumentKind::PING, 1, color_type);
  const auto entry = frame_entries(window).front();
  ChunkRecord record;
  chunk_list_get(window.list, entry, record);
  const std::uint32_t bits = picture_of(record).bits();
  Picture picture = testing::small_picture(width, height, bits);
  if (bits <= 8) {
    Palette palette;
    PictureGetPalette(picture_of(record), palette);
    PictureSetPalette(picture, palette);
  }
  record_take_pixels(record, DocumentKind::PING, picture);
  chunk_list_put(window.list, entry, record);
  document_extent(window.list, window.document);
  window.document.fileName = "odd & \"na'me.png";
  return window;
}

TEST(Protect, TilesAreThePictureAgainAndOtherFilesStay) {
  const Operation& operation = *find_operation("protect");
  for (const std::uint8_t color_type : {2, 3, 6})
    for (const auto& [width, height, tile, least] :
         {std::tuple(150u, 97u, 64, 16), std::tuple(70u, 65u, 64, 16), std::tuple(64u, 200u, 16, 1)}) {
      testing::ScratchFolder folder;
      DocumentWindow window = still_of(width, height, color_type);
      const Picture picture = testing::images_of(window).front();
      FieldValues values = initial_values(operation.parameters.fields);
      values.set("folder", (folder / "tiles").string());
      values.set("tile", std::int64_t{tile}), values.set("least", std::int64_t{least});
      std::filesystem::create_directories(folder / "tiles");
      std::ofstream(folder / "tiles/other_00001.png") << "other";
      Recorder recorder;
      ASSERT_TRUE(run_operation(operation, window, values, {0}, recorder.host))
          << ::testing::PrintToString(recorder.messages);
      EXPECT_EQ(testing::file_text(folder / "tiles/other_00001.png"), "other");
      std::uint32_t x = 0, y = 0, pixels = 0;
      for (int number = 1; y < height; ++number) {
        char name[40];
        std::snprintf(name, sizeof name, "tiles/odd & \"na'me_%05d.png", number);
        DocumentWindow read;
        ASSERT_TRUE(open_document(read, folder / name, recorder.host)) << name;
        EXPECT_EQ(testing::objections(folder / name), "");
        const Picture part = testing::images_of(read).front();
        EXPECT_EQ(part.bits(), picture.bits());
        EXPECT_TRUE(part.width() >= static_cast<std::uint32_t>(least) &&
                    part.height() >= static_cast<std::uint32_t>(least));
        for (std::uint32_t v = 0; v < part.height(); ++v)
          for (std::uint32_t u = 0; u < part.width(); ++u, ++pixels)
            ASSERT_EQ(PictureGetPixel(part, u, v), PictureGetPixel(picture, x + u, y + v));
        x += part.width();
        if (x == width) x = 0, y += part.height();
      }
      EXPECT_EQ(pixels, width * height);
      const auto page = folder / "tiles" / "odd & \"na'me.html";
      const std::string text = testing::file_text(page);
      EXPECT_NE(text.find("url('odd%20%26%20%22na%27me_00001.png')"), std::string::npos);
      if (const auto tidy = testing::run_tool({"tidy", "-q", "-e", page}); tidy.there)
        EXPECT_LT(tidy.status, 2) << tidy.output;
      // What is there is replaced after a question alone.
      recorder.host.ask = [](const Message& message, bool) {
        EXPECT_EQ(message.id, StringId::TilesExistQuestion);
        return Answer::No;
      };
      std::ofstream(page) << "mine";
      EXPECT_FALSE(run_operation(operation, window, values, {0}, recorder.host));
      EXPECT_EQ(testing::file_text(page), "mine");
    }
  DocumentWindow small = still_of(63, 90, 2);
  FieldValues values = initial_values(operation.parameters.fields);
  values.set("folder", std::string("/nowhere"));
  Recorder recorder;
  EXPECT_FALSE(run_operation(operation, small, values, {0}, recorder.host));
  EXPECT_EQ(recorder.messages,
            std::vector<std::string>{std::string(string_text(StringId::TooSmallForMatrix))});
}

TEST(TileGroups, ReadBackAndDamageIsTold) {
  const std::string text = "; mine\n[A b]\nTileSize=64\nImagePath= http://x/y \n\n[c]\nwriteheader=0\n";
  const auto groups = parse_tile_groups(text);
  ASSERT_TRUE(groups);
  ASSERT_EQ(groups->size(), 2u);
  EXPECT_EQ((*groups)[0].values.number("tile"), 64);
  EXPECT_EQ((*groups)[0].values.text("imagePath"), "http://x/y");
  EXPECT_EQ((*groups)[1].values.number("whole"), 0);
  EXPECT_EQ((*groups)[1].values.number("tile"), 128);
  EXPECT_EQ(tile_groups_text(*parse_tile_groups(tile_groups_text(*groups))), tile_groups_text(*groups));
  for (const char* bad :
       {"TileSize=1", "[a]\nTileSize=9", "[a]\n[A]", "[]", "[a", "[a]\nx", "[a]\nNo=1", "[\xFF]"})
    EXPECT_FALSE(parse_tile_groups(bad)) << bad;
}

}  // namespace
}  // namespace vellum
