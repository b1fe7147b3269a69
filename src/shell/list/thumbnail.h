// Thumbnails of a chunk list: where they stand in their row, and the bounded cache of scaled pictures.
#pragma once

#include <QCache>
#include <QPixmap>
#include <memory>

#include "base/memory_budget.h"
#include "core/model/chunk_record.h"
#include "core/model/document.h"
#include "core/model/frame_values.h"

namespace vellum {

/// In device-independent pixels of the list's viewport.
struct ThumbnailPlace {
  QRect canvas;  ///< the document's size, scaled and centered in the row
  QRect frame;   ///< the picture on it; may reach beyond the canvas, which then clips it
};

ThumbnailPlace thumbnail_place(const QRect& row, Extent canvas, Extent picture, FrameOffset offset,
                               int percent);

/// Scaled pictures, made when first asked for; the ones not used for longest go when the cache is full. They
/// are a part of the memory budget, a quarter of it at most.
class ThumbnailCache {
 public:
  explicit ThumbnailCache(qsizetype limit_in_bytes = qsizetype{64} << 20);

  /// The picture of `record` at `size` device pixels; null where the record holds none. `transparency` as
  /// PictureWithTransparency takes it.
  QPixmap get(const std::shared_ptr<const ChunkRecord>& record, QSize size,
              const std::vector<std::uint8_t>& transparency = {});

  qsizetype bytes() const { return cache_.totalCost(); }
  /// How many pictures were scaled so far.
  std::uint64_t made() const { return made_; }

 private:
  /// Records in a list never change, so a thumbnail is good for as long as its record lives. The watch tells
  /// a later record at the same address apart.
  struct Item {
    std::weak_ptr<const ChunkRecord> record;
    QPixmap pixmap;
    std::vector<std::uint8_t> transparency;
  };
  using Key = std::pair<quintptr, std::pair<int, int>>;

  qsizetype most_bytes() const;

  qsizetype limit_;
  QCache<Key, Item> cache_;
  BudgetShare share_;
  std::uint64_t made_ = 0;
};

}  // namespace vellum
