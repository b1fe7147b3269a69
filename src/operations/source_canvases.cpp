#include "operations/source_canvases.h"

#include <algorithm>

#include "base/parallel.h"
#include "core/model/frame_values.h"
#include "core/model/record_picture.h"
#include "image/picture_rows.h"
#include "operations/frames.h"

namespace vellum {

SourceCanvases::SourceCanvases(DocumentWindow window)
    : window_(std::move(window)), entries_(frame_entries(window_)) {
  constexpr std::uint64_t kMostKept = std::uint64_t{512} << 20;
  const auto [width, height] = document_size(window_.list, window_.document);
  if (entries_.size() * picture_stride(width, 32) * height <= kMostKept) kept_.resize(entries_.size());
}

Picture SourceCanvases::canvas(std::size_t frame) {
  if (keeps_all() && kept_[frame]) return kept_[frame];
  if (!canvases_ || frame < next_) {
    canvases_.emplace(window_);
    next_ = 0;
  }
  Picture canvas;
  while (next_ <= frame) {
    if (next_ % kDecodedAhead == 0) ahead_ = decoded_pictures(window_, entries_, next_);
    canvas = canvases_->next(window_.list.record(entries_[next_]));
    if (keeps_all()) kept_[next_] = canvas;
    ++next_;
  }
  return canvas;
}

std::vector<Picture> decoded_pictures(const DocumentWindow& window, const std::vector<std::size_t>& entries,
                                      std::size_t first) {
  std::vector<Picture> pictures(std::min(kDecodedAhead, entries.size() - first));
  for (std::size_t i = 0; i < pictures.size(); ++i)
    pictures[i] = picture_of(window.list.record(entries[first + i]));
  parallel_for(pictures.size(), [&](std::size_t i) {
    if (has_rows(pictures[i])) pictures[i].row(0);
  });
  return pictures;
}

}  // namespace vellum
