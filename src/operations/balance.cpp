// Color and balance: more or less of each color, brightness, contrast.
#include <algorithm>

#include "core/edit/edit_closing.h"
#include "operations/change_pictures.h"
#include "operations/operation_rows.h"
#include "operations/recoloring.h"
#include "operations/settings.h"

namespace vellum {
namespace {

constexpr Field percent(const char* name, const char* label, int& setting) {
  return {.name = name, .label = label, .least = -100, .most = 100, .setting = &setting};
}

constexpr Field kFields[] = {
    percent("red", "Red", settings::ColorBalRed),
    percent("green", "Green", settings::ColorBalGreen),
    percent("blue", "Blue", settings::ColorBalBlue),
    percent("brightness", "Brightness", settings::ColorBalBrightness),
    percent("contrast", "Contrast", settings::ColorBalContrast),
};

/// Each term is truncated toward 0, and only the result is held to its range.
Curve curve_of(std::int64_t color, std::int64_t brightness, std::int64_t contrast) {
  Curve curve{};
  for (std::int64_t v = 0; v < 256; ++v) {
    const std::int64_t moved = v + color * 255 / 100 + brightness * 255 / 100;
    curve[static_cast<std::size_t>(v)] = static_cast<std::uint8_t>(
        std::clamp<std::int64_t>((moved - 128) * (100 + contrast) / 100 + 128, 0, 255));
  }
  return curve;
}

struct Curves {
  Curve blue, green, red;
};

/// Three bytes of an entry of a color table, blue first.
void change_color(std::uint8_t* color, const Curves& curves) {
  color[0] = curves.blue[color[0]];
  color[1] = curves.green[color[1]];
  color[2] = curves.red[color[2]];
}

bool change_picture(Picture& picture, const Curves& curves) {
  picture = picture.bits() <= 8
                ? with_changed_colors(picture, [&](std::uint8_t* color) { change_color(color, curves); })
                : with_curves(picture, {&curves.blue, &curves.green, &curves.red, nullptr});
  return static_cast<bool>(picture);
}

unsigned needs(const DocumentWindow& window, const FieldValues&, const FrameList& frames) {
  return needs_of_recoloring(window, frames);
}

bool run(OperationRun& run) {
  if (std::ranges::all_of(kFields, [&](const Field& field) { return run.number(field.name) == 0; }))
    return true;
  if (!free_color_key(run.draft, run.host)) return false;
  const auto curve = [&](const char* color) {
    return curve_of(run.number(color), run.number("brightness"), run.number("contrast"));
  };
  const Curves curves{curve("blue"), curve("green"), curve("red")};
  const bool changed =
      change_pictures(run.draft, run.frames, string_text(StringId::BuildingCaption), run.host,
                      [&](FrameWork& work) { return change_picture(work.picture, curves); });
  if (!changed) return false;
  follow_palettes(run.draft);
  finish_edit(run.draft, false);
  return true;
}

}  // namespace

constinit const Operation kBalance{
    .parameters =
        {
            .name = "balance",
            .title = "Color and balance",
            .help = "More or less of each color, brightness and contrast, in per cent",
            .command = 311,
            .kinds = kAnimatedKinds,
            .history = "EditBalanceHistory.txt",
            .fields = kFields,
        },
    .batch = 1,
    .batchPrefix = "ColorBalance_",
    .scoped = true,
    .preview = OperationPreview::Reduced,
    .needs = needs,
    .run = run,
};

}  // namespace vellum
