#include "operations/changing_part.h"

#include "image/picture_changes.h"
#include "operations/reconstruct.h"

namespace vellum {

std::optional<PictureRect> changing_part(const DocumentWindow& window, Host& host) {
  Picture before;
  PictureRect part{};
  const bool whole =
      for_each_canvas(window, CanvasDepth::AsNeeded, host, [&](std::size_t, const Picture& canvas) {
        if (!before)
          part = {static_cast<std::int32_t>(canvas.width()), static_cast<std::int32_t>(canvas.height()), 0,
                  0};
        for (std::uint32_t y = 0; before && y < canvas.height(); ++y)
          add_changes(part, y, before.row(y), canvas.row(y), canvas.width(), canvas.bits());
        before = canvas;
        return true;
      });
  const bool any = part.left < part.right && part.top < part.bottom;
  return whole && any ? std::optional(part) : std::nullopt;
}

}  // namespace vellum
