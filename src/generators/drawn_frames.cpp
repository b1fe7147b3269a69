#include "generators/drawn_frames.h"

#include <algorithm>
#include <mutex>

#include "base/limits.h"
#include "base/translation.h"
#include "core/model/kind_table.h"
#include "image/picture_operations.h"
#include "image/superpalette.h"
#include "operations/changed_parts.h"

namespace vellum {
namespace {

constexpr std::size_t kSketched = 8;  // frames that a sketch takes its palette from

/// The last picture that was made: the frame behind it is compared with it.
struct LastPicture {
  std::mutex mutex;
  std::size_t frame = 0;
  Picture picture;

  Picture find(std::size_t wanted) {
    const std::lock_guard lock(mutex);
    return picture && frame == wanted ? picture : Picture();
  }
  void keep(std::size_t made, const Picture& kept) {
    const std::lock_guard lock(mutex);
    frame = made;
    picture = kept;
  }
};

/// The rectangle around all that isn't quite transparent; a pixel where all is.
PictureRect ink_rect(const Picture& picture) {
  PictureRect rect{static_cast<std::int32_t>(picture.width()), static_cast<std::int32_t>(picture.height()), 0,
                   0};
  for (std::uint32_t y = 0; y < picture.height(); ++y) {
    const std::uint8_t* row = picture.row(y);
    std::int32_t left = 0, right = static_cast<std::int32_t>(picture.width());
    while (left < right && row[4 * left + 3] == 0) ++left;
    if (left == right) continue;
    while (row[4 * right - 1] == 0) --right;
    rect = {std::min(rect.left, left), std::min(rect.top, static_cast<std::int32_t>(y)),
            std::max(rect.right, right), static_cast<std::int32_t>(y) + 1};
  }
  return rect.right == 0 ? PictureRect{0, 0, 1, 1} : rect;
}

StreamedFrame cleared_frame(const Picture& picture, std::size_t number, bool whole) {
  StreamedFrame frame;
  frame.picture = picture;
  frame.clears = true;
  frame.dispose = whole ? 0 : 1;
  if (number == 0 || whole || !picture) return frame;
  const PictureRect rect = ink_rect(picture);
  frame.picture = PictureCrop(picture, rect);
  frame.offset = {rect.left, rect.top};
  return frame;
}

struct FrameMaker {
  DrawnFrames drawn;
  GivenColors colors;
  bool whole;  ///< nothing is cut
  std::shared_ptr<LastPicture> last = std::make_shared<LastPicture>();

  Picture picture(std::size_t number) const {
    Picture made = last->find(number);
    return made ? made : drawn.picture(number);
  }

  StreamedFrame in_colors(StreamedFrame frame) const {
    if (colors.count == 0 || !frame.picture) return frame;
    frame.picture = to_colors(frame.picture, colors, false);
    frame.transparency = colors.alpha;
    return frame;
  }

  StreamedFrame operator()(std::size_t number) const {
    StreamedFrame frame;
    if (drawn.clear) {
      frame = cleared_frame(drawn.picture(number), number, whole);
    } else {
      const Picture before = number > 0 && !whole ? picture(number - 1) : Picture();
      frame.picture = picture(number);
      if (!frame.picture) return frame;
      if (before) {
        const Picture after = frame.picture;
        static_cast<FrameLayer&>(frame) = changed_part(before, after);
        last->keep(number, after);
      } else {
        last->keep(number, frame.picture);
      }
    }
    frame.delay = drawn.delay(number);
    return in_colors(std::move(frame));
  }
};

}  // namespace

bool can_be_held(Extent canvas, std::uint64_t frames, std::uint32_t bits) {
  const std::uint64_t bytes = canvas.height * std::uint64_t{picture_stride(canvas.width, bits)};
  return bytes > 0 && bytes <= kMaximumPictureBytes && frames <= maximum_decoded_bytes() / bytes;
}

GivenColors gathered_colors(const DrawnFrames& drawn, std::uint32_t most, bool sketch, Host& host) {
  const std::size_t step = sketch ? std::max<std::size_t>(1, drawn.count / kSketched) : 1;
  const auto picture = [&](std::size_t i) { return drawn.picture(drawn.count - 1 - i * step); };
  const std::size_t taken = (drawn.count + step - 1) / step;
  const PaletteColors chosen = superpalette(taken, picture, most - (drawn.clear ? 1 : 0), host);
  if (chosen.count == 0 && !host.stopped()) throw std::bad_alloc();
  GivenColors colors{.palette = chosen.palette, .count = chosen.count};
  if (!drawn.clear || colors.count == 0) return colors;
  // The transparent entry stands behind the others.
  colors.alpha.assign(colors.count, 255);
  colors.alpha.push_back(0);
  std::fill_n(colors.palette.data() + std::size_t{3} * colors.count, 3, std::uint8_t{0});
  ++colors.count;
  return colors;
}

std::optional<FrameStream> stream_of(DrawnFrames drawn, DocumentKind kind, Host& host,
                                     const GivenColors& colors) {
  const std::uint32_t bits = colors.count > 0 ? 8 : drawn.clear ? 32 : 24;
  const std::int64_t most = kind_row(kind).mostPixels;
  if (drawn.canvas.width > most || drawn.canvas.height > most) {
    host.fail({FaultKind::Limit, 0, -1, -1,
               translated("it would have ") + std::to_string(drawn.canvas.width) + " x " +
                   std::to_string(drawn.canvas.height) + translated(" pixels, more than the ") +
                   std::to_string(most) + translated(" of a side that such a file can have")});
    return std::nullopt;
  }
  if (!canvas_fits(drawn.canvas, kind) || !can_be_held(drawn.canvas, drawn.count, bits)) {
    host.fail(
        {FaultKind::Limit, 0, -1, -1, translated("so many frames of this size would take too much memory")});
    return std::nullopt;
  }
  const Extent canvas = drawn.canvas;
  const std::size_t count = drawn.count;
  return FrameStream{canvas, count, 0, FrameMaker{std::move(drawn), colors, kind == DocumentKind::WEBP}};
}

}  // namespace vellum
