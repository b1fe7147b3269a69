// Documents of every kind as every other kind: nothing of an animation but its container changes.
#include "core/chunk_layout.h"
#include "core/convert_records.h"
#include "core/frame_layer.h"
#include "core/frame_values.h"
#include "core/new_chunk.h"
#include "core/open_document.h"
#include "core/save_document.h"
#include "core/settings.h"
#include "support/corpus.h"
#include "support/documents.h"
#include "support/judge.h"

namespace vellum {
namespace {

using testing::Recorder;

struct Kind {
  DocumentKind kind;
  const char* name;
  std::vector<std::string> judge;  ///< the command in front of the file's name
};

const Kind kAnimated[] = {{DocumentKind::APNG, "a.png", {"pngcheck", "-q"}},
                          {DocumentKind::MING, "a.mng", {"pngcheck", "-q"}},
                          {DocumentKind::WEBP, "a.webp", {"webpinfo", "-quiet"}}};

std::vector<std::uint32_t> delays_of(const DocumentWindow& window) {
  ChunkRecord header;
  const bool mng = chunk_find_first(window.list, tag::MHDR, &header) != kNoEntry;
  std::vector<std::uint32_t> delays;
  for (std::size_t i = 0; i < window.list.size(); ++i)
    if (is_image_entry(window.document.kind, window.list.record(i).tag))
      delays.push_back(
          frame_delay_ms(window.list.record(i), window.document.kind, mng ? header.ticksPerSecond : 1000));
  return delays;
}

TEST(Convert, CorpusAnimationsKeepTheirFramesDelaysAndPlaysInEveryKind) {
  VELLUM_NEEDS_CORPUS();
  const testing::ScratchFolder folder;
  settings::PngCompression = 1;
  settings::WEBPLossless = 1;
  std::size_t converted_files = 0;
  for (const auto& row : testing::corpus_rows({"apng", "mng", "webp"})) {
    Recorder recorder;
    DocumentWindow window;
    if (std::stoul("0" + row.at("width")) * std::stoul("0" + row.at("height")) > 60'000 ||
        !open_document(window, testing::corpus_file(row), recorder.host) ||
        testing::images_of(window).size() < 2)
      continue;
    for (const Kind& to : kAnimated) {
      if (to.kind == window.document.kind) continue;
      DocumentWindow converted, again;
      const auto file = folder / to.name;
      ASSERT_TRUE(convert_document(window, converted, to.kind, recorder.host))
          << row.at("path") << recorder.host.take_fault();
      ASSERT_TRUE(save_document(converted, file, recorder.host)) << row.at("path") << to.name;
      auto command = to.judge;
      command.push_back(file);
      const auto judged = testing::run_tool(command);
      if (judged.there) EXPECT_EQ(judged.status, 0) << row.at("path") << " as " << to.name << judged.output;
      ASSERT_TRUE(open_document(again, file, recorder.host)) << row.at("path") << to.name;
      EXPECT_EQ(delays_of(again), delays_of(window)) << row.at("path") << " as " << to.name;
      EXPECT_EQ(GetIterations(again.list, again.document), GetIterations(window.list, window.document))
          << row.at("path") << " as " << to.name;
      ++converted_files;
    }
  }
  settings::PngCompression = 9;
  settings::WEBPLossless = 0;
  EXPECT_GT(converted_files, 100u);
}

/// An animated PNG of a red canvas and a small green frame at (1, 2).
DocumentWindow small_animation() {
  DocumentWindow window;
  window.document.kind = DocumentKind::APNG;
  ChunkRecord record;
  for (const ChunkTag tag : {tag::IHDR, tag::acTL, tag::tEXt}) {
    new_chunk(window, record, tag);
    chunk_list_append(window.list, window.document, record);
  }
  NewChunkArgument argument;
  argument.picture = PictureCreateFilled(6, 5, 0x0000FF).handle();
  new_chunk(window, record, tag::IDAT, argument);
  chunk_list_append(window.list, window.document, record);
  argument.picture = PictureCreateFilled(2, 3, 0x00FF00).handle();
  new_chunk(window, record, tag::IDAT, argument);
  record.frameControl.xOffset = 1;
  record.frameControl.yOffset = 2;
  record.frameControl.delayNum = 250;
  chunk_list_append(window.list, window.document, record);
  new_chunk(window, record, tag::IEND);
  chunk_list_append(window.list, window.document, record);
  chunk_list_close_change(window.list, window.document);
  return window;
}

TEST(Convert, OffsetsStayWhereTheKindHasThemAndCanvasesAreMadeWhereNot) {
  const DocumentWindow window = small_animation();
  Host host;
  DocumentWindow mng, back, webp, png;
  ASSERT_TRUE(convert_document(window, mng, DocumentKind::MING, host));
  EXPECT_EQ(testing::tags_of(mng.list), "MHDR tEXt LOOP PNGI PNGI ENDL MEND");
  EXPECT_EQ(GetFrameOffset(mng.list.record(4), DocumentKind::MING).y, 2);
  EXPECT_EQ(testing::images_of(mng)[1].width(), 2u);
  ASSERT_TRUE(convert_document(mng, back, DocumentKind::APNG, host));
  EXPECT_EQ(testing::tags_of(back.list), testing::tags_of(window.list));
  EXPECT_EQ(back.list.record(4).frameControl.xOffset, 1u);
  EXPECT_EQ(delays_of(back), delays_of(window));
  ASSERT_TRUE(convert_document(window, webp, DocumentKind::WEBP, host));
  const Picture canvas = testing::images_of(webp)[1];
  ASSERT_EQ(canvas.width(), 6u);
  EXPECT_EQ(PictureGetPixelOpaque(canvas, 1, 2) & 0xFFFFFF, 0x00FF00u);
  EXPECT_EQ(PictureGetPixelOpaque(canvas, 0, 2) & 0xFFFFFF, 0x0000FFu) << "what was there shows around it";
  EXPECT_FALSE(convert_document(window, png, DocumentKind::PING, host));
  EXPECT_EQ(host.take_fault(), "the document has several images");
}

}  // namespace
}  // namespace vellum
