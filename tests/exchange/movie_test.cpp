// Movies against ffprobe, and what an import makes of frames and times against a plain walk over them.
#include <gtest/gtest.h>

#include <fstream>
#include <random>

#include "core/model/frame_values.h"
#include "core/model/record_picture.h"
#include "exchange/exporter.h"
#include "exchange/importer.h"
#include "exchange/movie_import.h"
#include "image/picture_operations.h"
#include "operations/frames.h"
#include "support/corpus.h"
#include "support/documents.h"
#include "support/judge.h"

namespace vellum {
namespace {

using testing::Recorder;

struct MockFrame {
  std::int64_t time;  ///< µs
  int look;
};

/// A reader over frames that are there already; a seek goes back to the first one.
MovieReader mock_reader(const std::vector<MockFrame>& frames, std::int64_t duration) {
  const auto at = std::make_shared<std::size_t>(0);
  MovieReader reader;
  reader.facts.width = 4, reader.facts.height = 3, reader.facts.duration = duration;
  reader.next = [=]() -> std::optional<std::int64_t> {
    return *at < frames.size() ? std::optional(frames[(*at)++].time) : std::nullopt;
  };
  reader.picture = [=] {
    return testing::small_picture(4, 3, 24, 1 + static_cast<unsigned>(frames[*at - 1].look));
  };
  reader.seek = [=](std::int64_t) { return *at = 0, true; };
  reader.damaged = [] { return false; };
  return reader;
}

TEST(MovieImport, TimesAddUpWhateverIsLeftOutMergedOrCut) {
  std::mt19937 random(7);
  for (int trial = 0; trial < 300; ++trial) {
    SCOPED_TRACE(trial);
    std::vector<MockFrame> frames;
    std::int64_t time = 0;
    for (std::size_t i = 0, count = 1 + random() % 12; i < count; ++i) {
      frames.push_back({time, static_cast<int>(random() % 3)});
      time += 1000 + static_cast<std::int64_t>(random() % 90'000);
    }
    MovieImport import;
    import.from = random() % 3 == 0 ? random() % 200 : 0;
    import.to = random() % 3 == 0 ? import.from + 1 + random() % 300 : 0;
    import.keep = 1 + random() % 3, import.skip = random() % 3, import.skipFirst = random() % 2;
    import.merge = random() % 2, import.cut = random() % 2, import.loop = random() % 2;
    import.palette = random() % 4 == 0;
    // The plain walk: frames of the range, the kept ones, and runs of equal looks.
    std::vector<std::pair<int, std::int64_t>> wanted;
    std::int64_t first = -1, end = import.to > 0 ? std::min<std::int64_t>(import.to, (time + 500) / 1000)
                                                 : (time + 500) / 1000;
    std::size_t place = 0;
    for (const MockFrame& frame : frames) {
      const std::int64_t ms = (frame.time + 500) / 1000;
      if (ms < import.from || (import.to > 0 && ms >= import.to)) continue;
      if (first < 0) first = ms;
      const std::size_t in_group = place++ % (import.keep + import.skip);
      if (!(import.skipFirst ? in_group >= import.skip : in_group < import.keep)) continue;
      const bool merged = import.merge && !wanted.empty() && wanted.back().first == frame.look;
      if (!merged) wanted.push_back({frame.look, ms});
    }
    DocumentWindow made;
    Recorder recorder;
    bool told = false;
    MovieReader reader = mock_reader(frames, time);
    const DocumentKind kind = trial % 2 ? DocumentKind::APNG : DocumentKind::MING;
    if (!import_movie(reader, import, kind, made, recorder.host, told)) {
      EXPECT_TRUE(wanted.empty() && told);
      continue;
    }
    const auto entries = frame_entries(made);
    ASSERT_EQ(entries.size(), wanted.size());
    std::int64_t sum = 0;
    for (const std::size_t entry : entries)
      sum += GetFrameDelay(made.list.record(entry), kind, ticks_per_second(made.list));
    EXPECT_NEAR(static_cast<double>(sum), static_cast<double>(std::max<std::int64_t>(end, first + 1) - first),
                2);
    EXPECT_EQ(GetIterations(made.list, made.document), import.loop ? 0u : 1u);
    const FrameStream shown = canvas_frames(made);
    for (std::size_t i = 0; i < wanted.size() && !import.palette; ++i) {
      const Picture canvas = shown.frame(i).picture;
      const Picture plain = testing::small_picture(4, 3, 24, 1 + static_cast<unsigned>(wanted[i].first));
      for (int p = 0; p < 12; ++p)
        ASSERT_EQ(PictureGetPixel(canvas, p % 4, p / 4) & 0xFFFFFF, PictureGetPixel(plain, p % 4, p / 4))
            << i;
    }
  }
}

TEST(MovieImport, AsksBeforeItMakesVeryMuch) {
  std::vector<MockFrame> frames;
  for (int i = 0; i < 1200; ++i) frames.push_back({i * 1000, i});
  DocumentWindow made;
  Recorder recorder;
  int asked = 0;
  recorder.host.ask = [&](const Message& message, bool) {
    EXPECT_EQ(message.id, StringId::MovieQuestion);
    return ++asked, Answer::No;
  };
  bool told = false;
  MovieReader reader = mock_reader(frames, 1'200'000);
  EXPECT_FALSE(import_movie(reader, {}, DocumentKind::APNG, made, recorder.host, told));
  EXPECT_EQ(asked, 1) << "the file doesn't say how many there are";
  EXPECT_TRUE(told && recorder.messages.empty() && made.list.size() == 0);
}

struct MovieCase {
  const char* extension;
  std::vector<std::pair<const char*, std::int64_t>> values;
  std::uint32_t width, height;  ///< of 6 x 4
  bool exact;                   ///< nothing is lost
};

class MovieFiles : public ::testing::TestWithParam<MovieCase> {};

std::string probe(const std::filesystem::path& file, const char* what, const char* stream = "v") {
  const auto told = testing::run_tool({"ffprobe", "-v", "error", "-count_frames", "-select_streams", stream,
                                       "-show_entries", what, "-of", "csv=p=0", file.string()});
  return told.output.substr(0, told.output.find_last_not_of("\n,") + 1);
}

TEST_P(MovieFiles, AreWhatFfprobeSaysAndReadBack) {
  if (!movies_built() || !testing::run_tool({"ffprobe", "-version"}).there)
    GTEST_SKIP() << "no movie libraries, or no ffprobe";
  const MovieCase& c = GetParam();
  testing::ScratchFolder folder;
  DocumentWindow source = testing::small_document(DocumentKind::APNG, 4, 2);
  const std::uint32_t delays[] = {40, 120, 80, 400};
  const auto entries = frame_entries(source);
  for (std::size_t i = 0; i < 4; ++i) {
    ChunkRecord record;
    chunk_list_get(source.list, entries[i], record);
    set_frame_delay(record, DocumentKind::APNG, 1000, delays[i]);
    chunk_list_put(source.list, entries[i], record);
  }
  const Exporter& exporter = *find_exporter("movie");
  FieldValues values = initial_values(exporter.parameters.fields);
  for (const auto& [field, value] : c.values) values.set(field, value);
  const auto sound = folder / "s.wav";
  testing::run_tool({"ffmpeg", "-v", "error", "-f", "lavfi", "-i", "sine=d=0.2", sound.string()});
  values.set("soundPath", sound.string());
  const auto path = folder / ("movie" + std::string(c.extension));
  Recorder recorder;
  if (!export_document(exporter, source, values, path, recorder.host)) {
    ASSERT_EQ(recorder.messages.size(), 1u);
    if (recorder.messages[0].find("encoder") != std::string::npos) GTEST_SKIP() << recorder.messages[0];
    FAIL() << recorder.messages[0];
  }
  EXPECT_EQ(probe(path, "stream=width,height"), std::to_string(c.width) + "," + std::to_string(c.height));
  const auto passes = values.number("passes");
  EXPECT_NEAR(std::stod(probe(path, "format=duration")), 0.64 * static_cast<double>(passes), 0.045);
  if (values.number("includeSound") != 0) EXPECT_NE(probe(path, "stream=codec_type", "a"), "");
  const Importer& importer = *find_importer("import-movie");
  FieldValues taking = initial_values(importer.parameters.fields);
  taking.set("merge", std::int64_t{c.exact});
  DocumentWindow again;
  ASSERT_TRUE(import_file(importer, again, path, taking, recorder.host))
      << ::testing::PrintToString(recorder.messages);
  const auto back = frame_entries(again);
  ASSERT_GE(back.size(), 4u * static_cast<std::size_t>(passes));
  std::uint32_t sum = 0;
  for (const std::size_t entry : back)
    sum += GetFrameDelay(again.list.record(entry), again.document.kind, 1000);
  EXPECT_NEAR(sum, 640.0 * static_cast<double>(passes), 45);
  if (!c.exact) return;
  const FrameStream was = canvas_frames(source), is = canvas_frames(again);
  for (std::size_t i = 0; i < 4; ++i)
    for (int p = 0; p < 24; ++p)
      ASSERT_EQ(PictureGetPixel(is.frame(i).picture, p % 6, p / 6) & 0xFFFFFF,
                PictureGetPixel(was.frame(i).picture, p % 6, p / 6) & 0xFFFFFF)
          << i;
}

INSTANTIATE_TEST_SUITE_P(
    Formats, MovieFiles,
    ::testing::Values(MovieCase{".avi", {}, 8, 4, false},
                      MovieCase{".avi", {{"compress", 0}, {"roundUp", 0}}, 6, 4, true},
                      MovieCase{".avi", {{"includeSound", 1}, {"passes", 3}}, 8, 4, false},
                      MovieCase{".mov", {{"compress", 0}, {"roundUp", 0}}, 6, 4, true},
                      MovieCase{".mp4", {{"quality", 10}}, 8, 4, false},
                      MovieCase{".mp4", {{"includeSound", 1}, {"roundUp", 0}}, 6, 4, false},
                      MovieCase{".webm", {{"includeSound", 1}, {"passes", 2}}, 8, 4, false},
                      MovieCase{".mkv", {{"roundUp", 0}}, 6, 4, true}));

TEST(MovieImport, TurnedOddAndDamagedMoviesOfAnotherProgram) {
  testing::ScratchFolder folder;
  const auto make = [&](std::vector<std::string> words, const std::string& name) {
    words.insert(words.begin(), {"ffmpeg", "-v", "error", "-y"});
    words.push_back(folder / name);
    return testing::run_tool(words).status == 0;
  };
  if (!movies_built() ||
      !make({"-f", "lavfi", "-i", "testsrc=s=60x34:d=1:r=10", "-pix_fmt", "yuv420p", "-c:v", "mpeg4"},
            "a.mp4"))
    GTEST_SKIP() << "no movie libraries, or no ffmpeg";
  make({"-i", folder / "a.mp4", "-c", "copy", "-metadata:s:v", "rotate=90"}, "turned.mp4");
  make({"-f", "lavfi", "-i", "testsrc=s=33x17:d=1:r=10", "-c:v", "ffv1", "-pix_fmt", "bgr0"}, "odd.mkv");
  make({"-i", folder / "a.mp4", "-aspect", "120:34", "-c", "copy"}, "wide.mp4");
  const Importer& importer = *find_importer("import-movie");
  const auto read = [&](const std::string& name, Recorder& recorder, DocumentWindow& made) {
    return import_file(importer, made, folder / name, initial_values(importer.parameters.fields),
                       recorder.host);
  };
  const std::tuple<const char*, std::uint32_t, std::uint32_t> sizes[] = {
      {"a.mp4", 60, 34}, {"turned.mp4", 34, 60}, {"odd.mkv", 33, 17}, {"wide.mp4", 120, 34}};
  for (const auto& [name, width, height] : sizes) {
    Recorder recorder;
    DocumentWindow made;
    ASSERT_TRUE(read(name, recorder, made)) << name << ::testing::PrintToString(recorder.messages);
    const Extent canvas = document_size(made.list, made.document);
    EXPECT_EQ(canvas.width, width) << name;
    EXPECT_EQ(canvas.height, height) << name;
    EXPECT_EQ(frame_entries(made).size(), 10u) << name;
  }
  const auto whole = testing::file_bytes(folder / "odd.mkv");
  for (std::size_t i = 0; i < whole.size(); i += 1 + whole.size() / 60)
    for (const bool cut : {false, true}) {
      auto bytes = whole;
      cut ? bytes.resize(i) : void(bytes[i] ^= 0xFF);
      std::ofstream(folder / "bad.mkv", std::ios::binary)
          .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
      Recorder recorder;
      DocumentWindow made;
      if (!read("bad.mkv", recorder, made)) EXPECT_EQ(recorder.messages.size(), 1u) << i;
    }
}

}  // namespace
}  // namespace vellum
