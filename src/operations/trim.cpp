// Trim: edges of the canvas that show one color, or nothing, go; or as many pixels as are wanted.
#include <algorithm>

#include "core/edit/document_colors.h"
#include "operations/crop.h"
#include "operations/operation_rows.h"
#include "operations/reconstruct.h"
#include "operations/settings.h"

namespace vellum {
namespace {

enum TrimBy { kColor, kTransparency, kSize, kPercent };

constexpr FieldChoice kModes[] = {{kColor, "By color", "color"},
                                  {kTransparency, "By transparency", "transparency"},
                                  {kSize, "By size", "size"},
                                  {kPercent, "By percent", "percent"}};

constexpr Field flag(const char* name, const char* label, std::int64_t initial, int& setting) {
  return {.name = name,
          .label = label,
          .type = FieldType::Flag,
          .most = 1,
          .initial = initial,
          .setting = &setting};
}

constexpr Field in_mode(Field field, TrimBy mode) {
  field.enabledBy = "mode";
  field.enabledAt = mode;
  return field;
}

constexpr Field kFields[] = {
    {.name = "mode",
     .label = "Mode",
     .type = FieldType::Choice,
     .most = kPercent,
     .choices = kModes,
     .setting = &settings::TrimMode},
    in_mode({.name = "color",
             .label = "Color",
             .type = FieldType::Color,
             .most = 0xFFFFFF,
             .initial = 0xFFFFFF,
             .setting = &settings::TrimColor},
            kColor),
    {.name = "tolerance",
     .label = "Tolerance",
     .most = 255,
     .tip = "How far each channel, or the alpha, may be away",
     .setting = &settings::TrimTol},
    in_mode({.name = "pixels", .label = "Pixels", .most = 10000, .setting = &settings::TrimSize}, kSize),
    in_mode({.name = "percent", .label = "Per cent", .most = 49, .setting = &settings::TrimPercent},
            kPercent),
    flag("north", "Top", 1, settings::TrimNorth),
    flag("east", "Right", 1, settings::TrimEast),
    flag("south", "Bottom", 1, settings::TrimSouth),
    flag("west", "Left", 1, settings::TrimWest),
    flag("keepOffset", "Pixels stay where they are", 0, settings::TrimPreserveOffset),
    in_mode(flag("setBackground", "The background takes the color", 0, settings::TrimSetBackground), kColor),
};

constexpr const char *kColorField[] = {"color"}, *kModeField[] = {"mode"}, *kPixels[] = {"pixels"},
                     *kPercents[] = {"percent"}, *kSides[] = {"north", "east", "south", "west"};
constexpr CompoundOption kOptions[] = {
    {.name = "color",
     .form = "RRGGBB",
     .help = "Edges of this color go",
     .fields = kColorField,
     .alongside = "mode",
     .alongsideValue = kColor},
    {.name = "transparent",
     .form = nullptr,
     .help = "Edges that show nothing go",
     .fields = kModeField,
     .value = kTransparency},
    {.name = "size",
     .form = "N",
     .help = "So many pixels go from each side",
     .fields = kPixels,
     .alongside = "mode",
     .alongsideValue = kSize},
    {.name = "percent",
     .form = "P",
     .help = "So much of each side goes",
     .fields = kPercents,
     .alongside = "mode",
     .alongsideValue = kPercent},
    {.name = "sides",
     .form = "NESW",
     .help = "The sides that are trimmed",
     .fields = kSides,
     .letters = "NESW"},
};

/// What every canvas so far shows beside its edges: empty as long as there is nothing.
struct Content {
  std::int64_t left, top, right = 0, bottom = 0;

  void add(std::int64_t x, std::int64_t y) {
    left = std::min(left, x), top = std::min(top, y);
    right = std::max(right, x + 1), bottom = std::max(bottom, y + 1);
  }
};

struct Edge {
  TrimBy by;
  Colour color;
  int tolerance;

  bool takes(Colour pixel) const {
    if (by == kTransparency) return static_cast<int>(pixel >> 24) <= tolerance;
    for (unsigned shift = 0; shift < 24; shift += 8)
      if (std::abs(static_cast<int>(pixel >> shift & 255) - static_cast<int>(color >> shift & 255)) >
          tolerance)
        return false;
    // A pixel that can't be seen has no color.
    return pixel >> 24 == 255;
  }
};

/// Adds the pixels of a canvas that no edge takes. Rows are looked at from both ends, and not inside what is
/// known to be content.
void add_content(const Picture& canvas, const Edge& edge, Content& content) {
  const bool deep = canvas.bits() == 32;
  const std::int64_t width = canvas.width();
  for (std::int64_t y = 0; y < canvas.height(); ++y) {
    const std::uint8_t* row = canvas.row(static_cast<std::uint32_t>(y));
    const auto taken = [&](std::int64_t x) {
      const std::uint8_t* at = row + (deep ? 4 : 3) * x;
      return edge.takes(make_colour(at[2], at[1], at[0], deep ? at[3] : 255));
    };
    const bool inside = y >= content.top && y < content.bottom;
    const std::int64_t left_end = inside ? content.left : width, right_end = inside ? content.right : 0;
    std::int64_t x = 0;
    while (x < left_end && taken(x)) ++x;
    if (x < left_end) content.add(x, y);
    x = width;
    while (x > right_end && taken(x - 1)) --x;
    if (x > right_end) content.add(x - 1, y);
  }
}

bool find_content(OperationRun& run, const Edge& edge, Content& content) {
  // Its own transparency is asked for; a color is that of the canvas over the background.
  const CanvasDepth depth = edge.by == kTransparency ? CanvasDepth::TrueColorAlpha : CanvasDepth::AsNeeded;
  return for_each_canvas(run.draft, depth, run.host, [&](std::size_t, const Picture& canvas) {
    add_content(canvas, edge, content);
    return true;
  });
}

unsigned needs(const DocumentWindow&, const FieldValues&, const FrameList&) { return kTrueColor; }

bool run(OperationRun& run) {
  const Extent canvas = document_size(run.draft.list, run.draft.document);
  const auto by = static_cast<TrimBy>(run.number("mode"));
  Content content{canvas.width, canvas.height};
  if (by == kColor || by == kTransparency) {
    const Edge edge{by, static_cast<Colour>(run.number("color")), static_cast<int>(run.number("tolerance"))};
    if (!find_content(run, edge, content)) return false;
  } else {
    const auto off = [&](std::int64_t side) {
      return by == kSize ? run.number("pixels") : side * run.number("percent") / 100;
    };
    content = {off(canvas.width), off(canvas.height), canvas.width - off(canvas.width),
               canvas.height - off(canvas.height)};
  }
  const CanvasCut cut{run.number("west") != 0 ? content.left : 0, run.number("north") != 0 ? content.top : 0,
                      run.number("east") != 0 ? content.right : canvas.width,
                      run.number("south") != 0 ? content.bottom : canvas.height};
  if (cut.left >= cut.right || cut.top >= cut.bottom) return run.refuse(StringId::NothingWouldBeLeft);
  if (by == kColor && run.number("setBackground") != 0)
    put_document_background(run.draft, static_cast<Colour>(run.number("color")));
  if (cut.left == 0 && cut.top == 0 && cut.right == canvas.width && cut.bottom == canvas.height) {
    run.host.set_status(string_text(StringId::NothingToTrim));
    return true;
  }
  return crop_frames(run.draft, cut, run.number("keepOffset") != 0, run.host);
}

}  // namespace

constinit const Operation kTrim{
    .parameters =
        {
            .name = "trim",
            .title = "Trim",
            .help = "Edges that show one color, or nothing, go",
            .command = 325,
            .kinds = kAnimatedKinds,
            .fields = kFields,
            .options = kOptions,
        },
    .result = OperationResult::NewWindow,
    .prefix = StringId::TrimmedPrefix,
    .batch = 11,
    .batchPrefix = "Trim_",
    .needs = needs,
    .run = run,
};

}  // namespace vellum
