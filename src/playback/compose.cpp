#include "playback/compose.h"

#include "core/model/frame_values.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

constexpr std::uint32_t kDisposeBackground = 1, kDisposePrevious = 2, kBlendOver = 1;

/// A picture below 32 bits with the transparency that its document or its own record has.
Picture promoted(const Picture& picture, const ViewValues& values, const ChunkRecord& record) {
  const auto table = values.kind == DocumentKind::MING ? image_transparency(record) : values.transparency;
  if (!table.empty()) return PictureWithTransparency(picture, table);
  // An opaque picture covers what it lies on: its alpha need not be written down.
  return picture.bits() == 24 ? picture : PictureToTrueColorAlpha(picture);
}

/// The frame as it is laid on the canvas.
struct Layer {
  Picture picture;
  bool alone = false;  ///< what the canvas held is gone before
};

/// What replaces the canvas is composed over the background where there is one.
Layer layer_of(const ViewValues& values, const ChunkRecord& record) {
  const Picture picture = picture_of(record);
  if (!has_rows(picture)) return {};
  const bool webp = values.kind == DocumentKind::WEBP;
  if (picture.bits() < 32 && !(webp && picture.bits() == 24)) return {promoted(picture, values, record)};
  if (picture.bits() == 24) return {picture};
  if (lies_over(values.kind, record)) return {picture};
  if (values.clear) return {picture, true};
  return {PictureFlattenAlpha(picture, values.background)};
}

std::int32_t width_of(const PictureRect& rect) { return rect.right - rect.left; }
std::int32_t height_of(const PictureRect& rect) { return rect.bottom - rect.top; }

/// On no ground a pixel of zeros is nothing, and what is composed over it has its colors multiplied by its
/// alpha.
Colour ground_value(const ViewValues& values) { return values.clear ? 0 : values.background; }

Picture empty_canvas(const ViewValues& values) {
  const auto [width, height] = values.canvas;
  return values.clear ? PictureCreateAlpha(width, height)
                      : PictureCreateFilled(width, height, values.background);
}

void dispose_of_last(CanvasState& state, const ViewValues& values) {
  const PictureRect& rect = state.lastRect;
  if (width_of(rect) == 0) return;
  if (state.lastDispose == kDisposeBackground)
    PictureFillRect(state.canvas, rect.left, rect.top, width_of(rect), height_of(rect), ground_value(values));
  else if (state.lastDispose == kDisposePrevious && values.kind != DocumentKind::MING)
    PictureBlit(state.canvas, rect.left, rect.top, state.previousRegion, 0, 0, width_of(rect),
                height_of(rect));
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

}  // namespace

ViewValues view_values(const ChunkList& list, const Document& document, Ground ground) {
  ViewValues values{document.kind,
                    document_size(list, document),
                    ticks_per_second(list),
                    ground.kind == Ground::Kind::Solid ? ground.colour : document_background(list, document),
                    ground.kind == Ground::Kind::Clear,
                    {}};
  if (document.kind != DocumentKind::MING) values.transparency = document_transparency(list);
  return values;
}

bool lies_over(DocumentKind kind, const ChunkRecord& record) {
  const Picture picture = picture_of(record);
  if (!picture || picture.bits() < 32) return true;
  return kind == DocumentKind::APNG && record.frameControl.blend == kBlendOver;
}

Picture compose_frame(CanvasState& state, const ViewValues& values, const ChunkRecord& record) {
  const auto [layer, alone] = layer_of(values, record);
  if (!layer) return {};
  CanvasState next = state;
  if (!next.canvas) next.canvas = empty_canvas(values);
  if (!next.canvas) return {};
  const std::uint32_t dispose = GetFrameDispose(record, values.kind);
  const PictureRect rect = rect_of(layer, GetFrameOffset(record, values.kind));
  const bool hides_all = layer.bits() == 24 && !values.clear && covers(rect, values.canvas);
  // What was under the frame is needed only by a disposal that brings it back.
  if (!hides_all || dispose == kDisposePrevious) dispose_of_last(next, values);
  next.previousRegion = dispose == kDisposePrevious ? PictureCrop(next.canvas, rect) : Picture();
  if (alone) PictureFillRect(next.canvas, rect.left, rect.top, width_of(rect), height_of(rect), 0);
  if (hides_all)
    next.canvas = layer;
  else
    PictureComposite(next.canvas, rect.left, rect.top, layer, width_of(rect), height_of(rect));
  next.lastRect = rect;
  next.lastDispose = dispose;
  state = std::move(next);
  return state.canvas;
}

}  // namespace vellum
