// Stills, files and whole canvases of animations, and animations of stills.
#include <gtest/gtest.h>

#include "core/chunks/new_chunk.h"
#include "core/edit/frame_layer.h"
#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "core/settings.h"
#include "image/graphic_file.h"
#include "image/picture_operations.h"
#include "image/settings.h"
#include "operations/build_stills.h"
#include "operations/convert_kind.h"
#include "operations/extract_frames.h"
#include "operations/frame_pictures.h"
#include "operations/manage_frames.h"
#include "operations/reconstruct.h"
#include "playback/compositor.h"
#include "support/corpus.h"
#include "support/documents.h"
#include "support/judge.h"

namespace vellum {
namespace {

using testing::Recorder;
using testing::small_document;
using testing::small_picture;

constexpr auto A = DocumentKind::APNG, M = DocumentKind::MING, W = DocumentKind::WEBP;

/// What plays, as bytes of the canvases.
std::vector<std::string> canvases(const DocumentWindow& window, std::size_t least = 0) {
  Compositor compositor(window.list, window.document);
  std::vector<std::string> frames;
  for (std::uint32_t i = 0; i < compositor.frames(); ++i) {
    const Picture picture = compositor.frame(i).picture;
    std::string& bytes = frames.emplace_back();
    for (std::uint32_t y = 0; picture && y < picture.height(); ++y)
      bytes.append(reinterpret_cast<const char*>(picture.row(y)), 3 * std::size_t{picture.width()});
  }
  EXPECT_GE(frames.size(), least);
  return frames;
}

/// A picture of 32 bits: opaque, but for one pixel.
Picture with_hole(unsigned seed) {
  Picture picture = PictureToTrueColorAlpha(small_picture(6, 4, 24, seed));
  PicturePutPixel(picture, seed % 6, 1, 0);
  return picture;
}

TEST(BuildStills, EveryKindPlaysThePicturesAsTheyAre) {
  const testing::ScratchFolder folder;
  const int lossless = std::exchange(settings::WEBPLossless, 1);
  Recorder recorder;
  const std::vector<std::vector<Picture>> sets = {
      {small_picture(6, 4, 24, 1), small_picture(6, 4, 24, 1), small_picture(6, 4, 24, 2)},
      {with_hole(1), with_hole(2), with_hole(2)},
      {small_picture(6, 4, 8, 1), small_picture(6, 4, 8, 2)},
      {small_picture(1, 1, 1, 1), small_picture(6, 4, 24, 1), small_picture(3, 2, 4, 5), with_hole(3)},
      {small_picture(1, 1, 24)}};
  for (const auto& [kind, name] : {std::pair(A, "a.png"), {M, "a.mng"}, {W, "a.webp"}})
    for (const auto& pictures : sets) {
      DocumentWindow window, read;
      ASSERT_TRUE(build_from_stills(window, hold_pictures(pictures), {kind, 40, 3}, recorder.host)) << name;
      ASSERT_TRUE(save_document(window, folder / name, recorder.host)) << name;
      EXPECT_EQ(testing::objections(folder / name), "") << name;
      ASSERT_TRUE(open_document(read, folder / name, recorder.host)) << name;
      const bool animation = is_animation(read.document.kind) && frame_entries(read).size() > 1;
      if (animation) {
        EXPECT_EQ(GetIterations(read.list, read.document), 3u) << name;
        EXPECT_EQ(total_time_ms(read, all_frames(pictures.size())), 40 * pictures.size()) << name;
      }
      // Each alone on the background: that of a build, white.
      Compositor compositor(read.list, read.document);
      ASSERT_EQ(frame_entries(read).size(), pictures.size()) << name;
      for (std::uint32_t i = 0; i < pictures.size(); ++i) {
        const Picture shown = compositor.frame(i).picture;
        const Picture source = PictureWithTransparency(pictures[i], {});
        for (std::uint32_t y = 0; y < shown.height(); ++y)
          for (std::uint32_t x = 0; x < shown.width(); ++x) {
            const bool inside = x < source.width() && y < source.height();
            const Colour pixel = inside ? PictureGetPixel(source, x, y) : 0;
            const Colour wanted = alpha_of(pixel) == 0 ? compositor.values().background : pixel & 0xFFFFFF;
            ASSERT_EQ(PictureGetPixelOpaque(shown, x, y) & 0xFFFFFF, wanted)
                << name << ", frame " << i << " of " << pictures.size() << ", " << x << ", " << y;
          }
      }
    }
  settings::WEBPLossless = lossless;
  DocumentWindow window;
  EXPECT_FALSE(build_from_stills(window, {}, {}, recorder.host));
  const Picture lost[] = {small_picture(2, 2, 24), Picture()};
  EXPECT_FALSE(build_from_stills(window, hold_pictures(lost), {}, recorder.host));
  const Picture wide[] = {small_picture(16'384, 1, 24)};
  EXPECT_FALSE(build_from_stills(window, hold_pictures(wide), {W}, recorder.host));
  EXPECT_TRUE(window.list.empty()) << "nothing is left of them";
  recorder.host.stop_requested = [] { return true; };
  EXPECT_FALSE(build_from_stills(window, hold_pictures(sets[0]), {}, recorder.host));
}

TEST(BuildStills, AnAnimatedPngHasWhatChangesAlone) {
  Picture first = small_picture(20, 10, 24), second = first;
  PicturePutPixel(second, 7, 3, 0x123456);
  PicturePutPixel(second, 9, 4, 0x123456);
  Host host;
  DocumentWindow window;
  ASSERT_TRUE(build_from_stills(window, std::vector<HeldPicture>{first, second, second}, {}, host));
  const auto entries = frame_entries(window);
  const FrameControl& control = window.list.record(entries[1]).frameControl;
  EXPECT_TRUE(control.xOffset == 7 && control.yOffset == 3 && control.frameWidth == 3 &&
              control.frameHeight == 2);
  EXPECT_EQ(window.list.record(entries[2]).frameControl.frameWidth, 1u);
  DocumentWindow whole;
  ASSERT_TRUE(build_from_stills(whole, std::vector<HeldPicture>{first, second}, {.whole = true}, host));
  EXPECT_EQ(testing::images_of(whole)[1].width(), 20u);
}

TEST(Reconstruct, PaletteStaysAndEqualFramesBecomeOne) {
  Recorder recorder;
  for (const DocumentKind kind : {A, M}) {
    const DocumentWindow source = small_document(A, 4, 3);
    DocumentWindow window;
    ASSERT_TRUE(convert_kind(source, window, {kind, false}, recorder.host));
    const auto entries = frame_entries(window);
    for (const std::size_t i : {1, 3}) {  // the frame in front of it once more, as a part
      ChunkRecord record;
      chunk_list_get(window.list, entries[i - 1], record);
      const Picture part = PictureCrop(picture_of(record), {1, 1, 4, 3});
      put_frame_pictures(window, hold_pictures(testing::images_of(window)), *shared_colors(window));
      record.data = part.handle();
      record.width = record.frameControl.frameWidth = 3;
      record.height = record.frameControl.frameHeight = 2;
      SetFrameOffset(record, kind, {1, 1});
      chunk_list_put(window.list, entries[i], record);
    }
    set_delays(window, {0, 1, 2, 3}, 70);
    const auto before = canvases(window, 4);
    ASSERT_TRUE(reconstruct_frames(window, CanvasDepth::AsNeeded, recorder.host, true));
    ASSERT_EQ(frame_entries(window).size(), 2u);
    EXPECT_EQ(canvases(window), (std::vector{before[0], before[2]}));
    EXPECT_LE(testing::images_of(window)[0].bits(), 8u) << "no other color is needed";
    EXPECT_EQ(total_time_ms(window, {0, 1}), 280u);
  }
}

TEST(Still, IsWhatTheFrameShowsWithTheTextsOfTheDocument) {
  Recorder recorder;
  DocumentWindow window = small_document(A, 2, 6), clear, opaque, none;
  ChunkRecord text = text_record("Title", "x");
  chunk_list_insert(window.list, window.document, 2, text);
  put_frame_pictures(window, std::vector<HeldPicture>{with_hole(1), with_hole(1)}, {});
  ASSERT_TRUE(still_of_frame(window, clear, 1, false, recorder.host));
  EXPECT_EQ(testing::tags_of(clear.list), "IHDR tEXt IDAT IEND");
  EXPECT_EQ(testing::images_of(clear)[0].bits(), 32u);
  ASSERT_TRUE(still_of_frame(window, opaque, 1, true, recorder.host));
  EXPECT_EQ(testing::images_of(opaque)[0].bits(), 24u);
  EXPECT_EQ(canvases(opaque)[0], canvases(window)[1]);
  EXPECT_FALSE(still_of_frame(window, none, 2, false, recorder.host)) << "there is no third";
}

TEST(Extract, NamesPicturesAndFormats) {
  const testing::ScratchFolder folder;
  Recorder recorder;
  DocumentWindow window = small_document(A, 3, 6);
  put_frame_pictures(window, std::vector<HeldPicture>{with_hole(1), with_hole(2), with_hole(3)}, {});
  Extraction extraction{.folder = folder / "new", .stem = "s", .frames = {0, 2}};
  const auto names = extracted_names(window, extraction);
  EXPECT_EQ(names[1].filename(), "s_00003.png");
  extraction.sequential = false;
  EXPECT_EQ(extracted_names(window, extraction)[0].filename(), "s_00003.png") << "IHDR and acTL come first";
  extraction.frames = {1};
  extraction.numbered = false;
  EXPECT_EQ(extracted_names(window, extraction)[0].filename(), "s.png");
  for (const char* format : {"jpg", "bmp", "gif", "pcx", "tga", "png", "webp"}) {
    Extraction one{
        .folder = folder / "new", .stem = "f", .extension = format, .frames = {1}, .composed = true};
    const auto files = extracted_names(window, one);
    ASSERT_EQ(extract_frames(window, one, files, recorder.host), 1u) << format;
    std::uint32_t bits = 0;
    ASSERT_TRUE(GraphicFileInfo(files[0].string(), nullptr, nullptr, &bits, nullptr)) << format;
    const std::string extension = format;
    const bool alpha = extension == "tga" || extension == "png" || extension == "webp";
    EXPECT_EQ(bits, alpha ? 32u : extension == "gif" ? bits : 24u) << format;
    EXPECT_EQ(free_names(files)[0].filename(), "f_00002 (2)." + extension);
  }
  recorder.host.stop_requested = [] { return true; };
  extraction.frames = {0, 1, 2};
  EXPECT_EQ(extract_frames(window, extraction, extracted_names(window, extraction), recorder.host), 0u);
}

TEST(ConvertKind, PalettesOfAnMngBecomeOne) {
  Recorder recorder;
  for (const bool many : {false, true}) {
    DocumentWindow window = small_document(M, 0), converted;
    std::vector<Picture> pictures;
    for (unsigned i = 0; i < 3; ++i) {
      Palette palette{};
      for (unsigned k = 0; k < 768; ++k)
        palette[k] = static_cast<std::uint8_t>(!many ? k / 3 * i : k % 3 == 2 ? 50 * i : k / 3);
      Picture picture = PictureCreate(16, 16, &palette, 8);
      for (unsigned k = 0; k < 256; ++k) PicturePutPixel(picture, k % 16, k / 16, many ? k : k % 80);
      pictures.push_back(picture);
    }
    ASSERT_TRUE(build_from_stills(window, hold_pictures(pictures), {M}, recorder.host));
    ASSERT_TRUE(convert_kind(window, converted, {A, false}, recorder.host));
    EXPECT_TRUE(shared_colors(converted)) << "one palette";
    EXPECT_EQ(canvases(converted, 3) == canvases(window), !many) << "exactly where 256 colors are enough";
  }
  DocumentWindow texts = small_document(A, 1), webp;
  ChunkRecord text = text_record("Title", "x");
  chunk_list_insert(texts.list, texts.document, 2, text);
  ASSERT_TRUE(convert_kind(texts, webp, {W, false}, recorder.host));
  EXPECT_EQ(std::ranges::count(recorder.notes, "1 text chunks can't be kept in a WebP file."), 1);
}

}  // namespace
}  // namespace vellum
