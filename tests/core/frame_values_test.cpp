#include "core/frame_values.h"

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
    {"MNG", DocumentKind::MING, 0, 0, tag::BACK, {9, 10, 9, 20, 9, 30, 1}, make_colour(10, 20, 30)},
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
  EXPECT_EQ(frame_offset(record, DocumentKind::APNG).x, 3);
  EXPECT_EQ(frame_offset(record, DocumentKind::WEBP).y, 4);
  EXPECT_EQ(frame_offset(record, DocumentKind::MING).x, 0) << "the image has no DEFI of its own";
  record.flags = CRF_DEFI;
  EXPECT_EQ(frame_offset(record, DocumentKind::MING).x, -2);
  record.image.edit().defiBytes = 4;
  EXPECT_EQ(frame_offset(record, DocumentKind::MING).x, 0) << "a DEFI without a location";
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
