#include "shell/list/thumbnail.h"

#include "image/picture_operations.h"
#include "shell/look/picture_image.h"

namespace vellum {
namespace {

constexpr int kSideMargin = 4;
constexpr int kCaptionHeight = 28;  // the row's text above its thumbnail

int scaled(std::int64_t value, int percent) { return static_cast<int>(value * percent / 100); }

}  // namespace

ThumbnailPlace thumbnail_place(const QRect& row, Extent canvas, Extent picture, FrameOffset offset,
                               int percent) {
  const QSize drawn(scaled(canvas.width, percent), scaled(canvas.height, percent));
  const QPoint corner(row.left() + kSideMargin + (row.width() - drawn.width() - 2 * kSideMargin) / 2,
                      row.top() + kCaptionHeight);
  const QSize frame(std::max(scaled(picture.width, percent), 1),
                    std::max(scaled(picture.height, percent), 1));
  return {{corner, drawn}, {corner + QPoint(scaled(offset.x, percent), scaled(offset.y, percent)), frame}};
}

ThumbnailCache::ThumbnailCache(qsizetype limit_in_bytes) : limit_(limit_in_bytes) {}

qsizetype ThumbnailCache::most_bytes() const {
  return std::min<qsizetype>(limit_, static_cast<qsizetype>(memory_budget() / 4));
}

QPixmap ThumbnailCache::get(const std::shared_ptr<const ChunkRecord>& record, QSize size,
                            const std::vector<std::uint8_t>& transparency) {
  const Key key{reinterpret_cast<quintptr>(record.get()), {size.width(), size.height()}};
  const Item* item = cache_.object(key);
  if (item && item->record.lock() == record && item->transparency == transparency) return item->pixmap;
  const Picture own = picture_of(*record);
  const Picture clear = own && !transparency.empty() ? PictureWithTransparency(own, transparency) : Picture();
  const QImage image = scaled_image(clear ? clear : own, size);
  if (image.isNull()) return {};
  ++made_;
  QPixmap pixmap = QPixmap::fromImage(image);
  cache_.setMaxCost(most_bytes());
  cache_.insert(key, new Item{record, pixmap, transparency}, image.sizeInBytes());
  share_.set(static_cast<std::uint64_t>(cache_.totalCost()));
  return pixmap;
}

}  // namespace vellum
