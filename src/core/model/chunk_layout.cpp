#include "core/model/chunk_layout.h"

namespace vellum {
namespace {

constexpr int kTextRowHeight = 24;   // without thumbnails
constexpr int kPlainRowHeight = 32;  // beside thumbnails
constexpr int kPictureMargin = 12;   // around a thumbnail

bool is_image_row(ChunkTag tag) { return tag == tag::IDAT || tag == tag::PNGI || tag == tag::WEBI; }

}  // namespace

int clamp_scale(int index, Extent size) {
  for (int i = std::min<int>(index, kThumbnailScales.size() - 1); i > 0; --i) {
    const auto percent = static_cast<std::uint64_t>(kThumbnailScales[static_cast<std::size_t>(i)]);
    if (size.width * percent / 100 + 8 < 321 && size.height * percent / 100 + 24 < 201) return i;
  }
  return 0;
}

void chunk_list_layout(ChunkList& list, Document& document) {
  const Extent size = document_size(list, document);
  document.thumbScale = clamp_scale(document.thumbScale, size);
  const auto percent =
      static_cast<std::uint64_t>(kThumbnailScales[static_cast<std::size_t>(document.thumbScale)]);
  const int picture_row = kPlainRowHeight + kPictureMargin + static_cast<int>(size.height * percent / 100);
  std::vector<int> heights(list.size(), document.thumbScale == 0 ? kTextRowHeight : kPlainRowHeight);
  if (document.thumbScale > 0)
    for (std::size_t i = 0; i < list.size(); ++i)
      if (is_image_row(list.record(i).tag)) heights[i] = picture_row;
  list.set_heights(heights);
}

void chunk_list_close_change(ChunkList& list, Document& document) {
  chunk_list_renumber(list, document);
  document_extent(list, document);
  chunk_list_layout(list, document);
}

}  // namespace vellum
