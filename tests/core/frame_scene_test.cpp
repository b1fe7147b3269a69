// Frames among their neighbours: what the image editor shows is what plays.
#include "core/edit/frame_scene.h"

#include "image/picture_operations.h"
#include "support/documents.h"

namespace vellum {
namespace {

std::vector<std::uint8_t> pixels(const Picture& picture) {
  const auto bytes = picture.handle().bytes();
  return {bytes.begin(), bytes.end()};
}

/// Small frames at places of their own, disposed of and blended in turns.
DocumentWindow walking_frames(DocumentKind kind) {
  DocumentWindow window = testing::small_document(kind, 5, 6);
  std::uint32_t k = 0;
  for (std::size_t i = 0; i < window.list.size(); ++i) {
    ChunkRecord record = window.list.record(i);
    if (!is_image_entry(kind, record.tag) || k++ == 0) continue;
    record.data = testing::small_picture(3, 2, 32, k).handle();
    record.width = record.frameControl.frameWidth = record.webpImage.width = 3;
    record.height = record.frameControl.frameHeight = record.webpImage.height = 2;
    SetFrameOffset(record, kind, {static_cast<std::int32_t>(k % 4), static_cast<std::int32_t>(k % 3)});
    set_frame_dispose(record, kind, k % 3);
    record.frameControl.blend = k % 2;
    chunk_list_put(window.list, i, record);
  }
  return window;
}

TEST(FrameScene, ShowsWhatPlays) {
  for (const DocumentKind kind : {DocumentKind::APNG, DocumentKind::MING, DocumentKind::WEBP}) {
    const DocumentWindow window = walking_frames(kind);
    StraightCanvases playing(window);
    std::vector<std::size_t> entries;
    std::vector<Picture> shown;
    for (std::size_t i = 0; i < window.list.size(); ++i)
      if (is_image_entry(kind, window.list.record(i).tag)) {
        entries.push_back(i);
        shown.push_back(playing.next(window.list.record(i)));
      }
    ASSERT_EQ(entries.size(), 5u);
    for (std::size_t k = 0; k < entries.size(); ++k) {
      const FrameScene scene(window, entries[k]);
      const FrameOffset at = GetFrameOffset(window.list.record(entries[k]), kind);
      EXPECT_EQ(pixels(scene.with_frame_at(window, at)), pixels(shown[k]))
          << tag_letters(image_tag(kind)) << k;
      const Picture before = scene.before(), after = scene.after(window, at);
      EXPECT_EQ(static_cast<bool>(before), k > 0);
      if (before) EXPECT_EQ(pixels(before), pixels(shown[k - 1])) << k;
      EXPECT_EQ(static_cast<bool>(after), k + 1 < entries.size());
      if (after) EXPECT_EQ(pixels(after), pixels(shown[k + 1])) << k;
      EXPECT_EQ(neighbour_image(window, entries[k], true),
                k + 1 < entries.size() ? entries[k + 1] : kNoEntry);
      EXPECT_EQ(neighbour_image(window, entries[k], false), k > 0 ? entries[k - 1] : kNoEntry);
    }
  }
}

TEST(FrameScene, AGrownCanvasIsFilledByTheFirstImageOfAnAnimatedPng) {
  DocumentWindow window = walking_frames(DocumentKind::APNG);
  std::size_t last = window.list.size() - 1;
  while (!is_image_entry(DocumentKind::APNG, window.list.record(last).tag)) --last;
  const Extent grown = canvas_with_frame_at(window, last, {9, 1});
  EXPECT_EQ(grown.width, 12u);
  EXPECT_EQ(grown.height, document_size(window.list, window.document).height);
  EXPECT_TRUE(pads_first_image(window, grown));
  const Extent before = document_size(window.list, window.document);
  ChunkRecord record = window.list.record(last);
  SetFrameOffset(record, DocumentKind::APNG, {9, 1});
  chunk_list_put(window.list, last, record);
  ASSERT_TRUE(fill_grown_canvas(window, last, before));
  EXPECT_EQ(testing::images_of(window).front().width(), 12u);
  EXPECT_FALSE(pads_first_image(window, grown));
}

}  // namespace
}  // namespace vellum
