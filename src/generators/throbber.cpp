// Throbbers: what turns while people wait.
#include <cmath>
#include <numbers>

#include "generators/drawn_frames.h"
#include "generators/generator_rows.h"
#include "generators/mixed_colors.h"
#include "generators/settings.h"
#include "image/drawing_library.h"
#include "image/lay.h"
#include "image/picture_operations.h"
#include "image/shapes.h"
#include "operations/field_rows.h"

namespace vellum {
namespace {

enum ThrobberType { kSpokes, kArc, kDots, kPulsar, kStrings };
constexpr FieldChoice kTypes[] = {
    {kSpokes, "Spokes"}, {kArc, "Arc"}, {kDots, "Dots"}, {kPulsar, "Pulsar"}, {kStrings, "Strings"}};

constexpr const char* kType = "type";
constexpr std::int64_t kKeptStrings = 12;

constexpr Field kFields[] = {
    {.name = kType,
     .label = "Type",
     .type = FieldType::Choice,
     .choices = kTypes,
     .setting = &settings::SpinnerType},
    whole_field("size", "Size", 8, 512, 64, &settings::SpinnerSize),
    whole_field("margin", "Margin", 0, 100, 4, &settings::SpinnerMargin),
    whole_field("delay", "Delay", 1, 32767, 80, &settings::SpinnerDelay),
    whole_field("startAngle", "First angle", 0, 359, 0, &settings::SpinnerStartAngle),
    whole_field("incAngle", "Degrees a frame", 1, 180, 30, &settings::SpinnerIncAngle),
    whole_field("lineThick", "Thickness", 1, 64, 5, &settings::SpinnerLineThick),
    // Spokes and Dots have a number of them.
    whole_field("spokes", "Spokes or dots", 3, 60, 12, &settings::SpinnerSpokes),
    only_for(whole_field("arcSize", "Degrees of the arc", 10, 350, 270, &settings::SpinnerArcSize), kType,
             kArc),
    only_for(whole_field("pulsarArcsize", "Degrees of an arc", 5, 180, 60, &settings::SpinnerPulsarArcsize),
             kType, kPulsar),
    only_for(
        whole_field("pulsarArcrange", "Swing of the radius", 0, 100, 40, &settings::SpinnerPulsarArcrange),
        kType, kPulsar),
    only_for(
        whole_field("stringsIncPri", "Step of the first end", 1, 180, 15, &settings::SpinnerStringsIncPri),
        kType, kStrings),
    only_for(whole_field("stringsSizePri", "Circle of the first end", 5, 100, 100,
                         &settings::SpinnerStringsSizePri),
             kType, kStrings),
    only_for(flag_field("stringsEnableSec", "Second circle", 1, &settings::SpinnerStringsEnableSec), kType,
             kStrings),
    enabled_by(
        whole_field("stringsIncSec", "Step of the second end", 1, 180, 30, &settings::SpinnerStringsIncSec),
        "stringsEnableSec"),
    enabled_by(whole_field("stringsSizeSec", "Circle of the second end", 5, 100, 50,
                           &settings::SpinnerStringsSizeSec),
               "stringsEnableSec"),
    on_page(color_field("startColor", "First color", 0, &settings::SpinnerStartColor), "Colors"),
    on_page(flag_field("backColorEnd", "Fades into the background", 1, &settings::SpinnerBackColorEnd),
            "Colors"),
    on_page(enabled_by(color_field("endColor", "Last color", 0xC0C0C0, &settings::SpinnerEndColor),
                       "backColorEnd", 0),
            "Colors"),
    on_page(flag_field("transparent", "Transparent background", 1, &settings::SpinnerTransparent), "Colors"),
    on_page(enabled_by(color_field("background", "Background", 0xFFFFFF, &settings::SpinnerBackground),
                       "transparent", 0),
            "Colors"),
};

/// What a figure is drawn with. Angles are radians, clockwise from the top; `share` is 0 at the first color
/// and 1 at the last.
struct Figure {
  const FieldValues& values;
  cairo_t* cairo;
  double center, radius, thick, turn;

  double number(const char* name) const { return static_cast<double>(values.number(name)); }
  double angle(const char* name) const { return number(name) * std::numbers::pi / 180; }
  double x(double at, double away) const { return center + std::sin(turn + at) * away; }
  double y(double at, double away) const { return center - std::cos(turn + at) * away; }
  void use(double share) const {
    const bool fades = values.number("backColorEnd") != 0, clear = values.number("transparent") != 0;
    const auto color = [&](const char* name) { return static_cast<Colour>(values.number(name)); };
    if (fades && clear)
      use_color(cairo, color("startColor"), 1 - share);
    else
      use_color(cairo, mixed(color("startColor"), color(fades ? "background" : "endColor"), share));
  }
  void line(double from_x, double from_y, double to_x, double to_y) const {
    cairo_move_to(cairo, from_x, from_y);
    cairo_line_to(cairo, to_x, to_y);
    cairo_stroke(cairo);
  }
  /// An arc of the circle, clockwise.
  void arc(double from, double to, double away) const {
    const double quarter = std::numbers::pi / 2;
    cairo_new_sub_path(cairo);
    cairo_arc(cairo, center, center, away, turn + from - quarter, turn + to - quarter);
    cairo_stroke(cairo);
  }
};

/// Places on the circle from the leading one backward; the last of them is nearly at the last color.
template <class Draw>
void around(const Figure& figure, const Draw& draw) {
  const auto count = static_cast<int>(figure.number("spokes"));
  for (int j = count - 1; j >= 0; --j) {
    figure.use(static_cast<double>(j) / count);
    draw(-2 * std::numbers::pi * j / count);
  }
}

void spokes(const Figure& figure) {
  const double half = figure.thick / 2, outer = figure.radius - half,
               inner = std::min(figure.radius * 0.48, outer);
  cairo_set_line_cap(figure.cairo, CAIRO_LINE_CAP_ROUND);
  around(figure, [&](double at) {
    figure.line(figure.x(at, inner), figure.y(at, inner), figure.x(at, outer), figure.y(at, outer));
  });
}

void dots(const Figure& figure) {
  const double half = figure.thick / 2, away = figure.radius - half;
  around(figure, [&](double at) {
    cairo_arc(figure.cairo, figure.x(at, away), figure.y(at, away), half, 0, 2 * std::numbers::pi);
    cairo_fill(figure.cairo);
  });
}

/// In pieces of a degree and a half. Each reaches below the next one, so that no seam shows: that is why a
/// piece that lets something through is drawn without what the one before it covers.
void arc(const Figure& figure) {
  const double size = figure.angle("arcSize"), away = figure.radius - figure.thick / 2;
  const auto pieces = std::max(1, static_cast<int>(figure.number("arcSize") / 1.5));
  cairo_set_operator(figure.cairo, CAIRO_OPERATOR_SOURCE);
  cairo_set_antialias(figure.cairo, CAIRO_ANTIALIAS_NONE);
  for (int j = pieces - 1; j >= 0; --j) {
    figure.use(static_cast<double>(j) / pieces);
    cairo_set_line_cap(figure.cairo, j == 0 ? CAIRO_LINE_CAP_ROUND : CAIRO_LINE_CAP_BUTT);
    figure.arc(-size * (j + 1) / pieces, -size * j / pieces, away);
  }
}

/// Arcs side by side, whose radius goes once up and down on the way around.
void pulsar(const Figure& figure) {
  const double size = figure.angle("pulsarArcsize"), most = figure.radius - figure.thick / 2;
  const auto count = std::max(1, static_cast<int>(2 * std::numbers::pi / (size * 1.2)));
  cairo_set_line_cap(figure.cairo, CAIRO_LINE_CAP_ROUND);
  for (int j = count - 1; j >= 0; --j) {
    const double at = -2 * std::numbers::pi * j / count;
    const double swing = figure.number("pulsarArcrange") / 100 * (1 - std::cos(at)) / 2;
    figure.use(static_cast<double>(j) / count);
    figure.arc(at - size / 2, at + size / 2, std::max(most * (1 - swing), 0.01));
  }
}

/// Chords between two points that go around in their own steps; without the second circle between each place
/// of the first and the next one.
void strings(const Figure& figure) {
  const bool second = figure.values.number("stringsEnableSec") != 0;
  const double thick = std::max(1.0, figure.thick / 3), most = figure.radius - thick / 2;
  const double first_step = figure.angle("stringsIncPri"), second_step = figure.angle("stringsIncSec"),
               outer = most * figure.number("stringsSizePri") / 100,
               inner = second ? most * figure.number("stringsSizeSec") / 100 : outer;
  cairo_set_line_width(figure.cairo, thick);
  cairo_set_line_cap(figure.cairo, CAIRO_LINE_CAP_ROUND);
  for (int j = kKeptStrings - 1; j >= 0; --j) {
    figure.use(static_cast<double>(j) / kKeptStrings);
    const double from = -first_step * j, to = second ? std::numbers::pi - second_step * j : from - first_step;
    figure.line(figure.x(from, outer), figure.y(from, outer), figure.x(to, inner), figure.y(to, inner));
  }
}

constexpr void (*kFigures[])(const Figure& figure) = {spokes, arc, dots, pulsar, strings};

std::optional<FrameStream> make(const FieldValues& values, const GeneratorInputs& inputs, Host& host) {
  const std::int64_t size = values.number("size"), margin = values.number("margin");
  const auto side = static_cast<std::uint32_t>(size + 2 * margin);
  const auto count = static_cast<std::size_t>(
      std::max(2L, std::lround(360.0 / static_cast<double>(values.number("incAngle")))));
  const bool clear = values.number("transparent") != 0;
  const auto picture = [values, size, side, count, clear](std::size_t frame) {
    const double step = 2 * std::numbers::pi * static_cast<double>(frame) / static_cast<double>(count);
    const Picture drawn = drawn_shapes(side, side, [&](cairo_t* cairo) {
      const double radius = static_cast<double>(size) / 2;
      const double thick = std::min(static_cast<double>(values.number("lineThick")), radius);
      cairo_set_line_width(cairo, thick);
      const double start = static_cast<double>(values.number("startAngle")) * std::numbers::pi / 180;
      kFigures[values.number(kType)]({values, cairo, side / 2.0, radius, thick, start + step});
    });
    if (clear || !drawn) return drawn;
    Picture ground = PictureCreateFilled(side, side, static_cast<Colour>(values.number("background")));
    return lay_picture(ground, 0, 0, drawn) ? ground : Picture();
  };
  const auto delay = static_cast<std::uint32_t>(values.number("delay"));
  return stream_of({{side, side}, count, clear, picture, [delay](std::size_t) { return delay; }}, inputs.kind,
                   host);
}

}  // namespace

constinit const Generator kThrobber{
    .parameters =
        {
            .name = "throbber",
            .title = "Throbbers",
            .help = "A figure that turns while people wait",
            .command = 272,
            .fields = kFields,
        },
    .document = "Throbber",
    .failure = StringId::AllocationError,
    .make = make,
};

}  // namespace vellum
