#include "core/model/frame_values.h"

#include "core/settings.h"

namespace vellum {
namespace {

struct BackgroundCase {
  const char* name;
  DocumentKind kind;
  std::uint8_t colorType, bitDepth;
  ChunkTag tag;
  std::vector<std::uint8_t> payload;
  Colour expected;
};

const BackgroundCase kBackgrounds[] = {
    {"RGB", DocumentKind::PING, 2, 8, tag::bKGD, {0, 10, 0, 20, 0, 30}, make_colour(10, 20, 30)},
    {"RGBA, short", DocumentKind::APNG, 6, 8, tag::bKGD, {0, 10, 0}, make_colour(10, 0, 0)},
    {"grey, 8 bits", DocumentKind::PING, 4, 8, tag::bKGD, {0, 77}, make_colour(77, 77, 77)},
    {"grey, 2 bits", DocumentKind::PING, 0, 2, tag::bKGD, {0, 1}, make_colour(85, 85, 85)},
    {"grey, beyond its depth", DocumentKind::PING, 0, 1, tag::bKGD, {0, 200}, make_colour(255, 255, 255)},
    {"palette", DocumentKind::PING, 3, 8, tag::bKGD, {7}, make_colour(1, 2, 3)},
    {"none", DocumentKind::PING, 2, 8, tag::tEXt, {0, 10, 0, 20, 0, 30}, make_colour(1, 2, 3)},
    {"MNG", DocumentKind::MING, 0, 0, tag::BACK, {10, 0, 20, 255, 30, 9, 1}, make_colour(10, 20, 30)},
    {"RGB, 16 bits", DocumentKind::PING, 2, 16, tag::bKGD, {10, 9, 20, 9, 30, 9}, make_colour(10, 20, 30)},
};

TEST(DocumentBackground, ComesFromTheChunkThatTheKindHasForIt) {
  const int kept = std::exchange(settings::DefaultBackgroundColour, static_cast<int>(make_colour(1, 2, 3)));
  for (const BackgroundCase& c : kBackgrounds) {
    DocumentWindow window;
    window.document.kind = c.kind;
    ChunkRecord header;
    header.tag = c.kind == DocumentKind::MING ? tag::MHDR : tag::IHDR;
    header.colorType = c.colorType;
    header.bitDepth = c.bitDepth;
    ChunkRecord record;
    record.tag = c.tag;
    record.data = ChunkHandle::copy_of(c.payload);
    record.size = static_cast<std::int32_t>(c.payload.size());
    chunk_list_append(window.list, window.document, header);
    chunk_list_append(window.list, window.document, record);
    EXPECT_EQ(document_background(window.list, window.document), c.expected) << c.name;
  }
  settings::DefaultBackgroundColour = kept;
}

TEST(FrameOffset, IsReadWhereTheKindKeepsIt) {
  ChunkRecord record;
  record.frameControl.xOffset = 3;
  record.webpImage.yOffset = 4;
  record.image.edit().defiBlock.xLocation = static_cast<std::int32_t>(0xFEFFFFFF);  // -2 in file order
  record.image.edit().defiBytes = 12;
  EXPECT_EQ(GetFrameOffset(record, DocumentKind::APNG).x, 3);
  EXPECT_EQ(GetFrameOffset(record, DocumentKind::WEBP).y, 4);
  EXPECT_EQ(GetFrameOffset(record, DocumentKind::MING).x, 0) << "the image has no DEFI of its own";
  record.flags = CRF_DEFI;
  EXPECT_EQ(GetFrameOffset(record, DocumentKind::MING).x, -2);
  record.image.edit().defiBytes = 4;
  EXPECT_EQ(GetFrameOffset(record, DocumentKind::MING).x, 0) << "a DEFI without a location";
}

TEST(FrameDelay, CountsBegunMillisecondsWhole) {
  ChunkRecord record;
  const auto apng = [&](std::uint16_t amount, std::uint16_t per) {
    record.frameControl.delayNum = amount;
    record.frameControl.delayDen = per;
    return frame_delay_ms(record, DocumentKind::APNG, 0);
  };
  EXPECT_EQ(apng(161, 5), 32'200u);
  EXPECT_EQ(apng(1, 3), 334u);
  EXPECT_EQ(apng(7, 0), 70u) << "a denominator of 0 means 100";
  EXPECT_EQ(apng(0, 10), 0u);
  record.image.edit().framBlock.interframeDelay = 201u << 24;  // the file's byte order
  EXPECT_EQ(frame_delay_ms(record, DocumentKind::MING, 25), 40u) << "no FRAM: one tick";
  record.flags = CRF_FRAM;
  EXPECT_EQ(frame_delay_ms(record, DocumentKind::MING, 25), 8'040u);
  EXPECT_EQ(frame_delay_ms(record, DocumentKind::MING, 0), 201'000u);
}

TEST(DocumentPlays, AreReadWhereTheKindKeepsThem) {
  struct Case {
    const char* what;
    DocumentKind kind;
    std::vector<std::pair<ChunkTag, std::vector<std::uint8_t>>> chunks;
    std::uint32_t plays;
  };
  const std::vector<std::uint8_t> five = {0, 0, 0, 0, 5}, for_ever = {0, 0x7F, 0xFF, 0xFF, 0xFF};
  const Case cases[] = {
      {"no acTL", DocumentKind::APNG, {{tag::IDAT, {}}}, 1},
      {"a LOOP", DocumentKind::MING, {{tag::LOOP, five}, {tag::PNGI, {}}}, 5},
      {"a LOOP for ever", DocumentKind::MING, {{tag::LOOP, for_ever}, {tag::PNGI, {}}}, 0},
      {"a LOOP behind", DocumentKind::MING, {{tag::PNGI, {}}, {tag::LOOP, five}}, 1},
      {"a TERM", DocumentKind::MING, {{tag::TERM, {3, 0, 0, 0, 0, 0, 0, 0, 0, 2}}, {tag::PNGI, {}}}, 3},
      {"a TERM for ever", DocumentKind::MING, {{tag::TERM, {3, 0, 0, 0, 0, 0, 0x7F, 0xFF, 0xFF, 0xFF}}}, 0},
      {"a TERM that ends", DocumentKind::MING, {{tag::TERM, {0}}, {tag::PNGI, {}}}, 1},
  };
  for (const Case& c : cases) {
    DocumentWindow window;
    window.document.kind = c.kind;
    for (const auto& [tag, payload] : c.chunks) {
      ChunkRecord record;
      record.tag = tag;
      record.data = ChunkHandle::copy_of(payload);
      chunk_list_append(window.list, window.document, record);
    }
    EXPECT_EQ(GetIterations(window.list, window.document), c.plays) << c.what;
  }
}

TEST(ChunkList, CountsWhatIsSelectedThroughEveryChange) {
  DocumentWindow window;
  for (int i = 0; i < 6; ++i) chunk_list_append(window.list, window.document, {});
  window.list.select_all(true);
  window.list.select(2, false);
  window.list.select(2, false);
  window.list.remove(1, 2);
  EXPECT_EQ(window.list.selected_count(), 4u);
  ChunkList copy(window.list);
  copy.remove(0);
  EXPECT_EQ(copy.selected_count(), 3u);
  window.list = copy;
  EXPECT_EQ(window.list.selected_count(), 3u);
  window.list.clear();
  EXPECT_EQ(window.list.selected_count(), 0u);
}

}  // namespace
}  // namespace vellum
