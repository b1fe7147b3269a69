// Descriptions, default chunks, lists, layout and extent.
#include "base/byte_order.h"
#include "core/chunks/chunk_table.h"
#include "core/chunks/new_chunk.h"
#include "core/model/chunk_description.h"
#include "core/model/chunk_layout.h"
#include "core/settings.h"
#include "support/documents.h"

namespace vellum {
namespace {

using testing::record_of;

std::string hex(const ChunkRecord& record) {
  std::string text;
  for (const std::uint8_t byte : raw_payload(record)) {
    text += "0123456789ABCDEF"[byte >> 4];
    text += "0123456789ABCDEF"[byte & 15];
  }
  return text;
}

TEST(Description, IsTheLineOfTheTag) {
  const auto header = [](ChunkTag tag, int depth, int type) {
    ChunkRecord record;
    record.tag = tag;
    record.width = 320;
    record.height = 200;
    record.bitDepth = static_cast<std::uint8_t>(depth);
    record.colorType = static_cast<std::uint8_t>(type);
    return record;
  };
  const auto plays = [](std::uint32_t count) {
    ChunkRecord record;
    record.tag = tag::acTL;
    record.numPlays = count;
    return record;
  };
  const std::pair<ChunkRecord, const char*> cases[] = {
      {header(tag::IHDR, 8, 2), "HEADER? IHDR (320 x 200, 16,777,216 colors)"},
      {header(tag::IHDR, 16, 6), "HEADER? IHDR (320 x 200, 281,474,976,710,656 colors)"},
      {header(tag::PNGI, 1, 3), "PNG IMAGE? PNGI (320 x 200, 2 colors)"},
      {plays(0), "ANIMATION CONTROL? acTL (infinite loops)"},
      {plays(1000), "ANIMATION CONTROL? acTL (1,000 loops)"},
      {record_of(tag::PLTE, std::string(48, 'x')), "PALETTE? PLTE (16 entries)"},
      {record_of(tag::tIME, std::string("\x07\xE8\x03\x05\x09\x07\x03", 7)),
       "TIME? tIME March 5,2024 9:07:03"},
      {record_of(tag::tIME, std::string("\x07\xE8\x00\x05\x09\x07\x03", 7)),
       "TIME? tIME January 5,2024 9:07:03"},
      {record_of(tag::tIME, std::string("\x07\xE8\x0D\x05\x09\x07\x03", 7)),
       "TIME? tIME December 5,2024 9:07:03"},
      {record_of(tag::tIME, "\x07"), "TIME? tIME January 0,1792 0:00:00"},
      {record_of(tag::tEXt, std::string("Title\0a?b", 9)), "TEXT? tEXt Title"},
      {record_of(tag::tEXt, std::string("Ti\x01tle\0a", 8)), "TEXT? tEXt Ti"},
      {record_of(tag::zTXt, std::string("Gr\xFC\xDF\0a", 6)), "TEXT? zTXt Gr\u00fc\u00df"},
      {record_of(tag::gAMA, std::string("\x00\x00\xB1\x8F", 4)), "GAMMA? gAMA 2.20"},
      {record_of(make_tag("abCd"), "x"), "UNKNOWN? abCd"},
      {record_of(0x01020304, "x"), "UNKNOWN? ????"},
  };
  for (const auto& [record, text] : cases) EXPECT_EQ(chunk_description(record), text);
}

TEST(Description, RowsArePartedAtTheFirstQuestionMark) {
  const RowText row = row_text(9, "TEXT? tEXt why? because");
  EXPECT_EQ(row.label, "   10: TEXT");
  EXPECT_EQ(row.text, " tEXt why? because");
}

TEST(Description, IsCutAtACharacter) {
  const std::string text = chunk_description(record_of(tag::tEXt, std::string(259, '\xE9')));
  EXPECT_LE(text.size(), 260u);
  EXPECT_NE(static_cast<unsigned char>(text.back()) & 0xC0, 0xC0) << "half a character";
}

DocumentWindow window_with_header(DocumentKind kind, int type, int depth) {
  DocumentWindow window;
  window.document.kind = kind;
  ChunkRecord header;
  header.tag = tag::IHDR;
  header.width = header.height = 10;
  header.colorType = static_cast<std::uint8_t>(type);
  header.bitDepth = static_cast<std::uint8_t>(depth);
  chunk_list_append(window.list, window.document, header);
  return window;
}

TEST(NewChunk, HasTheContentOfItsTag) {
  struct Case {
    ChunkTag tag;
    int type, depth;
    std::uint32_t number;
    const char* payload;
  };
  const Case cases[] = {
      {tag::gAMA, 2, 8, 0, "0000B18F"},
      {tag::tRNS, 0, 8, 0, "00FF"},
      {tag::tRNS, 0, 2, 0, "0003"},
      {tag::tRNS, 0, 16, 0, "FFFF"},
      {tag::tRNS, 2, 8, 0, "00FF00FF00FF"},
      {tag::tRNS, 3, 2, 100, "FFFFFFFF"},
      {tag::tRNS, 3, 8, 0, "FF"},
      {tag::bKGD, 2, 8, 0, "00FF00FF00FF"},
      {tag::bKGD, 6, 16, 0, "FFFFFFFFFFFF"},
      {tag::bKGD, 0, 4, 0, "000F"},
      {tag::bKGD, 3, 8, 0, "00"},
      {tag::BACK, 2, 8, 0, "FFFFFFFFFFFF00000000"},
      {tag::TERM, 2, 8, 0, "03000000000000000000"},
      {tag::LOOP, 2, 8, 258, "0000000102"},
      {tag::ENDL, 2, 8, 0, "00"},
      {tag::FRAM, 2, 8, 50, "01000100000000000032"},
      {tag::DEFI, 2, 8, 0x00030002, "000000010000000200000003"},
  };
  for (const Case& c : cases) {
    const DocumentWindow window = window_with_header(DocumentKind::PING, c.type, c.depth);
    ChunkRecord record;
    NewChunkArgument argument;
    argument.number = c.number;
    ASSERT_TRUE(new_chunk(window, record, c.tag, argument)) << tag_letters(c.tag);
    EXPECT_EQ(hex(record), c.payload) << tag_letters(c.tag) << " of type " << c.type << ", depth " << c.depth;
  }
}

TEST(NewChunk, FailsWithTheRecordZeroed) {
  const DocumentWindow bare;
  const DocumentWindow glass = window_with_header(DocumentKind::PING, 6, 8);
  ChunkRecord record;
  record.width = 5;
  EXPECT_FALSE(new_chunk(bare, record, tag::bKGD)) << "no header";
  EXPECT_EQ(record.width, 0u);
  EXPECT_EQ(record.tag, 0u);
  EXPECT_FALSE(new_chunk(glass, record, tag::tRNS)) << "true color with alpha has none";
  EXPECT_FALSE(new_chunk(glass, record, tag::IDAT)) << "no picture";
  EXPECT_FALSE(new_chunk(glass, record, make_tag("abCd")));
}

TEST(NewChunk, ImagesFollowTheirPicture) {
  const Picture four = PictureCreate(3, 2, nullptr, 4), glass = PictureCreateAlpha(3, 2);
  NewChunkArgument argument;
  argument.picture = four.handle();
  ChunkRecord record;
  ASSERT_TRUE(new_chunk(window_with_header(DocumentKind::MING, 2, 8), record, tag::PNGI, argument));
  EXPECT_EQ(record.flags, std::uint32_t{CRF_IHDR | CRF_IDAT | CRF_PLTE});
  EXPECT_EQ(record.bitDepth, 4);
  EXPECT_EQ(record.colorType, 3);
  EXPECT_EQ(record.image->paletteBytes, 48u);
  argument.picture = glass.handle();
  ASSERT_TRUE(new_chunk(window_with_header(DocumentKind::APNG, 2, 8), record, tag::IDAT, argument));
  EXPECT_EQ(record.frameControl.frameWidth, 3u);
  EXPECT_EQ(record.frameControl.delayNum, 10);
  EXPECT_EQ(record.frameControl.delayDen, 1000);
  EXPECT_TRUE(record.data.shares_with(glass.handle())) << "the picture is taken over, not copied";
  ASSERT_TRUE(new_chunk(window_with_header(DocumentKind::WEBP, 2, 8), record, tag::WEBI, argument));
  EXPECT_EQ(record.webpImage.colorType, 6u);
  EXPECT_EQ(record.webpImage.delay, 10u);
}

TEST(Layout, ClampsTheScaleAndSetsHeights) {
  struct Case {
    int index;
    Extent size;
    int expected;
  };
  const Case cases[] = {{7, {400, 10}, 4},  {5, {312, 176}, 5}, {5, {313, 176}, 4},
                        {5, {312, 177}, 4}, {7, {10, 10}, 7},   {0, {10, 10}, 0},
                        {7, {3129, 10}, 1}, {7, {3130, 10}, 0}, {5, {1000000, 1000000}, 0}};
  for (const Case& c : cases)
    EXPECT_EQ(clamp_scale(c.index, c.size), c.expected) << c.size.width << " x " << c.size.height;
  DocumentWindow window = window_with_header(DocumentKind::PING, 2, 8);
  chunk_list_append(window.list, window.document, record_of(tag::IDAT, ""));
  window.document.thumbScale = 7;
  chunk_list_layout(window.list, window.document);
  EXPECT_EQ(window.list.entry(0).height, 32);
  EXPECT_EQ(window.list.entry(1).height, 10 * 2 + 12 + 32);
  window.document.thumbScale = 0;
  chunk_list_layout(window.list, window.document);
  EXPECT_EQ(window.list.entry(1).height, 24);
}

TEST(Extent, TheHeaderHoldsAllFramesAndTheDefaultImage) {
  DocumentWindow window = window_with_header(DocumentKind::APNG, 2, 8);
  const auto frame = [&](std::uint32_t x, std::uint32_t y, std::uint32_t width, std::uint32_t height) {
    ChunkRecord record;
    record.tag = tag::IDAT;
    record.frameControl = {0, width, height, x, y, 1, 10, 0, 0};
    chunk_list_append(window.list, window.document, record);
    chunk_list_close_change(window.list, window.document);
    return document_size(window.list, window.document);
  };
  EXPECT_EQ(frame(0, 0, 4, 3).width, 4u) << "it shrinks too";
  const Extent wide = frame(5, 1, 6, 1);
  EXPECT_EQ(wide.width, 11u);
  EXPECT_EQ(wide.height, 3u);
  EXPECT_EQ(window.list.record(0).description, "HEADER? IHDR (11 x 3, 16,777,216 colors)");
  EXPECT_EQ(frame(0xFFFFFFF0, 0, 100, 1).width, 11u) << "what no header holds leaves it alone";
  window.list.remove(3);
  EXPECT_EQ(frame(1'000'000, 0, 1, 1).width, 11u) << "nor what no reader takes";
  window.list.remove(3);
  window.document.defaultImage = PictureCreate(20, 30, nullptr, 24).handle();
  document_extent(window.list, window.document);
  EXPECT_EQ(document_size(window.list, window.document).height, 30u);
}

TEST(ChunkList, CopiesShareTheirRecordsAndCostNoPixels) {
  DocumentWindow window = window_with_header(DocumentKind::APNG, 2, 8);
  NewChunkArgument argument;
  const Picture picture = PictureCreate(100, 100, nullptr, 32);
  argument.picture = picture.handle();
  ChunkRecord record;
  ASSERT_TRUE(new_chunk(window, record, tag::IDAT, argument));
  chunk_list_append(window.list, window.document, record);
  window.list.select(1, true);
  window.document.caret = 1;
  const DocumentWindow copy = duplicate_document(window, "Duplicate_");
  EXPECT_TRUE(copy.list.record(1).data.shares_with(window.list.record(1).data));
  EXPECT_TRUE(copy.list.entry(1).selected);
  EXPECT_EQ(copy.document.caret, 1);
  EXPECT_FALSE(copy.document.HasFileName);
  EXPECT_EQ(copy.document.fileName, "Duplicate_untitled.png");
}

TEST(ChunkList, TellsWhatChangedUnlessItIsQuiet) {
  DocumentWindow window;
  std::vector<ListChange> told;
  window.list.changed = [&](const ListChange& change) { told.push_back(change); };
  chunk_list_append(window.list, window.document, record_of(tag::tEXt, "a"));
  ASSERT_EQ(told.size(), 1u);
  EXPECT_EQ(told[0].what, ListChange::What::Inserted);
  {
    const QuietList quiet(window.list);
    chunk_list_append(window.list, window.document, record_of(tag::tEXt, "b"));
    EXPECT_EQ(told.size(), 1u);
  }
  ASSERT_EQ(told.size(), 2u);
  EXPECT_EQ(told[1].what, ListChange::What::Reset);
}

TEST(ChunkTable, ChecksPayloadsAgainstTheHeader) {
  struct Case {
    ChunkTag tag;
    std::string payload;
    PngContext image;
    bool valid;
  };
  const PngContext grey4{4, 0, 0}, color8{8, 2, 0}, indexed{8, 3, 4}, glass{8, 6, 0};
  const Case cases[] = {
      {tag::gAMA, std::string(4, '\0'), color8, false},
      {tag::gAMA, testing::be32(45455), color8, true},
      {tag::tRNS, testing::be16(15), grey4, true},
      {tag::tRNS, testing::be16(16), grey4, false},
      {tag::tRNS, "abcd", indexed, true},
      {tag::tRNS, "abcde", indexed, false},
      {tag::tRNS, "ab", glass, false},
      {tag::bKGD, std::string("\x03", 1), indexed, true},
      {tag::bKGD, std::string("\x04", 1), indexed, false},
      {tag::sBIT, "\x05\x06\x05", color8, true},
      {tag::sBIT, "\x05\x09\x05", color8, false},
      {tag::tIME, std::string("\x07\xE8\x0C\x1F\x17\x3B\x3C", 7), color8, true},
      {tag::tIME, std::string("\x07\xE8\x0D\x1F\x17\x3B\x3C", 7), color8, false},
      {tag::tEXt, std::string("Title\0x", 7), color8, true},
      {tag::tEXt, std::string("Title", 5), color8, false},
      {tag::tEXt, std::string("\0x", 2), color8, false},
      {tag::iTXt, std::string("Title\0\0\0en\0t\0text", 16), color8, true},
      {tag::iTXt, std::string("Title\0\0\1en\0t\0text", 16), color8, false},
      {make_tag("vlCh"), "", color8, true},
      {make_tag("vlch"), "", color8, false},
      {0x76314368, "", color8, false},
  };
  for (const Case& c : cases) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(c.payload.data());
    EXPECT_EQ(is_valid_chunk(c.tag, {bytes, c.payload.size()}, c.image), c.valid)
        << tag_letters(c.tag) << " " << c.payload;
  }
}

}  // namespace
}  // namespace vellum
