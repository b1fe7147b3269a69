// What rows tell behind their descriptions: all kinds of chunks in one table, frames in another.
#include "core/chunks/chunk_facts.h"

#include <random>

#include "core/chunks/chunk_table.h"
#include "core/model/chunk_description.h"
#include "core/model/frame_values.h"
#include "image/deflate.h"
#include "support/documents.h"

namespace vellum {
namespace {

using testing::be16;
using testing::be32;
using testing::record_of;

ChunkTag tag_of(std::string_view letters) {
  char tag[5] = {};
  std::ranges::copy(letters, tag);
  return make_tag(tag);
}

std::string deflated(std::string_view text) {
  const auto packed = deflate_bytes({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}, 6);
  return {packed.begin(), packed.end()};
}

/// A document of this kind: its header, of this color type at eight bits, a palette of two colors.
DocumentWindow with_header(DocumentKind kind, int type = 2) {
  DocumentWindow window;
  window.document.kind = kind;
  ChunkRecord header;
  header.tag = kind == DocumentKind::MING ? tag::MHDR : kind == DocumentKind::WEBP ? tag::WEBH : tag::IHDR;
  header.width = header.frameWidth = header.webpHeader.canvasWidth = 60;
  header.height = header.frameHeight = header.webpHeader.canvasHeight = 40;
  header.bitDepth = 8;
  header.colorType = static_cast<std::uint8_t>(type);
  header.ticksPerSecond = 100;
  chunk_list_append(window.list, window.document, header);
  if (kind == DocumentKind::PING)
    chunk_list_append(window.list, window.document, record_of(tag::PLTE, std::string("\1\2\3\xFF\x80\0", 6)));
  return window;
}

ChunkFacts facts_of(DocumentWindow window, const ChunkRecord& record) {
  chunk_list_append(window.list, window.document, record);
  return chunk_facts(window, window.list.size() - 1);
}

TEST(ChunkFacts, TellWhatTheBytesSay) {
  const std::string nul(1, '\0'), longest(240, 'x');
  struct Case {
    DocumentKind kind;
    int type;
    const char* tag;
    std::string payload;
    const char* facts;
    std::vector<Colour> colors = {};
  };
  constexpr auto kStill = DocumentKind::PING, kMng = DocumentKind::MING, kWebp = DocumentKind::WEBP;
  const Case cases[] = {
      {kStill,
       3,
       "PLTE",
       std::string("\1\2\3\xFF\x80\0", 6),
       "",
       {make_colour(1, 2, 3), make_colour(255, 128, 0)}},
      {kStill, 3, "tRNS", std::string("\0\x80\xFF\0", 4), "2 colors transparent, 1 color half transparent"},
      {kStill, 0, "tRNS", be16(255), "color 255", {make_colour(255, 255, 255)}},
      {kStill, 2, "tRNS", be16(255) + be16(0) + be16(7), "color 255, 0, 7", {make_colour(255, 0, 7)}},
      {kStill, 3, "bKGD", "\1", "color 1", {make_colour(255, 128, 0)}},
      {kStill, 3, "bKGD", "\7", "color 7"},
      {kStill, 4, "bKGD", be16(128), "128", {make_colour(128, 128, 128)}},
      {kMng,
       2,
       "BACK",
       be16(0xFFFF) + be16(0) + be16(0x8000) + "\1",
       "65535, 0, 32768, required",
       {make_colour(255, 0, 127)}},
      {kStill, 2, "gAMA", be32(45455), "stored as 45,455"},
      {kStill, 2, "sRGB", nul, "Standard RGB: rendering intent Perceptual"},
      {kStill, 2, "sBIT", "\5\6\5", "Significant bits: red 5 bits, green 6 bits, blue 5 bits"},
      {kStill, 2, "cHRM",
       be32(31270) + be32(32900) + be32(64000) + be32(33000) + be32(30000) + be32(60000) + be32(15000) +
           be32(6000),
       "Chromaticities: white point x 0.31270, y 0.32900, red x 0.64000, y 0.33000, green x 0.30000, y "
       "0.60000, "
       "blue x 0.15000, y 0.06000"},
      {kStill, 2, "cICP", std::string("\x09\x10\0\1", 4),
       "Video color space: BT.2020, BT.2100, PQ (BT.2100), identity (RGB), full range"},
      {kStill, 2, "mDCV", std::string(16, '\0') + be32(10'000'000) + be32(50),
       "Mastering display: 0.005 to 1000 cd/m\u00B2"},
      {kStill, 2, "cLLI", be32(10'000'000) + be32(4'000'000),
       "Light level: at most 1000 cd/m\u00B2, frames 400 cd/m\u00B2"},
      {kStill, 2, "iCCP", "Mine" + nul + nul + "xy", "Color profile: Mine, 8 bytes"},
      {kStill, 2, "pHYs", be32(2835) + be32(2835) + '\1', "Pixel size: 72.01 dpi, 2,835 pixels a meter"},
      {kStill, 2, "pHYs", be32(4) + be32(3) + nul, "Pixel size: 4 : 3"},
      {kStill, 2, "oFFs", be32(5) + be32(0xFFFFFFFE) + nul, "Place on a page: x 5, y -2, unit pixel"},
      {kStill, 2, "tEXt", "Title" + nul + "A line\r\n  and\tanother", "A line and another"},
      {kStill, 2, "tEXt", "Title" + nul + std::string(1000, 'x'), longest.c_str()},
      {kStill, 2, "iTXt", "Title" + nul + nul + nul + "de" + nul + nul + "Gr\u00FC\u00DFe",
       "International text: Title (de), Gr\u00FC\u00DFe"},
      {kStill, 2, "iTXt", "Title" + nul + '\1' + nul + nul + nul + deflated("packed"),
       "International text: Title, packed"},
      {kStill, 2, "iTXt", "Tit", "International text: Tit"},
      {kStill, 2, "eXIf",
       std::string("MM\0*", 4) + be32(8) + be16(1) + be16(0x0112) + be16(3) + be32(1) + be16(6) + be16(0) +
           be32(0),
       "Camera data: turned left, 26 bytes"},
      {kStill, 2, "hIST", be16(3) + be16(4), "Histogram: colors 2"},
      {kStill, 2, "sPLT", "few" + nul + "\x08" + "\1\2\3\4" + be16(9),
       "Suggested palette: name few, depth 8 bits, colors 1"},
      {kStill, 2, "tIME", std::string(7, '\1'), ""},
      {kStill, 2, "acTL", be32(12) + be32(0), "12 frames"},
      {kStill, 2, "fcTL", testing::frame_control(0, 20, 10, 3, 4, 1, 10, 2, 1),
       "100 ms, 20 x 10 at 3, 4, dispose previous, over"},
      {kStill, 2, "fdAT", be32(3) + "abc", "sequence 3, 7 bytes"},
      {kStill, 2, "abCd", std::string(1234, 'x'), "1,234 bytes"},
      {kMng, 2, "IHDR", testing::header_payload(5, 6, 8, 2), "5 x 6, true color, 8 bits a sample"},
      {kMng, 2, "TERM", "\3" + nul + be32(0) + be32(4), "repeat, 4 times"},
      {kMng, 2, "TERM", nul, "show the last frame"},
      {kMng, 2, "LOOP", nul + be32(3), "3 times"},
      {kMng, 2, "LOOP", nul + be32(0x7FFFFFFF), "for ever"},
      {kMng, 2, "DEFI", be16(1) + be16(0) + be32(3) + be32(0xFFFFFFFC), "at 3, -4"},
      {kMng, 2, "MOVE", be16(1) + be16(2) + "\1" + be32(5) + be32(6), "objects 1 to 2, by 5, 6"},
      {kMng, 2, "CLON", be16(1) + be16(2), "Clone: source 1, clone 2"},
      {kWebp, 2, "XMP ", "<x:xmpmeta/>", "<x:xmpmeta/>"},
  };
  for (const Case& c : cases) {
    const ChunkFacts facts = facts_of(with_header(c.kind, c.type), record_of(tag_of(c.tag), c.payload));
    EXPECT_EQ(facts.text, c.facts) << c.tag;
    EXPECT_EQ(facts.colors, c.colors) << c.tag;
  }
}

/// A frame of each animation, and one that covers the canvas.
TEST(ChunkFacts, OfAFrameAreTimePlaceDisposeBlendAndColors) {
  struct Case {
    DocumentKind kind;
    Extent size;
    FrameOffset at;
    std::uint32_t bits, dispose, blend;
    const char* facts;
  };
  const Case cases[] = {
      {DocumentKind::APNG, {60, 40}, {}, 24, 0, 0, "60 ms, 60 x 40, true color"},
      {DocumentKind::APNG,
       {20, 10},
       {10, 4},
       8,
       1,
       1,
       "60 ms, 20 x 10 at 10, 4, dispose background, over, 256 colors"},
      {DocumentKind::APNG,
       {20, 10},
       {},
       32,
       2,
       0,
       "60 ms, 20 x 10 at 0, 0, dispose previous, true color with alpha"},
      {DocumentKind::WEBP,
       {20, 10},
       {2, 4},
       32,
       1,
       0,
       "60 ms, 20 x 10 at 2, 4, dispose background, true color with alpha"},
      {DocumentKind::MING, {20, 10}, {-2, 4}, 8, 1, 0, "60 ms, at -2, 4, clears the canvas"},
      {DocumentKind::PING, {60, 40}, {}, 1, 0, 0, "60 x 40, 2 colors"},
  };
  for (const Case& c : cases) {
    ChunkRecord record;
    record.tag = image_tag(c.kind);
    record.data = testing::small_picture(c.size.width, c.size.height, c.bits).handle();
    SetFrameOffset(record, c.kind, c.at);
    set_frame_delay(record, c.kind, 100, 60);
    set_frame_dispose(record, c.kind, c.dispose);
    record.frameControl.dispose = static_cast<std::uint8_t>(c.dispose);
    record.frameControl.blend = static_cast<std::uint8_t>(c.blend);
    EXPECT_EQ(facts_of(with_header(c.kind), record).text, c.facts);
  }
}

/// Every known chunk is called something, once, and whatever it holds its facts are one short line.
TEST(ChunkFacts, NameEveryKnownChunkAndStayOneLine) {
  std::mt19937 random(5);
  for (const ChunkRow& row : chunk_table()) {
    const std::string description = chunk_description(record_of(row.tag, "x"));
    EXPECT_EQ(chunk_name(row.tag) == nullptr, !description.starts_with("UNKNOWN")) << tag_letters(row.tag);
    EXPECT_NE(chunk_family(row.tag), ChunkFamily::Unknown) << tag_letters(row.tag);
    for (const DocumentKind kind :
         {DocumentKind::PING, DocumentKind::APNG, DocumentKind::MING, DocumentKind::WEBP})
      for (const std::size_t bytes : {0, 1, 3, 9, 27, 600}) {
        std::string payload(bytes, '\0');
        for (char& c : payload) c = static_cast<char>(random());
        ChunkRecord record = record_of(row.tag, payload);
        if (is_image_entry(kind, row.tag)) record.data.reset();
        const ChunkFacts facts = facts_of(with_header(kind), record);
        EXPECT_LE(facts.text.size(), 240u);
        EXPECT_EQ(facts.text.find('\n'), std::string::npos);
        EXPECT_LE(facts.colors.size(), 16u);
      }
  }
}

TEST(ChunkFacts, ASearchLooksThroughWholeTexts) {
  DocumentWindow window = with_header(DocumentKind::PING);
  const std::string text = "Comment" + std::string(1, '\0') + std::string(5000, '.') + "needle";
  chunk_list_append(window.list, window.document, record_of(tag::tEXt, text));
  const std::string searched = searched_text(window, window.list.size() - 1);
  for (const char* part : {"3: TEXT", "tEXt Comment", "needle"})
    EXPECT_NE(searched.find(part), std::string::npos) << part;
}

}  // namespace
}  // namespace vellum
