// Chunks as fields: every field at the ends of its range, through a saved file and back; what setting one
// brings along; what is refused.
#include "core/chunks/chunk_fields.h"

#include <algorithm>
#include <fstream>

#include "core/chunks/chunk_payload.h"
#include "core/chunks/chunk_reading.h"
#include "core/chunks/chunk_tip.h"
#include "core/chunks/chunk_validity.h"
#include "core/chunks/mng_counts.h"
#include "core/chunks/new_chunk.h"
#include "core/chunks/text_chunk.h"
#include "core/edit/insert_chunk.h"
#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "core/model/chunk_layout.h"
#include "core/model/framing.h"
#include "core/settings.h"
#include "support/corpus.h"
#include "support/documents.h"
#include "support/judge.h"

namespace vellum {
namespace {

using testing::be16;
using testing::be32;
using testing::ChunkText;
using testing::header_payload;
using testing::Recorder;
using testing::zero_image;

std::string bytes_of(std::initializer_list<int> values) {
  std::string text;
  for (const int value : values) text += static_cast<char>(value);
  return text;
}

class ChunkFields : public ::testing::Test {
 protected:
  ChunkFields() {
    settings::AutoUpdateTime = 0;
    settings::IdentifyFiles = 0;
  }
  ~ChunkFields() override {
    settings::AutoUpdateTime = 1;
    settings::IdentifyFiles = 1;
    convertImages = nullptr;
  }

  DocumentWindow open(std::vector<std::uint8_t> file, const char* name) {
    const auto path = folder_ / name;
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(file.data()), static_cast<std::streamsize>(file.size()));
    DocumentWindow window;
    EXPECT_TRUE(open_document(window, path, recorder_.host));
    for (const std::string& message : recorder_.messages) ADD_FAILURE() << message;
    return window;
  }
  DocumentWindow open_png(const std::vector<ChunkText>& chunks) {
    return open(testing::png_file(chunks), "in.png");
  }
  DocumentWindow open_mng(std::vector<ChunkText> chunks) {
    chunks.insert(chunks.begin(), {"MHDR", be32(2) + be32(2) + be32(1000) + std::string(16, '\0')});
    chunks.push_back({"MEND", ""});
    auto file = testing::png_file(chunks);
    file[0] = 0x8A;
    file[1] = 'M';
    return open(std::move(file), "in.mng");
  }
  /// The document after it was written and read; an outside judge has accepted the file.
  DocumentWindow reopened(DocumentWindow& window, const char* name) {
    const auto path = folder_ / name;
    EXPECT_TRUE(save_document(window, path, recorder_.host));
    const auto judged = testing::run_tool({"pngcheck", "-q", path});
    // It takes no year before the PNG standard's first, and knows nothing of the chunks of its third edition.
    const bool excused = judged.output.find("invalid tIME year") != std::string::npos ||
                         judged.output.find("unknown, public chunk") != std::string::npos;
    if (judged.there && !excused) EXPECT_EQ(judged.status, 0) << judged.output;
    DocumentWindow again;
    EXPECT_TRUE(open_document(again, path, recorder_.host));
    return again;
  }
  /// Sets one field as the command line does; the reason where that fails.
  std::string set(DocumentWindow& window, std::size_t index, const char* field, const std::string& value) {
    std::string reason;
    return set_chunk_field(window, index, field, value, recorder_.host, reason) ? "" : reason;
  }
  std::size_t find(const DocumentWindow& window, ChunkTag tag) { return chunk_find_first(window.list, tag); }
  std::string payload(const DocumentWindow& window, ChunkTag tag) {
    const auto bytes = chunk_payload(window.list.record(find(window, tag)), window.document.kind);
    return std::string(bytes->begin(), bytes->end());
  }

  testing::ScratchFolder folder_;
  Recorder recorder_;
};

std::vector<ChunkText> still(unsigned depth, unsigned type, std::vector<ChunkText> front = {}) {
  std::vector<ChunkText> chunks = {{"IHDR", header_payload(2, 2, depth, type)}};
  chunks.insert(chunks.end(), front.begin(), front.end());
  chunks.push_back({"IDAT", zero_image(2, 2, depth, type)});
  chunks.push_back({"IEND", ""});
  return chunks;
}

const ChunkText kTexts[] = {{"tEXt", std::string("Title\0One\r\ntwo", 14)},
                            {"iTXt", std::string("Title\0\0\0en\0Titel\0Text", 21)},
                            {"tIME", be16(2024) + bytes_of({3, 31, 9, 7, 3})},
                            {"gAMA", be32(45455)}};

std::vector<ChunkText> with_colors(unsigned depth, unsigned type) {
  const std::size_t samples = type == 0 ? 1 : 3;
  std::vector<ChunkText> front = {kTexts[3],
                                  {"bKGD", std::string(2 * samples, '\0')},
                                  {"tRNS", std::string(2 * samples, '\0')},
                                  kTexts[0],
                                  kTexts[1],
                                  kTexts[2]};
  return still(depth, type, front);
}

std::vector<ChunkText> animated() {
  using testing::frame_control;
  return {{"IHDR", header_payload(2, 2, 8, 2)},
          {"acTL", be32(2) + be32(0)},
          {"fcTL", frame_control(0, 2, 2)},
          {"IDAT", zero_image(2, 2, 8, 2)},
          {"fcTL", frame_control(1, 1, 1, 1, 1)},
          {"fdAT", be32(2) + zero_image(1, 1, 8, 2)},
          {"IEND", ""}};
}

const ChunkText kFram{"FRAM", bytes_of({1, 0, 1, 0, 0, 0}) + be32(100)};
const ChunkText kDefi{"DEFI", bytes_of({0, 0, 0, 1}) + be32(1) + be32(2)};

/// Every chunk of an MNG that has fields, FRAM and DEFI in front of a stream that is kept as it is too.
std::vector<ChunkText> all_of_mng() {
  std::vector<ChunkText> chunks = {{"TERM", bytes_of({3}) + bytes_of({0}) + be32(0) + be32(5)},
                                   {"BACK", std::string(6, '\0')},
                                   {"LOOP", bytes_of({0}) + be32(2)},
                                   kFram,
                                   kDefi};
  const auto image = still(8, 2);
  chunks.insert(chunks.end(), image.begin(), image.end());
  chunks.insert(chunks.end(), {{"ENDL", bytes_of({0})},
                               {"MOVE", be16(0) + be16(0) + bytes_of({0}) + be32(0) + be32(0)},
                               {"SHOW", be16(0) + be16(0)},
                               kFram,
                               kDefi,
                               {"DHDR", be16(1) + bytes_of({1, 7})},
                               {"IEND", ""}});
  return chunks;
}

/// The values at the ends of a field's range, or a few texts.
std::vector<FieldValue> ends_of(const Field& field) {
  if (field.type == FieldType::Real) return {field.leastReal, field.mostReal};
  if (field.type == FieldType::Text) return {std::string("Some text"), std::string("\xC3\xA4")};
  if (field.type != FieldType::Choice) return {field.least, field.most};
  std::vector<FieldValue> values;
  for (const FieldChoice& choice : field.choices) values.push_back(choice.value);
  return values;
}

/// Fields whose ends make no sense alone: sizes of canvases, and texts of a form of their own.
bool stands_alone(const Field& field, ChunkTag tag) {
  static constexpr std::string_view apart[] = {"width",       "height",       "frameWidth", "frameHeight",
                                               "canvasWidth", "canvasHeight", "language",   "rate",
                                               "frequencies", "colors"};
  return tag != tag::cHRM && std::ranges::find(apart, field.name) == std::end(apart);
}

/// One image, and these chunks with the content that they are inserted with.
DocumentWindow with_defaults(std::uint8_t type, std::initializer_list<ChunkTag> tags) {
  Recorder recorder;
  DocumentWindow window = testing::small_document(DocumentKind::PING, 1, type);
  for (const ChunkTag tag : tags)
    EXPECT_TRUE(insert_chunk(window, tag, {}, recorder.host)) << tag_letters(tag);
  return window;
}

TEST_F(ChunkFields, EveryContentThatIsInsertedIsValidAndOnlyAProfileHasToBeGiven) {
  std::size_t tried = 0;
  for (const auto& [kind, name] : testing::kFileNames)
    for (const std::uint8_t type : {2, 3}) {
      const DocumentWindow before = testing::small_document(kind, 1, type);
      for (const ChunkTag tag : insertable_tags(before)) {
        DocumentWindow window = before;
        window.document.caret = static_cast<std::int32_t>(chunk_find_first(window.list, image_tag(kind)));
        ChunkRecord made;
        if (!new_chunk(window, made, tag) || insert_refusal(window, tag)) continue;
        ASSERT_TRUE(insert_chunk(window, tag, {}, recorder_.host)) << tag_letters(tag);
        const std::size_t at = chunk_find_first(window.list, tag);
        if (at == kNoEntry) continue;  // folded into the image
        const auto fault = check_chunk_fields(window, at, read_chunk_fields(window, at));
        EXPECT_EQ(fault.has_value(), tag == tag::iCCP) << tag_letters(tag);
        EXPECT_TRUE(tag == tag::iCCP || !record_fault(window, at, window.list.record(at)))
            << tag_letters(tag);
        ++tried;
      }
    }
  EXPECT_GT(tried, 50u);
}

TEST_F(ChunkFields, AnOrientationIsSetOrAddedAndTheRestOfTheCameraDataStays) {
  const std::string head("II*\0\x0A\0\0\0??", 10);  // its directory stands behind two other bytes
  const std::string width("\0\1\3\0\1\0\0\0\x07\0\0\0", 12), date("\x32\1\2\0\2\0\0\0a\0\0\0", 12);
  const std::string told("\x12\1\3\0\1\0\0\0\6\0\0\0", 12);
  for (const std::string& entries : {width + told + date, width + date}) {
    const auto count = static_cast<char>(entries.size() / 12);
    DocumentWindow window = with_defaults(2, {tag::tIME});
    chunk_list_insert(
        window.list, window.document, 1,
        testing::record_of(tag::eXIf, head + std::string{count, 0} + entries + std::string(4, 0)));
    const bool had = entries.size() == 36;
    EXPECT_EQ(read_chunk_fields(window, 1).number("orientation"), had ? 6 : 0);
    ASSERT_EQ(set(window, 1, "orientation", "Turned left"), "");
    EXPECT_EQ(read_chunk_fields(window, 1).number("orientation"), 8);
    const auto lines =
        reading_text(chunk_reading(tag::eXIf, raw_payload(window.list.record(1)), DocumentKind::PING));
    for (const char* line : {"ImageWidth: 7", "Orientation: Left-bottom"})
      EXPECT_NE(lines.find(line), std::string::npos) << lines;
    EXPECT_EQ(reopened(window, "exif.png").list.size(), window.list.size());
  }
}

std::string set_end(DocumentWindow& window, std::size_t index, const Field& field, const FieldValue& value,
                    Host& host) {
  const std::vector<Field> fields = chunk_fields(window, index);
  FieldValues values = read_chunk_fields(window, index);
  enable_field(fields, field, values);
  values.set(field.name, value);
  if (field.name == std::string_view("first")) values.set("last", std::int64_t{65535});
  if (const auto fault = check_chunk_fields(window, index, values)) return fault->text;
  return apply_chunk_fields(window, index, values, host) == Applied::Failed ? "failed" : "";
}

TEST_F(ChunkFields, EveryFieldTakesTheEndsOfItsRangeThroughASavedFile) {
  struct Case {
    const char* name;
    DocumentWindow window;
  };
  Case cases[] = {{"grey.png", open_png(with_colors(4, 0))},
                  {"deep.png", open_png(with_colors(16, 2))},
                  {"anim.png", open_png(animated())},
                  {"meant.png", with_defaults(2, {tag::pHYs, tag::sRGB, tag::cHRM, tag::cICP, tag::mDCV,
                                                  tag::cLLI, tag::sBIT, tag::sPLT, tag::eXIf})},
                  {"colors.png", with_defaults(3, {tag::hIST, tag::sBIT, tag::bKGD})},
                  {"all.mng", open_mng(all_of_mng())}};
  std::size_t tried = 0;
  for (const Case& c : cases)
    for (std::size_t i = 0; i < c.window.list.size(); ++i)
      for (const Field& field : chunk_fields(c.window, i)) {
        if (field.locked || field.option || !stands_alone(field, c.window.list.record(i).tag)) continue;
        for (const FieldValue& value : ends_of(field)) {
          if (value == FieldValue(std::int64_t{0}) && field.name == std::string_view("framingMode")) continue;
          SCOPED_TRACE(std::string(c.name) + " " + tag_letters(c.window.list.record(i).tag) + "." +
                       field.name + " = " + field_value_text(field, value));
          DocumentWindow window = c.window;
          ASSERT_EQ(set_end(window, i, field, value, recorder_.host), "");
          ASSERT_TRUE(*read_chunk_fields(window, i).find(field.name) == value)
              << field_value_text(field, *read_chunk_fields(window, i).find(field.name));
          ++tried;
          // An animation must stay inside its canvas, and MNG moves clip values and values behind names.
          const std::string_view name = field.name;
          const bool moves =
              name.find("lip") != name.npos || name == "sync" || name == "name" || name == "changeSyncId";
          if (name == "x" || name == "y") continue;
          DocumentWindow again = reopened(window, c.name);
          ASSERT_EQ(again.list.size(), window.list.size());
          if (moves && again.list.record(i).tag == tag::PNGI) continue;
          EXPECT_TRUE(*read_chunk_fields(again, i).find(field.name) == value)
              << field_value_text(field, *read_chunk_fields(again, i).find(field.name));
        }
      }
  EXPECT_GT(tried, 150u);
}

TEST_F(ChunkFields, AnythingBeyondARangeIsRefusedWithItsMessage) {
  DocumentWindow png = open_png(with_colors(8, 2));
  DocumentWindow anim = open_png(animated());
  DocumentWindow mng = open_mng(all_of_mng());
  struct Case {
    DocumentWindow& window;
    ChunkTag tag;
    const char *field, *value, *message;
  };
  const Case cases[] = {
      {png, tag::tIME, "month", "13", "Month must be a whole number from 1 to 12."},
      {png, tag::tIME, "hour", "noon", "Hour must be a whole number from 0 to 23."},
      {png, tag::tIME, "month", "2", "February 2024 has no day 31."},
      {png, tag::gAMA, "gamma", "0", "Gamma must be a number from 0.01 to 100.00."},
      {png, tag::gAMA, "stored", "2147483648", "Stored value must be a whole number from 1 to 2147483647."},
      {png, tag::bKGD, "red", "256", "Red must be a whole number from 0 to 255."},
      {png, tag::bKGD, "grey", "1", "bKGD has no field grey; it has red, green, blue"},
      {png, tag::IHDR, "width", "9", "Use Resize or Crop to change the size of the image."},
      {png, tag::IHDR, "bitDepth", "16", "The color type of a document with images can't be changed here."},
      {png, tag::tEXt, "keyword", "two  blanks",
       "A keyword must have from 1 to 79 printable characters, with no blanks at its ends and no two blanks "
       "together."},
      {png, tag::tEXt, "text", "\xE2\x82\xAC",
       "This chunk can hold Latin-1 text only. An iTXt chunk takes all characters: "
       "--insert \"iTXt@N:Keyword=text\"."},
      {png, tag::iTXt, "language", "e_n",
       "A language tag has words of 1 to 8 letters and digits with hyphens between them, or is empty."},
      {png, tag::IDAT, "x", "1", "IDAT has no field x"},
      {anim, tag::IDAT, "x", "1", "The first frame of an animated PNG fills the canvas."},
      {anim, tag::IDAT, "blend", "Under", "Blend must be one of these: Source, Over."},
      {anim, tag::IDAT, "rate", "0",
       "A rate is a number of frames a second (25 or 24000/1001), or a time (40 ms)."},
      {anim, tag::IHDR, "width", "1", "The header must hold all frames: at least 2 x 2."},
      {anim, tag::acTL, "numFrames", "3", "Frames can't be changed."},
      {mng, tag::MOVE, "first", "1", "The last object must not come before the first."},
      {mng, tag::FRAM, "sync", "256", "Sync number must be a whole number from 0 to 255."},
      {mng, tag::MHDR, "frameHeight", "1", "The header must hold all frames: at least 3 x 4."},
  };
  for (const Case& c : cases) {
    const DocumentWindow before = c.window;
    EXPECT_EQ(set(c.window, find(c.window, c.tag), c.field, c.value), c.message);
    for (std::size_t i = 0; i < before.list.size(); ++i)
      EXPECT_EQ(before.list.entry(i).record, c.window.list.entry(i).record) << c.message;
    EXPECT_FALSE(c.window.document.dirty);
  }
  EXPECT_EQ(set(png, 99, "x", "1"), "there is no entry 100");
}

TEST_F(ChunkFields, ValuesAreReadAsPeopleTypeThem) {
  DocumentWindow anim = open_png(animated());
  DocumentWindow mng = open_mng(all_of_mng());
  const std::size_t frame = find(anim, tag::IDAT);
  EXPECT_EQ(set(anim, find(anim, tag::acTL), "numPlays", "7"), "");
  EXPECT_EQ(set(anim, find(anim, tag::acTL), "numPlays", "for ever"), "");
  EXPECT_EQ(anim.list.record(find(anim, tag::acTL)).numPlays, 0u);
  EXPECT_EQ(set(anim, frame, "dispose", "previous"), "");
  EXPECT_EQ(anim.list.record(frame).frameControl.dispose, 2);
  EXPECT_EQ(set(mng, find(mng, tag::MHDR), "simplicityProfile", "0x1F"), "");
  EXPECT_EQ(mng.list.record(0).simplicityProfile, 31u);
  const auto assignment = parse_field_assignment("3.text=a=b.c");
  ASSERT_TRUE(assignment);
  EXPECT_EQ(assignment->index, 2u);
  EXPECT_EQ(assignment->field, "text");
  EXPECT_EQ(assignment->value, "a=b.c");
  for (const char* wrong : {"0.a=1", "a=1", "1.=1", "1.a", "x.a=1", "-1.a=1"})
    EXPECT_FALSE(parse_field_assignment(wrong)) << wrong;
}

TEST_F(ChunkFields, RatesAndTimesAreFractionsOfASecond) {
  struct Case {
    const char* text;
    int num, den;  ///< -1: refused
  };
  constexpr Case cases[] = {{"25", 1, 25},
                            {"24000/1001", 1001, 24000},
                            {"40 ms", 1, 25},
                            {"0ms", 0, 1},
                            {"1/65535", 65535, 1},
                            {" 50/2 ", 1, 25},
                            {"0", -1, 0},
                            {"1/0", -1, 0},
                            {"65536", -1, 0},
                            {"x", -1, 0},
                            {"", -1, 0},
                            {"65535000 ms", 65535, 1},
                            {"12.5", 2, 25},
                            {"29.97", 1001, 30000},
                            {"23.976", 1001, 24000},
                            {"59.94", 1001, 60000},
                            {"33.3 ms", 333, 10000},
                            {"25.", -1, 0},
                            {"24.98", 50, 1249},
                            {"1.23456", -1, 0}};
  for (const Case& c : cases) {
    const auto delay = parse_frame_delay(c.text);
    ASSERT_EQ(delay.has_value(), c.num >= 0) << c.text;
    if (delay)
      EXPECT_TRUE(delay->num == c.num && delay->den == c.den)
          << c.text << " " << delay->num << "/" << delay->den;
  }
  for (const FrameDelay delay : {FrameDelay{1001, 24000}, {1, 25}, {1, 3}, {0, 7}, {10, 0}, {65535, 65535}}) {
    const auto again = parse_frame_delay(frame_delay_text(delay));
    ASSERT_TRUE(again) << frame_delay_text(delay);
    EXPECT_EQ(again->num * (delay.den ? delay.den : 100), delay.num * again->den) << frame_delay_text(delay);
  }
}

TEST_F(ChunkFields, NothingChangesWhereNoValueDoes) {
  // Values that their fields can't show exactly, or only clamped, are kept as long as nothing else is set.
  DocumentWindow png = open_png(still(8, 2,
                                      {{"gAMA", be32(45454)},
                                       {"tIME", be16(0) + bytes_of({13, 0, 24, 60, 61})},
                                       {"tEXt", std::string("Key\0a\r\nb", 8)}}));
  for (std::size_t i = 0; i < png.list.size(); ++i) {
    if (chunk_fields(png, i).empty()) continue;
    EXPECT_EQ(apply_chunk_fields(png, i, read_chunk_fields(png, i), recorder_.host), Applied::Same)
        << tag_letters(png.list.record(i).tag);
  }
  EXPECT_FALSE(png.document.dirty);
  EXPECT_EQ(read_chunk_fields(png, find(png, tag::tIME)).number("month"), 12);
  EXPECT_EQ(payload(png, tag::gAMA), be32(45454));
  EXPECT_EQ(set(png, find(png, tag::gAMA), "gamma", "2.20"), "");
  EXPECT_EQ(payload(png, tag::gAMA), be32(45454)) << "2.20 is what it showed";
  EXPECT_EQ(set(png, find(png, tag::gAMA), "gamma", "1.80"), "");
  EXPECT_EQ(payload(png, tag::gAMA), be32(55556));
  EXPECT_TRUE(png.document.dirty);
}

TEST_F(ChunkFields, PayloadsStayAsShortAsTheyCan) {
  struct Case {
    ChunkTag tag;
    std::string before;
    const char *field, *value;
    std::string after;
  };
  const std::string sixty = be32(60);
  const Case cases[] = {
      {tag::BACK, std::string(6, '\0'), "red", "257", be16(257) + std::string(4, '\0')},
      {tag::BACK, std::string(6, '\0'), "mandatory", "1", std::string(6, '\0') + bytes_of({1})},
      {tag::BACK, std::string(6, '\0'), "imageId", "1", std::string(7, '\0') + be16(1)},
      {tag::BACK, std::string(6, '\0'), "tiling", "yes", std::string(9, '\0') + bytes_of({1})},
      {tag::BACK, std::string(9, '\0'), "red", "1", be16(1) + std::string(7, '\0')},
      {tag::TERM, bytes_of({3, 0}) + be32(0) + be32(5), "action", "1", bytes_of({1})},
      {tag::TERM, bytes_of({0}), "action", "2", bytes_of({2})},
      {tag::TERM, bytes_of({0}), "iterations", "60", bytes_of({3, 0}) + be32(0) + sixty},
      {tag::SHOW, "", "mode", "0", be16(1) + be16(65535)},
      {tag::SHOW, be16(3), "first", "2", be16(2) + be16(3)},
      {tag::SHOW, be16(3), "last", "4", be16(3) + be16(4)},
      {tag::SHOW, be16(3), "mode", "Hide", be16(3) + be16(3) + bytes_of({1})},
      {tag::LOOP, bytes_of({1}) + be32(2) + bytes_of({6}) + be32(1) + be32(9) + be32(7), "count", "for ever",
       bytes_of({1}) + be32(0x7FFFFFFF) + bytes_of({6}) + be32(1) + be32(9) + be32(7)},
  };
  for (const Case& c : cases) {
    DocumentWindow window = open_mng({{tag_letters(c.tag), c.before}});
    EXPECT_EQ(set(window, 1, c.field, c.value), "");
    EXPECT_EQ(payload(window, c.tag), c.after) << tag_letters(c.tag) << "." << c.field;
    EXPECT_EQ(window.list.record(1).size, static_cast<int>(c.after.size()));
  }
}

TEST_F(ChunkFields, FramingIsRaisedSoThatNothingTypedIsLost) {
  DocumentWindow window = open_mng(all_of_mng());
  const std::size_t entry = find(window, tag::FRAM);
  ASSERT_NE(entry, kNoEntry);
  EXPECT_EQ(set(window, entry, "framingMode", "No change"), "");
  EXPECT_EQ(payload(window, tag::FRAM)[0], 1) << "a delay under mode 0 would not be written";
  EXPECT_EQ(set(window, entry, "name", "A"), "");
  EXPECT_EQ(set(window, entry, "sync", "9"), "");
  EXPECT_EQ(payload(window, tag::FRAM), bytes_of({1, 'A', 0, 1, 1, 1, 1}) + be32(100) + be32(0) +
                                            bytes_of({0}) + std::string(16, '\0') + bytes_of({9}));

  // A FRAM in an image: the delay alone brings one about.
  DocumentWindow plain = open_mng(still(8, 2));
  const std::size_t image = find(plain, tag::PNGI);
  EXPECT_EQ(set(plain, image, "delay", "250"), "");
  EXPECT_TRUE(plain.list.record(image).flags & CRF_FRAM);
  EXPECT_EQ(set(plain, image, "y", "-7"), "");
  const ChunkRecord& record = plain.list.record(image);
  EXPECT_EQ(record.image->defiBytes, 12u);
  EXPECT_EQ(record.image->defiBlock.concreteFlag, 1);
  DocumentWindow again = reopened(plain, "out.mng");
  const FieldValues values = read_chunk_fields(again, image);
  EXPECT_EQ(values.number("delay"), 250);
  EXPECT_EQ(values.number("y"), -7);
  EXPECT_EQ(set(again, image, "hasPosition", "no"), "");
  EXPECT_EQ(set(again, image, "hasFram", "off"), "");
  EXPECT_EQ(again.list.record(image).image->defiBytes, 4u);
  EXPECT_FALSE(again.list.record(image).flags & CRF_FRAM);
}

TEST_F(ChunkFields, ChunksThatAreNotLaidOutSoHaveNoFields) {
  const ChunkText chunks[] = {{"MOVE", std::string(12, '\0')},
                              {"SHOW", std::string(3, '\0')},
                              {"DEFI", std::string(5, '\0')},
                              {"FRAM", bytes_of({1, 0, 1, 0, 0, 0, 9})},
                              {"FRAM", bytes_of({1, 0, 0, 0, 0, 0, 9})},
                              {"FRAM", ""}};
  for (const ChunkText& chunk : chunks) {
    DocumentWindow window = open_mng({chunk, {"DHDR", std::string(4, '\1')}, {"IEND", ""}});
    EXPECT_TRUE(chunk_fields(window, 1).empty()) << chunk.tag << " " << chunk.payload.size();
    recorder_.answer = Answer::No;
    const bool valid = chunk.tag == "FRAM" || chunk.tag == "DEFI";
    EXPECT_EQ(set(window, 1, "data", "hex:01 02fF") == "", valid);
    recorder_.answer = Answer::Yes;
    if (!valid) {
      EXPECT_EQ(set(window, 1, "data", "hex:01 02fF"), "") << "kept anyway";
    }
    EXPECT_EQ(raw_payload(window.list.record(1)).size(), 3u);
    recorder_.messages.clear();
    EXPECT_NE(set(window, 1, "data", "hex:012"), "");
  }
  DocumentWindow zipped = open_png(still(8, 2, {{"iTXt", "Key"}}));
  EXPECT_TRUE(chunk_fields(zipped, 1).empty());
}

TEST_F(ChunkFields, TextsAreRewrittenInTheirForm) {
  DocumentWindow window = open_png(still(8, 2, {kTexts[0], kTexts[1]}));
  EXPECT_EQ(set(window, 1, "text", "M\xC3\xBCll\r\nend"), "");
  EXPECT_EQ(payload(window, tag::tEXt), std::string("Title\0M\xFCll\nend", 14));
  EXPECT_EQ(set(window, 1, "compressed", "1"), "");
  EXPECT_EQ(window.list.record(1).tag, tag::zTXt);
  EXPECT_EQ(window.list.record(1).size, 14);
  EXPECT_EQ(set(window, 2, "compressed", "1"), "");
  EXPECT_EQ(set(window, 2, "text", "\xE2\x82\xAC 5"), "");
  EXPECT_EQ(set(window, 2, "language", "de-AT"), "");
  DocumentWindow again = reopened(window, "out.png");
  EXPECT_EQ(testing::tags_of(again.list), "IHDR zTXt iTXt IDAT IEND");
  EXPECT_EQ(read_text_chunk(again.list.record(1))->text, "M\xC3\xBCll\nend");
  const auto international = read_text_chunk(again.list.record(2));
  ASSERT_TRUE(international);
  EXPECT_EQ(international->text, "\xE2\x82\xAC 5");
  EXPECT_EQ(international->language, "de-AT");
  EXPECT_EQ(international->translatedKeyword, "Titel");
  EXPECT_TRUE(international->compressed);
  EXPECT_EQ(set(again, 1, "compressed", "0"), "");
  EXPECT_EQ(payload(again, tag::tEXt), std::string("Title\0M\xFCll\nend", 14));

  FieldValues values = read_chunk_fields(window, 1);
  values.set("text", std::string("ab\xE2\x82\xAC"));
  const auto question = check_chunk_fields(window, 1, values);
  ASSERT_TRUE(question && question->question);
  EXPECT_EQ(question->at, 2u);
  repair_chunk_fields(values);
  EXPECT_FALSE(check_chunk_fields(window, 1, values));
  EXPECT_EQ(values.text("text"), "ab?");
}

TEST_F(ChunkFields, ALargerCanvasEnlargesTheFirstImage) {
  DocumentWindow anim = open_png(animated());
  EXPECT_EQ(set(anim, 0, "width", "5"), "");
  chunk_list_close_change(anim.list, anim.document);
  EXPECT_EQ(anim.list.record(0).width, 5u) << "the header follows the frames";
  const Picture picture = picture_of(anim.list.record(find(anim, tag::IDAT)));
  EXPECT_EQ(picture.width(), 5u);
  EXPECT_EQ(PictureGetPixel(picture, 4, 1), 0xFFFFFFu) << "the background color";
  reopened(anim, "out.png");

  DocumentWindow mng = open_mng(all_of_mng());
  EXPECT_EQ(set(mng, 0, "frameHeight", "9"), "");
  chunk_list_close_change(mng.list, mng.document);
  EXPECT_EQ(mng.list.record(0).frameHeight, 9u);
  EXPECT_EQ(mng.list.record(find(mng, tag::PNGI)).height, 7u) << "it begins two rows down";

  FieldValues values = read_chunk_fields(mng, 0);
  values.set("frameHeight", std::int64_t{20});
  values.set("enlarge", std::int64_t{0});
  EXPECT_EQ(apply_chunk_fields(mng, 0, values, recorder_.host), Applied::Changed);
  EXPECT_EQ(mng.list.record(find(mng, tag::PNGI)).height, 7u);
}

TEST_F(ChunkFields, HeadersAndFramesOfAWebpHaveFields) {
  DocumentWindow window;
  window.document.kind = DocumentKind::WEBP;
  for (const ChunkTag tag : {tag::WEBH, tag::WEBI, tag::WEBI}) {
    ChunkRecord record;
    ASSERT_TRUE(new_chunk(window, record, tag, {PictureCreate(4, 4, nullptr, 24).handle()}));
    chunk_list_append(window.list, window.document, record);
  }
  chunk_list_close_change(window.list, window.document);
  EXPECT_EQ(set(window, 0, "loopCount", "65535"), "");
  EXPECT_EQ(set(window, 0, "backgroundColor", "#11223344"), "");
  EXPECT_EQ(set(window, 0, "canvasWidth", "6"), "");
  EXPECT_EQ(set(window, 0, "canvasWidth", "16384"), "Canvas width must be a whole number from 1 to 16383.");
  EXPECT_EQ(set(window, 0, "alpha", "1"), "Alpha can't be changed.");
  EXPECT_EQ(set(window, 2, "delay", "16777215"), "");
  EXPECT_EQ(set(window, 2, "dispose", "Background"), "");
  EXPECT_EQ(set(window, 2, "y", "2"), "");
  chunk_list_close_change(window.list, window.document);
  const auto path = folder_ / "out.webp";
  ASSERT_TRUE(save_document(window, path, recorder_.host));
  DocumentWindow again;
  ASSERT_TRUE(open_document(again, path, recorder_.host));
  EXPECT_EQ(chunk_tip(again, 0), "Canvas: 6 x 6\nLoops: 65535\nFrames: 2");
  EXPECT_EQ(again.list.record(0).webpHeader.backgroundColor, 0x44332211u);
  EXPECT_EQ(read_chunk_fields(again, 2).number("delay"), 16777215);
}

TEST_F(ChunkFields, AnotherClockKeepsTheRunningTime) {
  DocumentWindow window = open_mng(all_of_mng());
  const std::size_t image = find(window, tag::PNGI);
  EXPECT_EQ(set(window, find(window, tag::TERM), "delay", "100"), "");
  EXPECT_EQ(set(window, 0, "playTime", "100"), "");
  EXPECT_EQ(set(window, 0, "ticksPerSecond", "25"), "");
  EXPECT_EQ(from_file_order(window.list.record(image).image->framBlock.interframeDelay), 3u) << "2.5 rounded";
  EXPECT_EQ(window.list.record(0).playTime, 3u);
  EXPECT_EQ(payload(window, tag::FRAM).substr(6), be32(3));
  EXPECT_EQ(payload(window, tag::TERM).substr(2, 4), be32(3));
  EXPECT_EQ(set(window, image, "delay", "8"), "");
  EXPECT_EQ(window.list.record(0).playTime, 0u) << "no longer known";
}

TEST_F(ChunkFields, CountsOfAnMngMultiplyLoopsOut) {
  const auto image = still(8, 6);
  const auto document = [&](std::uint32_t inner, std::uint32_t outer) {
    std::vector<ChunkText> chunks = {
        {"LOOP", bytes_of({0}) + be32(outer)}, {"LOOP", bytes_of({1}) + be32(inner)}, kFram};
    chunks.insert(chunks.end(), image.begin(), image.end());
    chunks.push_back({"ENDL", bytes_of({1})});
    chunks.insert(chunks.end(), image.begin(), image.end());
    chunks.push_back({"ENDL", bytes_of({0})});
    return open_mng(chunks);
  };
  const MngCounts counts = count_mng(document(3, 2));
  EXPECT_EQ(counts.frames, 2u);
  EXPECT_EQ(counts.layers, 3u);
  EXPECT_EQ(counts.playTime, 800u);
  EXPECT_TRUE(counts.profile & kSemiTransparency);
  EXPECT_EQ(count_mng(document(0x7FFFFFFF, 1)).playTime, kMngForEver);
  EXPECT_EQ(count_mng(document(0x7FFFFFFE, 0x7FFFFFFE)).playTime, kMngForEver);
  EXPECT_EQ(count_mng(document(0x7FFFFFFF, 0)).playTime, 0u);
  const DocumentWindow window = document(3, 2);
  EXPECT_EQ(loop_partner(window.list, 1), 6u);
  EXPECT_EQ(loop_partner(window.list, 2), 4u);
  EXPECT_EQ(loop_partner(window.list, 6), 1u);
  EXPECT_EQ(chunk_note(window, 2), "Ends at chunk 5");
}

TEST_F(ChunkFields, ColorTypesChangeWithoutImagesOrThroughTheConverter) {
  DocumentWindow empty;
  empty.document.kind = DocumentKind::PING;
  for (const auto& [tag, bytes] : {ChunkText{"bKGD", std::string(6, '\0')}, {"tEXt", std::string("A\0b", 3)}})
    chunk_list_append(empty.list, empty.document,
                      testing::record_of(tag == "bKGD" ? tag::bKGD : tag::tEXt, bytes));
  ChunkRecord header;
  header.tag = tag::IHDR;
  header.width = header.height = 1;
  header.bitDepth = 8;
  header.colorType = 2;
  chunk_list_insert(empty.list, empty.document, 0, header);
  EXPECT_EQ(set(empty, 0, "colorType", "Grey"), "");
  EXPECT_EQ(testing::tags_of(empty.list), "IHDR tEXt") << "the background was none of this type";
  EXPECT_EQ(set(empty, 0, "bitDepth", "16"), "");
  EXPECT_EQ(set(empty, 0, "colorType", "Palette"), "Bits must be one of these: 1, 2, 4, 8.");

  convertImages = [](DocumentWindow&, const PngHeader& wanted, Host&) { return wanted.colorType == 6; };
  DocumentWindow window = open_png(still(8, 2));
  FieldValues values = read_chunk_fields(window, 0);
  EXPECT_FALSE(converts_images(window, 0, values));
  values.set("colorType", std::int64_t{6});
  EXPECT_TRUE(converts_images(window, 0, values));
  EXPECT_EQ(apply_chunk_fields(window, 0, values, recorder_.host), Applied::Changed);
  EXPECT_NE(set(window, 0, "colorType", "0"), "") << "the converter refuses";
  EXPECT_EQ(window.list.record(0).colorType, 6);
}

TEST_F(ChunkFields, TipsTellWhatFieldsTell) {
  DocumentWindow png = open_png(with_colors(8, 2));
  DocumentWindow anim = open_png(animated());
  DocumentWindow mng = open_mng(all_of_mng());
  struct Case {
    const DocumentWindow& window;
    ChunkTag tag;
    const char* tip;
  };
  const Case cases[] = {
      {png, tag::IHDR, "Width: 2\nDepth: 2\nBits: 8\nColor type: True color\nInterlaced: no"},
      {png, tag::tEXt, "Title\nOne\ntwo"},
      {png, tag::tIME, "March 31, 2024, 9:07:03"},
      {png, tag::IDAT, "Image 1 of 1\nSize: 2 x 2\nColors: 16,777,216\nAlpha: no"},
      {anim, tag::acTL, "Frames: 2\nPlays: for ever\nRunning time: 200 ms"},
      {anim, tag::IDAT,
       "Image 1 of 2\nSize: 2 x 2\nPosition: 0, 0\nDelay: 100 ms\nColors: 16,777,216\nAlpha: no\nDispose: "
       "None\n"
       "Blend: Source"},
      {mng, tag::TERM, "Action: Repeat\nIterations: 5\nDelay: 0"},
      {mng, tag::FRAM, "Framing mode: 1\nDelay: 100 ticks (100 ms)"},
      {mng, make_tag("DHDR"), "DHDR, 4 bytes\n00 01 01 07  ...."},
  };
  for (const Case& c : cases) EXPECT_EQ(chunk_tip(c.window, find(c.window, c.tag)), c.tip);

  std::string lines;
  for (int i = 0; i < 40; ++i) lines += std::string(200, '\xE4') + "\n";
  DocumentWindow longer = open_png(still(8, 2, {{"tEXt", std::string("K\0", 2) + lines}}));
  const std::string tip = chunk_tip(longer, 1);
  EXPECT_EQ(std::ranges::count(tip, '\n'), 8);
  EXPECT_EQ(tip.size(), 1u + 8 * (1 + 160));
}

}  // namespace
}  // namespace vellum
