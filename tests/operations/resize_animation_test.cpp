// Whole documents in another size.
#include "operations/resize_animation.h"

#include <gtest/gtest.h>

#include "core/edit/frame_layer.h"
#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "core/model/framing.h"
#include "image/resample.h"
#include "operations/frames.h"
#include "operations/reconstruct.h"
#include "support/corpus.h"
#include "support/documents.h"

namespace vellum {
namespace {

using testing::kFileNames;
using testing::Recorder;
using testing::small_document;

constexpr auto P = DocumentKind::PING, A = DocumentKind::APNG, M = DocumentKind::MING, W = DocumentKind::WEBP;

struct Box {
  int x, y;
  std::uint32_t width, height;
  bool operator==(const Box&) const = default;
  friend std::ostream& operator<<(std::ostream& out, const Box& box) {
    return out << box.x << ',' << box.y << ' ' << box.width << 'x' << box.height;
  }
};

Box box_of(const DocumentWindow& window, std::size_t entry) {
  const ChunkRecord& record = window.list.record(entry);
  const FrameOffset offset = GetFrameOffset(record, window.document.kind);
  const Picture picture = picture_of(record);
  return {offset.x, offset.y, picture.width(), picture.height()};
}

/// Puts frame `frame` somewhere on the canvas.
void put_frame(DocumentWindow& window, std::size_t frame, const Box& box) {
  const std::size_t entry = frame_entries(window)[frame];
  ChunkRecord record;
  chunk_list_get(window.list, entry, record);
  const Picture picture = testing::small_picture(box.width, box.height, picture_of(record).bits());
  record.data = picture.handle();
  record.width = record.frameControl.frameWidth = record.webpImage.width = box.width;
  record.height = record.frameControl.frameHeight = record.webpImage.height = box.height;
  SetFrameOffset(record, window.document.kind, {box.x, box.y});
  chunk_list_put(window.list, entry, record);
}

TEST(ResizeAnimation, EveryKindIsScaledWrittenAndReadBack) {
  const testing::ScratchFolder folder;
  Recorder recorder;
  for (const DocumentKind kind : {P, A, M, W})
    for (const std::uint8_t type : {0, 2, 3, 6})
      for (const ResampleFilter filter : {ResampleFilter::Automatic, ResampleFilter::Point})
        for (const bool keep : {false, true}) {
          if (kind == W && type != 2 && type != 6) continue;
          const auto what = ::testing::Message()
                            << kFileNames.at(kind) << ", type " << +type << ", filter "
                            << static_cast<int>(filter) << (keep ? ", palette kept" : "");
          DocumentWindow window = small_document(kind, kind == P ? 1 : 3, type);
          const std::uint32_t bits = testing::first_image(window).bits();
          ASSERT_TRUE(resize_animation(
              window, {.width = 9, .height = 10, .filter = filter, .keepPalette = keep}, recorder.host))
              << what;
          const Extent size = document_size(window.list, window.document);
          EXPECT_EQ(std::pair(size.width, size.height), std::pair(9u, 10u)) << what;
          for (const Picture& picture : testing::images_of(window)) {
            EXPECT_EQ(std::pair(picture.width(), picture.height()), std::pair(9u, 10u)) << what;
            if (keep || filter == ResampleFilter::Point || type != 3)
              EXPECT_EQ(picture.bits(), bits) << what;
            else
              EXPECT_EQ(picture.bits(), 24u) << what;
          }
          const auto path = folder / kFileNames.at(kind);
          ASSERT_TRUE(save_document(window, path, recorder.host)) << what;
          EXPECT_EQ(testing::objections(path), "") << what;
          DocumentWindow read;
          ASSERT_TRUE(open_document(read, path, recorder.host)) << what;
          EXPECT_EQ(testing::images_of(read).size(), testing::images_of(window).size()) << what;
        }
  EXPECT_TRUE(recorder.messages.empty());
}

TEST(ResizeAnimation, NeighboursStillMeet) {
  Recorder recorder;
  for (const DocumentKind kind : {A, M, W})
    for (const std::uint32_t width : {1u, 3u, 5u, 7u, 11u, 16u, 100u}) {
      DocumentWindow window = small_document(kind, 4);
      put_frame(window, 1, {0, 0, 1, 4});
      put_frame(window, 2, {1, 1, 2, 3});
      put_frame(window, 3, {3, 0, 3, 2});
      ASSERT_TRUE(resize_animation(window, {.width = width, .height = 6}, recorder.host));
      const auto entries = frame_entries(window);
      // The edges 1 and 3 of 6, to the nearest pixel, halves up.
      const int one = static_cast<int>((2 * width + 6) / 12), three = static_cast<int>((6 * width + 6) / 12);
      const auto side = [](int from, int to) { return static_cast<std::uint32_t>(std::max(to - from, 1)); };
      const auto at = [&](int edge) { return std::min(edge, static_cast<int>(width) - 1); };
      EXPECT_EQ(box_of(window, entries[0]), (Box{0, 0, width, 6}));
      EXPECT_EQ(box_of(window, entries[1]), (Box{0, 0, side(0, one), 6})) << width;
      EXPECT_EQ(box_of(window, entries[2]), (Box{at(one), 2, side(one, three), 4})) << width;
      EXPECT_EQ(box_of(window, entries[3]), (Box{at(three), 0, side(three, static_cast<int>(width)), 3}))
          << width;
    }
}

std::vector<Picture> canvases_of(const DocumentWindow& window) {
  std::vector<Picture> canvases;
  Recorder recorder;
  EXPECT_TRUE(
      for_each_canvas(window, CanvasDepth::AsNeeded, recorder.host, [&](std::size_t, const Picture& canvas) {
        canvases.push_back(canvas);
        return true;
      }));
  return canvases;
}

TEST(ResizeAnimation, FramesThatMeetHaveNoSeams) {
  Recorder recorder;
  for (const DocumentKind kind : {A, M, W})
    for (const std::uint8_t type : {2, 6, 3})
      for (const Extent size : {Extent{9, 10}, {17, 3}, {60, 50}, {3, 2}}) {
        // Frames with alpha are laid over the canvas of an MNG, and each is resized alone.
        if (kind == W ? type == 3 : kind == M && type == 6) continue;
        SCOPED_TRACE(::testing::Message() << kFileNames.at(kind) << ", type " << +type << ", " << size.width
                                          << " x " << size.height);
        DocumentWindow window = small_document(kind, 4, type);
        put_frame(window, 1, {0, 0, 3, 4});
        put_frame(window, 2, {3, 0, 3, 4});
        put_frame(window, 3, {1, 1, 4, 2});
        const std::vector<Picture> before = canvases_of(window);
        ASSERT_TRUE(resize_animation(window, {.width = size.width, .height = size.height}, recorder.host));
        const std::vector<Picture> after = canvases_of(window);
        for (std::size_t i = 0; i < after.size(); ++i) {
          const Box box = box_of(window, frame_entries(window)[i]);
          const PictureRect rect{box.x, box.y, box.x + static_cast<int>(box.width),
                                 box.y + static_cast<int>(box.height)};
          const Picture wanted = PictureCrop(
              PictureResample(before[i], size.width, size.height, ResampleFilter::Automatic), rect);
          const Picture shown = PictureCrop(after[i], rect);
          EXPECT_TRUE(std::ranges::equal(shown.handle().bytes(), wanted.handle().bytes())) << "frame " << i;
        }
      }
}

TEST(ResizeAnimation, DelaysDisposalAndTheSourceOfACopyStay) {
  Recorder recorder;
  DocumentWindow window = small_document(A, 3);
  ChunkRecord record;
  const std::size_t second = frame_entries(window)[1];
  chunk_list_get(window.list, second, record);
  record.frameControl.delayNum = 7;
  record.frameControl.delayDen = 90;
  record.frameControl.dispose = 1;
  record.frameControl.blend = 1;
  chunk_list_put(window.list, second, record);
  const DocumentWindow copy = window;
  ASSERT_TRUE(resize_animation(window, {.width = 3, .height = 2}, recorder.host));
  const FrameControl& control = window.list.record(second).frameControl;
  EXPECT_EQ(std::pair(control.delayNum, control.delayDen), std::pair(std::uint16_t{7}, std::uint16_t{90}));
  EXPECT_EQ(std::pair(control.dispose, control.blend), std::pair(std::uint8_t{1}, std::uint8_t{1}));
  EXPECT_EQ(box_of(copy, second), (Box{0, 0, 6, 4}));
}

TEST(ResizeAnimation, ClipsOfAnMngGoAlong) {
  Recorder recorder;
  DocumentWindow window = small_document(M, 2);
  ChunkRecord record;
  const std::size_t second = frame_entries(window)[1];
  chunk_list_get(window.list, second, record);
  record.flags |= CRF_DEFI | CRF_FRAM;
  EmbeddedImage& image = record.image.edit();
  image.defiBytes = 28;
  image.defiBlock.clipLeft = from_file_order(-2);
  image.defiBlock.clipRight = from_file_order(6);
  image.defiBlock.clipBottom = from_file_order(4);
  image.framBlock.changeClipping = 1;
  image.framBlock.clipRight = to_file_order(std::uint32_t{3});
  image.framBlock.clipBottom = to_file_order(std::uint32_t{2});
  chunk_list_put(window.list, second, record);
  ASSERT_TRUE(resize_animation(window, {.width = 12, .height = 6}, recorder.host));
  const EmbeddedImage& scaled = *window.list.record(second).image;
  EXPECT_EQ(from_file_order(scaled.defiBlock.clipLeft), -4);
  EXPECT_EQ(from_file_order(scaled.defiBlock.clipRight), 12);
  EXPECT_EQ(from_file_order(scaled.defiBlock.clipBottom), 6);
  EXPECT_EQ(from_file_order(scaled.framBlock.clipRight), 6u);
  EXPECT_EQ(from_file_order(scaled.framBlock.clipBottom), 3u);
}

TEST(ResizeAnimation, WhatCannotBeLeavesTheDocumentAsItWas) {
  Recorder recorder;
  DocumentWindow window = small_document(A, 3);
  EXPECT_FALSE(resize_animation(window, {.width = 0, .height = 5}, recorder.host));
  EXPECT_FALSE(resize_animation(window, {.width = 1'000'001, .height = 5}, recorder.host));
  int asked = 0;
  recorder.host.stop_requested = [&] { return ++asked > 0; };
  EXPECT_FALSE(resize_animation(window, {.width = 3, .height = 2}, recorder.host));
  EXPECT_EQ(document_size(window.list, window.document).width, 6u);
  for (const Picture& picture : testing::images_of(window)) EXPECT_EQ(picture.width(), 6u);
}

TEST(ResizeAnimation, SidesAreRounded) {
  EXPECT_EQ(scaled_side(3, 50), 2u);
  EXPECT_EQ(scaled_side(10, 1), 1u);
  EXPECT_EQ(scaled_side(7, 150), 11u);
  EXPECT_EQ(proportional_side(320, 640, 480), 240u);
  EXPECT_EQ(proportional_side(1, 1000, 10), 1u);
}

}  // namespace
}  // namespace vellum
