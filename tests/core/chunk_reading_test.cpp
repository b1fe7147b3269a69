#include "core/chunks/chunk_reading.h"

#include "image/deflate.h"
#include "support/documents.h"

namespace vellum {
namespace {

using testing::be16;
using testing::be32;

std::vector<std::uint8_t> bytes_of(std::string_view text) { return {text.begin(), text.end()}; }

std::string deflated(std::string_view text) {
  const auto packed = deflate_bytes(bytes_of(text), 6);
  return {packed.begin(), packed.end()};
}

std::string reading_of(std::string_view letters, const std::string& payload,
                       DocumentKind kind = DocumentKind::MING) {
  char tag[5] = {};
  std::ranges::copy(letters, tag);
  return reading_text(chunk_reading(make_tag(tag), bytes_of(payload), kind));
}

std::string nul_ended(std::string_view text) { return std::string(text) + '\0'; }

/// A profile's header: what its fields say and zeros for the rest.
std::string profile() {
  std::string bytes = be32(132) + "lcms" + std::string("\x04\x40\0\0", 4) + "mntrRGB XYZ ";
  for (const unsigned part : {2024, 2, 29, 23, 59, 58}) bytes += be16(part);
  bytes += "acspAPPL" + be32(0) + "none" + "abcd" + be32(0) + be32(0) + be32(1);
  bytes.resize(132);
  return bytes;
}

/// Camera data of two directories: orientation and a pointer to a directory with a tag that no table names.
std::string exif() {
  return std::string("MM\0*", 4) + be32(8) + be16(2) +                       //
         be16(0x0112) + be16(3) + be32(1) + be16(6) + be16(0) +              //
         be16(0x8769) + be16(4) + be32(1) + be32(38) + be32(0) +             //
         be16(1) + be16(0x9003) + be16(2) + be32(20) + be32(56) + be32(0) +  //
         nul_ended("2024:02:29 23:59:58");
}

struct ReadingCase {
  const char* tag;
  std::string payload;
  const char* expected;
};

const std::vector<ReadingCase>& reading_cases() {
  static const std::vector<ReadingCase> cases = {
      {"pHYs", be32(2835) + be32(3937) + '\1',
       "Horizontal: 2835 per meter (72.01 dpi)\nVertical: 3937 per meter (100.00 dpi)\nUnit: meter"},
      {"pHYs", be32(4) + be32(3) + '\0', "Horizontal: 4 per unit\nVertical: 3 per unit\nUnit: unknown"},
      {"sRGB", std::string("\0", 1), "Rendering intent: Perceptual"},
      {"sRGB", "\x09", "Rendering intent: unknown (9)"},
      {"cHRM",
       be32(31270) + be32(32900) + be32(64000) + be32(33000) + be32(30000) + be32(60000) + be32(15000) +
           be32(6000),
       "White point: x 0.31270, y 0.32900\nRed: x 0.64000, y 0.33000\nGreen: x 0.30000, y 0.60000\n"
       "Blue: x 0.15000, y 0.06000"},
      {"sBIT", "\5\6\5", "Red: 5 bits\nGreen: 6 bits\nBlue: 5 bits"},
      {"sBIT", "\10\1", "Grey: 8 bits\nAlpha: 1 bits"},
      {"cICP", std::string("\x09\x10\0\1", 4),
       "Color primaries: 9, BT.2020, BT.2100\nTransfer function: 16, PQ (BT.2100)\n"
       "Matrix coefficients: 0, identity (RGB)\nRange: full"},
      {"hIST", be16(7) + be16(0) + be16(65535), "Colors: 3\n0 to 2: 7 0 65535"},
      {"sPLT", nul_ended("web") + "\x08\1\2\3\xFF" + be16(9),
       "Name: web\nDepth: 8 bits\nColors: 1\nColor 0: red 1, green 2, blue 3, alpha 255, used 9"},
      {"mDCV",
       be16(34000) + be16(16000) + be16(13250) + be16(34500) + be16(7500) + be16(3000) + be16(15635) +
           be16(16450) + be32(10000000) + be32(500),
       "Red: x 0.68000, y 0.32000\nGreen: x 0.26500, y 0.69000\nBlue: x 0.15000, y 0.06000\n"
       "White point: x 0.31270, y 0.32900\nHighest luminance: 1000.0000 cd/m\u00B2\n"
       "Lowest luminance: 0.0500 cd/m\u00B2"},
      {"cLLI", be32(10000000) + be32(4000000),
       "Highest light level: 1000.0000 cd/m\u00B2\nHighest frame average: 400.0000 cd/m\u00B2"},
      {"oFFs", be32(0xFFFFFFF6) + be32(20) + '\0', "X: -10\nY: 20\nUnit: pixel"},
      {"pCAL",
       nul_ended("heat") + be32(0) + be32(255) + std::string("\0\2", 2) + nul_ended("K") + nul_ended("0") +
           "1.5",
       "Name: heat\nOriginal samples: 0 to 255\nEquation: linear\nUnit: K\nParameter 0: 0\nParameter 1: 1.5"},
      {"sCAL", '\1' + nul_ended("0.5") + "0.25", "Unit: meter\nPixel width: 0.5\nPixel height: 0.25"},
      {"iTXt",
       nul_ended("Title") + std::string("\0\0", 2) + nul_ended("de") + nul_ended("Titel") + "K\u00E4se",
       "Keyword: Title\nCompressed: no\nLanguage: de\nTranslated keyword: Titel\nText: K\u00E4se"},
      {"iTXt",
       nul_ended("Title") + std::string("\1\0", 2) + nul_ended("") + nul_ended("") + deflated("long text"),
       "Keyword: Title\nCompressed: yes\nLanguage: \nTranslated keyword: \nText: long text"},
      {"eXIf", exif(),
       "Byte order: big-endian\nOrientation: Right-top\nDateTimeOriginal: 2024:02:29 23:59:58"},
      {"CLIP", be16(1) + be16(2) + '\0' + be32(0) + be32(9) + be32(0xFFFFFFFF) + be32(8),
       "Objects: 1 to 2\nClipping: absolute\nBounds: left 0, right 9, top -1, bottom 8"},
      {"CLON", be16(1) + be16(2), "Source: 1\nClone: 2"},
      {"CLON", be16(1) + be16(2) + std::string("\0\1\0\1", 4) + be32(3) + be32(4),
       "Source: 1\nClone: 2\nType: full\nHidden: yes\nConcrete: no\nPosition type: relative to the last\n"
       "Position: 3, 4"},
      {"DISC", "", "All objects but 0"},
      {"DISC", be16(3) + be16(500), "Objects: 3, 500"},
      {"SAVE", "", "No index"},
      {"SAVE",
       "\4" + std::string(1, '\0') + be32(1000) + be32(5) + be32(6) + be32(7) + nul_ended("one") + '\1' +
           be32(2000),
       "Bytes of an offset: 4\nSegment with its time: offset 1,000, time 5, layer 6, frame 7, one\n"
       "Segment: offset 2,000"},
      {"SEEK", "scene", "Segment: scene"},
      {"nEED", nul_ended("CLON") + "draft", "Needs: CLON\nNeeds: draft"},
      {"eXPI", be16(4) + "shot", "Snapshot: 4\nName: shot"},
      {"fPRI", std::string("\0\x80", 2), "Type: absolute\nPriority: 128"},
      {"pHYg", "", "No size"},
      {"MAGN", be16(1) + be16(2) + '\2' + be16(3),
       "First object: 1\nLast object: 2\nHorizontal method: linear\nHorizontal factor: 3"},
      {"BASI", be32(4) + be32(5) + std::string("\x08\x02\0\0\0", 5),
       "Size: 4 x 5\nBit depth: 8\nColor type: 2\n"
       "Compression: 0\nFilter: 0\nInterlace: 0"},
      {"DHDR", be16(7) + "\1\4" + be32(2) + be32(3),
       "Object: 7\nImage type: PNG\nDelta type: samples replaced\nBlock size: 2 x 3"},
  };
  return cases;
}

TEST(ChunkReading, SaysWhatThePayloadSays) {
  for (const ReadingCase& c : reading_cases()) EXPECT_EQ(reading_of(c.tag, c.payload), c.expected) << c.tag;
}

TEST(ChunkReading, OfAProfileNamesTheFieldsOfItsHeader) {
  const std::string text = reading_of("iCCP", nul_ended("screen") + '\0' + deflated(profile()));
  for (const char* part : {"Profile name: screen", "Size: 132 bytes", "Version: 4.4.0", "Class: display",
                           "Color space: RGB\n", "Connection space: XYZ", "Made: 2024-02-29 23:59:58",
                           "Signature: acsp", "Rendering intent: Relative colorimetric"})
    EXPECT_NE(text.find(part), std::string::npos) << part << " in\n" << text;
}

TEST(ChunkReading, OfAPasteListsItsSources) {
  const std::string source =
      be16(9) + std::string("\1\0\0", 3) + be32(1) + be32(2) + '\0' + be32(0) + be32(4) + be32(0) + be32(5);
  const std::string text = reading_of("PAST", be16(3) + '\0' + be32(10) + be32(20) + source + source);
  EXPECT_TRUE(text.starts_with("Target: 3\nPosition type: absolute\nPosition: 10, 20\nSource: 9\n")) << text;
  EXPECT_EQ(std::ranges::count(text, '\n'), 2 + 2 * 7);
}

TEST(ChunkReading, TellsOfADamagedPayloadAndOfBytesBehind) {
  EXPECT_EQ(reading_of("cHRM", be32(1) + be32(2) + be32(3)),
            "White point: x 0.00001, y 0.00002\na damaged cHRM chunk");
  EXPECT_EQ(reading_of("sRGB", "\1\2\3"), "Rendering intent: Relative colorimetric\n2 more bytes");
  for (const char* tag : {"iTXt", "eXIf", "iCCP", "cHRM", "sBIT", "cICP", "hIST", "sPLT", "mDCV", "cLLI",
                          "pCAL", "sCAL", "CLIP", "CLON", "PAST", "BASI", "DHDR", "eXPI", "fPRI"})
    EXPECT_TRUE(reading_of(tag, "").ends_with("a damaged " + std::string(tag) + " chunk")) << tag;
  EXPECT_TRUE(reading_of("iCCP", nul_ended("x") + '\0' + "no stream").ends_with("a damaged iCCP chunk"));
  EXPECT_TRUE(reading_of("SAVE", "\5").ends_with("a damaged SAVE chunk"));
}

TEST(ChunkReading, SurvivesEveryCutAndEveryByte) {
  for (const ReadingCase& c : reading_cases())
    for (std::size_t i = 0; i < c.payload.size(); ++i) {
      reading_of(c.tag, c.payload.substr(0, i));
      std::string changed = c.payload;
      changed[i] = static_cast<char>(~changed[i]);
      reading_of(c.tag, changed);
    }
}

TEST(ChunkReading, OfMngTagsIsForMngAlone) {
  EXPECT_TRUE(has_chunk_reading(make_tag("CLIP"), DocumentKind::MING));
  EXPECT_FALSE(has_chunk_reading(make_tag("CLIP"), DocumentKind::PING));
  EXPECT_TRUE(has_chunk_reading(tag::pHYs, DocumentKind::PING));
  EXPECT_TRUE(chunk_reading(make_tag("abCd"), bytes_of("1234"), DocumentKind::PING).empty());
}

TEST(ChunkReading, TellsThePropertyBits) {
  const auto lines = tag_properties(make_tag("prVt"));
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_TRUE(lines[0].value.starts_with("yes"));
  EXPECT_TRUE(lines[1].value.starts_with("yes"));
  EXPECT_TRUE(lines[2].value.starts_with("no"));
  EXPECT_TRUE(lines[3].value.starts_with("yes"));
  EXPECT_TRUE(tag_properties(tag::IHDR)[0].value.starts_with("no"));
  EXPECT_TRUE(tag_properties(tag::tRNS)[3].value.starts_with("no"));
}

}  // namespace
}  // namespace vellum
