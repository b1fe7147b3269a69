// A GIF whose frames are cut to what changes. Pixels that stay as they are may be transparent, whichever way
// packs better; frames whose colors the common palette lacks bring one of their own.
#include <algorithm>
#include <cstring>
#include <unordered_map>

#include "base/parallel.h"
#include "base/translation.h"
#include "core/build/frame_stream.h"
#include "exchange/export_gif.h"
#include "exchange/gif_palette.h"
#include "exchange/settings.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

/// A pixel of a canvas: 0xFFRRGGBB, or 0 where it is empty.
using Pixel = std::uint32_t;

struct Canvas {
  std::uint32_t width = 0, height = 0;
  std::vector<Pixel> pixels;
  const Pixel* row(std::uint32_t y) const { return pixels.data() + std::size_t{y} * width; }
  Pixel* row(std::uint32_t y) { return pixels.data() + std::size_t{y} * width; }
};

/// The canvas with alpha all or nothing.
Canvas sharp_canvas(const Picture& picture, std::uint32_t threshold) {
  Canvas canvas{picture.width(), picture.height(), {}};
  canvas.pixels.resize(std::size_t{canvas.width} * canvas.height);
  for_each_row(canvas.height, picture.stride(), [&](std::uint32_t y) {
    const std::uint8_t* from = picture.row(y);
    Pixel* to = canvas.row(y);
    for (std::uint32_t x = 0; x < canvas.width; ++x, from += 4)
      to[x] = from[3] <= threshold
                  ? 0
                  : 0xFF000000u | Pixel{from[2]} << 16 | Pixel{from[1]} << 8 | Pixel{from[0]};
  });
  return canvas;
}

struct Rect {
  std::uint32_t left = ~0u, top = ~0u, right = 0, bottom = 0;
  bool empty() const { return left >= right; }
  std::uint32_t width() const { return right - left; }
  std::uint32_t height() const { return bottom - top; }
  void add(std::uint32_t from, std::uint32_t to, std::uint32_t y) {
    left = std::min(left, from), right = std::max(right, to);
    top = std::min(top, y), bottom = std::max(bottom, y + 1);
  }
  void add(const Rect& other) {
    if (other.empty()) return;
    left = std::min(left, other.left), right = std::max(right, other.right);
    top = std::min(top, other.top), bottom = std::max(bottom, other.bottom);
  }
};

/// Around all pixels of a part of the canvas for which `wanted(x, y)` holds.
template <class Wanted>
Rect rect_where(const Rect& part, const Wanted& wanted) {
  Rect rect;
  for (std::uint32_t y = part.top; y < part.bottom && !part.empty(); ++y) {
    std::uint32_t x = part.left, end = part.right;
    while (x < end && !wanted(x, y)) ++x;
    while (end > x && !wanted(end - 1, y)) --end;
    if (x < end) rect.add(x, end, y);
  }
  return rect;
}

/// A frame that is being made.
struct Frame {
  Canvas canvas;
  std::uint32_t delay = 0;
  Rect rect = {};        ///< that is written
  bool clears = false;   ///< its rectangle is empty behind it
  GifColors local = {};  ///< where it has colors of its own
  bool hasLocal = false;
  std::vector<std::uint8_t> indexes = {};  ///< of the rectangle, all of it drawn
};

/// What changes from one canvas to the next: the rectangle of the later one, and what the earlier one must
/// clear behind itself, for nothing that is drawn makes a pixel empty.
void plan_change(Frame& before, Frame& frame) {
  const Canvas &a = before.canvas, &b = frame.canvas;
  const Rect whole{0, 0, b.width, b.height};
  frame.rect = rect_where(whole, [&](std::uint32_t x, std::uint32_t y) {
    return a.row(y)[x] != b.row(y)[x] && b.row(y)[x] != 0;
  });
  const Rect gone = rect_where(
      whole, [&](std::uint32_t x, std::uint32_t y) { return a.row(y)[x] != 0 && b.row(y)[x] == 0; });
  if (gone.empty()) return;
  before.clears = true;
  before.rect.add(gone);
  frame.rect.add(rect_where(before.rect, [&](std::uint32_t x, std::uint32_t y) { return b.row(y)[x] != 0; }));
}

class Optimizer {
 public:
  Optimizer(ExportRun& run, const GifOptions& options, const Sink& sink)
      : run_(run), options_(options), sink_(sink), stream_(canvas_frames(run.draft)) {}

  bool write() {
    if (!choose_colors()) return false;
    if (partial_) run_.host.warn(StringId::GifTransparencyLost, settings::WarnGifTransparency);
    if (!sink_.write(gif_beginning(run_, options_, colors_))) return false;
    shown_ = {stream_.canvas.width, stream_.canvas.height, {}};
    shown_.pixels.resize(std::size_t{shown_.width} * shown_.height);
    const Progress progress(run_.host, string_text(StringId::Writing));
    std::vector<Frame> frames;
    for (std::size_t i = 0; i < stream_.count; ++i) {
      if (run_.host.stopped() || !take_frame(frames, i)) return false;
      // What the last one clears is known when the next is there.
      if (frames.size() > 2 * parallel_width() && !write_frames(frames, frames.size() - 1)) return false;
      progress.step(i, stream_.count);
    }
    return write_frames(frames, frames.size()) && sink_.write({&kGifTrailer, 1});
  }

 private:
  /// A null picture where it is lost.
  StreamedFrame canvas_of(std::size_t number) {
    StreamedFrame frame = stream_.frame(number);
    if (!frame.picture) run_.refuse(StringId::ErrorAccessingChunk);
    return frame;
  }

  bool choose_colors() {
    const Progress progress(run_.host, translated(kQuantizing));
    GifPalette palette;
    bool holes = false;
    for (std::size_t i = 0; i < stream_.count; ++i) {
      if (run_.host.stopped()) return false;
      const Picture canvas = canvas_of(i).picture;
      if (!canvas) return false;
      look_for_holes(canvas, holes);
      palette.add(holes ? with_sharp_alpha(canvas, {}, options_.threshold) : canvas);
      progress.step(i + 1, stream_.count);
    }
    // One entry less for colors is worth what transparent pixels save; 256 exact ones are worth more.
    const bool all_needed = !holes && palette.is_exact(false) && !palette.is_exact(true);
    exact_ = palette.is_exact(!all_needed);
    colors_ = palette.colors(!all_needed, options_.mask, options_.best);
    return true;
  }

  void look_for_holes(const Picture& canvas, bool& holes) {
    for (std::uint32_t y = 0; y < canvas.height(); ++y) {
      const std::uint8_t* alpha = canvas.row(y) + 3;
      for (std::uint32_t x = 0; x < canvas.width(); ++x) {
        holes = holes || alpha[4 * x] <= options_.threshold;
        partial_ = partial_ || (alpha[4 * x] > 0 && alpha[4 * x] < 255);
      }
    }
  }

  bool take_frame(std::vector<Frame>& frames, std::size_t number) {
    const StreamedFrame streamed = canvas_of(number);
    if (!streamed.picture) return false;
    Frame frame{.canvas = sharp_canvas(streamed.picture, options_.threshold),
                .delay = gif_delay(streamed.delay)};
    if (number == 0)
      frame.rect = {0, 0, frame.canvas.width, frame.canvas.height};
    else
      plan_change(frames.back(), frame);
    frames.push_back(std::move(frame));
    return true;
  }

  /// The rectangle as a picture.
  Picture cut(const Frame& frame) const {
    Picture picture = PictureCreateForOverwrite(frame.rect.width(), frame.rect.height(), nullptr, 32);
    const EditRows rows(picture);
    if (!rows) return {};
    for (std::uint32_t y = 0; y < picture.height(); ++y)
      std::memcpy(rows[y], frame.canvas.row(frame.rect.top + y) + frame.rect.left,
                  std::size_t{4} * picture.width());
    return picture;
  }

  /// The rectangle in the colors of the GIF, or its own where they are much nearer.
  bool draw(Frame& frame) const {
    if (frame.rect.empty()) frame.rect = {0, 0, 1, 1};
    const Picture picture = cut(frame);
    if (!picture) return false;
    Picture drawn = in_gif_colors(picture, colors_, options_.dither);
    if (!drawn) return false;
    if (!exact_ && colors_.transparent && needs_own_colors(frame, drawn)) {
      GifPalette own;
      own.add(picture);
      frame.local = own.colors(true, options_.mask, options_.best);
      frame.hasLocal = true;
      drawn = in_gif_colors(picture, frame.local, options_.dither);
      if (!drawn) return false;
    }
    frame.indexes = indexes_of(drawn);
    return true;
  }

  /// Whether the common palette is so far from the frame's colors that a table of its own pays: on average
  /// more than 6 levels in each channel.
  static bool needs_own_colors(const Frame& frame, const Picture& drawn) {
    constexpr double kMostError = 3 * 6 * 6;
    constexpr std::uint64_t kLeastPixels = 1024;  // a table takes 768 bytes
    const Palette palette = palette_of(drawn);
    double error = 0;
    std::uint64_t count = 0;
    for (std::uint32_t y = 0; y < drawn.height(); ++y) {
      const Pixel* wanted = frame.canvas.row(frame.rect.top + y) + frame.rect.left;
      for (std::uint32_t x = 0; x < drawn.width(); ++x) {
        if (wanted[x] == 0) continue;
        const std::uint8_t* color = &palette[std::size_t{3} * get_index(drawn.row(y), x, drawn.bits())];
        for (int c = 0; c < 3; ++c) {
          const int d = color[c] - static_cast<int>(wanted[x] >> (16 - 8 * c) & 255);
          error += d * d;
        }
        ++count;
      }
    }
    return count >= kLeastPixels && error > kMostError * static_cast<double>(count);
  }

  const GifColors& colors_of(const Frame& frame) const { return frame.hasLocal ? frame.local : colors_; }

  static Pixel color_of(const GifColors& colors, std::uint8_t index) {
    const std::uint8_t* color = &colors.palette[std::size_t{3} * index];
    return 0xFF000000u | Pixel{color[0]} << 16 | Pixel{color[1]} << 8 | color[2];
  }

  /// Two ways to write a frame: with all pixels, and with those transparent that are shown already.
  struct Ways {
    std::vector<std::uint8_t> drawn, hidden;
    bool holes = false;  ///< the first has transparent pixels too
  };

  /// What the frame's pixels are, seen what is shown in front of it, which it then changes.
  Ways lay(const Frame& frame, const Canvas* source_before) {
    const GifColors& colors = colors_of(frame);
    Ways ways{frame.indexes, frame.indexes};
    std::unordered_map<Pixel, std::uint8_t> entries;
    for (std::uint32_t i = 0; i < colors.count; ++i)
      if (colors.transparent != i) entries.try_emplace(color_of(colors, static_cast<std::uint8_t>(i)), i);
    std::size_t at = 0;
    for (std::uint32_t y = frame.rect.top; y < frame.rect.bottom; ++y) {
      const Pixel* wanted = frame.canvas.row(y);
      Pixel* shown = shown_.row(y);
      for (std::uint32_t x = frame.rect.left; x < frame.rect.right; ++x, ++at) {
        if (wanted[x] == 0) {
          ways.holes = true;
          continue;  // its index is the transparent one already
        }
        const bool same = shown[x] != 0 && source_before && source_before->row(y)[x] == wanted[x];
        if (!same && shown[x] != color_of(colors, frame.indexes[at])) {
          shown[x] = color_of(colors, frame.indexes[at]);
          continue;
        }
        if (!colors.transparent) continue;
        ways.hidden[at] = *colors.transparent;
        const auto entry = entries.find(shown[x]);
        ways.holes = ways.holes || entry == entries.end();
        ways.drawn[at] = entry == entries.end() ? *colors.transparent : entry->second;
      }
    }
    return ways;
  }

  /// The hidden pixels, but for those that go on with the color in front of them.
  static std::vector<std::uint8_t> with_runs(const std::vector<std::uint8_t>& drawn,
                                             const std::vector<std::uint8_t>& hidden) {
    std::vector<std::uint8_t> mixed = hidden;
    for (std::size_t i = 1; i < mixed.size(); ++i)
      if (drawn[i] == mixed[i - 1]) mixed[i] = drawn[i];
    return mixed;
  }

  Bytes pack(const Frame& frame, std::span<const std::uint8_t> indexes, bool transparent) const {
    const GifColors& colors = colors_of(frame);
    GifImage image{.left = frame.rect.left,
                   .top = frame.rect.top,
                   .width = frame.rect.width(),
                   .height = frame.rect.height(),
                   .indexes = indexes,
                   .delay = frame.delay,
                   .disposal = frame.clears ? GifDisposal::Background : GifDisposal::Keep,
                   .transparent = transparent ? colors.transparent : std::nullopt,
                   .local = frame.hasLocal ? &frame.local : nullptr};
    Bytes bytes;
    put_gif_image(bytes, image, table_bits(colors.count));
    return bytes;
  }

  /// Writes the first `count` frames, and keeps the last of them as what the next one is compared with.
  bool write_frames(std::vector<Frame>& frames, std::size_t count) {
    const std::size_t first = written_ ? 1 : 0;  // the one in front stays for comparison
    if (count <= first) return true;
    std::vector<char> good(count, 1);
    parallel_for(count - first, [&](std::size_t i) { good[first + i] = draw(frames[first + i]) ? 1 : 0; });
    if (std::ranges::find(good, 0) != good.end()) return run_.refuse(StringId::MemoryError);
    std::vector<Ways> ways(count);
    for (std::size_t i = first; i < count; ++i) {
      ways[i] = lay(frames[i], i > 0 ? &frames[i - 1].canvas : nullptr);
      if (!frames[i].clears) continue;
      for (std::uint32_t y = frames[i].rect.top; y < frames[i].rect.bottom; ++y)
        std::fill_n(shown_.row(y) + frames[i].rect.left, frames[i].rect.width(), 0);
    }
    // All drawn, all hidden, and hidden but where the color in front goes on.
    constexpr std::size_t kWays = 3;
    std::vector<Bytes> packed(kWays * count);
    parallel_for(kWays * (count - first), [&](std::size_t i) {
      const std::size_t frame = first + i / kWays, way = i % kWays;
      const auto& [drawn, hidden, holes] = ways[frame];
      if (way != 0 && hidden == drawn) return;
      const auto going_on = way == 2 ? with_runs(drawn, hidden) : std::vector<std::uint8_t>();
      packed[kWays * frame + way] = pack(frames[frame],
                                         way == 0   ? drawn
                                         : way == 1 ? hidden
                                                    : going_on,
                                         way != 0 || holes);
    });
    for (std::size_t i = first; i < count; ++i) {
      const auto of_frame = std::span(packed).subspan(kWays * i, kWays);
      const auto smaller = [](const Bytes& a, const Bytes& b) {
        return !a.empty() && (b.empty() || a.size() < b.size());
      };
      if (!sink_.write(*std::ranges::min_element(of_frame, smaller))) return false;
    }
    frames.erase(frames.begin(), frames.begin() + static_cast<std::ptrdiff_t>(count - 1));
    written_ = true;
    return true;
  }

  ExportRun& run_;
  const GifOptions& options_;
  const Sink& sink_;
  FrameStream stream_;
  GifColors colors_;
  bool exact_ = false, partial_ = false, written_ = false;
  Canvas shown_;  ///< what a program shows in front of the next frame
};

}  // namespace

bool write_optimized_gif(ExportRun& run, const GifOptions& options, const Sink& sink) {
  return Optimizer(run, options, sink).write();
}

}  // namespace vellum
