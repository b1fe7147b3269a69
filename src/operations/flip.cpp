// Flip and rotate: mirrors and quarter turns, without loss; any angle, and shears.
#include <algorithm>

#include "core/edit/edit_closing.h"
#include "core/edit/frame_layer.h"
#include "core/edit/picture_fitting.h"
#include "core/model/first_frame.h"
#include "image/orientation.h"
#include "image/picture_operations.h"
#include "image/rotate.h"
#include "operations/change_pictures.h"
#include "operations/clips.h"
#include "operations/convert_colors.h"
#include "operations/frame_pictures.h"
#include "operations/operation_rows.h"
#include "operations/reconstruct.h"
#include "operations/settings.h"

namespace vellum {
namespace {

enum { kNoTurn = -1, kAngle = 5, kShearRows = 6, kShearColumns = 7 };

constexpr FieldChoice kModes[] = {{0, "Flip horizontally", "h"},
                                  {1, "Flip vertically", "v"},
                                  {2, "Rotate 90 clockwise", "90"},
                                  {3, "Rotate 90 counterclockwise", "-90"},
                                  {4, "Rotate 180", "180"},
                                  {kAngle, "Rotate by angle", "angle"},
                                  {kShearRows, "Shear horizontally", "shear-h"},
                                  {kShearColumns, "Shear vertically", "shear-v"}};
/// The orientation of EXIF that each mode undoes.
constexpr int kOrientations[] = {2, 4, 6, 8, 3};

constexpr Field kFields[] = {{.name = "mode",
                              .label = "What to do",
                              .type = FieldType::Choice,
                              .choices = kModes,
                              .look = FieldLook::Radio,
                              .setting = &settings::FlipRotateMode},
                             {.name = "angle",
                              .label = "Angle",
                              .least = -359,
                              .most = 359,
                              .enabledBy = "mode",
                              .enabledAt = kAngle,
                              .tip = "Degrees, clockwise",
                              .initial = 45,
                              .setting = &settings::FlipRotateAngle},
                             {.name = "shear",
                              .label = "Shear",
                              .least = -60,
                              .most = 60,
                              .tip = "Degrees, of the last two",
                              .initial = 15,
                              .setting = &settings::FlipRotateShear},
                             {.name = "background",
                              .label = "Background",
                              .type = FieldType::Color,
                              .most = 0xFFFFFF,
                              .tip = "What a turned image without transparency doesn't cover",
                              .initial = 0xFFFFFF},
                             {.name = "dither",
                              .label = "Dither to the palette",
                              .type = FieldType::Flag,
                              .most = 1,
                              .tip = "Images that had a palette get it again",
                              .setting = &settings::FlipRotateDither}};

/// The background of the document at first.
void fit(std::vector<Field>& fields, const DocumentWindow& window) {
  fields[3].initial = document_background(window.list, window.document) & 0xFFFFFF;
}

/// The mode of a turn that loses nothing; nothing for another angle, and for shears.
std::optional<std::int64_t> lossless_mode(const FieldValues& values) {
  const std::int64_t mode = values.number("mode");
  if (mode < kAngle) return mode;
  const std::int64_t turn = (values.number("angle") + 360) % 360;
  if (mode != kAngle || turn % 90 != 0) return std::nullopt;
  constexpr std::int64_t kTurns[] = {kNoTurn, 2, 4, 3};
  return kTurns[turn / 90];
}

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
bool turn_alone(FrameWork& work, const Picture& turned, const Extent& canvas, bool fills, Colour around) {
  if (!turned) return false;
  const std::int64_t wider = std::int64_t{work.picture.width()} - turned.width(),
                     higher = std::int64_t{work.picture.height()} - turned.height();
  work.picture = turned;
  if (wider == 0 && higher == 0) return true;
  const std::int64_t x = work.offset.x + half_down(wider), y = work.offset.y - half_down(-higher);
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

Picture bent(const Picture& picture, const FieldValues& values) {
  const auto background = static_cast<Colour>(values.number("background"));
  if (values.number("mode") == kAngle)
    return rotated(picture, static_cast<int>(-values.number("angle")), background);
  return sheared(picture, static_cast<int>(values.number("shear")), values.number("mode") == kShearColumns,
                 background);
}

unsigned needs(const DocumentWindow& window, const FieldValues& values, const FrameList& frames) {
  if (lossless_mode(values)) return 0;
  const bool indexed = std::ranges::any_of(frame_entries(window), [&](std::size_t entry) {
    const Picture picture = picture_of(window.list.record(entry));
    return picture && picture.bits() <= 8;
  });
  return (indexed ? kAsksTrueColor : 0u) | (names_all(frames, window) ? kWholeCanvases : 0u);
}

double growth(const FieldValues& values, const DocumentWindow&) {
  return lossless_mode(values) ? 1 : values.number("mode") == kAngle ? 1.5 : 2.8;
}

/// Pictures of any angle: in true color, and back to the palette where that is wanted.
bool bend_frames(OperationRun& run, const Extent& canvas, bool whole, bool fills) {
  const auto palette = run.number("dither") != 0 ? shared_colors(run.draft) : std::nullopt;
  // Without transparency each frame becomes true color when it is its turn: then nobody holds all of them
  // twice.
  const bool flat = !has_transparency(run.draft);
  if (!flat && !convert_colors(run.draft, {.colorType = 6}, run.host)) return false;
  const auto bend = [&](FrameWork& work) {
    if (flat) work.picture = opaque_true_color(work.picture);
    if (!work.picture) return false;
    if (whole) {
      work.picture = bent(work.picture, run.values);
      work.offset = {};
      return static_cast<bool>(work.picture);
    }
    return turn_alone(work, bent(work.picture, run.values), canvas, fills && work.frame == 0,
                      work.picture.bits() == 32 ? 0 : static_cast<Colour>(run.number("background")));
  };
  if (!change_pictures(run.draft, run.frames, string_text(StringId::BuildingCaption), run.host, bend))
    return false;
  finish_edit(run.draft, false);
  if (flat && !convert_colors(run.draft, {.colorType = 2}, run.host)) return false;
  if (!palette) return true;
  ColorConversion back{.colorType = 3, .palette = {palette->palette, palette->colors}, .dither = true};
  return convert_colors(run.draft, back, run.host);
}

bool run(OperationRun& run) {
  const DocumentKind kind = run.draft.document.kind;
  const Extent canvas = document_size(run.draft.list, run.draft.document);
  const auto mode = lossless_mode(run.values);
  const bool whole = names_all(run.frames, run.draft);
  const bool fills = kind == DocumentKind::APNG && !run.draft.document.defaultImage;
  if (!mode) return bend_frames(run, canvas, whole, fills);
  if (*mode == kNoTurn) return true;
  const auto turn = [&](FrameWork& work) {
    if (whole) return turn_with_canvas(work, *mode, canvas);
    return turn_alone(work, oriented(work.picture, kOrientations[*mode]), canvas, fills && work.frame == 0,
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
            .help = "Mirrors, turns and shears",
            .command = 308,
            .kinds = kAnimatedKinds,
            .fields = kFields,
            .fit = fit,
        },
    .batch = 3,
    .batchPrefix = "FlipRotate_",
    .scoped = true,
    .preview = OperationPreview::Reduced,
    .needs = needs,
    .growth = growth,
    .run = run,
};

}  // namespace vellum
