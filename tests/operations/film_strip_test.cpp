// Strips of frames, and what is said about an animation.
#include "operations/film_strip.h"

#include "core/chunks/new_chunk.h"
#include "core/files/save_document.h"
#include "core/model/chunk_layout.h"
#include "image/picture_operations.h"
#include "operations/animation_properties.h"
#include "support/corpus.h"
#include "support/documents.h"

namespace vellum {
namespace {

DocumentWindow webp(std::size_t frames) {
  DocumentWindow window;
  window.document.kind = DocumentKind::WEBP;
  ChunkRecord record;
  EXPECT_TRUE(new_chunk(window, record, tag::WEBH));
  chunk_list_append(window.list, window.document, record);
  for (std::size_t i = 0; i < frames; ++i) {
    NewChunkArgument argument;
    argument.picture = PictureCreateFilled(6, 4, static_cast<Colour>(i + 1)).handle();
    EXPECT_TRUE(new_chunk(window, record, tag::WEBI, argument));
    record.webpImage.delay = static_cast<std::uint32_t>(100 - i);
    chunk_list_append(window.list, window.document, record);
  }
  chunk_list_close_change(window.list, window.document);
  return window;
}

TEST(FilmStrip, CellsStandInRowsAndComeBack) {
  testing::Recorder recorder;
  const DocumentWindow window = webp(5);
  struct Case {
    FilmStrip strip;
    std::uint32_t width, height;
  };
  const Case cases[] = {{{0, 0, 0}, 30, 4}, {{2, 0, 0}, 12, 12}, {{9, 0, 0}, 30, 4}, {{3, 10, 6}, 30, 12}};
  for (const Case& c : cases) {
    const Picture strip = film_strip(window, c.strip, recorder.host);
    ASSERT_TRUE(strip);
    EXPECT_EQ(std::pair(strip.width(), strip.height()), std::pair(c.width, c.height));
    const std::uint32_t wide = c.strip.cellWidth ? c.strip.cellWidth : 6;
    const std::uint32_t deep = c.strip.cellHeight ? c.strip.cellHeight : 4;
    const CutStrip cut = cut_strip(strip, wide, deep);
    ASSERT_GE(cut.cells.size(), 5u);
    for (std::uint32_t i = 0; i < 5; ++i)
      EXPECT_EQ(PictureGetPixel(cut.cells[i], wide / 2, deep / 2), i + 1) << c.width;
  }
}

TEST(FilmStrip, LargerCanvasesAreMadeToFitTheirCells) {
  testing::Recorder recorder;
  const Picture strip = film_strip(webp(2), {0, 3, 3}, recorder.host);
  ASSERT_TRUE(strip);
  EXPECT_EQ(std::pair(strip.width(), strip.height()), std::pair(6u, 3u));
  EXPECT_EQ(PictureGetPixel(strip, 1, 1), 1u);
  EXPECT_EQ(PictureGetPixel(strip, 1, 2), 0xFFFFFFu) << "the proportions stay";
}

TEST(FilmStrip, WithoutImagesThereIsNone) {
  testing::Recorder recorder;
  EXPECT_FALSE(film_strip(webp(0), {}, recorder.host));
  EXPECT_EQ(recorder.messages, std::vector<std::string>{"There are no images in this document."});
}

TEST(CutStrip, IncompleteCellsAreCounted) {
  struct Case {
    std::uint32_t width, height, wide, deep;
    std::size_t cells, incomplete;
  };
  const Case cases[] = {{10, 10, 5, 5, 4, 0}, {11, 10, 5, 5, 4, 2}, {11, 11, 5, 5, 4, 5},
                        {4, 10, 5, 5, 0, 2},  {5, 5, 5, 5, 1, 0},   {10, 10, 0, 5, 0, 0}};
  for (const Case& c : cases) {
    const CutStrip cut = cut_strip(PictureCreateFilled(c.width, c.height, 3), c.wide, c.deep);
    EXPECT_EQ(cut.cells.size(), c.cells) << c.width << " " << c.height;
    EXPECT_EQ(cut.incomplete, c.incomplete) << c.width << " " << c.height;
  }
}

TEST(AnimationProperties, SumsUpTheFrames) {
  const AnimationProperties p = animation_properties(webp(3));
  EXPECT_EQ(p.runningTime, 100u + 99 + 98);
  EXPECT_EQ(p.colorForms, std::vector<std::string>{"24 bits, true color"});
  EXPECT_EQ(p.memory, 3 * (40u + 4 * 20));
  EXPECT_EQ(p.frames[2].entry, 3u);
  auto frames = p.frames;
  sort_frames(frames, FrameColumn::Delay);
  EXPECT_EQ(frames.front().number, 3u);
  sort_frames(frames, FrameColumn::Size);
  EXPECT_EQ(frames.front().number, 1u) << "equal ones keep their order";
}

TEST(AnimationProperties, PicturesThatFramesShareCountOnce) {
  DocumentWindow window = webp(1);
  window.list.insert(2, window.list.entry(1).record);
  EXPECT_EQ(animation_properties(window).memory, 40u + 4 * 20);
}

TEST(AnimationProperties, LightsChangeAboveTheirLimits) {
  EXPECT_EQ(traffic_light(640, 640, 1024), Light::Green);
  EXPECT_EQ(traffic_light(641, 640, 1024), Light::Yellow);
  EXPECT_EQ(traffic_light(1024, 640, 1024), Light::Yellow);
  EXPECT_EQ(traffic_light(1025, 640, 1024), Light::Red);
  AnimationProperties p;
  p.memory = 16385 * 1024;
  EXPECT_EQ(memory_light(p, {}), Light::Yellow);
  p.memory = 16384 * 1024;
  EXPECT_EQ(memory_light(p, {}), Light::Green);
}

TEST(AnimationProperties, TheMeasuredSizeIsThatOfTheFile) {
  const testing::ScratchFolder folder;
  testing::Recorder recorder;
  DocumentWindow window = webp(3);
  const auto measured = size_when_written(window, save_options(), recorder.host);
  ASSERT_TRUE(measured);
  EXPECT_FALSE(window.document.dirty);
  ASSERT_TRUE(save_document(window, folder / "a.webp", recorder.host));
  EXPECT_EQ(*measured, std::filesystem::file_size(folder / "a.webp"));
  recorder.host.stop_requested = [] { return true; };
  EXPECT_FALSE(size_when_written(window, save_options(), recorder.host));
}

}  // namespace
}  // namespace vellum
