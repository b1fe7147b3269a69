#include "core/model/compose.h"

#include <algorithm>
#include <utility>

#include "core/model/frame_values.h"
#include "image/alpha_runs.h"
#include "image/picture_rect.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

constexpr std::uint32_t kDisposeBackground = 1, kDisposePrevious = 2;

/// The picture with its alpha: its own, or that which its document or its record tells. 24 or 32 bits.
Picture layer_of(const ViewValues& values, const ChunkRecord& record) {
  const Picture picture = picture_of(record);
  if (!has_rows(picture) || picture.bits() == 32) return has_rows(picture) ? picture : Picture();
  const auto table = values.kind == DocumentKind::MING ? image_transparency(record) : values.transparency;
  if (!table.empty() && values.kind != DocumentKind::WEBP) return PictureWithTransparency(picture, table);
  // An opaque picture covers what it lies on: its alpha need not be written down.
  return picture.bits() == 24 ? picture : PictureToTrueColorAlpha(picture);
}

/// On no ground a pixel of zeros is nothing, and what is composed over it has its colors multiplied by its
/// alpha.
Colour ground_value(const ViewValues& values) { return values.clear ? 0 : values.background; }

FineCanvas empty_canvas(const ViewValues& values) {
  const auto [width, height] = values.canvas;
  return {values.clear ? PictureCreateAlpha(width, height)
                       : PictureCreateFilled(width, height, values.background),
          {}};
}

bool dispose_of_last(CanvasState& state, const ViewValues& values) {
  const PictureRect& rect = state.lastRect;
  if (width_of(rect) == 0) return true;
  if (state.lastDispose == kDisposeBackground) fine_fill(state.canvas, rect, ground_value(values));
  return state.lastDispose != kDisposePrevious || fine_put(state.canvas, rect, state.previousRegion);
}

/// Offsets of a file may lie anywhere; a frame that far out is never seen.
std::int32_t near(std::int32_t offset) {
  constexpr std::int32_t kFarthest = 1 << 30;
  return std::clamp(offset, -kFarthest, kFarthest);
}

PictureRect rect_of(const Picture& picture, FrameOffset offset) {
  const std::int32_t left = near(offset.x), top = near(offset.y);
  return {left, top, left + static_cast<std::int32_t>(picture.width()),
          top + static_cast<std::int32_t>(picture.height())};
}

bool covers(const PictureRect& rect, Extent canvas) {
  return rect.left == 0 && rect.top == 0 && static_cast<std::uint32_t>(rect.right) == canvas.width &&
         static_cast<std::uint32_t>(rect.bottom) == canvas.height;
}

/// What replaces the canvas is composed over the background where there is one.
bool draw_truncating(FineCanvas& canvas, const ViewValues& values, const PictureRect& rect,
                     const Picture& layer, bool over) {
  Picture drawn = layer;
  if (!over && values.clear)
    fine_fill(canvas, rect, 0);
  else if (!over && layer.bits() == 32)
    drawn = PictureFlattenAlpha(layer, values.background);
  PictureComposite(canvas.shown, rect.left, rect.top, drawn, width_of(rect), height_of(rect));
  return static_cast<bool>(drawn);
}

bool draw(FineCanvas& canvas, const ViewValues& values, const PictureRect& rect, const Picture& layer,
          bool over) {
  if (values.rule.truncates) return draw_truncating(canvas, values, rect, layer, over);
  if (over) return fine_lay(canvas, rect, layer);
  // Nothing is laid over a canvas that is always cleared.
  const bool once = values.rule.clearing == Clearing::Always && !values.clear;
  return fine_replace(canvas, rect, layer, ground_value(values), once);
}

/// How a frame comes on the canvas.
struct Coming {
  Picture layer;
  PictureRect rect;
  FrameManner manner;
  bool whole;  ///< it replaces the whole canvas
};

/// The canvas on which the frame is drawn: what the last one left, or a new one where nothing of that is
/// seen.
bool prepare_canvas(CanvasState& state, const ViewValues& values, const Coming& coming) {
  // What was under the frame is needed only by a disposal that brings it back.
  const bool brings_back = coming.manner.dispose == kDisposePrevious;
  if (coming.whole && !brings_back) {
    // Every pixel of it is about to be written.
    state.canvas.shown =
        create_rows(values.canvas.width, values.canvas.height, nullptr, values.clear ? 32 : 24);
    return static_cast<bool>(state.canvas.shown);
  }
  if (!state.canvas.shown || coming.manner.clears)
    state.canvas = empty_canvas(values);
  else if (!dispose_of_last(state, values))
    return false;
  return static_cast<bool>(state.canvas.shown);
}

bool draw_frame(CanvasState& state, const ViewValues& values, const Coming& coming) {
  const bool shared = coming.whole && coming.layer.bits() == 24 && !values.clear;
  if (shared && coming.manner.dispose != kDisposePrevious) {
    state.canvas = {coming.layer, {}};
    state.previousRegion = {};
    return true;
  }
  if (!prepare_canvas(state, values, coming)) return false;
  state.previousRegion = {};
  if (coming.manner.dispose == kDisposePrevious) state.previousRegion = fine_crop(state.canvas, coming.rect);
  if (!shared) return draw(state.canvas, values, coming.rect, coming.layer, coming.manner.over);
  state.canvas = {coming.layer, {}};
  return true;
}

/// What can't be seen is black on a canvas.
Picture without_hidden_colors(const Picture& picture) {
  const auto hides = [&](std::uint32_t y) {
    const std::uint8_t* row = picture.row(y);
    std::uint32_t hidden = 0;
    for (std::size_t x = 0, width = picture.width(); x < width; ++x) {
      const std::uint32_t pixel = read_le32(row + 4 * x);
      hidden |= pixel >> 24 == 0 ? pixel : 0;
    }
    return hidden != 0;
  };
  std::uint32_t first = 0;
  while (first < picture.height() && !hides(first)) ++first;
  if (first == picture.height()) return picture;
  Picture result = PictureDuplicate(picture);
  const EditRows rows(result);
  if (!rows) return {};
  for_each_row(result.height() - first, result.stride(), [&](std::uint32_t y) {
    std::uint8_t* row = rows[first + y];
    for (std::size_t x = 0, width = result.width(); x < width; ++x)
      if (row[4 * x + 3] == 0) write_le32(row + 4 * x, 0);
  });
  return result;
}

bool is_opaque(const Picture& picture) {
  for (std::uint32_t y = 0; y < picture.height(); ++y)
    if (!is_opaque_run(picture.row(y), picture.width())) return false;
  return true;
}

/// The picture of a frame that replaces the whole canvas, as 32 bits with straight alpha; null for others.
Picture whole_canvas(const ViewValues& values, const ChunkRecord& record, bool empty) {
  const FrameManner manner = frame_manner(record, values.rule);
  if (manner.dispose == kDisposePrevious) return {};
  const Picture layer = layer_of(values, record);
  if (!layer || layer.bits() != 32 ||
      !covers(rect_of(layer, GetFrameOffset(record, values.kind)), values.canvas))
    return {};
  const bool replaces = !manner.over || manner.clears || empty || is_opaque(layer);
  return replaces ? without_hidden_colors(layer) : Picture();
}

}  // namespace

ViewValues view_values(const ChunkList& list, const Document& document, Ground ground) {
  ViewValues values{document.kind,
                    document_size(list, document),
                    ticks_per_second(list),
                    ground.kind == Ground::Kind::Solid ? ground.colour : document_background(list, document),
                    ground.kind == Ground::Kind::Clear,
                    playing_rule(document.kind),
                    {}};
  if (document.kind != DocumentKind::MING) values.transparency = document_transparency(list);
  return values;
}

Picture compose_frame(CanvasState& state, const ViewValues& values, const ChunkRecord& record) {
  Coming coming{layer_of(values, record), {}, frame_manner(record, values.rule), false};
  if (!coming.layer) return {};
  coming.rect = rect_of(coming.layer, GetFrameOffset(record, values.kind));
  const bool replaces = !coming.manner.over || coming.layer.bits() == 24;
  coming.whole = replaces && covers(coming.rect, values.canvas);
  if (!draw_frame(state, values, coming)) return {};
  state.lastRect = coming.rect;
  state.lastDispose = coming.manner.dispose;
  return state.canvas.shown;
}

bool compose_alike(const ViewValues& a, const ViewValues& b) {
  return a.kind == b.kind && a.canvas.width == b.canvas.width && a.canvas.height == b.canvas.height &&
         a.background == b.background && a.clear == b.clear && a.transparency == b.transparency &&
         a.rule.shallow == b.rule.shallow && a.rule.deep == b.rule.deep &&
         a.rule.clearing == b.rule.clearing && a.rule.truncates == b.rule.truncates;
}

bool draw_alike(const ViewValues& values, const ChunkRecord& a, const ChunkRecord& b) {
  if (&a == &b) return true;
  const FrameOffset at = GetFrameOffset(a, values.kind), other = GetFrameOffset(b, values.kind);
  if (!a.data.shares_with(b.data) || at.x != other.x || at.y != other.y) return false;
  if (frame_manner(a, values.rule) != frame_manner(b, values.rule)) return false;
  return values.kind != DocumentKind::MING || image_transparency(a) == image_transparency(b);
}

StraightCanvases::StraightCanvases(const DocumentWindow& window)
    : values_(view_values(window.list, window.document, {Ground::Kind::Clear})) {
  values_.rule.truncates = false;
}

Picture StraightCanvases::next(const ChunkRecord& record) {
  const bool empty = !undrawn_ && !state_.canvas.shown;
  if (Picture whole = whole_canvas(values_, record, empty)) {
    undrawn_ = record;
    last_ = {};
    return whole;
  }
  if (undrawn_ && !compose_frame(state_, values_, *std::exchange(undrawn_, std::nullopt))) return {};
  const bool clears = frame_manner(record, values_.rule).clears;
  const PictureRect disposed = state_.lastDispose == 0 ? PictureRect{} : state_.lastRect;
  if (!compose_frame(state_, values_, record)) return {};
  if (!last_ || clears)
    last_ = straight_picture(state_.canvas);
  else if (!straighten_part(last_, state_.canvas, joined(disposed, state_.lastRect)))
    last_ = {};
  return last_;
}

}  // namespace vellum
