// The deeper search: the canvases of an animation made of frames anew, as small as a cheap estimate finds, in
// the smallest form that holds all of them.
#include <algorithm>
#include <atomic>
#include <unordered_map>

#include "base/byte_order.h"
#include "base/file.h"
#include "base/parallel.h"
#include "core/edit/document_colors.h"
#include "core/edit/edit_closing.h"
#include "core/files/save_document.h"
#include "core/model/chunk_description.h"
#include "core/model/compose.h"
#include "core/model/frame_values.h"
#include "core/model/playing_rules.h"
#include "core/model/record_picture.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"
#include "image/png_encode.h"
#include "operations/reconstruct.h"
#include "operations/same_animation.h"
#include "operations/supercompress_passes.h"

namespace vellum {
namespace {

/// A pixel as rows of 32 bits hold it: blue lowest, alpha highest. 0 for all that is clear.
using Pixel = std::uint32_t;

constexpr Pixel alpha_of_pixel(Pixel pixel) { return pixel >> 24; }
constexpr Pixel kOpaque = 0xFF000000;

struct Canvas {
  std::uint32_t width = 0, height = 0;
  std::vector<Pixel> pixels;
  Pixel* row(std::uint32_t y) { return pixels.data() + std::size_t{y} * width; }
  const Pixel* row(std::uint32_t y) const { return pixels.data() + std::size_t{y} * width; }
};

/// Of a picture in true color.
Canvas canvas_of(const Picture& picture) {
  Canvas canvas{picture.width(), picture.height(), {}};
  canvas.pixels.resize(std::size_t{canvas.width} * canvas.height);
  for_each_row(canvas.height, picture.stride(), [&](std::uint32_t y) {
    const std::uint8_t* row = picture.row(y);
    for (std::size_t x = 0; x < canvas.width; ++x) {
      const Pixel pixel = picture.bits() == 32 ? read_le32(row + 4 * x)
                                               : kOpaque | Pixel{row[3 * x + 2]} << 16 |
                                                     Pixel{row[3 * x + 1]} << 8 | row[3 * x];
      canvas.row(y)[x] = alpha_of_pixel(pixel) == 0 ? 0 : pixel;
    }
  });
  return canvas;
}

/// What all pixels have in common.
struct Stock {
  std::unordered_map<Pixel, std::uint32_t> few;                      ///< colors, until they are more than 256
  std::vector<bool> used = std::vector<bool>(std::size_t{1} << 24);  ///< colors of opaque pixels
  bool partial = false;  ///< something has alpha between 0 and 255
  bool grey = true;      ///< everything is
  bool clear = false;    ///< something has alpha 0

  void add(const Canvas& canvas) {
    Pixel last = 1;  // a clear pixel with a color: none is like it
    for (const Pixel pixel : canvas.pixels) {
      if (pixel == last) continue;
      last = pixel;
      const Pixel alpha = alpha_of_pixel(pixel);
      clear = clear || alpha == 0;
      grey = grey && (pixel & 255) == (pixel >> 8 & 255) && (pixel & 255) == (pixel >> 16 & 255);
      partial = partial || (alpha != 0 && alpha != 255);
      if (alpha == 255) used[pixel & 0xFFFFFF] = true;
      if (few.size() <= 256) few.try_emplace(pixel, 0);
    }
  }
};

/// The form in which all frames are written.
struct Form {
  DocumentColors colors;  ///< what the document says
  std::uint32_t bits = 32;
  std::unordered_map<Pixel, std::uint32_t> indexes = {};  ///< of a palette
  std::optional<Pixel> key = {};                          ///< of 24 bits: the color that is transparent
  bool holes = true;                                      ///< something can be transparent

  PngHeader header(std::uint32_t width, std::uint32_t height) const {
    return {.width = width, .height = height, .bitDepth = colors.bitDepth, .colorType = colors.colorType};
  }
};

std::uint32_t luminance(Pixel pixel) {
  return (pixel >> 16 & 255) * 77 + (pixel >> 8 & 255) * 150 + (pixel & 255) * 28;
}

/// A palette in the order of its light, those with alpha in front: tRNS ends with them.
Form palette_form(const Stock& stock, bool holes) {
  std::vector<Pixel> pixels;
  for (const auto& [pixel, _] : stock.few) pixels.push_back(pixel);
  if (holes && !stock.clear) pixels.push_back(0);
  std::ranges::sort(pixels, [](Pixel a, Pixel b) {
    return std::tuple(alpha_of_pixel(a) == 255, luminance(a), a) <
           std::tuple(alpha_of_pixel(b) == 255, luminance(b), b);
  });
  Form form{.colors = {.colorType = 3}, .bits = pixels.size() > 16 ? 8u : pixels.size() > 2 ? 4u : 1u};
  for (std::uint32_t i = 0; i < pixels.size(); ++i) {
    for (unsigned c = 0; c < 3; ++c)
      form.colors.palette[3 * i + c] = static_cast<std::uint8_t>(pixels[i] >> (16 - 8 * c));
    if (alpha_of_pixel(pixels[i]) != 255)
      form.colors.transparency.push_back(static_cast<std::uint8_t>(alpha_of_pixel(pixels[i])));
    form.indexes.emplace(pixels[i], i);
  }
  form.colors.bitDepth = static_cast<std::uint8_t>(pixels.size() > 2 && pixels.size() <= 4 ? 2 : form.bits);
  form.colors.colors = static_cast<std::uint32_t>(pixels.size());
  form.holes = holes;
  return form;
}

/// `animated`: frames may leave out what is there.
Form smallest_form(const Stock& stock, bool animated) {
  const bool fits = stock.few.size() <= 256;
  const bool room = stock.clear || stock.few.size() < 256;
  if (fits) return palette_form(stock, stock.clear || (animated && room));
  const auto unused = std::ranges::find(stock.used, false);
  if (stock.partial || ((stock.clear || animated) && unused == stock.used.end()))
    return {.colors = {.colorType = stock.grey ? std::uint8_t{4} : std::uint8_t{6}}};
  Form form{.colors = {.colorType = 2}, .bits = 24, .holes = stock.clear || animated};
  if (!form.holes) return form;
  form.key = static_cast<Pixel>(unused - stock.used.begin());
  form.colors.transparency.resize(6);
  for (unsigned c = 0; c < 3; ++c)
    form.colors.transparency[2 * c + 1] = static_cast<std::uint8_t>(*form.key >> (16 - 8 * c));
  return form;
}

/// A part of a canvas as a picture of the form; pixels where `left_out(x, y)` are clear.
template <class LeftOut>
Picture part_of(const Canvas& canvas, const PictureRect& rect, const Form& form, const LeftOut& left_out) {
  Picture picture =
      create_rows(static_cast<std::uint32_t>(rect.right - rect.left),
                  static_cast<std::uint32_t>(rect.bottom - rect.top), &form.colors.palette, form.bits);
  const EditRows rows(picture);
  if (!rows) return {};
  Pixel last = 0;
  std::uint32_t value = form.indexes.empty() ? 0 : ~0u;
  const auto value_of = [&](Pixel pixel) {
    if (!form.indexes.empty()) return form.indexes.at(pixel);
    return pixel == 0 && form.key ? *form.key : pixel;
  };
  for (std::uint32_t y = 0; y < picture.height(); ++y)
    for (std::uint32_t x = 0; x < picture.width(); ++x) {
      const std::uint32_t cx = x + static_cast<std::uint32_t>(rect.left),
                          cy = y + static_cast<std::uint32_t>(rect.top);
      const Pixel pixel = left_out(cx, cy) ? 0 : canvas.row(cy)[cx];
      if (pixel != last || value == ~0u || (x == 0 && y == 0)) value = value_of(last = pixel);
      if (form.bits == 32)
        write_le32(rows[y] + std::size_t{4} * x, value);
      else if (form.bits == 24)
        for (unsigned c = 0; c < 3; ++c)
          rows[y][std::size_t{3} * x + c] = static_cast<std::uint8_t>(value >> (8 * c));
      else
        put_index(rows[y], x, form.bits, value);
    }
  return picture;
}

/// A frame as it may be written.
struct Way {
  Picture picture = {};
  PictureRect rect;
  bool over = false;
  bool clears = false;  ///< all of the canvas in front of it (MNG)
  std::size_t cost = SIZE_MAX;
};

/// What is there in front of a frame, and what the frame in front of it must do for that.
struct Ground {
  Canvas canvas;
  std::uint32_t dispose = 0;  ///< of the frame in front
  bool clears = false;        ///< the frame itself clears all (MNG)
};

PictureRect changed_rect(const Canvas& ground, const Canvas& canvas) {
  PictureRect rect{static_cast<std::int32_t>(canvas.width), static_cast<std::int32_t>(canvas.height), 0, 0};
  for (std::uint32_t y = 0; y < canvas.height; ++y) {
    const Pixel *a = ground.row(y), *b = canvas.row(y);
    std::uint32_t x = 0, end = canvas.width;
    while (x < end && a[x] == b[x]) ++x;
    if (x == end) continue;
    while (a[end - 1] == b[end - 1]) --end;
    rect.left = std::min(rect.left, static_cast<std::int32_t>(x));
    rect.right = std::max(rect.right, static_cast<std::int32_t>(end));
    rect.top = std::min(rect.top, static_cast<std::int32_t>(y));
    rect.bottom = static_cast<std::int32_t>(y) + 1;
  }
  return rect.right == 0 ? PictureRect{0, 0, 1, 1} : rect;
}

std::size_t area(const PictureRect& rect) {
  return static_cast<std::size_t>(rect.right - rect.left) * static_cast<std::size_t>(rect.bottom - rect.top);
}

/// Whether a frame laid over the ground can make the canvas of it.
bool can_lie_over(const Canvas& ground, const Canvas& canvas, const PictureRect& rect) {
  for (std::int32_t y = rect.top; y < rect.bottom; ++y) {
    const Pixel *a = ground.row(static_cast<std::uint32_t>(y)),
                *b = canvas.row(static_cast<std::uint32_t>(y));
    for (std::int32_t x = rect.left; x < rect.right; ++x)
      if (a[x] != b[x] && alpha_of_pixel(b[x]) != 255 && alpha_of_pixel(a[x]) != 0) return false;
  }
  return true;
}

/// The image of an animated PNG that is no frame, in true color; null where there is none.
Picture default_image(const DocumentWindow& window) {
  const Picture kept(window.document.defaultImage);
  return kept ? PictureWithTransparency(kept, document_transparency(window.list)) : Picture();
}

/// The canvases of a document in their order, which are asked for several times: kept where they are no more
/// than that.
class SourceCanvases {
 public:
  explicit SourceCanvases(DocumentWindow window)
      : window_(std::move(window)), entries_(frame_entries(window_)) {
    constexpr std::uint64_t kMostKept = std::uint64_t{512} << 20;
    const auto [width, height] = document_size(window_.list, window_.document);
    if (entries_.size() * picture_stride(width, 32) * height <= kMostKept) kept_.resize(entries_.size());
  }

  std::size_t size() const { return entries_.size(); }
  const DocumentWindow& window() const { return window_; }
  /// Null where a picture is lost.
  Picture canvas(std::size_t frame) {
    if (frame < kept_.size() && kept_[frame]) return kept_[frame];
    if (frame == 0) canvases_.emplace(window_);
    const Picture canvas = canvases_->next(window_.list.record(entries_[frame]));
    if (frame < kept_.size()) kept_[frame] = canvas;
    return canvas;
  }

 private:
  DocumentWindow window_;
  std::vector<std::size_t> entries_;
  std::vector<Picture> kept_;
  std::optional<StraightCanvases> canvases_;
};

/// Chooses the frames, one after the other.
class DeepSearch {
 public:
  DeepSearch(Supercompression& work, const Form& form, SourceCanvases& source)
      : work_(work), form_(form), source_(source) {}

  /// Whether the draft got its frames. False when it was stopped or memory is exhausted.
  bool run() {
    const auto entries = frame_entries(work_.draft);
    const Progress progress(work_.host, string_text(StringId::SearchingDeeper));
    ways_.reserve(entries.size());
    disposals_.assign(entries.size(), 0);
    for (std::size_t i = 0; i < entries.size(); ++i) {
      if (work_.host.stopped()) return false;
      const Picture picture = source_.canvas(i);
      if (!picture) return false;
      if (!(i == 0 ? take_first(canvas_of(picture)) : take_next(i, canvas_of(picture)))) return false;
      progress.step(i + 1, entries.size());
    }
    put_frames(entries);
    return true;
  }

 private:
  bool mng() const { return work_.draft.document.kind == DocumentKind::MING; }

  bool take_first(Canvas canvas) {
    const PictureRect whole{0, 0, static_cast<std::int32_t>(canvas.width),
                            static_cast<std::int32_t>(canvas.height)};
    Way way{.rect = whole};
    way.picture = part_of(canvas, whole, form_, [](auto, auto) { return false; });
    // Nothing of the last frame may be seen in a second round.
    way.clears =
        mng() && std::ranges::any_of(canvas.pixels, [](Pixel p) { return alpha_of_pixel(p) != 255; });
    const bool good = static_cast<bool>(way.picture);
    ways_.push_back(std::move(way));
    under_ = {canvas.width, canvas.height, std::vector<Pixel>(canvas.pixels.size())};
    last_ = std::move(canvas);
    return good;
  }

  /// What may lie in front of the next frame.
  std::vector<Ground> grounds(std::size_t frame) const {
    std::vector<Ground> all;
    all.push_back({last_, 0, false});
    if (mng()) {
      all.push_back({{last_.width, last_.height, std::vector<Pixel>(last_.pixels.size())}, 0, true});
      return all;
    }
    if (work_.draft.document.kind != DocumentKind::APNG) return all;
    Ground cleared{last_, 1, false};
    const PictureRect& rect = ways_.back().rect;
    for (std::int32_t y = rect.top; y < rect.bottom; ++y)
      std::fill_n(cleared.canvas.row(static_cast<std::uint32_t>(y)) + rect.left, rect.right - rect.left, 0);
    all.push_back(std::move(cleared));
    // Behind the first frame this is the same.
    if (frame > 1) all.push_back({under_, 2, false});
    return all;
  }

  /// The ways to make the canvas of a ground.
  std::vector<Way> ways_on(const Ground& ground, const Canvas& canvas) const {
    std::vector<Way> ways;
    const PictureRect rect = changed_rect(ground.canvas, canvas);
    const bool over = form_.holes && can_lie_over(ground.canvas, canvas, rect);
    if (over) {
      const auto same = [&](std::uint32_t x, std::uint32_t y) {
        return ground.canvas.row(y)[x] == canvas.row(y)[x];
      };
      ways.push_back({.rect = rect, .over = true, .clears = ground.clears});
      ways.back().picture = part_of(canvas, rect, form_, same);
    }
    const bool replaces = !mng() || opaque(canvas, rect) || ground.clears;
    if (!replaces) return ways;
    ways.push_back({.rect = rect, .over = mng(), .clears = ground.clears});
    ways.back().picture = part_of(canvas, rect, form_, [](auto, auto) { return false; });
    return ways;
  }

  static bool opaque(const Canvas& canvas, const PictureRect& rect) {
    for (std::int32_t y = rect.top; y < rect.bottom; ++y)
      for (std::int32_t x = rect.left; x < rect.right; ++x)
        if (alpha_of_pixel(canvas.row(static_cast<std::uint32_t>(y))[x]) != 255) return false;
    return true;
  }

  bool take_next(std::size_t frame, Canvas canvas) {
    const std::vector<Ground> all = grounds(frame);
    std::vector<Way> ways;
    std::vector<std::size_t> of;
    std::size_t least = SIZE_MAX;
    for (std::size_t i = 0; i < all.size(); ++i) {
      // A larger part of the canvas costs more, as good as always.
      const std::size_t pixels = area(changed_rect(all[i].canvas, canvas));
      if (i > 0 && pixels >= least && !ways.empty()) continue;
      least = std::min(least, pixels);
      for (Way& way : ways_on(all[i], canvas)) ways.push_back(std::move(way)), of.push_back(i);
    }
    if (ways.empty()) return false;
    constexpr int kQuick = 2;
    if (ways.size() > 1)
      parallel_for(ways.size(), [&](std::size_t i) {
        const Picture& picture = ways[i].picture;
        if (!picture) return;
        const auto stream = png_encode(form_.header(picture.width(), picture.height()), picture, kQuick);
        if (!stream.empty()) ways[i].cost = stream.size();
      });
    const auto best = static_cast<std::size_t>(std::ranges::min_element(ways, {}, &Way::cost) - ways.begin());
    if (!ways[best].picture) return false;
    const Ground& ground = all[of[best]];
    disposals_[frame - 1] = ground.dispose;
    under_ = ground.canvas;
    ways_.push_back(std::move(ways[best]));
    last_ = std::move(canvas);
    return true;
  }

  void put_frames(const std::vector<std::size_t>& entries) {
    DocumentWindow& draft = work_.draft;
    const DocumentKind kind = draft.document.kind;
    const bool clearing = std::ranges::any_of(ways_, &Way::clears);
    ChunkRecord record;
    for (std::size_t i = 0; i < entries.size(); ++i) {
      const Way& way = ways_[i];
      chunk_list_get(draft.list, entries[i], record);
      record_take_picture(record, kind, way.picture);
      SetFrameOffset(record, kind, {way.rect.left, way.rect.top});
      if (kind == DocumentKind::APNG) {
        set_frame_dispose(record, kind, disposals_[i]);
        record.frameControl.blend = way.over ? 1 : 0;
      }
      record.interlace = 0;
      if (kind == DocumentKind::MING) {
        // Behind an image with a FRAM one without says another delay than it had alone.
        const std::uint32_t ticks = delay_ticks(record);
        if (clearing || clears_canvas(record)) {
          set_frame_dispose(record, kind, way.clears ? 1 : 0);
          set_frame_ticks(record, ticks);
        }
        record.image.edit().paletteBytes = 3 * form_.colors.colors;
        record.colorType = form_.colors.colorType;
        record.bitDepth = form_.colors.bitDepth;
        put_image_transparency(record, form_.colors.transparency);
      }
      record.description = chunk_description(record);
      chunk_list_put(draft.list, entries[i], record);
    }
    put_default_image();
    if (kind != DocumentKind::MING) put_header();
    finish_edit(draft, false);
  }

  void put_default_image() {
    const Picture kept = default_image(work_.draft);
    if (!kept) return;
    const PictureRect whole{0, 0, static_cast<std::int32_t>(kept.width()),
                            static_cast<std::int32_t>(kept.height())};
    work_.draft.document.defaultImage =
        part_of(canvas_of(kept), whole, form_, [](auto, auto) { return false; }).handle();
  }

  void put_header() {
    put_document_colors(work_.draft, form_.colors);
    ChunkRecord header;
    const std::size_t at = chunk_find_first(work_.draft.list, tag::IHDR, &header);
    if (at == kNoEntry || header.interlace == 0) return;
    header.interlace = 0;
    header.description = chunk_description(header);
    chunk_list_put(work_.draft.list, at, header);
  }

  Supercompression& work_;
  const Form& form_;
  SourceCanvases& source_;
  std::vector<Way> ways_;
  std::vector<std::uint32_t> disposals_;
  Canvas last_, under_;  ///< the last canvas, and what was there in front of its frame
};

/// All colors of a document; nothing when a picture is lost or the user stopped it.
std::optional<Stock> stock_of(SourceCanvases& source, Host& host) {
  Stock stock;
  for (std::size_t i = 0; i < source.size(); ++i) {
    const Picture canvas = host.stopped() ? Picture() : source.canvas(i);
    if (!canvas) return std::nullopt;
    stock.add(canvas_of(canvas));
  }
  if (const Picture kept = default_image(source.window())) stock.add(canvas_of(kept));
  return stock;
}

/// How long a quickly packed file of it is.
std::uint64_t quick_bytes(DocumentWindow window) {
  std::uint64_t bytes = 0;
  SaveOptions options = save_options();
  options.compression = 2;
  Host silent;
  const auto result = write_document(window, window.document.kind, counting_sink(bytes), options, silent);
  return result == WriteResult::Done ? bytes : UINT64_MAX;
}

std::uint64_t pixel_bytes(const DocumentWindow& window) {
  std::uint64_t bytes = 0;
  for (const std::size_t entry : frame_entries(window)) {
    const Picture picture = picture_of(window.list.record(entry));
    bytes += picture.stride() * std::uint64_t{picture.height()};
  }
  return bytes;
}

/// By what is packed, where that differs much, else by a quickly packed file.
bool is_smaller(const DocumentWindow& draft, const DocumentWindow& before) {
  constexpr std::uint64_t kMuch = 3;
  return kMuch * pixel_bytes(draft) < pixel_bytes(before) || quick_bytes(draft) < quick_bytes(before);
}

/// In an MNG that is played round and round what one round leaves matters too.
bool shows_the_same(SourceCanvases& source, const DocumentWindow& draft, Host& host) {
  if (draft.document.kind == DocumentKind::MING) return is_same_animation(source.window(), draft, host);
  return shows_canvases(
      draft, [&](std::size_t frame) { return source.canvas(frame); }, host);
}

/// Neighbours that show the same become one frame. Where there are none, or too many to hold at a time, the
/// draft stays as it is.
void merge_equal(Supercompression& work) {
  DocumentWindow merged{work.draft.document, work.draft.list, {}};
  if (!reconstruct_frames(merged, CanvasDepth::TrueColorAlpha, work.host, true) ||
      frame_entries(merged).size() == frame_entries(work.draft).size())
    return;
  work.draft.document = std::move(merged.document);
  work.draft.list = merged.list;
}

}  // namespace

bool deep_pass(Supercompression& work) {
  work.say(StringId::DeepBegins);
  if (work.draft.document.kind == DocumentKind::WEBP) {
    work.say(StringId::DeepFoundNothing);
    return true;
  }
  const DocumentWindow before{work.draft.document, work.draft.list, {}};
  if (work.passes & kMergePass) merge_equal(work);
  SourceCanvases source({work.draft.document, work.draft.list, {}});
  const auto stock = stock_of(source, work.host);
  const auto put_back = [&] {
    work.draft.document = before.document;
    work.draft.list = before.list;
  };
  if (!stock) {
    put_back();
    return work.host.stopped() ? false : work.abort(StringId::ErrorAccessingChunk);
  }
  const Form form = smallest_form(*stock, is_animation(work.draft.document.kind));
  if (!DeepSearch(work, form, source).run()) {
    put_back();
    return work.host.stopped() ? false : work.abort(StringId::MemoryError);
  }
  const bool smaller = is_smaller(work.draft, before);
  if (!smaller || !shows_the_same(source, work.draft, work.host)) {
    put_back();
    if (work.host.stopped()) return false;
    work.say(smaller ? StringId::NotTheSame : StringId::DeepFoundNothing);
    return true;
  }
  work.say(StringId::DeepChanged, {std::to_string(frame_entries(work.draft).size())});
  return true;
}

}  // namespace vellum
