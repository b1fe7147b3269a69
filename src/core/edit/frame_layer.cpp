#include "core/edit/frame_layer.h"

#include <algorithm>
#include <limits>

#include "core/chunks/new_chunk.h"
#include "core/model/playing_rules.h"
#include "core/model/record_picture.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

/// The picture in true color, its transparency as alpha: that of the image itself in an MNG, else the
/// document's.
Picture shown_picture(const FrameSource& source, const ChunkRecord& record) {
  const Picture picture = picture_of(record);
  if (!has_rows(picture) || picture.bits() == 32) return picture;
  std::vector<std::uint8_t> own;
  if (source.kind == DocumentKind::MING) own = image_transparency(record);
  const auto& table = source.kind == DocumentKind::MING ? own : source.table;
  return picture.bits() == 24 && table.empty() ? picture : PictureWithTransparency(picture, table);
}

void put_layer(ChunkRecord& record, DocumentKind kind, const FrameLayer& frame, std::uint32_t ticks) {
  set_frame_delay(record, kind, ticks, frame.delay);
  SetFrameOffset(record, kind, frame.offset);
  // What clears the canvas in front of it in an MNG clears behind it in the others.
  const std::uint32_t dispose = frame.clears && frame.over ? 1u : frame.dispose;
  if (kind == DocumentKind::APNG) {
    record.frameControl.dispose = static_cast<std::uint8_t>(dispose);
    record.frameControl.blend = frame.over ? 1 : 0;
  } else if (kind == DocumentKind::MING) {
    // What shows through a picture in place of another is a cleared canvas.
    const bool clears = frame.dispose == 1 || frame.clears || (!frame.over && frame.picture.bits() == 32);
    record.image.edit().framBlock.framingMode = clears ? 3 : 1;
  } else if (kind == DocumentKind::WEBP) {
    record.webpImage.dispose = dispose == 1;
  }
}

}  // namespace

FrameLayer cut_at_origin(const FrameLayer& frame) {
  return cut_to(frame, {std::numeric_limits<std::int32_t>::max(), std::numeric_limits<std::int32_t>::max()});
}

FrameLayer cut_to(const FrameLayer& frame, Extent canvas) {
  const std::int64_t x = frame.offset.x, y = frame.offset.y;
  const std::int64_t left = std::max<std::int64_t>(-x, 0), top = std::max<std::int64_t>(-y, 0);
  const auto right = std::min<std::int64_t>(frame.picture.width(), canvas.width - x);
  const auto bottom = std::min<std::int64_t>(frame.picture.height(), canvas.height - y);
  FrameLayer cut = frame;
  if (left >= right || top >= bottom) {
    // Nothing of it is seen: a transparent pixel that leaves everything as it is.
    cut.picture = PictureCreateAlpha(1, 1);
    cut.offset = {};
    cut.dispose = 0;
    cut.over = true;
  } else if (left != 0 || top != 0 || right != frame.picture.width() || bottom != frame.picture.height()) {
    cut.picture =
        PictureCrop(frame.picture, {static_cast<std::int32_t>(left), static_cast<std::int32_t>(top),
                                    static_cast<std::int32_t>(right), static_cast<std::int32_t>(bottom)});
    cut.offset = {std::max(frame.offset.x, 0), std::max(frame.offset.y, 0)};
  }
  return cut;
}

FrameSource frame_source_of(const DocumentWindow& window) {
  return {window.document.kind, document_transparency(window.list), ticks_per_second(window.list)};
}

FrameLayer frame_layer_of(const FrameSource& source, const ChunkRecord& record) {
  const FrameManner manner = frame_manner(record, source.kind);
  return {shown_picture(source, record),
          GetFrameOffset(record, source.kind),
          frame_delay_ms(record, source.kind, source.ticks),
          manner.dispose,
          manner.over,
          manner.clears};
}

bool frame_record_of(const DocumentWindow& to, const FrameLayer& frame, ChunkRecord& record) {
  const DocumentKind kind = to.document.kind;
  const FrameLayer held = kind == DocumentKind::MING ? frame : cut_at_origin(frame);
  NewChunkArgument argument;
  argument.picture = held.picture.handle();
  if (!new_chunk(to, record, image_tag(kind), argument)) return false;
  put_layer(record, kind, held, kind == DocumentKind::MING ? ticks_per_second(to.list) : 1000);
  return true;
}

void put_whole_canvas(ChunkRecord& record, DocumentKind kind, const Picture& picture, bool transparent) {
  record_take_picture(record, kind, picture);
  SetFrameOffset(record, kind, {});
  // A canvas is cleared where the image in front would show through; a WebP's always is.
  set_frame_dispose(record, kind, transparent && kind != DocumentKind::WEBP ? 1 : 0);
  record.frameControl.blend = 0;
}

}  // namespace vellum
