// Frame: a border around the animation.
#include <algorithm>

#include "base/limits.h"
#include "core/edit/edit_closing.h"
#include "core/model/kind_table.h"
#include "image/picture_operations.h"
#include "operations/change_pictures.h"
#include "operations/operation_rows.h"
#include "operations/settings.h"

namespace vellum {
namespace {

constexpr std::int64_t kMostSide = 16383;

constexpr Field kFields[] = {
    {.name = "thickness",
     .label = "Thickness",
     .least = 1,
     .most = 500,
     .enabledBy = "absolute",
     .enabledAt = 0,
     .initial = 8,
     .setting = &settings::FrameThickness},
    {.name = "color",
     .label = "Color",
     .type = FieldType::Color,
     .most = 0xFFFFFF,
     .setting = &settings::FrameColor},
    {.name = "absolute",
     .label = "To a size",
     .type = FieldType::Flag,
     .most = 1,
     .tip = "The animation stands in the middle of a canvas of this size",
     .setting = &settings::FrameAbsolute},
    {.name = "width",
     .label = "Width",
     .least = 1,
     .most = kMostSide,
     .enabledBy = "absolute",
     .initial = 320,
     .setting = &settings::FrameWidth},
    {.name = "height",
     .label = "Height",
     .least = 1,
     .most = kMostSide,
     .enabledBy = "absolute",
     .initial = 240,
     .setting = &settings::FrameDepth},
    {.name = "firstOnly",
     .label = "In the first frame only",
     .type = FieldType::Flag,
     .most = 1,
     .tip = "The other frames are moved and stay as small as they are",
     .setting = &settings::FrameFirstOnly},
};

constexpr const char* kSides[] = {"width", "height"};
constexpr CompoundOption kOptions[] = {{.name = "size",
                                        .form = "WxH",
                                        .help = "The size of the canvas, with the animation in its middle",
                                        .fields = kSides,
                                        .parting = 'x',
                                        .alongside = "absolute",
                                        .alongsideValue = 1}};

void fit(std::vector<Field>& fields, const DocumentWindow& window) {
  Field& first_only = fields.back();
  if (first_frame_stays(window)) return;
  first_only.locked = true;
  first_only.setting = nullptr;
  first_only.tip = "Later frames of this animation begin with an empty canvas";
}

struct Border {
  std::uint32_t width, height;
  std::int64_t x, y;  ///< of the animation on the canvas
  bool first_only;
  Colour color;
};

Border border_of(const FieldValues& values, const DocumentWindow& window) {
  const Extent canvas = document_size(window.list, window.document);
  std::int64_t width = values.number("width"), height = values.number("height");
  if (values.number("absolute") == 0) {
    width = canvas.width + 2 * values.number("thickness");
    height = canvas.height + 2 * values.number("thickness");
  }
  return {static_cast<std::uint32_t>(width),
          static_cast<std::uint32_t>(height),
          (width - canvas.width) / 2,
          (height - canvas.height) / 2,
          values.number("firstOnly") != 0 && first_frame_stays(window),
          static_cast<Colour>(values.number("color")) | 0xFF000000};
}

unsigned needs(const DocumentWindow& window, const FieldValues& values, const FrameList&) {
  const bool whole = !border_of(values, window).first_only;
  return kTrueColor | (whole ? kWholeCanvases : 0u);
}

std::optional<FieldFault> check(const FieldValues& values, const DocumentWindow& window) {
  const Border border = border_of(values, window);
  const Extent canvas = document_size(window.list, window.document);
  if (border.width < canvas.width || border.height < canvas.height)
    return fault_of("width", StringId::FrameIsSmaller);
  const std::int64_t most = kind_row(window.document.kind).mostPixels;
  if (border.width > most || border.height > most ||
      std::uint64_t{border.width} * border.height * 4 > kMaximumPictureBytes)
    return fault_of("thickness", StringId::ResultTooLarge);
  return std::nullopt;
}

bool put_in_frame(FrameWork& work, const Border& border, DocumentKind kind) {
  const std::int64_t x = work.offset.x + border.x, y = work.offset.y + border.y;
  if (border.first_only && work.frame != 0 && work.frame != kDefaultImageWork) {
    work.offset = {static_cast<std::int32_t>(x), static_cast<std::int32_t>(y)};
    return true;
  }
  work.picture = PictureExtendCanvas(work.picture, border.width, border.height, static_cast<std::int32_t>(x),
                                     static_cast<std::int32_t>(y), border.color);
  work.offset = {};
  if (border.first_only) set_frame_dispose(work.record, kind, 0);
  return static_cast<bool>(work.picture);
}

double growth(const FieldValues& values, const DocumentWindow& window) {
  const Border border = border_of(values, window);
  const Extent canvas = document_size(window.list, window.document);
  return std::max(static_cast<double>(border.width) / std::max(canvas.width, 1u),
                  static_cast<double>(border.height) / std::max(canvas.height, 1u));
}

bool run(OperationRun& run) {
  const Border border = border_of(run.values, run.draft);
  const DocumentKind kind = run.draft.document.kind;
  if (!change_pictures(run.draft, all_frames(frame_entries(run.draft).size()),
                       string_text(StringId::BuildingCaption), run.host,
                       [&](FrameWork& work) { return put_in_frame(work, border, kind); }))
    return false;
  finish_edit(run.draft, false);
  return true;
}

}  // namespace

constinit const Operation kFrame{
    .parameters =
        {
            .name = "frame",
            .title = "Frame",
            .help = "A border around the animation",
            .command = 324,
            .kinds = kAnimatedKinds,
            .fields = kFields,
            .options = kOptions,
            .fit = fit,
            .check = check,
        },
    .result = OperationResult::NewWindow,
    .prefix = StringId::FramedPrefix,
    .batch = 4,
    .batchPrefix = "Frame_",
    .preview = OperationPreview::Full,
    .needs = needs,
    .growth = growth,
    .run = run,
};

}  // namespace vellum
