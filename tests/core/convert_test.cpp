// Documents of every kind as every other kind: nothing of an animation but its container changes.
#include "core/build/convert_records.h"
#include "core/chunks/new_chunk.h"
#include "core/edit/frame_layer.h"
#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "core/model/chunk_layout.h"
#include "core/model/frame_time.h"
#include "core/model/frame_values.h"
#include "core/model/loops.h"
#include "core/model/played_frames.h"
#include "core/model/record_picture.h"
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

/// The times of the frames as they play once, in seconds.
std::vector<double> times_of(const DocumentWindow& window) {
  const std::uint32_t ticks = ticks_per_second(window.list);
  std::vector<double> times;
  for (const std::size_t entry : played_frames(window).entries) {
    const FrameTime time = frame_time(window.list.record(entry), window.document.kind, ticks);
    times.push_back(static_cast<double>(time.num) / static_cast<double>(time.den));
  }
  return times;
}

/// The times are equal; where `whole`, to a millisecond each and in their sum.
void expect_times(const DocumentWindow& to, const DocumentWindow& from, bool whole, const std::string& what) {
  const auto got = times_of(to), wanted = times_of(from);
  ASSERT_EQ(got.size(), wanted.size()) << what;
  double ahead = 0;
  for (std::size_t i = 0; i < got.size(); ++i) {
    EXPECT_NEAR(got[i], wanted[i], whole ? 0.001 : 1e-9) << what << ", frame " << i;
    ahead += got[i] - wanted[i];
    EXPECT_LE(std::abs(ahead), 0.00051) << what << ", frame " << i;
  }
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
      expect_times(again, window, to.kind == DocumentKind::WEBP, row.at("path") + " as " + to.name);
      EXPECT_EQ(GetIterations(again.list, again.document), played_frames(window).plays)
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
  expect_times(back, window, false, "and back");
  ASSERT_TRUE(convert_document(window, webp, DocumentKind::WEBP, host));
  const Picture canvas = testing::images_of(webp)[1];
  ASSERT_EQ(canvas.width(), 6u);
  EXPECT_EQ(PictureGetPixelOpaque(canvas, 1, 2) & 0xFFFFFF, 0x00FF00u);
  EXPECT_EQ(PictureGetPixelOpaque(canvas, 0, 2) & 0xFFFFFF, 0x0000FFu) << "what was there shows around it";
  EXPECT_FALSE(convert_document(window, png, DocumentKind::PING, host));
  EXPECT_EQ(host.take_fault(), "the document has several images");
}

/// An MNG of images between loops: "3(" begins one of three rounds, ")" ends it, "i" is an image.
DocumentWindow looped(const std::string& text) {
  DocumentWindow window;
  window.document.kind = DocumentKind::MING;
  const auto append = [&](ChunkTag tag, std::uint32_t number = 0) {
    ChunkRecord record;
    NewChunkArgument argument;
    argument.number = number;
    argument.picture = testing::small_picture(4, 3, 24).handle();
    new_chunk(window, record, tag, argument);
    put_loop_level(record, open_loops(window.list, window.list.size()));
    chunk_list_append(window.list, window.document, record);
  };
  append(tag::MHDR);
  std::uint32_t count = 0;
  for (const char c : text)
    if (c == 'i')
      append(tag::PNGI);
    else if (c == '(')
      append(tag::LOOP, std::exchange(count, 0));
    else if (c == ')')
      append(tag::ENDL);
    else
      count = c == '*' ? kLoopForEver : 10 * count + static_cast<std::uint32_t>(c - '0');
  append(tag::MEND);
  return window;
}

TEST(Convert, LoopsInsideAnMngAreWrittenOut) {
  struct Case {
    const char* text;
    std::size_t frames;
    std::uint32_t plays;
    bool lost;
  };
  const Case cases[] = {{"*(ii)", 2, 0, false},
                        {"7(ii)", 2, 7, false},
                        {"i3(i)i", 5, 1, false},
                        {"*(i2(i3(i)))", 9, 0, false},
                        {"3(i)i", 4, 1, false},
                        {"i0(i)i", 2, 1, false},
                        {"i*(i)", 2, 1, true},
                        {"5(i100000(i))", 2, 5, true},
                        {"i2000000000()i", 2, 1, false},
                        {"10000(i)i", 2, 10000, true},
                        {"", 0, 1, false}};
  for (const Case& c : cases) {
    const PlayedFrames played = played_frames(looped(c.text));
    EXPECT_EQ(played.entries.size(), c.frames) << c.text;
    EXPECT_EQ(played.plays, c.plays) << c.text;
    EXPECT_EQ(played.loopsLost, c.lost) << c.text;
  }
  Recorder recorder;
  DocumentWindow converted;
  ASSERT_TRUE(convert_document(looped("i*(i)"), converted, DocumentKind::WEBP, recorder.host));
  EXPECT_EQ(recorder.messages.size(), 1u) << "what was left out is told";
}

TEST(Convert, DelaysStayExactWhereTheKindCanTellThem) {
  DocumentWindow window = small_animation();
  const auto set = [&](std::size_t entry, std::uint16_t num, std::uint16_t den) {
    ChunkRecord record;
    chunk_list_get(window.list, entry, record);
    record.frameControl.delayNum = num;
    record.frameControl.delayDen = den;
    chunk_list_put(window.list, entry, record);
  };
  set(3, 1, 30), set(4, 1, 24);
  Host host;
  DocumentWindow mng, webp, back;
  ASSERT_TRUE(convert_document(window, mng, DocumentKind::MING, host));
  EXPECT_EQ(ticks_per_second(mng.list), 120u);
  ASSERT_TRUE(convert_document(mng, back, DocumentKind::APNG, host));
  expect_times(back, window, false, "and back");
  set(4, 1, 30);
  ASSERT_TRUE(convert_document(window, webp, DocumentKind::WEBP, host));
  EXPECT_EQ(webp.list.record(1).webpImage.delay + webp.list.record(2).webpImage.delay, 67u) << "33 and 34";
  set(3, 1, 65521), set(4, 1, 65519);
  DocumentWindow rough;
  ASSERT_TRUE(convert_document(window, rough, DocumentKind::MING, host));
  EXPECT_EQ(ticks_per_second(rough.list), 1000u) << "no million ticks tell both";
}

/// What a kind can't tell is told to the person, and the next frame makes up for it.
TEST(Convert, DelaysThatAKindCanNotHoldAreToldAndCarried) {
  struct Case {
    DocumentKind kind;
    std::uint16_t num, den;
    const char* note;
    double first;
  };
  const Case cases[] = {{DocumentKind::WEBP, 20'000, 1, "cut", 16'777.215},
                        {DocumentKind::WEBP, 1, 3, "rounded", 0.333},
                        {DocumentKind::WEBP, 1, 4, "", 0.25},
                        {DocumentKind::MING, 60'000, 65'521, "", 60'000.0 / 65'521},
                        {DocumentKind::MING, 1, 3, "", 1.0 / 3}};
  for (const Case& c : cases) {
    DocumentWindow window = small_animation(), converted;
    ChunkRecord record;
    chunk_list_get(window.list, 3, record);
    record.frameControl.delayNum = c.num;
    record.frameControl.delayDen = c.den;
    chunk_list_put(window.list, 3, record);
    Recorder recorder;
    std::string notes;
    // What becomes of its text is told too, and is no matter here.
    recorder.host.note = [&](std::string_view text) {
      if (!text.ends_with("in a WebP file.")) notes += text;
    };
    ASSERT_TRUE(convert_document(window, converted, c.kind, recorder.host));
    const auto wanted = times_of(window), got = times_of(converted);
    EXPECT_NEAR(got[0], c.first, 1e-9) << c.num << '/' << c.den;
    EXPECT_NEAR(got[0] + got[1], wanted[0] + wanted[1], 0.00051) << c.num << '/' << c.den;
    EXPECT_EQ(notes.empty(), c.note[0] == 0) << notes;
    EXPECT_NE(notes.find(c.note), std::string::npos) << notes;
  }
}

/// Frames larger than the first make the canvas, and the document can be saved.
TEST(Convert, AnAnimatedPngBeginsWithTheWholeCanvas) {
  const testing::ScratchFolder folder;
  for (const std::uint32_t bits : {8u, 24u}) {
    DocumentWindow window = looped("ii"), converted, again;
    ChunkRecord record;
    chunk_list_get(window.list, 2, record);
    record_take_picture(record, DocumentKind::MING, testing::small_picture(9, 8, bits));
    chunk_list_put(window.list, 2, record);
    chunk_list_close_change(window.list, window.document);
    Recorder recorder;
    ASSERT_TRUE(convert_document(window, converted, DocumentKind::APNG, recorder.host));
    ASSERT_TRUE(save_document(converted, folder / "a.png", recorder.host)) << recorder.host.take_fault();
    ASSERT_TRUE(open_document(again, folder / "a.png", recorder.host));
    EXPECT_EQ(document_size(again.list, again.document).width, 9u);
    EXPECT_EQ(testing::objections(folder / "a.png"), "");
  }
}

TEST(Convert, IndexedFramesStayIndexedWhereOneKindOfPaletteIsEnough) {
  Host host;
  for (const std::uint8_t type : {3, 2}) {
    const DocumentWindow apng = testing::small_document(DocumentKind::APNG, 2, type);
    DocumentWindow mng, back, webp;
    ASSERT_TRUE(convert_document(apng, mng, DocumentKind::MING, host));
    ASSERT_TRUE(convert_document(mng, back, DocumentKind::APNG, host));
    ASSERT_TRUE(convert_document(apng, webp, DocumentKind::WEBP, host));
    for (std::size_t i = 0; i < 2; ++i) {
      const Picture source = testing::images_of(apng)[i];
      EXPECT_EQ(testing::images_of(mng)[i].bits(), source.bits());
      EXPECT_EQ(testing::rgba_of(back, testing::images_of(back)[i]), testing::rgba_of(apng, source));
      EXPECT_GE(testing::images_of(webp)[i].bits(), 24u);
    }
    EXPECT_EQ(back.list.record(0).colorType, type);
  }
}

}  // namespace
}  // namespace vellum
