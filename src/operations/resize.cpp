// Resize: another canvas, and every frame scaled with it.
#include "base/limits.h"
#include "base/translation.h"
#include "core/model/kind_table.h"
#include "image/resample.h"
#include "operations/operation_rows.h"
#include "operations/resize_animation.h"
#include "operations/settings.h"

namespace vellum {
namespace {

constexpr std::int64_t kMostSide = kMaximumDimension;
constexpr double kLeastPercent = 0.01, kMostPercent = 1000;

constexpr FieldChoice kWays[] = {{1, "By factor"}, {0, "By size"}};
constexpr FieldChoice kAspects[] = {{1, "Constant"}, {0, "Anamorphic"}};
constexpr FieldChoice kFilters[] = {{0, "Automatic"}, {1, "Point"},     {2, "Box"},     {3, "Triangle"},
                                    {4, "Hermite"},   {5, "Hanning"},   {6, "Hamming"}, {7, "Blackman"},
                                    {8, "Gaussian"},  {9, "Quadratic"}, {10, "Cubic"},  {11, "Catrom"},
                                    {12, "Mitchell"}, {13, "Lanczos"},  {14, "Bessel"}, {15, "Sinc"}};

constexpr Field percent(const char* name, const char* label, int& setting) {
  return {.name = name,
          .label = label,
          .type = FieldType::Real,
          .leastReal = kLeastPercent,
          .mostReal = kMostPercent,
          .decimals = 2,
          .enabledBy = "way",
          .enabledAt = 1,
          .initialReal = 100,
          .setting = &setting};
}

constexpr Field side(const char* name, const char* label, std::int64_t initial, int& setting) {
  return {.name = name,
          .label = label,
          .least = 1,
          .most = kMostSide,
          .enabledBy = "way",
          .enabledAt = 0,
          .initial = initial,
          .setting = &setting};
}

constexpr Field kFields[] = {
    {.name = "way",
     .label = "Size",
     .type = FieldType::Choice,
     .choices = kWays,
     .look = FieldLook::Radio,
     .initial = 1,
     .setting = &settings::ScaleByFactor},
    percent("factorX", "Width in %", settings::ScaleFactorX),
    percent("factorY", "Height in %", settings::ScaleFactorY),
    side("width", "Width in pixels", 160, settings::ScaleWidth),
    side("height", "Height in pixels", 100, settings::ScaleDepth),
    {.name = "constant",
     .label = "Aspect",
     .type = FieldType::Choice,
     .choices = kAspects,
     .look = FieldLook::Radio,
     .initial = 1,
     .setting = &settings::ScaleConstant},
    {.name = "antialias",
     .label = "Anti-alias",
     .type = FieldType::Flag,
     .initial = 1,
     .setting = &settings::ScaleModeAntialias},
    {.name = "filter",
     .label = "Filter",
     .type = FieldType::Choice,
     .choices = kFilters,
     .enabledBy = "antialias",
     .tip = "Automatic is Mitchell or, made smaller, Lanczos",
     .setting = &settings::ScaleFilterType},
    {.name = "blur",
     .label = "Blur",
     .type = FieldType::Real,
     .leastReal = 0.01,
     .mostReal = 100,
     .decimals = 2,
     .enabledBy = "antialias",
     .tip = "Above 1 blurs, below 1 sharpens",
     .initialReal = 1,
     .stateId = 1},
    {.name = "keepPalette",
     .label = "Keep the palette",
     .type = FieldType::Flag,
     .enabledBy = "antialias",
     .tip = "Images with a palette keep it: each pixel takes the nearest color",
     .stateId = 2},
};

constexpr const char* kSides[] = {"width", "height"};
constexpr const char* kFactors[] = {"factorX", "factorY"};
constexpr CompoundOption kOptions[] = {
    {.name = "size",
     .form = "WxH",
     .help = "The new size in pixels",
     .fields = kSides,
     .parting = 'x',
     .alongside = "way",
     .alongsideValue = 0},
    {.name = "percent",
     .form = "P[,Q]",
     .help = "Per cent of the width and, where it differs, of the height",
     .fields = kFactors,
     .lastServesRest = true,
     .alongside = "way",
     .alongsideValue = 1},
};

void fit(std::vector<Field>& fields, const DocumentWindow& window) {
  const Extent canvas = document_size(window.list, window.document);
  for (Field& field : fields) {
    if (field.setting != &settings::ScaleWidth && field.setting != &settings::ScaleDepth) continue;
    field.most = std::min(field.most, kind_row(window.document.kind).mostPixels);
    const std::int64_t now = field.setting == &settings::ScaleWidth ? canvas.width : canvas.height;
    field.initial = std::clamp(now, field.least, field.most);
  }
}

/// One side alone brings the other along.
const char* settle(FieldValues& values, const DocumentWindow& window, const GivenFields& given) {
  const Extent canvas = document_size(window.list, window.document);
  const bool width = given.contains("width"), height = given.contains("height");
  const bool factor = given.contains("factorX") || given.contains("factorY");
  if (factor == (width || height))
    return translated("give one of --size, --percent, or --width and --height");
  const auto whole = [&](const char* name) { return static_cast<std::uint32_t>(values.number(name)); };
  if (width && !height)
    values.set("height", std::int64_t{proportional_side(whole("width"), canvas.width, canvas.height)});
  if (height && !width)
    values.set("width", std::int64_t{proportional_side(whole("height"), canvas.height, canvas.width)});
  if (given.contains("factorX") && !given.contains("factorY")) values.set("factorY", values.real("factorX"));
  return nullptr;
}

unsigned needs(const DocumentWindow& window, const FieldValues& values, const FrameList&) {
  return resizing_needs_true_color(window, resize_of(values, window)) ? unsigned{kAsksTrueColor} : 0;
}

double growth(const FieldValues& values, const DocumentWindow& window) {
  const Extent canvas = document_size(window.list, window.document);
  const ResizeAnimation wanted = resize_of(values, window);
  return std::max(1.0 * wanted.width / std::max(canvas.width, 1u),
                  1.0 * wanted.height / std::max(canvas.height, 1u));
}

Picture preview_frame(const Picture& frame, const FieldValues& values, const DocumentWindow& window) {
  const Extent canvas = document_size(window.list, window.document);
  const ResizeAnimation wanted = resize_of(values, window);
  if (canvas.width == 0 || canvas.height == 0) return {};
  return PictureScalePercent(frame, 100.0 * wanted.width / canvas.width,
                             100.0 * wanted.height / canvas.height, wanted.filter);
}

bool run(OperationRun& run) {
  return resize_animation(run.draft, resize_of(run.values, run.draft), run.host);
}

constexpr DocumentKind kKinds[] = {DocumentKind::MING, DocumentKind::APNG, DocumentKind::WEBP,
                                   DocumentKind::PING};

}  // namespace

ResizeAnimation resize_of(const FieldValues& values, const DocumentWindow& window) {
  const Extent canvas = document_size(window.list, window.document);
  ResizeAnimation wanted;
  if (values.number("way") != 0) {
    wanted.width = scaled_side(canvas.width, values.real("factorX"));
    wanted.height = scaled_side(canvas.height, values.real("factorY"));
  } else {
    wanted.width = static_cast<std::uint32_t>(values.number("width"));
    wanted.height = static_cast<std::uint32_t>(values.number("height"));
  }
  wanted.filter = values.number("antialias") == 0
                      ? ResampleFilter::Point
                      : resample_filter_of(static_cast<int>(values.number("filter")));
  wanted.blur = values.number("antialias") == 0 ? 1 : values.real("blur");
  wanted.keepPalette = values.number("keepPalette") != 0;
  return wanted;
}

constinit const Operation kResize{
    .parameters =
        {
            .name = "resize",
            .title = "Resize",
            .help = "Another size for a still or for each frame",
            .command = 310,
            .kinds = kKinds,
            .stateFile = "ResizeState.txt",
            .fields = kFields,
            .options = kOptions,
            .fit = fit,
            .settle = settle,
        },
    .result = OperationResult::NewWindow,
    .prefix = StringId::ResizedPrefix,
    .failure = StringId::NotResized,
    .batch = 6,
    .batchPrefix = "Resize_",
    .preview = OperationPreview::Reduced,
    .needs = needs,
    .growth = growth,
    .previewFrame = preview_frame,
    .run = run,
};

}  // namespace vellum
