// How much undo levels may hold.
#include "core/edit/undo.h"

#include "support/documents.h"

namespace vellum {
namespace {

using testing::small_picture;

constexpr std::uint32_t kSide = 64;

DocumentWindow document_of_images(std::size_t images) {
  DocumentWindow window;
  window.document.kind = DocumentKind::APNG;
  for (std::size_t i = 0; i < images; ++i) {
    ChunkRecord record;
    record.tag = tag::IDAT;
    record.data = small_picture(kSide, kSide, 24, static_cast<unsigned>(i)).handle();
    chunk_list_append(window.list, window.document, record);
  }
  return window;
}

void replace_picture(DocumentWindow& window, std::size_t entry, unsigned seed) {
  ChunkRecord record;
  chunk_list_get(window.list, entry, record);
  record.data = small_picture(kSide, kSide, 24, seed).handle();
  chunk_list_put(window.list, entry, record);
}

std::uint64_t picture_bytes() { return small_picture(kSide, kSide, 24).handle().size(); }

TEST(UndoBytes, PicturesThatLevelsAloneHoldAreLimitedAndTheOldestGo) {
  Host host;
  DocumentWindow window = document_of_images(8);
  const std::uint64_t most = 2 * picture_bytes() + 100;
  for (unsigned i = 0; i < 6; ++i) {
    ASSERT_TRUE(undo_push(window, host, {}, most));
    replace_picture(window, i, 100 + i);
  }
  // The newest level was the window's own state when it was taken; two pictures lie in those before it.
  ASSERT_EQ(window.undoLevels.size(), 3u);
  for (unsigned i = 5; i >= 3; --i) {
    EXPECT_TRUE(undo_pop(window));
    EXPECT_TRUE(std::ranges::equal(window.list.record(i).data.bytes(),
                                   small_picture(kSide, kSide, 24, i).handle().bytes()));
  }
  EXPECT_FALSE(undo_pop(window));
}

TEST(UndoBytes, WhatTheDocumentStillHasCostsNothing) {
  Host host;
  DocumentWindow window = document_of_images(8);
  const auto reversed = [&] {
    window.list.reorder({7, 6, 5, 4, 3, 2, 1, 0});
    for (std::size_t i = 0; i < window.list.size(); ++i) {
      ChunkRecord record;
      chunk_list_get(window.list, i, record);
      ++record.frameControl.delayNum;  // new records, the same pictures
      chunk_list_put(window.list, i, record);
    }
  };
  for (int i = 0; i < 9; ++i) {
    ASSERT_TRUE(undo_push(window, host, {}, 100));
    reversed();
  }
  EXPECT_EQ(window.undoLevels.size(), 9u);
}

TEST(UndoBytes, APictureThatIsTakenOutAndPutBackCountsOnce) {
  Host host;
  DocumentWindow window = document_of_images(4);
  const auto record = window.list.entry(1).record;
  for (int i = 0; i < 3; ++i) {
    ASSERT_TRUE(undo_push(window, host, {}, picture_bytes() + 100));
    window.list.remove(1);
    ASSERT_TRUE(undo_push(window, host, {}, picture_bytes() + 100));
    window.list.insert(1, record);
  }
  EXPECT_EQ(window.undoLevels.size(), 6u);
  ASSERT_TRUE(undo_push(window, host, {}, 0));
  EXPECT_EQ(window.undoLevels.size(), 7u) << "the document has the picture";
}

TEST(UndoBytes, ThePictureBesideTheListCountsToo) {
  Host host;
  DocumentWindow window = document_of_images(1);
  for (unsigned i = 0; i < 4; ++i) {
    window.document.defaultImage = small_picture(kSide, kSide, 24, i).handle();
    ASSERT_TRUE(undo_push(window, host, {}, picture_bytes() + 100));
  }
  EXPECT_EQ(window.undoLevels.size(), 2u);
}

}  // namespace
}  // namespace vellum
