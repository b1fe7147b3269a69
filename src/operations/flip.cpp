// Flip and rotate: mirrors and quarter turns, without loss.
#include <algorithm>

#include "core/edit/edit_closing.h"
#include "core/edit/frame_layer.h"
#include "core/model/first_frame.h"
#include "image/orientation.h"
#include "image/picture_operations.h"
#include "operations/change_pictures.h"
#include "operations/clips.h"
#include "operations/operation_rows.h"
#include "operations/settings.h"

namespace vellum {
namespace {

constexpr FieldChoice kModes[] = {{0, "Flip horizontally", "h"},
                                  {1, "Flip vertically", "v"},
                                  {2, "Rotate 90 clockwise", "90"},
                                  {3, "Rotate 90 counterclockwise", "-90"},
                                  {4, "Rotate 180", "180"}};
/// The orientation of EXIF that each mode undoes.
constexpr int kOrientations[] = {2, 4, 6, 8, 3};

constexpr Field kFields[] = {{.name = "mode",
                              .label = "What to do",
                              .type = FieldType::Choice,
                              .choices = kModes,
                              .look = FieldLook::Radio,
                              .setting = &settings::FlipRotateMode}};

bool is_quarter(std::int64_t mode) { return mode == 2 || mode == 3; }

/// Where a rectangle comes to lie when the canvas is turned.
ClipBox turned(const ClipBox& box, std::int64_t mode, const Extent& canvas) {
  const std::int64_t w = canvas.width, h = canvas.height;
  switch (mode) {
    case 0:
      return {w - box.right, w - box.left, box.top, box.bottom};
    case 1:
      return {box.left, box.right, h - box.bottom, h - box.top};
    case 2:
      return {h - box.bottom, h - box.top, box.left, box.right};
    case 3:
      return {box.top, box.bottom, w - box.right, w - box.left};
    default:
      return {w - box.right, w - box.left, h - box.bottom, h - box.top};
  }
}

ClipBox box_of(const FrameWork& work) {
  return {work.offset.x, std::int64_t{work.offset.x} + work.picture.width(), work.offset.y,
          std::int64_t{work.offset.y} + work.picture.height()};
}

bool turn_with_canvas(FrameWork& work, std::int64_t mode, const Extent& canvas) {
  const ClipBox place = turned(box_of(work), mode, canvas);
  work.picture = oriented(work.picture, kOrientations[mode]);
  work.offset = {static_cast<std::int32_t>(place.left), static_cast<std::int32_t>(place.top)};
  change_clips(work.record, [&](ClipBox box) { return turned(box, mode, canvas); });
  return static_cast<bool>(work.picture);
}

std::int64_t half_down(std::int64_t value) { return value >= 0 ? value / 2 : -((1 - value) / 2); }

/// What of a frame that turned about its own centre lies on the canvas; the first one of an animated PNG
/// fills it.
bool turn_alone(FrameWork& work, std::int64_t mode, const Extent& canvas, bool fills, Colour around) {
  const std::int64_t grown = std::int64_t{work.picture.width()} - work.picture.height();
  work.picture = oriented(work.picture, kOrientations[mode]);
  if (!work.picture) return false;
  if (!is_quarter(mode)) return true;
  const std::int64_t x = work.offset.x + half_down(grown), y = work.offset.y - half_down(grown);
  if (fills) {
    work.picture = PictureExtendCanvas(work.picture, canvas.width, canvas.height,
                                       static_cast<std::int32_t>(x), static_cast<std::int32_t>(y), around);
    work.offset = {};
    return static_cast<bool>(work.picture);
  }
  const std::int64_t left = std::clamp<std::int64_t>(-x, 0, work.picture.width() - 1),
                     top = std::clamp<std::int64_t>(-y, 0, work.picture.height() - 1),
                     right = std::clamp<std::int64_t>(canvas.width - x, left + 1, work.picture.width()),
                     bottom = std::clamp<std::int64_t>(canvas.height - y, top + 1, work.picture.height());
  work.picture =
      PictureCrop(work.picture, {static_cast<std::int32_t>(left), static_cast<std::int32_t>(top),
                                 static_cast<std::int32_t>(right), static_cast<std::int32_t>(bottom)});
  work.offset = {static_cast<std::int32_t>(x + left), static_cast<std::int32_t>(y + top)};
  return static_cast<bool>(work.picture);
}

bool run(OperationRun& run) {
  const DocumentKind kind = run.draft.document.kind;
  const Extent canvas = document_size(run.draft.list, run.draft.document);
  const std::int64_t mode = run.number("mode");
  const bool whole = names_all(run.frames, run.draft);
  const bool fills = kind == DocumentKind::APNG && !run.draft.document.defaultImage;
  const auto turn = [&](FrameWork& work) {
    if (whole) return turn_with_canvas(work, mode, canvas);
    return turn_alone(work, mode, canvas, fills && work.frame == 0,
                      frame_surroundings(run.draft.list, work.picture));
  };
  if (!change_pictures(run.draft, run.frames, string_text(StringId::BuildingCaption), run.host, turn))
    return false;
  finish_edit(run.draft, false);
  return true;
}

}  // namespace

constinit const Operation kFlip{
    .parameters =
        {
            .name = "flip",
            .title = "Flip and rotate",
            .help = "Mirrors and turns without loss",
            .command = 308,
            .kinds = kAnimatedKinds,
            .fields = kFields,
        },
    .batch = 3,
    .batchPrefix = "FlipRotate_",
    .scoped = true,
    .preview = OperationPreview::Reduced,
    .run = run,
};

}  // namespace vellum
