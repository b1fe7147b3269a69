// Crop: a rectangle of the canvas becomes the canvas.
#include "operations/crop.h"

#include <algorithm>

#include "base/limits.h"
#include "core/edit/edit_closing.h"
#include "core/model/playing_rules.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"
#include "operations/change_pictures.h"
#include "operations/clips.h"
#include "operations/operation_rows.h"
#include "operations/reconstruct.h"

namespace vellum {
namespace {

constexpr std::int64_t kMostSide = kMaximumDimension;

constexpr Field kFields[] = {
    {.name = "left", .label = "Left", .most = kMostSide - 1, .stateId = 1},
    {.name = "top", .label = "Top", .most = kMostSide - 1, .stateId = 2},
    {.name = "width", .label = "Width", .least = 1, .most = kMostSide, .initial = kMostSide, .stateId = 3},
    {.name = "height", .label = "Height", .least = 1, .most = kMostSide, .initial = kMostSide, .stateId = 4},
};

constexpr const char* kRect[] = {"left", "top", "width", "height"};
constexpr CompoundOption kOptions[] = {
    {.name = "rect", .form = "X,Y,W,H", .help = "The rectangle of the canvas that stays", .fields = kRect}};

void fit(std::vector<Field>& fields, const DocumentWindow& window) {
  const Extent canvas = document_size(window.list, window.document);
  const std::int64_t sides[] = {canvas.width, canvas.height, canvas.width, canvas.height};
  for (std::size_t i = 0; i < fields.size(); ++i) {
    fields[i].most = std::max<std::int64_t>(i < 2 ? sides[i] - 1 : sides[i], fields[i].least);
    fields[i].initial = i < 2 ? 0 : fields[i].most;
  }
}

std::optional<FieldFault> check(const FieldValues& values, const DocumentWindow& window) {
  const Extent canvas = document_size(window.list, window.document);
  const auto beyond = [&](const char* from, const char* length, std::int64_t side) {
    return values.number(from) + values.number(length) > side;
  };
  const auto fault = [&](const char* name, const char* label, std::int64_t most) {
    return fault_of(name, StringId::WholeRange, {label, "1", std::to_string(most)});
  };
  if (beyond("left", "width", canvas.width))
    return fault("width", "Width", canvas.width - values.number("left"));
  if (beyond("top", "height", canvas.height))
    return fault("height", "Height", canvas.height - values.number("top"));
  return std::nullopt;
}

using Cut = CanvasCut;

/// The index whose color is nearest.
Colour nearest_index(const Picture& picture, Colour color) {
  const auto distance = [&](std::uint32_t i) {
    const std::uint8_t* entry = picture.table() + 4 * i;  // blue, green, red
    std::int32_t sum = 0;
    for (unsigned c = 0; c < 3; ++c) {
      const std::int32_t d = entry[2 - c] - static_cast<std::int32_t>(color >> 8 * c & 255);
      sum += d * d;
    }
    return sum;
  };
  std::uint32_t nearest = 0;
  for (std::uint32_t i = 1; i < picture.colours(); ++i)
    if (distance(i) < distance(nearest)) nearest = i;
  return nearest;
}

/// A color in the picture's form.
Colour in_form(const Picture& picture, Colour color) {
  return picture.bits() > 8 ? color : nearest_index(picture, color);
}

/// A pixel that changes nothing where it is laid: the color that the canvas has there, or a transparent one
/// where it lies over that. In the picture's form; an image of an MNG may have another one than its
/// neighbors, whose palette may lack the color.
Picture pixel_of(const Picture& picture, Colour canvas, DocumentKind kind, bool over) {
  const bool deep = kind == DocumentKind::MING && picture.bits() <= 8;
  const Palette palette = palette_of(picture);
  Picture pixel = create_rows(1, 1, &palette, deep ? 24 : picture.bits());
  const bool clear = pixel.bits() == 32 && over;
  if (pixel) PicturePutPixel(pixel, 0, 0, clear ? 0 : deep ? canvas & 0xFFFFFF : in_form(picture, canvas));
  return pixel;
}

/// What the canvas shows at the corner of the rectangle while each frame plays; asked for frames alone that
/// do not reach into the rectangle. False when a picture is lost or the user stopped it.
bool find_corner_colors(const DocumentWindow& draft, const std::vector<bool>& wanted, const Cut& cut,
                        std::vector<Colour>& colors, Host& host) {
  colors.resize(wanted.size());
  if (std::ranges::find(wanted, true) == wanted.end()) return true;
  return for_each_canvas(draft, CanvasDepth::AsNeeded, host, [&](std::size_t frame, const Picture& canvas) {
    colors[frame] = PictureGetPixelOpaque(canvas, cut.left, cut.top);
    return true;
  });
}

Cut part_of(const FrameWork& work, const Cut& cut) {
  return {std::max<std::int64_t>(work.offset.x, cut.left), std::max<std::int64_t>(work.offset.y, cut.top),
          std::min<std::int64_t>(std::int64_t{work.offset.x} + work.picture.width(), cut.right),
          std::min<std::int64_t>(std::int64_t{work.offset.y} + work.picture.height(), cut.bottom)};
}

bool is_empty(const Cut& part) { return part.left >= part.right || part.top >= part.bottom; }

/// What stays of a frame, which `origin` becomes the origin for.
bool crop_frame(FrameWork& work, DocumentKind kind, const Cut& cut, const Cut& origin, Colour corner) {
  const Cut part = part_of(work, cut);
  change_clips(work.record, [&](ClipBox box) {
    return ClipBox{box.left - origin.left, box.right - origin.left, box.top - origin.top,
                   box.bottom - origin.top};
  });
  if (is_empty(part)) {
    work.picture = pixel_of(work.picture, corner, kind, frame_manner(work.record, kind).over);
    work.offset = {};
    // What clears the whole canvas goes on doing so.
    const bool stays = work.frame == kDefaultImageWork || frame_manner(work.record, kind).clears;
    if (!stays) set_frame_dispose(work.record, kind, 0);
    return static_cast<bool>(work.picture);
  }
  const auto in_picture = [](std::int64_t at, std::int32_t begin) {
    return static_cast<std::int32_t>(at - begin);
  };
  work.picture = PictureCrop(work.picture,
                             {in_picture(part.left, work.offset.x), in_picture(part.top, work.offset.y),
                              in_picture(part.right, work.offset.x), in_picture(part.bottom, work.offset.y)});
  work.offset = {static_cast<std::int32_t>(part.left - origin.left),
                 static_cast<std::int32_t>(part.top - origin.top)};
  return static_cast<bool>(work.picture);
}

/// The canvas follows the frames: one that no longer fills it would leave it smaller than the rectangle.
bool hold_canvas(DocumentWindow& draft, const Extent& canvas) {
  const auto entries = frame_entries(draft);
  std::int64_t right = 0, bottom = 0;
  for (const std::size_t entry : entries) {
    const ChunkRecord& record = draft.list.record(entry);
    const FrameOffset offset = GetFrameOffset(record, draft.document.kind);
    const Picture picture = picture_of(record);
    right = std::max<std::int64_t>(right, std::int64_t{offset.x} + picture.width());
    bottom = std::max<std::int64_t>(bottom, std::int64_t{offset.y} + picture.height());
  }
  if (right >= canvas.width && bottom >= canvas.height) return true;
  const Colour background = document_background(draft.list, draft.document);
  Host nobody;
  return change_pictures(draft, {0}, "", nobody, [&](FrameWork& work) {
    work.picture = PictureExtendCanvas(work.picture, canvas.width, canvas.height, work.offset.x,
                                       work.offset.y, in_form(work.picture, background));
    work.offset = {};
    return static_cast<bool>(work.picture);
  });
}

bool run(OperationRun& run) {
  const Cut cut{run.number("left"), run.number("top"), run.number("left") + run.number("width"),
                run.number("top") + run.number("height")};
  const Extent canvas = document_size(run.draft.list, run.draft.document);
  if (cut.left == 0 && cut.top == 0 && cut.right == canvas.width && cut.bottom == canvas.height) return true;
  return crop_frames(run.draft, cut, false, run.host);
}

}  // namespace

bool crop_frames(DocumentWindow& draft, const CanvasCut& cut, bool keep_places, Host& host) {
  const DocumentKind kind = draft.document.kind;
  const auto entries = frame_entries(draft);
  std::vector<bool> outside(entries.size());
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const ChunkRecord& record = draft.list.record(entries[i]);
    outside[i] = is_empty(part_of({i, {}, picture_of(record), GetFrameOffset(record, kind)}, cut));
  }
  std::vector<Colour> corners;
  if (!find_corner_colors(draft, outside, cut, corners, host)) return false;
  const Cut origin = keep_places ? Cut{} : cut;
  const auto crop = [&](FrameWork& work) {
    const bool first = work.frame == 0 || work.frame == kDefaultImageWork;
    if (keep_places && first && kind == DocumentKind::APNG) return true;
    return crop_frame(work, kind, cut, origin, work.frame < corners.size() ? corners[work.frame] : 0);
  };
  if (!change_pictures(draft, all_frames(entries.size()), string_text(StringId::BuildingCaption), host, crop))
    return false;
  if (!keep_places && !hold_canvas(draft, {static_cast<std::uint32_t>(cut.right - cut.left),
                                           static_cast<std::uint32_t>(cut.bottom - cut.top)}))
    return false;
  finish_edit(draft, false);
  return true;
}

constinit const Operation kCrop{
    .parameters =
        {
            .name = "crop",
            .title = "Crop",
            .help = "A rectangle of the canvas becomes the canvas",
            .command = 309,
            .kinds = kAnimatedKinds,
            .stateFile = "CropState.txt",
            .fields = kFields,
            .options = kOptions,
            .fit = fit,
            .check = check,
        },
    .run = run,
};

}  // namespace vellum
