#include "core/model/whole_canvases.h"

#include <algorithm>

#include "base/byte_order.h"
#include "base/limits.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

/// Straight alpha: the colors are weighted by what each adds to the alpha of the result (PNG standard,
/// "Alpha channel processing"; rounded).
std::uint32_t laid_over(std::uint32_t source, std::uint32_t ground) {
  const std::uint32_t alpha = source >> 24;
  if (alpha == 255) return source;
  if (alpha == 0) return ground;
  const std::uint32_t weight = alpha * 255, ground_weight = (ground >> 24) * (255 - alpha);
  const std::uint32_t sum = weight + ground_weight;
  std::uint32_t pixel = (sum + 127) / 255 << 24;
  for (unsigned shift = 0; shift < 24; shift += 8)
    pixel |= ((source >> shift & 255) * weight + (ground >> shift & 255) * ground_weight + sum / 2) / sum
             << shift;
  return pixel;
}

/// The part of a frame that lies on the canvas, in coordinates of the canvas.
PictureRect visible_part(const FrameLayer& frame, Extent canvas) {
  const auto clip = [](std::int64_t value, std::uint32_t most) {
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, 0, most));
  };
  return {clip(frame.offset.x, canvas.width), clip(frame.offset.y, canvas.height),
          clip(std::int64_t{frame.offset.x} + frame.picture.width(), canvas.width),
          clip(std::int64_t{frame.offset.y} + frame.picture.height(), canvas.height)};
}

bool lay(Picture& canvas, const FrameLayer& frame, const PictureRect& part) {
  const Picture source = frame.picture.bits() == 32 ? frame.picture : PictureToTrueColorAlpha(frame.picture);
  const EditRows rows(canvas);
  if (!source || !rows) return false;
  const auto width = static_cast<std::size_t>(std::max(part.right - part.left, 0));
  for (std::int32_t y = part.top; y < part.bottom && width != 0; ++y) {
    const std::uint8_t* from = source.row(static_cast<std::uint32_t>(y - frame.offset.y)) +
                               4 * static_cast<std::ptrdiff_t>(part.left - frame.offset.x);
    std::uint8_t* to = rows[static_cast<std::size_t>(y)] + 4 * static_cast<std::ptrdiff_t>(part.left);
    if (!frame.over)
      std::copy_n(from, 4 * width, to);
    else
      for (std::size_t x = 0; x < width; ++x)
        write_le32(to + 4 * x, laid_over(read_le32(from + 4 * x), read_le32(to + 4 * x)));
  }
  return true;
}

}  // namespace

bool are_whole_canvases(const std::vector<FrameLayer>& frames, Extent canvas) {
  return std::ranges::all_of(frames, [&](const FrameLayer& frame) {
    return frame.offset.x == 0 && frame.offset.y == 0 && frame.picture.width() == canvas.width &&
           frame.picture.height() == canvas.height && (!frame.over || frame.picture.bits() == 24);
  });
}

bool canvases_fit(std::size_t count, Extent canvas) {
  const std::uint64_t bytes = picture_stride(canvas.width, 32) * std::uint64_t{canvas.height};
  return bytes <= kMaximumPictureBytes && bytes * count <= kMaximumDocumentBytes;
}

bool make_whole_canvas(CanvasLeft& left, FrameLayer& frame, Extent canvas) {
  Picture& shown = left.shown;
  if (!shown) shown = PictureCreateAlpha(canvas.width, canvas.height);
  if (!shown) return false;
  const PictureRect part = visible_part(frame, canvas);
  const Picture before = shown;
  if (!lay(shown, frame, part)) return false;
  frame.picture = shown;
  const std::uint32_t dispose = std::exchange(frame.dispose, 0);
  if (dispose == 1)
    PictureFillRect(shown, part.left, part.top, part.right - part.left, part.bottom - part.top, 0);
  else if (dispose == 2)
    shown = before;
  frame.offset = {};
  frame.over = false;
  return true;
}

bool make_whole_canvases(std::vector<FrameLayer>& frames, Extent canvas) {
  CanvasLeft left;
  return std::ranges::all_of(frames,
                             [&](FrameLayer& frame) { return make_whole_canvas(left, frame, canvas); });
}

}  // namespace vellum
