// Overlay and underlay: the pictures of another file over or under those of the animation.
#include <algorithm>

#include "base/limits.h"
#include "base/parallel.h"
#include "core/edit/edit_closing.h"
#include "core/model/whole_canvases.h"
#include "image/fine_canvas.h"
#include "image/lay.h"
#include "image/resample.h"
#include "operations/change_pictures.h"
#include "operations/convert_colors.h"
#include "operations/field_rows.h"
#include "operations/frame_range.h"
#include "operations/operation_rows.h"
#include "operations/places.h"
#include "operations/recoloring.h"
#include "operations/reconstruct.h"
#include "operations/second_file.h"
#include "playback/compositor.h"

namespace vellum {
namespace {

constexpr FieldChoice kCanvases[] = {{0, "Canvas of the animation", "animation"},
                                     {1, "Canvas of the underlay", "underlay"}};

constexpr Field kFields[] = {
    kept(file_field("with", "File"), 1),
    kept(place_field(kCenterPlace), 2),
    kept(distance_field("offsetX", "To the right"), 3),
    kept(distance_field("offsetY", "Down"), 4),
    whole_field("scale", "Scale (per cent)", 1, 1000, 100, nullptr, 5),
    whole_field("opacity", "Opacity", 0, 100, 100, nullptr, 6),
    first_frame_field(),
    last_frame_field(),
    {.name = "repeat",
     .label = "Repeat it",
     .type = FieldType::Flag,
     .most = 1,
     .tip = "Its frames begin anew; otherwise the last one stays",
     .initial = 1,
     .stateId = 7},
    {.name = "canvas",
     .label = "Size",
     .type = FieldType::Choice,
     .most = 1,
     .choices = kCanvases,
     .stateId = 8},
};
constexpr std::span kOverlayFields(kFields, std::size(kFields) - 1);

constexpr const char* kOffset[] = {"offsetX", "offsetY"};
constexpr CompoundOption kOptions[] = {
    {.name = "offset", .form = "DX,DY", .help = "How far from its place, in pixels", .fields = kOffset}};

std::optional<FieldFault> check(const FieldValues& values, const DocumentWindow& window) {
  if (auto fault = check_file(values, "with")) return fault;
  return check_frame_range(values, window);
}

unsigned needs(const DocumentWindow&, const FieldValues&, const FrameList&) {
  return kWholeCanvases | kTrueColor;
}

/// The other file's pictures in their size here.
std::vector<Picture> scaled_pictures(const FilePictures& file, std::int64_t percent) {
  std::vector<Picture> scaled = file.canvases;
  if (percent != 100)
    parallel_for(scaled.size(), [&](std::size_t i) {
      const auto share = static_cast<double>(percent);
      scaled[i] = PictureScalePercent(scaled[i], share, share, ResampleFilter::Automatic);
    });
  return scaled;
}

/// How two pictures of a frame come together.
struct Joining {
  bool under;
  Extent canvas;  ///< of the result
  std::int64_t at, x, y;
  std::uint32_t opacity;

  std::int64_t left(const Picture& part) const { return place_in(at % 3, canvas.width, part.width(), 0) + x; }
  std::int64_t top(const Picture& part) const {
    return place_in(at / 3, canvas.height, part.height(), 0) + y;
  }

  /// `other`: null for none.
  Picture join(const Picture& frame, const Picture& other, bool own_canvas) const {
    if (!under) {
      Picture result = frame;
      return !other || lay_picture(result, left(other), top(other), other, opacity) ? result : Picture();
    }
    Picture result = PictureCreateAlpha(canvas.width, canvas.height);
    if (!result) return {};
    const bool laid = !other || (own_canvas ? lay_picture(result, left(other), top(other), other, opacity)
                                            : lay_picture(result, 0, 0, other, opacity));
    const bool framed =
        own_canvas ? lay_picture(result, 0, 0, frame) : lay_picture(result, left(frame), top(frame), frame);
    return laid && framed ? result : Picture();
  }
};

bool takes_other_canvas(const FieldValues& values) { return values.number("canvas") == 1; }

Joining joining_of(const FieldValues& values, bool under, const Extent& own, const Picture& other) {
  const bool theirs = under && takes_other_canvas(values);
  return {under,
          theirs ? Extent{other.width(), other.height()} : own,
          values.number("at"),
          values.number("offsetX"),
          values.number("offsetY"),
          static_cast<std::uint32_t>(values.number("opacity"))};
}

/// Which of the other file's pictures a frame gets; nothing behind the last.
std::size_t picture_for(std::size_t index, std::size_t count, const FieldValues& values) {
  return values.number("repeat") != 0 ? index % count : std::min(index, count - 1);
}

bool join_frames(OperationRun& run, bool under) {
  const auto file = pictures_of_file(run.values.text("with"), run.host);
  run.told = !file;
  if (!file || !free_color_key(run.draft, run.host)) return false;
  const std::vector<Picture> others = scaled_pictures(*file, run.number("scale"));
  if (std::ranges::any_of(others, [](const Picture& picture) { return !picture; }))
    return run.refuse(StringId::ResultTooLarge);
  const Extent own = document_size(run.draft.list, run.draft.document);
  const Joining joining = joining_of(run.values, under, own, others.front());
  if (!canvas_fits(joining.canvas, run.draft.document.kind)) return run.refuse(StringId::ResultTooLarge);
  const FrameList frames = frames_in_range(run.values, run.frames);
  const bool own_canvas = !takes_other_canvas(run.values) || !under;
  const auto change = [&](FrameWork& work) {
    const std::size_t frame = work.frame == kDefaultImageWork ? 0 : work.frame;
    const auto at = std::ranges::lower_bound(frames, frame);
    const bool gets = at != frames.end() && *at == frame;
    const std::size_t index = static_cast<std::size_t>(at - frames.begin());
    work.picture = joining.join(
        work.picture, gets ? others[picture_for(index, others.size(), run.values)] : Picture(), own_canvas);
    return static_cast<bool>(work.picture);
  };
  // Under another canvas all frames come to lie, also those that get nothing.
  const FrameList changed = under ? all_frames(frame_entries(run.draft).size()) : frames;
  if (!change_pictures(run.draft, changed, string_text(StringId::BuildingCaption), run.host, change))
    return false;
  finish_edit(run.draft, false);
  if (!under) return true;
  return convert_colors(
      run.draft, {.colorType = has_transparency(run.draft) ? std::uint8_t{6} : std::uint8_t{2}}, run.host);
}

Picture preview_joined(Compositor& playing, std::uint32_t frame, const FieldValues& values, bool transparent,
                       bool under) {
  playing.set_ground({under && transparent ? Ground::Kind::Clear : Ground::Kind::Document});
  Picture canvas = playing.frame(frame).picture;
  if (canvas && canvas.bits() == 32) canvas = straight_picture({canvas, {}});
  const auto file = canvas ? kept_pictures_of_file(values.text("with")) : nullptr;
  if (!file) return canvas;
  const FrameList frames = frames_in_range(values, all_frames(playing.frames()));
  const auto at = std::ranges::find(frames, std::size_t{frame});
  const bool gets = at != frames.end();
  const std::size_t index = static_cast<std::size_t>(at - frames.begin());
  Picture other = file->canvases[gets ? picture_for(index, file->canvases.size(), values) : 0];
  const auto percent = static_cast<double>(values.number("scale"));
  if (percent != 100) other = PictureScalePercent(other, percent, percent, ResampleFilter::Automatic);
  if (!other) return canvas;
  const Joining joining = joining_of(values, under, {canvas.width(), canvas.height()}, other);
  return joining.join(canvas, gets ? other : Picture(), !under || !takes_other_canvas(values));
}

bool run_overlay(OperationRun& run) { return join_frames(run, false); }
bool run_underlay(OperationRun& run) { return join_frames(run, true); }

Picture preview_overlay(Compositor& playing, std::uint32_t frame, const FieldValues& values, bool clear) {
  return preview_joined(playing, frame, values, clear, false);
}
Picture preview_underlay(Compositor& playing, std::uint32_t frame, const FieldValues& values, bool clear) {
  return preview_joined(playing, frame, values, clear, true);
}

}  // namespace

constinit const Operation kOverlay{
    .parameters =
        {
            .name = "overlay",
            .title = "Overlay",
            .help = "The pictures of another file over those of the animation",
            .command = 317,
            .kinds = kAnimatedKinds,
            .stateFile = "OverlayState.txt",
            .fields = kOverlayFields,
            .options = kOptions,
            .fit = fit_frame_range,
            .check = check,
        },
    .result = OperationResult::NewWindow,
    .prefix = StringId::OverlaidPrefix,
    .scoped = true,
    .preview = OperationPreview::Full,
    .needs = needs,
    .previewShown = preview_overlay,
    .run = run_overlay,
};

constinit const Operation kUnderlay{
    .parameters =
        {
            .name = "underlay",
            .title = "Underlay",
            .help = "The pictures of another file under those of the animation",
            .command = 318,
            .kinds = kAnimatedKinds,
            .page = "overlay",
            .stateFile = "UnderlayState.txt",
            .fields = kFields,
            .options = kOptions,
            .fit = fit_frame_range,
            .check = check,
        },
    .result = OperationResult::NewWindow,
    .prefix = StringId::UnderlaidPrefix,
    .scoped = true,
    .preview = OperationPreview::Full,
    .needs = needs,
    .previewShown = preview_underlay,
    .run = run_underlay,
};

}  // namespace vellum
