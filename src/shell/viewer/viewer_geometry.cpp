#include "shell/viewer/viewer_geometry.h"

#include <algorithm>

namespace vellum {
namespace {

constexpr std::int64_t kLargestShare = 98;  // percent of the screen

int limit_of(int screen) { return static_cast<int>(screen * kLargestShare / 100); }

std::int64_t share(std::int64_t limit, std::int64_t need) {
  return limit * 100 / std::max<std::int64_t>(need, 1);
}

}  // namespace

ViewerOpening viewer_opening(const ViewerRoom& room) {
  const QSize need = room.canvas.expandedTo(room.least) + room.frame + QSize(0, room.strip);
  // The bar stands beside the picture's need: the limit is what it leaves.
  const QSize limit(limit_of(room.screen.width()), limit_of(room.screen.height()) - room.bar.height());
  ViewerOpening opening;
  QSize picture = room.canvas.expandedTo(room.least);
  if (room.adjust && (need.width() > limit.width() || need.height() > limit.height())) {
    const auto zoom = std::min(share(limit.height(), need.height()), share(limit.width(), need.width()));
    opening.zoom = static_cast<int>(std::clamp<std::int64_t>(zoom, kLeastZoom, 100));
    picture = zoomed_size(room.canvas, opening.zoom);
  }
  const QSize inside = picture + QSize(0, room.strip + room.bar.height());
  const QSize most =
      (room.adjust ? room.screen : QSize(limit.width(), limit_of(room.screen.height()))) - room.frame;
  opening.inside = inside.expandedTo(QSize(room.bar.width(), 0)).boundedTo(most);
  return opening;
}

QSize zoomed_size(QSize picture, int zoom) {
  const auto zoomed = [zoom](int side) {
    return static_cast<int>(std::clamp<std::int64_t>(std::int64_t{side} * zoom / 100, 1, INT32_MAX / 2));
  };
  return {zoomed(picture.width()), zoomed(picture.height())};
}

QRect frame_rect(QSize zoomed, QSize room, QPoint scrolled, bool middle) {
  const int left = zoomed.width() > room.width() ? -scrolled.x() : (room.width() - zoomed.width()) / 2;
  const int below = middle ? (room.height() - zoomed.height()) / 2 : 0;
  const int top = zoomed.height() > room.height() ? -scrolled.y() : below;
  return {QPoint(left, top), zoomed};
}

int fitting_zoom(QSize picture, QSize room) {
  const std::int64_t zoom =
      std::min(share(room.width(), picture.width()), share(room.height(), picture.height()));
  return static_cast<int>(
      std::clamp<std::int64_t>(zoom > 100 ? zoom / 100 * 100 : zoom, kLeastZoom, kMostZoom));
}

std::uint32_t strip_ordinal(int x, int width, std::size_t frames) {
  if (frames == 0 || width <= 0) return 0;
  const auto place = static_cast<std::uint64_t>(std::clamp(x, 0, width - 1));
  return static_cast<std::uint32_t>(place * frames / static_cast<std::uint64_t>(width));
}

int strip_filled(std::uint32_t ordinal, std::size_t frames, int width) {
  if (frames == 0) return 0;
  const std::uint64_t shown = std::min<std::uint64_t>(std::uint64_t{ordinal} + 1, frames);
  return static_cast<int>(shown * static_cast<std::uint64_t>(std::max(width, 0)) / frames);
}

}  // namespace vellum
