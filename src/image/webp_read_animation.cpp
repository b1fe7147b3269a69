// Reading an animation: frames are decoded side by side, each into its place on a canvas of its own, and then
// composed in order. The canvases are, byte for byte, those of the library's own animation decoder.
#include <webp/decode.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cstring>

#include "base/byte_order.h"
#include "base/limits.h"
#include "base/parallel.h"
#include "image/picture_rows.h"
#include "image/webp_library.h"
#include "image/webp_service.h"

namespace vellum {
namespace {

/// A frame as the file has it.
struct FileFrame {
  std::span<const std::uint8_t> stream;
  std::uint32_t x = 0, y = 0, width = 0, height = 0;
  std::int64_t end = 0;  ///< milliseconds
  bool blend = false, dispose = false;
  bool begins_anew = false;  ///< nothing of the canvas before it can be seen: that is all transparent
  bool alone = false;        ///< by itself: it covers the canvas, and nothing shows through

  bool covers(const WebpAnimation& canvas) const {
    return width == canvas.canvasWidth && height == canvas.canvasHeight;
  }
  bool has_row(std::uint32_t row) const { return row >= y && row - y < height; }
};

struct Animation {
  WebpAnimation canvas;
  std::vector<FileFrame> frames;

  std::size_t bytes() const { return 4 * std::size_t{canvas.canvasWidth} * canvas.canvasHeight; }
};

WebpAnimation canvas_of(const WebPDemuxer* demuxer) {
  const auto value = [&](WebPFormatFeature feature) { return WebPDemuxGetI(demuxer, feature); };
  const bool alpha = (value(WEBP_FF_FORMAT_FLAGS) & ALPHA_FLAG) != 0;
  return {value(WEBP_FF_CANVAS_WIDTH), value(WEBP_FF_CANVAS_HEIGHT),
          alpha ? 32u : 24u,           value(WEBP_FF_LOOP_COUNT),
          value(WEBP_FF_FRAME_COUNT),  swap_red_and_blue(value(WEBP_FF_BACKGROUND_COLOR))};
}

bool begins_anew(const FileFrame& frame, const FileFrame* before, const WebpAnimation& canvas) {
  if (!before || frame.alone) return true;
  return before->dispose && (before->covers(canvas) || before->begins_anew);
}

std::uint32_t read_le24(const std::uint8_t* p) { return read_le32(p) & 0xFFFFFF; }

/// Takes an ANMF chunk's payload apart (WebP container, "Animation"): offsets in pairs of pixels, size less
/// one, duration, flags, and the image's own chunks.
bool add_frame(Animation& animation, std::span<const std::uint8_t> payload, std::int64_t& time) {
  constexpr std::size_t kHead = 16;
  if (payload.size() <= kHead) return false;
  time += read_le24(&payload[12]);
  const std::uint32_t x = 2 * read_le24(&payload[0]), y = 2 * read_le24(&payload[3]);
  const std::uint32_t width = read_le24(&payload[6]) + 1, height = read_le24(&payload[9]) + 1;
  const bool blend = (payload[15] & 2) == 0, dispose = (payload[15] & 1) != 0;
  FileFrame frame{payload.subspan(kHead), x, y, width, height, time, blend, dispose};
  const WebpAnimation& canvas = animation.canvas;
  WebPBitstreamFeatures features;
  if (std::uint64_t{frame.x} + frame.width > canvas.canvasWidth ||
      std::uint64_t{frame.y} + frame.height > canvas.canvasHeight ||
      WebPGetFeatures(frame.stream.data(), frame.stream.size(), &features) != VP8_STATUS_OK)
    return false;
  const FileFrame* before = animation.frames.empty() ? nullptr : &animation.frames.back();
  frame.alone = (features.has_alpha == 0 || !frame.blend) && frame.covers(canvas);
  frame.begins_anew = begins_anew(frame, before, canvas);
  animation.frames.push_back(frame);
  return true;
}

/// The frames of a file whose container the library found whole. Its own iterator begins at the first frame
/// each time, so its time grows with the square of their number.
bool gather_frames(std::span<const std::uint8_t> file, Animation& animation) {
  constexpr std::size_t kRiffHead = 12, kChunkHead = 8;
  const std::uint64_t end =
      std::min<std::uint64_t>(file.size(), std::uint64_t{read_le32(&file[4])} + kChunkHead);
  std::int64_t time = 0;
  for (std::uint64_t at = kRiffHead; at + kChunkHead <= end;) {
    const std::uint64_t size = read_le32(&file[at + 4]);
    const auto payload = file.subspan(at + kChunkHead, std::min(size, end - at - kChunkHead));
    if (std::memcmp(&file[at], "ANMF", 4) == 0 && !add_frame(animation, payload, time)) return false;
    at += kChunkHead + size + size % 2;
  }
  return animation.frames.size() == animation.canvas.frameCount;
}

/// A straight-alpha pixel laid over another, in the arithmetic of the library's decoder: 8-bit factors and a
/// reciprocal of 24 bits, all truncated.
std::uint32_t laid_over(std::uint32_t source, std::uint32_t ground) {
  const std::uint32_t alpha = source >> 24;
  if (alpha == 0) return ground;
  const std::uint32_t ground_alpha = (ground >> 24) * (256 - alpha) >> 8;
  const std::uint32_t sum = alpha + ground_alpha;
  const std::uint32_t scale = (1u << 24) / sum;
  std::uint32_t pixel = sum << 24;
  for (unsigned shift = 0; shift < 24; shift += 8) {
    const std::uint32_t channel = (source >> shift & 255) * alpha + (ground >> shift & 255) * ground_alpha;
    pixel |= (channel * scale >> 24) << shift;
  }
  return pixel;
}

void blend_pixels(std::uint8_t* row, const std::uint8_t* ground, std::size_t count) {
  for (std::size_t x = 0; x < count; ++x) {
    const std::uint32_t source = read_le32(row + 4 * x);
    if (source >= 0xFF000000) continue;
    write_le32(row + 4 * x, laid_over(source, read_le32(ground + 4 * x)));
  }
}

/// Most pixels of frames are opaque, or leave what was there, and so are their neighbours.
void blend_run(std::uint8_t* row, const std::uint8_t* ground, std::size_t begin, std::size_t end) {
  constexpr std::size_t kBlock = 16;
  constexpr std::uint8_t kAlphaOfTwo[8] = {0, 0, 0, 255, 0, 0, 0, 255};
  const auto alpha = std::bit_cast<std::uint64_t>(kAlphaOfTwo);
  std::array<std::uint64_t, kBlock / 2> pairs;
  for (; begin + kBlock <= end; begin += kBlock) {
    std::uint8_t* const at = row + 4 * begin;
    std::memcpy(pairs.data(), at, sizeof pairs);
    std::uint64_t all = alpha, any = 0;
    for (const std::uint64_t pair : pairs) {
      all &= pair;
      any |= pair;
    }
    if (all == alpha) continue;
    if ((any & alpha) == 0)
      std::memcpy(at, ground + 4 * begin, sizeof pairs);
    else
      blend_pixels(at, ground + 4 * begin, kBlock);
  }
  blend_pixels(row + 4 * begin, ground + 4 * begin, end - begin);
}

/// A run of pixels of one row: from `begin` up to `end`.
struct Run {
  std::size_t begin = 0, end = 0;
};

/// What composing one row needs: the frame's own pixels are there already.
struct RowJob {
  const FileFrame& frame;
  const FileFrame* before;     ///< null where the canvas begins anew
  std::uint8_t* row;           ///< of the canvas that comes into being
  const std::uint8_t* ground;  ///< the same row of the canvas before
  std::size_t width;           ///< of the canvas

  /// The pixels that the frame before cleared behind it.
  Run cleared(std::uint32_t y) const {
    if (!before->dispose || !before->has_row(y)) return {};
    return {before->x, std::size_t{before->x} + before->width};
  }
};

/// Pixels that the frame leaves as they were.
void keep_run(const RowJob& job, Run run, Run cleared) {
  if (run.begin >= run.end) return;
  const std::size_t begin = 4 * run.begin, count = 4 * (run.end - run.begin);
  if (!job.before) {
    std::memset(job.row + begin, 0, count);
    return;
  }
  std::memcpy(job.row + begin, job.ground + begin, count);
  const std::size_t from = std::max(run.begin, cleared.begin), to = std::min(run.end, cleared.end);
  if (from < to) std::memset(job.row + 4 * from, 0, 4 * (to - from));
}

void compose_row(const RowJob& job, std::uint32_t y) {
  const Run cleared = job.before ? job.cleared(y) : Run{};
  if (!job.frame.has_row(y)) {
    keep_run(job, {0, job.width}, cleared);
    return;
  }
  const std::size_t left = job.frame.x, right = left + job.frame.width;
  keep_run(job, {0, left}, cleared);
  keep_run(job, {right, job.width}, cleared);
  if (!job.before || !job.frame.blend) return;
  // Where the canvas was cleared the frame's pixels stay as they are, to the color under alpha 0.
  if (cleared.begin >= cleared.end) {
    blend_run(job.row, job.ground, left, right);
    return;
  }
  blend_run(job.row, job.ground, left, std::clamp(cleared.begin, left, right));
  blend_run(job.row, job.ground, std::clamp(cleared.end, left, right), right);
}

/// Frames that are worked on at the same time, and the canvas in front of the first of them.
class Batch {
 public:
  explicit Batch(const Animation& animation) : animation_(animation) {}

  const Picture& canvas(std::size_t i) const { return canvases_[i]; }

  /// Makes the canvases of frames first .. first + count - 1; the frames in front of them were made before.
  bool make(std::size_t first, std::size_t count) {
    if (!canvases_.empty()) before_ = canvases_.back();
    canvases_.clear();
    rows_.clear();
    for (std::size_t i = 0; i < count; ++i) {
      const WebpAnimation& size = animation_.canvas;
      canvases_.push_back(create_rows(size.canvasWidth, size.canvasHeight, nullptr, 32));
      if (!canvases_.back()) return false;
      rows_.emplace_back(canvases_.back());
    }
    if (!decode(first)) return false;
    compose(first);
    return true;
  }

 private:
  bool decode(std::size_t first) {
    std::atomic<bool> failed = false;
    parallel_for(canvases_.size(), [&](std::size_t i) {
      const FileFrame& frame = animation_.frames[first + i];
      const WebpPlace place = place_in(canvases_[i], frame.x, frame.y, frame.width, frame.height);
      if (!failed && !decode_webp_into(frame.stream, place, WebpThreads::One)) failed = true;
    });
    return !failed;
  }

  /// A band of rows goes through all frames, so that the canvas before is still in the cache.
  void compose(std::size_t first) {
    constexpr std::size_t kBandBytes = std::size_t{128} << 10;
    const std::uint32_t height = animation_.canvas.canvasHeight;
    const std::size_t bands = std::clamp<std::size_t>(animation_.bytes() / kBandBytes, 1, height);
    parallel_for(bands, [&](std::size_t band) {
      const auto top = static_cast<std::uint32_t>(height * band / bands);
      const auto bottom = static_cast<std::uint32_t>(height * (band + 1) / bands);
      for (std::size_t i = 0; i < rows_.size(); ++i)
        for (std::uint32_t y = top; y < bottom; ++y) compose_row(job_of(first, i, y), y);
    });
  }

  RowJob job_of(std::size_t first, std::size_t i, std::uint32_t y) const {
    const FileFrame& frame = animation_.frames[first + i];
    const std::size_t width = animation_.canvas.canvasWidth;
    if (frame.begins_anew) return {frame, nullptr, rows_[i][y], nullptr, width};
    const std::uint8_t* ground = i == 0 ? before_.row(y) : rows_[i - 1][y];
    return {frame, &animation_.frames[first + i - 1], rows_[i][y], ground, width};
  }

  const Animation& animation_;
  std::vector<Picture> canvases_;
  std::vector<EditRows> rows_;
  Picture before_;
};

/// Bounds what lies ready and was not given away yet: little, as the next frames come into the same memory
/// where nobody keeps them, and fresh memory costs more than waiting for the slowest of a few.
std::size_t frames_at_once(const Animation& animation) {
  constexpr std::size_t kMostBytes = std::size_t{8} << 20;
  constexpr std::size_t kAlone = std::size_t{64} << 20;  // two of them, the one before and the decoder's own
  const std::size_t least = animation.bytes() > kAlone ? 1 : animation.bytes() > kMostBytes ? 2 : 4;
  return std::clamp<std::size_t>(kMostBytes / animation.bytes(), least, 64);
}

/// What the frame came from; null where its pixels are not in one piece, or nobody keeps the bytes.
KeptWebp stored_frame(const Animation& animation, const FileFrame& frame, const KeptWebp& before,
                      const std::shared_ptr<const FileContent>& owner, const Picture& shown) {
  const auto pixels = owner ? webp_pixel_part(frame.stream) : std::span<const std::uint8_t>();
  const bool first = &frame == animation.frames.data();
  if (pixels.empty() || (!first && !before)) return nullptr;
  const WebpAnimation& canvas = animation.canvas;
  return std::make_shared<const StoredWebp>(
      StoredWebp::Frame{.pixels = pixels,
                        .canvasWidth = canvas.canvasWidth,
                        .canvasHeight = canvas.canvasHeight,
                        .area = {static_cast<std::int32_t>(frame.x), static_cast<std::int32_t>(frame.y),
                                 static_cast<std::int32_t>(frame.x + frame.width),
                                 static_cast<std::int32_t>(frame.y + frame.height)},
                        .blend = frame.blend,
                        .dispose = frame.dispose,
                        .alone = frame.alone,
                        .onNothing = frame.begins_anew},
      before, owner, shown);
}

bool give_frames(const Animation& animation, const std::shared_ptr<const FileContent>& owner,
                 const std::function<bool(const WebpFrame&)>& give) {
  Batch batch(animation);
  KeptWebp stored;
  const std::size_t most = frames_at_once(animation);
  for (std::size_t first = 0; first < animation.frames.size(); first += most) {
    const std::size_t count = std::min(most, animation.frames.size() - first);
    if (!batch.make(first, count)) return false;
    for (std::size_t i = 0; i < count; ++i) {
      const FileFrame& frame = animation.frames[first + i];
      stored = stored_frame(animation, frame, stored, owner, batch.canvas(i));
      if (!give({frame.end, batch.canvas(i), frame.dispose, stored})) return false;
    }
  }
  return true;
}

FileFrame file_frame(const StoredWebp::Frame& stored) {
  FileFrame frame;
  frame.stream = stored.pixels;
  frame.x = static_cast<std::uint32_t>(stored.area.left);
  frame.y = static_cast<std::uint32_t>(stored.area.top);
  frame.width = static_cast<std::uint32_t>(stored.area.right - stored.area.left);
  frame.height = static_cast<std::uint32_t>(stored.area.bottom - stored.area.top);
  frame.blend = stored.blend;
  frame.dispose = stored.dispose;
  return frame;
}

}  // namespace

Picture compose_webp(const StoredWebp::Frame& frame, const StoredWebp::Frame& before, const Picture& ground) {
  const FileFrame own = file_frame(frame), other = file_frame(before);
  Picture canvas = create_rows(frame.canvasWidth, frame.canvasHeight, nullptr, 32);
  if (!canvas ||
      !decode_webp_into(own.stream, place_in(canvas, own.x, own.y, own.width, own.height), WebpThreads::One))
    return {};
  const EditRows rows(canvas);
  for (std::uint32_t y = 0; y < frame.canvasHeight; ++y)
    compose_row({own, &other, rows[y], ground.row(y), frame.canvasWidth}, y);
  return canvas;
}

bool WEBPGetAnimation(std::span<const std::uint8_t> file,
                      const std::function<bool(const WebpAnimation&)>& start,
                      const std::function<bool(const WebpFrame&)>& frame,
                      const std::shared_ptr<const FileContent>& owner) {
  const auto info = WEBPGetInfoEx(file);
  const WebpDemuxer demuxer = info && info->isAnimation ? open_webp(file) : nullptr;
  if (!demuxer) return false;
  Animation animation{canvas_of(demuxer.get()), {}};
  const WebpAnimation& canvas = animation.canvas;
  return start(canvas) &&
         std::uint64_t{canvas.canvasWidth} * canvas.canvasHeight * 4 <= kMaximumPictureBytes &&
         gather_frames(file, animation) && give_frames(animation, owner, frame);
}

}  // namespace vellum
