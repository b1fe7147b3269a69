#include "operations/resize_animation.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/limits.h"
#include "core/chunks/chunk_field_sets.h"
#include "core/edit/document_colors.h"
#include "core/edit/edit_closing.h"
#include "core/edit/frame_layer.h"
#include "core/model/frame_values.h"
#include "image/held_picture.h"
#include "image/png_form.h"
#include "image/resample.h"
#include "operations/change_pictures.h"
#include "operations/clips.h"
#include "operations/convert_colors.h"
#include "operations/frames.h"
#include "operations/manage_frames.h"
#include "operations/reconstruct.h"

namespace vellum {
namespace {

/// One axis of the canvas: edges go to the nearest pixel of the new one.
struct Axis {
  std::int64_t from, to;

  std::int64_t edge(std::int64_t at) const {
    const std::int64_t doubled = 2 * at * to + from;
    return doubled >= 0 ? doubled / (2 * from) : -((-doubled + 2 * from - 1) / (2 * from));
  }
};

/// A frame along one axis.
struct Span {
  std::int64_t at, length;
};

Span scaled(const Axis& axis, Span span) {
  Span result{axis.edge(span.at),
              std::max<std::int64_t>(axis.edge(span.at + span.length) - axis.edge(span.at), 1)};
  // What vanishes between two edges stays one pixel, inside the canvas where it was inside.
  if (span.at + span.length <= axis.from && result.at + result.length > axis.to) --result.at;
  return result;
}

struct Axes {
  Axis x, y;
};

/// A frame with all that scaling it takes.
struct Work {
  Picture picture;
  Span x{}, y{};
  PaletteUse use;
  std::vector<std::uint8_t> table;  ///< of `use`
};

bool is_grey(const Picture& picture) {
  for (std::uint32_t i = 0; i < picture.colours(); ++i) {
    const std::uint8_t* entry = picture.table() + 4 * i;
    if (entry[0] != entry[1] || entry[1] != entry[2]) return false;
  }
  return picture.bits() <= 8;
}

std::vector<Picture> images_of(const DocumentWindow& window) {
  std::vector<Picture> pictures;
  for (const std::size_t entry : frame_entries(window))
    pictures.push_back(picture_of(window.list.record(entry)));
  if (const Picture image(window.document.defaultImage); image) pictures.push_back(image);
  return pictures;
}

bool filters(const DocumentWindow& window, const ResizeAnimation& resize) {
  const Extent size = document_size(window.list, window.document);
  if (resize.filter == ResampleFilter::Point) return false;
  return size.width != resize.width || size.height != resize.height || resize.blur != 1;
}

/// Whether pixels of one color are transparent, which a filter would mix with others.
bool has_color_key(const DocumentWindow& window, std::span<const Picture> pictures) {
  const auto deep = [](const Picture& picture) { return picture && picture.bits() == 24; };
  return std::ranges::any_of(pictures, deep) && has_transparency(window);
}

bool is_indexed(const Picture& picture) { return picture && picture.bits() <= 8; }

/// The form whose pixels a filter can mix.
bool promote(DocumentWindow& draft, const ResizeAnimation& resize, Host& host) {
  const std::vector<Picture> pictures = images_of(draft);
  const bool indexed = std::ranges::any_of(pictures, is_indexed);
  const bool promotes = indexed ? !resize.keepPalette : has_color_key(draft, pictures);
  if (!promotes || !filters(draft, resize)) return true;
  const bool clear = has_transparency(draft);
  if (std::ranges::all_of(pictures, is_grey) && !clear)
    return convert_colors(draft, {.colorType = 0, .bitDepth = 8}, host);
  return convert_colors(draft, {.colorType = clear ? std::uint8_t{6} : std::uint8_t{2}}, host);
}

/// `transparency` is that of the document's pictures; an image of an MNG has its own.
Work work_of(const DocumentWindow& window, const FrameWork& frame, const Axes& axes,
             const std::vector<std::uint8_t>& transparency) {
  Work work{frame.picture, {}, {}, {}, {}};
  work.x = scaled(axes.x, {frame.offset.x, work.picture.width()});
  work.y = scaled(axes.y, {frame.offset.y, work.picture.height()});
  if (!is_indexed(work.picture)) return work;
  const std::size_t header = chunk_find_first(window.list, tag::IHDR);
  const bool own = frame.frame != kDefaultImageWork;
  if (own || header != kNoEntry)
    work.use.entries = usable_colors(window, own ? frame.record : window.list.record(header));
  work.table = window.document.kind == DocumentKind::MING ? image_transparency(frame.record) : transparency;
  return work;
}

Picture resized(const Work& work, const ResizeAnimation& resize) {
  PaletteUse use = work.use;
  use.transparency = work.table;
  return PictureResample(work.picture, static_cast<std::uint32_t>(work.x.length),
                         static_cast<std::uint32_t>(work.y.length), resize.filter, resize.blur, use);
}

std::int32_t held(std::int64_t at) {
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(at, INT32_MIN, INT32_MAX));
}

void scale_clips(ChunkRecord& record, const Axes& axes) {
  change_clips(record, [&](ClipBox box) {
    return ClipBox{axes.x.edge(box.left), axes.x.edge(box.right), axes.y.edge(box.top),
                   axes.y.edge(box.bottom)};
  });
}

/// Whether the canvas has just these pixels at a place that lies on it.
bool shows(const Picture& canvas, std::int64_t left, std::int64_t top, const Picture& picture) {
  const bool deep = canvas.bits() == 32;
  const std::size_t canvas_bytes = canvas.bits() / 8, bytes = picture.bits() / 8;
  for (std::uint32_t y = 0; y < picture.height(); ++y) {
    const std::uint8_t *own = picture.row(y), *shown = canvas.row(static_cast<std::uint32_t>(top + y)) +
                                                       canvas_bytes * static_cast<std::size_t>(left);
    if (canvas_bytes == bytes && std::equal(own, own + bytes * picture.width(), shown)) continue;
    for (std::uint32_t x = 0; x < picture.width(); ++x, own += bytes, shown += canvas_bytes) {
      const std::uint8_t alpha = bytes == 4 ? own[3] : 255;
      if (alpha != (deep ? shown[3] : 255) || (alpha != 0 && !std::equal(own, own + 3, shown))) return false;
    }
  }
  return true;
}

/// A part of the canvas in the form of a frame's picture; null where that can't be.
Picture in_form_of(const Picture& part, const Picture& picture, const PaletteUse& use) {
  if (!part || part.bits() == picture.bits()) return part;
  if (picture.bits() <= 8) return PictureInColoursOf(part, picture, use);
  if (picture.bits() == 32) return PictureToTrueColorAlpha(part);
  return picture_content(part).opaque ? PictureToTrueColor(part) : Picture();
}

/// Frames that are a part of the canvas, with what lies around them weighing in at their edges: else seams
/// would show where frames meet. By frame; null where a frame shows something other than its own picture,
/// as where the canvas shines through, and is resized alone.
bool resize_parts(const DocumentWindow& draft, const ResizeAnimation& resize, const Axes& axes,
                  std::vector<HeldPicture>& parts, Host& host) {
  const auto entries = frame_entries(draft);
  const Extent canvas = document_size(draft.list, draft.document);
  const auto is_part = [&](std::size_t entry) {
    const Picture picture = picture_of(draft.list.record(entry));
    return picture && (picture.width() < canvas.width || picture.height() < canvas.height);
  };
  parts.assign(entries.size(), {});
  if (!filters(draft, resize) || std::ranges::none_of(entries, is_part)) return true;
  const FrameSource source = frame_source_of(draft);
  const auto transparency = document_transparency(draft.list);
  return for_each_canvas(draft, CanvasDepth::AsNeeded, host, [&](std::size_t i, const Picture& shown) {
    const ChunkRecord& record = draft.list.record(entries[i]);
    const FrameLayer layer = is_part(entries[i]) ? frame_layer_of(source, record) : FrameLayer{};
    const FrameOffset at = layer.offset;
    if (!layer.picture || at.x < 0 || at.y < 0 || at.x + layer.picture.width() > shown.width() ||
        at.y + layer.picture.height() > shown.height() || !shows(shown, at.x, at.y, layer.picture))
      return true;
    FrameWork frame{i, record, picture_of(record), at};
    Work work = work_of(draft, frame, axes, transparency);
    work.use.transparency = work.table;
    const PictureRect rect{held(work.x.at), held(work.y.at), held(work.x.at + work.x.length),
                           held(work.y.at + work.y.length)};
    const Picture part =
        PictureResamplePart(shown, resize.width, resize.height, rect, resize.filter, resize.blur);
    // What is laid over the canvas would show what it lies on where the surroundings shine through.
    if (part && (!layer.over || picture_content(part).opaque))
      parts[i] = hold_picture(in_form_of(part, work.picture, work.use));
    return true;
  });
}

/// All frames and the default image.
bool resize_images(DocumentWindow& draft, const ResizeAnimation& resize, const Axes& axes, Host& host) {
  const auto transparency = document_transparency(draft.list);
  const FrameList all = all_frames(frame_entries(draft).size());
  std::vector<HeldPicture> parts;
  if (!resize_parts(draft, resize, axes, parts, host)) return false;
  return change_pictures(draft, all, string_text(StringId::BuildingCaption), host, [&](FrameWork& frame) {
    const Work work = work_of(draft, frame, axes, transparency);
    const bool has_part = frame.frame < parts.size() && parts[frame.frame];
    frame.picture = has_part ? std::exchange(parts[frame.frame], {}).picture() : resized(work, resize);
    frame.offset = {held(work.x.at), held(work.y.at)};
    scale_clips(frame.record, axes);
    return static_cast<bool>(frame.picture);
  });
}

bool size_allowed(const Extent& from, const ResizeAnimation& resize) {
  const auto fits = [](std::uint32_t side) { return side > 0 && side <= kMaximumDimension; };
  return fits(from.width) && fits(from.height) && fits(resize.width) && fits(resize.height);
}

}  // namespace

std::uint32_t scaled_side(std::uint32_t side, double percent) {
  return static_cast<std::uint32_t>(std::clamp(std::trunc(side * percent / 100 + 0.5), 1.0, 4e9));
}

std::uint32_t proportional_side(std::uint32_t scaled, std::uint32_t side, std::uint32_t other) {
  return side == 0 ? scaled : scaled_side(other, 100.0 * scaled / side);
}

bool resizing_needs_true_color(const DocumentWindow& window, const ResizeAnimation& resize) {
  if (resize.keepPalette || !filters(window, resize)) return false;
  const std::vector<Picture> pictures = images_of(window);
  const bool grey = std::ranges::all_of(pictures, is_grey) && !has_transparency(window);
  return !grey && std::ranges::any_of(pictures, is_indexed);
}

bool resize_animation(DocumentWindow& window, const ResizeAnimation& resize, Host& host) {
  const Extent from = document_size(window.list, window.document);
  if (!size_allowed(from, resize) || frame_entries(window).empty()) return false;
  DocumentWindow draft{window.document, window.list, {}};
  if (!promote(draft, resize, host)) return false;
  const Axes axes{{from.width, resize.width}, {from.height, resize.height}};
  {
    const QuietList quiet(draft.list);
    if (!resize_images(draft, resize, axes, host)) return false;
    if (draft.document.kind == DocumentKind::PING)
      header_take_size(draft, picture_of(draft.list.record(frame_entries(draft).front())));
  }
  finish_edit(draft, false);
  take_draft(window, draft);
  return true;
}

}  // namespace vellum
