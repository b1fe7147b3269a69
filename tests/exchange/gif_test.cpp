// GIF against what other programs read and show.
#include <gtest/gtest.h>

#include "core/files/open_document.h"
#include "core/model/frame_values.h"
#include "core/model/record_picture.h"
#include "exchange/exporter.h"
#include "exchange/gif_reader.h"
#include "exchange/gif_writer.h"
#include "exchange/importer.h"
#include "operations/frames.h"
#include "operations/reconstruct.h"
#include "support/corpus.h"
#include "support/documents.h"
#include "support/judge.h"

namespace vellum {
namespace {

using testing::Recorder;

/// Canvases as RGBA8, one behind the other; what is transparent is 0.
using Shown = std::vector<std::uint8_t>;

void add_canvas(Shown& shown, const Picture& canvas) {
  for (std::uint32_t y = 0; y < canvas.height(); ++y)
    for (std::uint32_t x = 0; x < canvas.width(); ++x) {
      const Colour color = PictureGetPixelOpaque(canvas, x, y);
      for (int shift = 0; shift < 32; shift += 8)
        shown.push_back(alpha_of(color) == 0 ? 0 : static_cast<std::uint8_t>(color >> shift));
    }
}

Shown shown_of(const DocumentWindow& window) {
  Shown shown;
  Recorder recorder;
  if (!is_animation(window.document.kind)) {
    auto bytes = testing::rgba_of(window, testing::first_image(window));
    for (std::size_t i = 0; i < bytes.size(); i += 4)
      if (bytes[i + 3] == 0) std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(i), 4, 0);
    return bytes;
  }
  for_each_canvas(window, CanvasDepth::TrueColorAlpha, recorder.host,
                  [&](std::size_t, const Picture& canvas) {
                    add_canvas(shown, canvas);
                    return true;
                  });
  return shown;
}

/// What ImageMagick shows; nothing where it isn't installed or finds a fault, or where it fills what lies
/// around an opaque first frame with a color.
std::optional<Shown> judged(const std::filesystem::path& gif, const std::filesystem::path& folder) {
  const auto bytes = testing::file_bytes(gif);
  const auto file = read_gif(bytes);
  if (!file || file->frames.empty()) return std::nullopt;
  const GifFrame& first = file->frames[0];
  if (!first.transparent && (first.width < file->width || first.height < file->height)) return std::nullopt;
  const auto raw = folder / "judged.rgba";
  const auto result =
      testing::run_tool({"convert", "-quiet", gif, "-coalesce", "-depth", "8", "rgba:" + raw.string()});
  if (!result.there || result.status != 0 || !result.output.empty()) return std::nullopt;
  Shown shown = testing::file_bytes(raw);
  for (std::size_t i = 0; i + 3 < shown.size(); i += 4)
    if (shown[i + 3] == 0) std::fill_n(shown.begin() + static_cast<std::ptrdiff_t>(i), 4, 0);
  return shown;
}

DocumentWindow imported(const std::filesystem::path& path, std::int64_t kind, Recorder& recorder) {
  DocumentWindow window;
  FieldValues values;
  values.set(kKindField, kind);
  values.set("comments", std::int64_t{1});
  import_file(*find_importer("import-gif"), window, path, values, recorder.host);
  return window;
}

TEST(GifIn, AnimationsOfTheCorpusShowWhatAnotherProgramShows) {
  VELLUM_NEEDS_CORPUS();
  testing::ScratchFolder folder;
  std::size_t seen = 0;
  for (const auto& row : testing::corpus_rows({"gif"})) {
    SCOPED_TRACE(row.at("path"));
    const auto path = testing::corpus_file(row);
    const auto wanted = row.at("verdict") == "loads" ? judged(path, folder.path()) : std::nullopt;
    for (const std::int64_t kind : {0, 1}) {
      Recorder recorder;
      const DocumentWindow window = imported(path, kind, recorder);
      if (row.at("verdict") == "loads") {
        EXPECT_TRUE(recorder.messages.empty());
      }
      if (!wanted || !recorder.messages.empty()) continue;
      EXPECT_TRUE(shown_of(window) == *wanted);
      ++seen;
    }
  }
  if (testing::run_tool({"convert", "-version"}).there) {
    EXPECT_GT(seen, 40u);
  }
}

/// A file of blocks: a screen of 3 x 2 with three colors, then frames.
Bytes beginning() {
  Bytes bytes;
  GifColors colors{.palette = {10, 20, 30, 40, 50, 60, 70, 80, 90}, .count = 3};
  put_gif_head(bytes, 3, 2, colors, 0);
  return bytes;
}

TEST(GifIn, PlaysDelaysDisposalAndCommentsComeAlong) {
  const std::uint8_t six[] = {0, 1, 2, 2, 1, 0}, one[] = {2};
  for (const std::uint32_t plays : {0u, 1u, 7u}) {
    Bytes bytes = beginning();
    if (plays != 1) put_gif_plays(bytes, plays);
    const std::string comment =
        "gr\xC3\xBC\xC3\x9F"
        "e";
    put_gif_comment(bytes, {reinterpret_cast<const std::uint8_t*>(comment.data()), comment.size()});
    put_gif_image(bytes, {.width = 3, .height = 2, .indexes = six, .delay = 7}, 2);
    put_gif_image(bytes,
                  {.left = 2,
                   .top = 1,
                   .width = 1,
                   .height = 1,
                   .indexes = one,
                   .delay = 300,
                   .disposal = GifDisposal::Previous,
                   .transparent = 2},
                  2);
    bytes.push_back(kGifTrailer);
    for (const std::int64_t kind : {0, 1, 2}) {
      Recorder recorder;
      DocumentWindow window;
      FieldValues values;
      values.set(kKindField, kind);
      values.set("comments", std::int64_t{1});
      ASSERT_TRUE(import_bytes(*find_importer("import-gif"), window, "x.gif", bytes, values, recorder.host));
      EXPECT_EQ(GetIterations(window.list, window.document), plays) << kind;
      const auto entries = frame_entries(window);
      ASSERT_EQ(entries.size(), 2u);
      const std::uint32_t ticks = ticks_per_second(window.list);
      EXPECT_EQ(frame_delay_ms(window.list.record(entries[0]), window.document.kind, ticks), 70u);
      EXPECT_EQ(frame_delay_ms(window.list.record(entries[1]), window.document.kind, ticks), 3000u);
      if (kind == 0) {
        EXPECT_EQ(window.list.record(entries[1]).frameControl.dispose, 2);
        EXPECT_EQ(window.list.record(entries[1]).frameControl.xOffset, 2u);
        EXPECT_NE(testing::tags_of(window.list).find("tEXt"), std::string::npos);
        EXPECT_NE(testing::tags_of(window.list).find("PLTE"), std::string::npos);
      }
    }
  }
}

TEST(GifIn, FramesInFrontOfADamageStayAndItIsTold) {
  const std::uint8_t six[] = {0, 1, 2, 2, 1, 0};
  Bytes bytes = beginning();
  for (int i = 0; i < 3; ++i) put_gif_image(bytes, {.width = 3, .height = 2, .indexes = six}, 2);
  const std::size_t whole = bytes.size();
  bytes.resize(whole - 4);
  Recorder recorder;
  DocumentWindow window;
  ASSERT_TRUE(import_bytes(*find_importer("import-gif"), window, "x.gif", bytes,
                           initial_values(find_importer("import-gif")->parameters.fields), recorder.host));
  EXPECT_EQ(frame_entries(window).size(), 3u);
  EXPECT_EQ(recorder.notes.size(), 2u);
}

TEST(GifOut, CodesOfEveryWidthAndAFullTableReadBack) {
  for (const std::uint32_t bits : {1u, 2u, 3u, 7u, 8u})
    for (const std::size_t side : {1, 2, 17, 300}) {
      GifColors colors{.count = 1u << bits};
      std::vector<std::uint8_t> indexes(side * side);
      std::uint32_t x = bits * 77;
      for (auto& index : indexes) {
        x = x * 214013 + 2531011;
        index = static_cast<std::uint8_t>((x >> 16) % (side == 17 ? 2 : colors.count));
      }
      const auto length = static_cast<std::uint32_t>(side);
      Bytes bytes;
      put_gif_head(bytes, length, length, colors, 0);
      put_gif_image(bytes, {.width = length, .height = length, .indexes = indexes}, bits);
      bytes.push_back(kGifTrailer);
      const auto file = read_gif(bytes);
      ASSERT_TRUE(file && file->frames.size() == 1 && file->damage.empty());
      EXPECT_TRUE(gif_pixels(*file, file->frames[0]).indexes == indexes) << bits << " " << side;
    }
}

TEST(GifOut, PixelsOfSeveralChoicesGetOneOfThemAndTakeLess) {
  std::uint32_t x = 5;
  const auto next = [&](std::uint32_t below) { return (x = x * 214013 + 2531011) >> 16 & (below - 1); };
  std::vector<std::uint8_t> first(90000);
  std::vector<PixelChoice> choices(first.size());
  for (std::size_t i = 0; i < first.size(); ++i) {
    first[i] = static_cast<std::uint8_t>(i > 40000 ? next(4) + i / 300 % 3 : next(64));
    choices[i].fill(first[i]);
    for (auto& index : std::span(choices[i]).subspan(1))
      index = static_cast<std::uint8_t>(first[i] ^ next(2));
  }
  const GifColors colors{.count = 64};
  const auto clears = best_clears(first, 6);
  const GifImage image{.width = 300, .height = 300, .indexes = first};
  std::vector<std::size_t> sizes;
  for (int way = 0; way < 3; ++way) {
    GifImage made = image;
    if (way > 0) made.choices = choices;
    if (way > 1) made.clears = &clears;
    Bytes bytes;
    put_gif_head(bytes, 300, 300, colors, 0);
    const auto taken = put_gif_image(bytes, made, 6);
    bytes.push_back(kGifTrailer);
    const auto file = read_gif(bytes);
    ASSERT_TRUE(file && file->frames.size() == 1 && file->damage.empty());
    const auto read = gif_pixels(*file, file->frames[0]).indexes;
    EXPECT_TRUE(way == 0 ? read == first : read == taken);
    for (std::size_t i = 0; i < read.size(); ++i)
      ASSERT_TRUE(std::ranges::find(choices[i], read[i]) != choices[i].end());
    sizes.push_back(bytes.size());
  }
  EXPECT_LT(sizes[1], sizes[0]);
  EXPECT_LT(sizes[2], sizes[1]);
}

/// What a GIF of a document shows, and its size.
struct Made {
  Shown shown;
  std::size_t bytes = 0;
};

Made made_of(const DocumentWindow& window, const std::filesystem::path& path, bool optimize,
             const char* judge) {
  FieldValues values = initial_values(find_exporter("gif")->parameters.fields);
  values.set("optimize", std::int64_t{optimize});
  Recorder recorder;
  EXPECT_TRUE(export_document(*find_exporter("gif"), window, values, path, recorder.host));
  if (const auto info = testing::run_tool({judge, "--info", path}); info.there) {
    EXPECT_EQ(info.output.find("warning"), std::string::npos) << info.output;
    EXPECT_EQ(info.status, 0);
  }
  Made made{shown_of(imported(path, 0, recorder)), std::filesystem::file_size(path)};
  if (const auto other = judged(path, path.parent_path())) {
    EXPECT_TRUE(*other == made.shown) << "another program shows something else";
  }
  return made;
}

/// As colors are matched: squared distances of the pixels that are opaque, huge where alpha is wrong.
std::uint64_t error_of(const Shown& shown, const Shown& wanted) {
  std::uint64_t sum = shown.size() == wanted.size() ? 0 : 1ull << 60;
  for (std::size_t i = 0; i < std::min(shown.size(), wanted.size()); i += 4) {
    if ((shown[i + 3] != 0) != (wanted[i + 3] > 128)) sum = 1ull << 60;
    const auto squared = [&](std::size_t c) {
      return (shown[i + c] - wanted[i + c]) * (shown[i + c] - wanted[i + c]);
    };
    if (wanted[i + 3] == 255)
      sum += static_cast<std::uint64_t>(3 * squared(0) + 4 * squared(1) + 2 * squared(2));
  }
  return sum;
}

TEST(GifOut, FramesCutToWhatChangesAreAsNearToTheSourceAndNoLarger) {
  VELLUM_NEEDS_CORPUS();
  testing::ScratchFolder folder;
  std::size_t smaller = 0;
  for (const char* name :
       {"apng/apngkit-pia.png", "apng/apngsuite-dispose_op_background_region.png",
        "apng/apngsuite-dispose_op_previous_first.png", "apng/apngsuite-blend_op_source_near_transparent.png",
        "apng/javapng-012-dispose-background.png", "apng/javapng-toucan-pallete-2frame.png",
        "apng/javapng-blend-1a.png", "gif/pillow-dispose_bgnd_transparency.gif",
        "gif/libvips-dispose-previous.gif", "gif/imagers-any-disposal.gif"}) {
    SCOPED_TRACE(name);
    testing::TableRow row{{"path", name}};
    Recorder recorder;
    DocumentWindow window;
    if (std::string_view(name).starts_with("gif"))
      window = imported(testing::corpus_file(row), 0, recorder);
    else
      ASSERT_TRUE(open_document(window, testing::corpus_file(row), recorder.host));
    const Made plain = made_of(window, folder / "plain.gif", false, "gifsicle"),
               cut = made_of(window, folder / "cut.gif", true, "gifsicle");
    const Shown wanted = shown_of(window);
    EXPECT_LE(error_of(cut.shown, wanted), 4 * error_of(plain.shown, wanted));
    EXPECT_LE(cut.bytes, plain.bytes);
    smaller += cut.bytes < plain.bytes;
  }
  EXPECT_GT(smaller, 6u);
}

/// An MNG of indexed frames with one transparent entry each.
DocumentWindow keyed_mng(std::uint8_t first_key, std::uint8_t second_key, std::uint8_t alpha) {
  DocumentWindow window = testing::small_document(DocumentKind::MING, 2, 3);
  const auto entries = frame_entries(window);
  for (std::size_t i = 0; i < 2; ++i) {
    ChunkRecord record = window.list.record(entries[i]);
    Picture picture = testing::small_picture(6, 4, 8, 1);
    PicturePutPixel(picture, 2, 2, i == 0 ? first_key : second_key);
    record_take_picture(record, DocumentKind::MING, picture);
    std::vector<std::uint8_t> table(256, 255);
    table[i == 0 ? first_key : second_key] = alpha;
    put_image_transparency(record, table);
    set_frame_delay(record, DocumentKind::MING, ticks_per_second(window.list), i == 0 ? 4 : 20);
    chunk_list_put(window.list, entries[i], record);
  }
  return window;
}

TEST(GifOut, PalettesThatFramesShareStayAndTheTransparentEntryIsDecidedByAll) {
  struct Case {
    std::uint8_t first, second, alpha;
    bool shared;
    std::int64_t threshold = 128;
  };
  testing::ScratchFolder folder;
  for (const Case& c : {Case{3, 3, 0, true}, Case{3, 5, 0, false}, Case{3, 3, 128, false},
                        Case{3, 3, 0, false, 0}, Case{3, 3, 200, true}}) {
    const DocumentWindow window = keyed_mng(c.first, c.second, c.alpha);
    FieldValues values = initial_values(find_exporter("gif")->parameters.fields);
    values.set("threshold", c.threshold);
    Recorder recorder;
    const auto path = folder / "a.gif";
    ASSERT_TRUE(export_document(*find_exporter("gif"), window, values, path, recorder.host));
    const auto bytes = testing::file_bytes(path);
    const auto file = read_gif(bytes);
    ASSERT_TRUE(file && file->frames.size() == 2);
    const auto indexes = gif_pixels(*file, file->frames[0]).indexes;
    ASSERT_EQ(indexes.size(), 24u);
    const Picture stored = picture_of(window.list.record(frame_entries(window)[0]));
    bool same = true;
    for (std::uint32_t i = 0; i < 24; ++i) same = same && indexes[i] == PictureGetPixel(stored, i % 6, i / 6);
    EXPECT_EQ(same, c.shared) << int(c.first) << " " << int(c.second) << " " << int(c.alpha);
    EXPECT_EQ(file->frames[0].transparent.has_value(), c.alpha <= c.threshold);
    if (same && c.alpha == 0) {
      EXPECT_EQ(file->frames[0].transparent, c.first);
    }
    EXPECT_EQ(file->frames[0].delay, 1u) << "4 ms are one hundredth";
    EXPECT_EQ(file->frames[1].delay, 2u);
    const bool partial = c.alpha > 0;
    EXPECT_EQ(recorder.warnings.size() + recorder.messages.size(), partial ? 1u : 0u);
  }
}

}  // namespace
}  // namespace vellum
