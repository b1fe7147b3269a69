// A GIF whose frames are cut to what changes. Pixels that stay as they are may be transparent, whichever way
// packs better; frames whose colors the common palette lacks bring one of their own.
#include <algorithm>
#include <array>
#include <cstring>

#include "base/parallel.h"
#include "base/translation.h"
#include "core/build/frame_stream.h"
#include "exchange/export_gif.h"
#include "exchange/gif_color_choice.h"
#include "exchange/gif_palette.h"
#include "exchange/settings.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

using namespace gif;

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
    ColorChanges changes;
    GifPalette palette(options_.threshold);
    bool holes = false;
    for (std::size_t i = 0; i < stream_.count; ++i) {
      if (run_.host.stopped()) return false;
      const Picture canvas = canvas_of(i).picture;
      if (!canvas) return false;
      look_for_holes(canvas, holes);
      palette.add({&canvas, 1});
      changes.add(canvas);
      progress.step(i + 1, stream_.count);
    }
    // One entry less for colors is worth what transparent pixels save; 256 exact ones are worth more.
    const bool all_needed = !holes && palette.is_exact(false) && !palette.is_exact(true);
    exact_ = palette.is_exact(!all_needed);
    colors_ = palette.colors(!all_needed, options_.mask, options_.best);
    changes.sort(colors_);
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
      frame.rect = rect_where({0, 0, frame.canvas.width, frame.canvas.height},
                              [&](std::uint32_t x, std::uint32_t y) { return frame.canvas.row(y)[x] != 0; });
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
      GifPalette own(options_.threshold);
      own.add({&picture, 1});
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

  enum class Kind : std::uint8_t {
    Drawn,
    Shown,  ///< already: may be drawn or transparent
    Hole,   ///< transparent
  };
  /// What the pixels of a frame may be written as.
  struct Choices {
    std::vector<PixelChoice> pixels;  ///< what they are when they are drawn
    std::vector<Kind> kinds;
  };

  /// Where colors had to be matched, those of frames behind the first may be so much farther (squared) than
  /// the nearest one: they are seen for a moment, and what need not be drawn anew packs better.
  static constexpr std::int32_t kFarther = 4;

  /// What the frame's pixels may be, seen what is shown in front of it.
  Choices choices_of(const Frame& frame, const Canvas* source_before) const {
    const GifColors& colors = colors_of(frame);
    const bool free_choice = source_before && !options_.dither && !exact_;
    NearEntries near(colors);
    Choices choices{std::vector<PixelChoice>(frame.indexes.size()), std::vector<Kind>(frame.indexes.size())};
    std::size_t at = 0;
    for (std::uint32_t y = frame.rect.top; y < frame.rect.bottom; ++y) {
      const Pixel *wanted = frame.canvas.row(y), *shown = shown_.row(y);
      for (std::uint32_t x = frame.rect.left; x < frame.rect.right; ++x, ++at) {
        PixelChoice& choice = choices.pixels[at];
        choice.fill(frame.indexes[at]);
        if (wanted[x] == 0) {
          choices.kinds[at] = Kind::Hole;
          continue;
        }
        const Pixel drawn = color_of(colors, frame.indexes[at]);
        const std::int32_t reach = free_choice ? kFarther * distance(drawn, wanted[x]) : 0;
        const bool same = source_before && source_before->row(y)[x] == wanted[x];
        const bool stays =
            shown[x] != 0 && (same || shown[x] == drawn || distance(shown[x], wanted[x]) <= reach);
        if (!stays && reach > 0) near.add(choice, wanted[x], reach);
        if (!stays) continue;
        const auto entry = near.entry(shown[x]);
        choices.kinds[at] = entry ? Kind::Shown : Kind::Hole;
        choice.fill(entry.value_or(0));
      }
    }
    return choices;
  }

  /// One way to write the choices.
  struct Way {
    std::vector<PixelChoice> pixels;
    std::optional<std::uint8_t> transparent = {};
    std::uint32_t bits = 8;  ///< of all indexes
  };
  /// What is shown already: drawn again; transparent where nothing else packs better; transparent.
  enum class Hiding { Never, AtFirst, Always };

  /// Any index that is not used can be the transparent one: the lowest. Nothing where there is none.
  static std::optional<Way> way_of(const Choices& choices, Hiding hiding) {
    Way way{choices.pixels};
    const auto drawn = [&](Kind kind) {
      return kind == Kind::Drawn || (kind == Kind::Shown && hiding != Hiding::Always);
    };
    std::array<bool, 256> used{};
    for (std::size_t at = 0; at < way.pixels.size(); ++at)
      for (const std::uint8_t index : way.pixels[at])
        if (drawn(choices.kinds[at])) used[index] = true;
    const bool needed = std::ranges::any_of(choices.kinds, [&](Kind kind) {
      return kind == Kind::Hole || (kind == Kind::Shown && hiding != Hiding::Never);
    });
    if (needed) {
      const auto lowest = static_cast<std::size_t>(std::ranges::find(used, false) - used.begin());
      if (lowest == used.size()) return std::nullopt;
      way.transparent = static_cast<std::uint8_t>(lowest);
      used[lowest] = true;
      for (std::size_t at = 0; at < way.pixels.size(); ++at) {
        if (!drawn(choices.kinds[at])) way.pixels[at].fill(*way.transparent);
        if (choices.kinds[at] == Kind::Shown && hiding == Hiding::AtFirst)
          way.pixels[at].front() = *way.transparent;
      }
    }
    for (std::uint32_t i = 0; i < 256; ++i)
      if (used[i]) way.bits = table_bits(i + 1);
    return way;
  }

  struct Packed {
    Bytes bytes;
    std::vector<std::uint8_t> indexes;
    std::optional<std::uint8_t> transparent;
    std::uint32_t bits = 8;
  };

  Packed pack(const Frame& frame, const Way& way, const std::vector<std::size_t>* clears) const {
    GifImage image{.left = frame.rect.left,
                   .top = frame.rect.top,
                   .width = frame.rect.width(),
                   .height = frame.rect.height(),
                   .indexes = {},
                   .choices = way.pixels,
                   .clears = clears,
                   .delay = frame.delay,
                   .disposal = frame.clears ? GifDisposal::Background : GifDisposal::Keep,
                   .transparent = way.transparent,
                   .local = frame.hasLocal ? &frame.local : nullptr};
    Packed packed{.bytes = {}, .indexes = {}, .transparent = way.transparent, .bits = way.bits};
    packed.indexes = put_gif_image(packed.bytes, image, way.bits);
    return packed;
  }

  /// The smallest of all ways to pack a frame.
  Packed packed(const Frame& frame, const Choices& choices) const {
    constexpr std::size_t kFewBytes = 4096;  // so few codes need not begin anew
    static constexpr Hiding kHidings[] = {Hiding::Never, Hiding::AtFirst, Hiding::Always};
    const bool any = std::ranges::find(choices.kinds, Kind::Shown) != choices.kinds.end();
    std::vector<Packed> ways(any ? std::size(kHidings) : 1);
    parallel_for(ways.size(), [&](std::size_t i) {
      if (const auto way = way_of(choices, kHidings[i])) ways[i] = pack(frame, *way, nullptr);
    });
    const auto size = [](const Packed& way) { return way.bytes.empty() ? SIZE_MAX : way.bytes.size(); };
    const auto best = std::ranges::min_element(ways, {}, size);
    if (best->bytes.size() <= kFewBytes) return std::move(*best);
    const auto clears = best_clears(best->indexes, best->bits);
    Packed anew = pack(frame, *way_of(choices, kHidings[best - ways.begin()]), &clears);
    return std::move(size(anew) < size(*best) ? anew : *best);
  }

  /// The frame as it is shown.
  void show(const Frame& frame, const Packed& packed) {
    const GifColors& colors = colors_of(frame);
    const std::size_t width = frame.rect.width();
    for (std::size_t at = 0; at < packed.indexes.size(); ++at)
      if (packed.transparent != packed.indexes[at])
        shown_.row(frame.rect.top + static_cast<std::uint32_t>(at / width))[frame.rect.left + at % width] =
            color_of(colors, packed.indexes[at]);
    if (!frame.clears) return;
    for (std::uint32_t y = frame.rect.top; y < frame.rect.bottom; ++y)
      std::fill_n(shown_.row(y) + frame.rect.left, width, 0);
  }

  /// Writes the first `count` frames, and keeps the last of them as what the next one is compared with.
  bool write_frames(std::vector<Frame>& frames, std::size_t count) {
    const std::size_t first = written_ ? 1 : 0;  // the one in front stays for comparison
    if (count <= first) return true;
    std::vector<char> good(count, 1);
    parallel_for(count - first, [&](std::size_t i) { good[first + i] = draw(frames[first + i]) ? 1 : 0; });
    if (std::ranges::find(good, 0) != good.end()) return run_.refuse(StringId::MemoryError);
    for (std::size_t i = first; i < count; ++i) {
      const Choices choices = choices_of(frames[i], i > 0 ? &frames[i - 1].canvas : nullptr);
      const Packed best = packed(frames[i], choices);
      show(frames[i], best);
      if (best.bytes.empty()) return run_.refuse(StringId::MemoryError);
      if (!sink_.write(best.bytes)) return false;
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
