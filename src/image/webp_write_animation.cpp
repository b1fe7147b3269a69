// Writing an animation. The library's own animation encoder merges frames that look the same and drops some;
// here every frame is encoded by itself and the container is put together from them.
#include <algorithm>
#include <atomic>
#include <cstring>
#include <optional>

#include "base/parallel.h"
#include "image/picture_changes.h"
#include "image/picture_rect.h"
#include "image/picture_rows.h"
#include "image/webp_container.h"
#include "image/webp_library.h"
#include "image/webp_service.h"

namespace vellum {
namespace {

/// Bounds of the container's fields: 16 bits, 24 bits, 14 bits plus one.
constexpr std::uint32_t kMostLoops = 65535;
constexpr std::int64_t kMostMilliseconds = 16'777'215;
/// Effort of lossless frames. The most that there is makes files 2 to 3 % smaller, and takes three times as
/// long.
constexpr int kLosslessQuality = 50, kLosslessMethod = 3, kMostQuality = 100, kMostMethod = 6;

struct FrameOut {
  Picture canvas;  ///< until it is encoded
  Picture before;  ///< what is on the canvas in front of it, where that is a picture
  PictureRect area;
  std::int64_t start = 0;
  bool dispose = false;
  bool over = false;     ///< the stream lies over what is there
  bool exact = false;    ///< nothing may be lost
  KeptWebp stored = {};  ///< its bytes are those that it came with
  std::vector<std::uint8_t> stream = {};
};

/// What is on the canvas in front of a frame: the frame before, without the place that it cleared.
struct Ground {
  Picture canvas;
  std::optional<PictureRect> cleared;
};

/// What a player of the file has behind a frame, beside what the frame was to show.
struct Shown {
  KeptWebp source;    ///< what the canvas came from
  bool asIt = false;  ///< its pixels are exact, and what it leaves behind is what it left in its file
  std::optional<PictureRect> lossy;  ///< where what is shown may differ from the pictures
  bool nothing = true;               ///< all that is left behind is transparent
};

bool is_same(const PictureRect& a, const PictureRect& b) {
  return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
}

/// A row of the ground; `scratch` holds it where a part of it is cleared.
const std::uint8_t* ground_row(const Ground& ground, std::uint32_t y, std::vector<std::uint8_t>& scratch) {
  const std::uint8_t* row = ground.canvas.row(y);
  const auto at = static_cast<std::int32_t>(y);
  if (!ground.cleared || at < ground.cleared->top || at >= ground.cleared->bottom) return row;
  scratch.assign(row, row + ground.canvas.stride());
  std::fill(scratch.begin() + 4 * std::ptrdiff_t{ground.cleared->left},
            scratch.begin() + 4 * std::ptrdiff_t{ground.cleared->right}, std::uint8_t{0});
  return scratch.data();
}

/// The smallest area with an even left and top (the container halves them) that holds every pixel that is
/// another than on the ground; one pixel where there is none.
PictureRect changed_area(const Picture& canvas, const Ground& ground) {
  if (canvas.handle().shares_with(ground.canvas.handle()) && !ground.cleared) return {0, 0, 1, 1};
  PictureRect area{static_cast<std::int32_t>(canvas.width()), static_cast<std::int32_t>(canvas.height()), 0,
                   0};
  std::vector<std::uint8_t> scratch;
  for (std::uint32_t y = 0; y < canvas.height(); ++y)
    add_changes(area, y, ground_row(ground, y, scratch), canvas.row(y), canvas.width(), canvas.bits());
  if (area.right == 0) return {0, 0, 1, 1};
  return {area.left & ~1, area.top & ~1, area.right, area.bottom};
}

/// The area of a frame with what is there already left out; null where nothing can be, or too little of it.
Picture changes_alone(const FrameOut& frame, const Picture& whole) {
  constexpr std::size_t kGoodPart = 4;  // one in so many pixels
  if (!frame.before) return {};
  Picture part = whole;
  const auto same = leave_out_same(part, frame.before, frame.area.left, frame.area.top);
  const bool good = same && kGoodPart * *same >= std::size_t{whole.width()} * whole.height();
  return good ? part : Picture();
}

std::vector<std::uint8_t> encode_part(const Picture& part, const WebpEncoding& encoding) {
  if (!part) return {};
  return encode_webp_pixels(
      {part.row(0), -static_cast<std::ptrdiff_t>(part.stride()), part.width(), part.height(), 4}, encoding);
}

/// `lossless` rules out loss, so it comes before `mixed`. What is lost is seen least where it is left out.
void encode_frame(FrameOut& frame, const WebpParameters& parameters) {
  const Picture whole = PictureCrop(frame.canvas, frame.area);
  const Picture changes = whole ? changes_alone(frame, whole) : Picture();
  frame.over = static_cast<bool>(changes);
  const Picture& part = frame.over ? changes : whole;
  const WebpEncoding exact{true, parameters.smallest ? kMostQuality : kLosslessQuality, WebpThreads::One,
                           !frame.over, parameters.smallest ? kMostMethod : kLosslessMethod};
  frame.stream = encode_part(part, frame.exact ? exact : WebpEncoding{false, parameters.quality});
  if (frame.exact || !parameters.mixed) return;
  auto other = encode_part(part, exact);
  if (frame.stream.empty() || (!other.empty() && other.size() < frame.stream.size()))
    frame.stream = std::move(other);
}

class AnimationWriter {
 public:
  AnimationWriter(const WebpParameters& parameters, const std::function<bool(WebpFrameRequest&)>& next)
      : parameters_(parameters), next_(next) {}

  bool write(const Sink& sink) {
    constexpr std::size_t kAtOnce = 16;  // canvases in memory
    const WebpContents contents{.width = parameters_.canvasWidth,
                                .height = parameters_.canvasHeight,
                                .animated = true,
                                .background = parameters_.backgroundColor,
                                .loops = std::min(parameters_.loopCount, kMostLoops),
                                .frames = {},
                                .extras = {parameters_.extras.begin(), parameters_.extras.end()}};
    WebpAnimationFile file(contents, parameters_.frameCount, sink);
    while (taken_ < parameters_.frameCount) {
      // The last frame of a round waits for the next one, which tells when it ends.
      const std::size_t waiting = frames_.size();
      while (taken_ < parameters_.frameCount && frames_.size() < waiting + kAtOnce)
        if (!take_frame()) return false;
      if (!encode_from(waiting) || !put_frames(file, frames_.size() - 1)) return false;
    }
    WebpFrameRequest total;
    total.last = true;
    if (!next_(total)) return false;
    end_ = total.timestamp;
    return put_frames(file, frames_.size()) && file.end();
  }

 private:
  bool take_frame() {
    WebpFrameRequest request;
    if (!next_(request)) return false;
    FrameOut frame;
    frame.start = request.timestamp;
    frame.dispose = request.dispose == 1;
    if (!(may_copy(request) ? copy_frame(frame, request) : draw_frame(frame, request))) return false;
    ground_.cleared.reset();
    if (frame.dispose) ground_.cleared = frame.area;
    frames_.push_back(std::move(frame));
    ++taken_;
    return true;
  }

  /// Whether the frame lies on what it lay on when it was stored, or on nothing that shows.
  bool may_copy(const WebpFrameRequest& request) const {
    if (!request.stored || request.anew || !request.stored->intact()) return false;
    const StoredWebp::Frame& frame = request.stored->frame();
    if (frame.canvasWidth != parameters_.canvasWidth || frame.canvasHeight != parameters_.canvasHeight)
      return false;
    return frame.alone || (frame.onNothing && shown_.nothing) ||
           (shown_.asIt && request.stored->is_behind(shown_.source.get()));
  }

  bool copy_frame(FrameOut& frame, const WebpFrameRequest& request) {
    const StoredWebp::Frame& stored = request.stored->frame();
    frame.stored = request.stored;
    frame.area = stored.area;
    frame.over = stored.blend;
    drawn_ = request.canvas;  // for one behind it that has to be drawn
    ground_.canvas = {};
    shown_ = {request.stored, frame.dispose == stored.dispose, std::nullopt, leaves_nothing(frame)};
    return true;
  }

  bool draw_frame(FrameOut& frame, const WebpFrameRequest& request) {
    const Picture canvas = request.canvas ? request.canvas() : Picture();
    if (!is_canvas(canvas)) return false;
    if (taken_ != 0 && !ground_.canvas) ground_.canvas = drawn_ ? drawn_() : Picture();
    if (taken_ != 0 && !is_canvas(ground_.canvas)) return false;
    frame.area = taken_ == 0 ? whole() : changed_area(canvas, ground_);
    frame.exact = parameters_.lossless || request.stored;
    if (frame.exact && shown_.lossy) frame.area = joined(frame.area, *shown_.lossy);
    frame.area.left &= ~1;
    frame.area.top &= ~1;
    const bool onto = taken_ != 0 && !ground_.cleared && !(frame.exact && shown_.lossy);
    frame.canvas = canvas;
    frame.before = onto ? ground_.canvas : Picture();
    ground_.canvas = canvas;
    hear_of_drawn(frame, request);
    return true;
  }

  void hear_of_drawn(const FrameOut& frame, const WebpFrameRequest& request) {
    shown_.source = request.stored;
    shown_.nothing = leaves_nothing(frame);
    shown_.asIt = false;
    if (!frame.exact) {
      shown_.lossy = shown_.lossy ? joined(*shown_.lossy, frame.area) : frame.area;
      return;
    }
    shown_.lossy.reset();
    if (!request.stored) return;
    const StoredWebp::Frame& stored = request.stored->frame();
    shown_.asIt = frame.dispose == stored.dispose && (!frame.dispose || is_same(frame.area, stored.area));
  }

  PictureRect whole() const {
    return {0, 0, static_cast<std::int32_t>(parameters_.canvasWidth),
            static_cast<std::int32_t>(parameters_.canvasHeight)};
  }
  bool is_canvas(const Picture& picture) const {
    return has_rows(picture) && picture.bits() == 32 && picture.width() == parameters_.canvasWidth &&
           picture.height() == parameters_.canvasHeight;
  }
  bool leaves_nothing(const FrameOut& frame) const { return frame.dispose && is_same(frame.area, whole()); }

  bool encode_from(std::size_t first) {
    std::atomic<bool> failed = false;
    parallel_for(frames_.size() - first, [&](std::size_t i) {
      FrameOut& frame = frames_[first + i];
      if (frame.stored) return;
      encode_frame(frame, parameters_);
      frame.canvas = frame.before = {};
      if (frame.stream.empty()) failed = true;
    });
    return !failed;
  }

  /// Writes the first `count` frames and forgets them.
  bool put_frames(WebpAnimationFile& file, std::size_t count);

  std::uint32_t duration(std::size_t i) const {
    const std::int64_t end = i + 1 < frames_.size() ? frames_[i + 1].start : end_;
    return static_cast<std::uint32_t>(std::clamp<std::int64_t>(end - frames_[i].start, 0, kMostMilliseconds));
  }

  const WebpParameters& parameters_;
  const std::function<bool(WebpFrameRequest&)>& next_;
  std::vector<FrameOut> frames_;  ///< those that are not written yet
  std::size_t taken_ = 0;         ///< of all frames
  Ground ground_;                 ///< its canvas may be null: `drawn_` gives it
  std::function<Picture()> drawn_;
  Shown shown_;
  std::int64_t end_ = 0;  ///< when the last frame ends, in milliseconds
};

bool AnimationWriter::put_frames(WebpAnimationFile& file, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const FrameOut& frame = frames_[i];
    const auto [left, top, right, bottom] = frame.area;
    const bool put = file.add({.still = frame.stored ? frame.stored->frame().pixels : frame.stream,
                               .x = static_cast<std::uint32_t>(left),
                               .y = static_cast<std::uint32_t>(top),
                               .width = static_cast<std::uint32_t>(right - left),
                               .height = static_cast<std::uint32_t>(bottom - top),
                               .duration = duration(i),
                               .dispose = frame.dispose,
                               .blend = frame.over});
    if (!put || (frame.stored && !frame.stored->intact())) return false;
  }
  frames_.erase(frames_.begin(), frames_.begin() + static_cast<std::ptrdiff_t>(count));
  return true;
}

}  // namespace

bool WEBPWriteAnimation(const WebpParameters& parameters, const std::function<bool(WebpFrameRequest&)>& next,
                        const Sink& sink) {
  if (std::max(parameters.canvasWidth, parameters.canvasHeight) > kMostWebpPixels ||
      parameters.frameCount == 0)
    return false;
  AnimationWriter writer(parameters, next);
  return writer.write(sink);
}

}  // namespace vellum
