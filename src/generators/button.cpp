// Button: a raised plate with a text, as a still or with its states.
#include <cmath>

#include "base/translation.h"
#include "generators/generator_rows.h"
#include "generators/mixed_colors.h"
#include "generators/settings.h"
#include "generators/text_fields.h"
#include "image/lay.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

constexpr const char* kPlate = "Plate";
constexpr std::size_t kNormal = 0, kOver = 1, kPressed = 2, kStates = 3;
constexpr double kOverLighter = 0.1;
constexpr std::uint32_t kShadowPercent = 50;
constexpr Colour kWhite = 0xFFFFFF, kBlack = 0;

constexpr Field kFields[] = {
    sign_text_field(&settings::ButtonTheText, "Button"),
    font_field("font", &settings::ButtonFont),
    whole_field("pointsize", "Size", 6, 200, 16, &settings::ButtonPointsize),
    flag_field("bold", "Bold", 1, &settings::ButtonBold),
    flag_field("italic", "Italic", 0, &settings::ButtonItalic),
    flag_field("antialias", "Smooth edges", 1, &settings::ButtonAntialias),
    color_field("textColor", "Color of the text", 0, &settings::ButtonTextcolour),
    flag_field("highlight", "Edges of the text", 1, &settings::ButtonHighlight),
    enabled_by(whole_field("textHighFactor", "Lighter by %", 0, 100, 50, &settings::ButtonTextHighFactor),
               "highlight"),
    enabled_by(whole_field("textShadowFactor", "Darker by %", 0, 100, 50, &settings::ButtonTextShadowFactor),
               "highlight"),
    {.name = "states",
     .label = "Normal, over and pressed",
     .type = FieldType::Flag,
     .most = 1,
     .tip = "An animation of three frames in place of a still",
     .stateId = 1},
    enabled_by(whole_field("delay", "Delay", 1, 32767, 500, nullptr, 2), "states"),
    on_page(color_field("materialColor", "Material", 0xC0C0C0, &settings::ButtonMaterialcolour), kPlate),
    on_page(whole_field("padding", "Padding", 0, 200, 12, &settings::ButtonPadding), kPlate),
    on_page(whole_field("roundness", "Roundness in %", 0, 100, 30, &settings::ButtonRoundness), kPlate),
    on_page(whole_field("depth", "Depth of the edge", 0, 50, 4, &settings::ButtonDepth), kPlate),
    on_page(whole_field("brightFactor", "Edge lighter by %", 0, 100, 40, &settings::ButtonBrightFactor),
            kPlate),
    on_page(whole_field("darkFactor", "Edge darker by %", 0, 100, 40, &settings::ButtonDarkFactor), kPlate),
    on_page(flag_field("dropshadow", "Drop shadow", 0, &settings::ButtonDropshadow), kPlate),
    on_page(enabled_by(whole_field("offset", "Offset of the shadow", 0, 32, 3, &settings::ButtonOffset),
                       "dropshadow"),
            kPlate),
    on_page(flag_field("transparent", "Transparent background", 1, &settings::ButtonTransparent), kPlate),
    on_page(enabled_by(color_field("backColor", "Background", 0xFFFFFF, &settings::ButtonBackcolour),
                       "transparent", 0),
            kPlate),
};

/// A rectangle with round corners.
struct Plate {
  double width, height, radius;

  /// How far inside of the edge a place is, and which way the edge looks there, to the right and down.
  struct Place {
    double depth, right, down;
  };
  Place at(double x, double y) const {
    const double from_x = x - width / 2, from_y = y - height / 2;
    const double across = std::abs(from_x) - (width / 2 - radius),
                 along = std::abs(from_y) - (height / 2 - radius);
    const double side_x = from_x < 0 ? -1 : 1, side_y = from_y < 0 ? -1 : 1;
    if (across > 0 && along > 0) {
      const double length = std::hypot(across, along);
      return {radius - length, side_x * across / length, side_y * along / length};
    }
    if (across > along) return {radius - across, side_x, 0};
    return {radius - along, 0, side_y};
  }
};

/// The share of a pixel that is inside, by 4 x 4 samples where the edge is near.
std::uint8_t coverage(const Plate& plate, std::uint32_t x, std::uint32_t y) {
  constexpr int kSamples = 4;
  const double depth = plate.at(x + 0.5, y + 0.5).depth;
  if (std::abs(depth) > 1) return depth > 0 ? 255 : 0;
  int inside = 0;
  for (int i = 0; i < kSamples; ++i)
    for (int j = 0; j < kSamples; ++j)
      inside += plate.at(x + (i + 0.5) / kSamples, y + (j + 0.5) / kSamples).depth > 0;
  return static_cast<std::uint8_t>((inside * 255 + 8) / (kSamples * kSamples));
}

struct ButtonLook {
  const FieldValues& values;

  double share(const char* name) const { return static_cast<double>(values.number(name)) / 100; }
  Colour color(const char* name) const { return static_cast<Colour>(values.number(name)); }
  Colour material(std::size_t state) const {
    return state == kOver ? mixed(color("materialColor"), kWhite, kOverLighter) : color("materialColor");
  }
  /// Light comes from the upper left; it falls on the edges from full at the rim to nothing at the face.
  Colour plate_color(std::size_t state, const Plate::Place& place) const {
    const double depth = static_cast<double>(values.number("depth"));
    if (place.depth >= depth) return material(state);
    const double falls = 1 - std::max(place.depth, 0.0) / depth;
    double light = std::clamp(-(place.right + place.down), -1.0, 1.0) * falls;
    if (state == kPressed) light = -light;
    return light > 0 ? mixed(material(state), kWhite, light * share("brightFactor"))
                     : mixed(material(state), kBlack, -light * share("darkFactor"));
  }
};

Mask plate_mask(const Plate& plate, Extent size) {
  Mask mask(size.width, size.height);
  for_each_row(size.height, std::size_t{size.width} * 40, [&](std::uint32_t y) {
    for (std::uint32_t x = 0; x < size.width; ++x) mask.row(y)[x] = coverage(plate, x, y);
  });
  return mask;
}

Picture plate_picture(const Plate& plate, const Mask& mask, const ButtonLook& look, std::size_t state) {
  Picture picture = PictureCreate(mask.width, mask.height, nullptr, 32);
  const EditRows rows(picture);
  if (!rows) return {};
  for_each_row(mask.height, std::size_t{mask.width} * 40, [&](std::uint32_t y) {
    for (std::uint32_t x = 0; x < mask.width; ++x) {
      if (mask.row(y)[x] == 0) continue;
      const Colour color = look.plate_color(state, plate.at(x + 0.5, y + 0.5));
      std::uint8_t* out = rows[y] + 4 * std::size_t{x};
      out[0] = blue_of(color), out[1] = green_of(color), out[2] = red_of(color), out[3] = mask.row(y)[x];
    }
  });
  return picture;
}

/// A shadow that is as soft as it is far away.
struct ButtonShadow {
  Mask mask;
  std::int64_t left = 0;   ///< of the mask, from that of the plate
  std::uint32_t room = 0;  ///< that it takes right of and below the plate

  ButtonShadow(const Mask& plate, const FieldValues& values) {
    if (values.number("dropshadow") == 0) return;
    const auto offset = static_cast<std::uint32_t>(values.number("offset"));
    const std::uint32_t radius = offset / 3, reach = 3 * radius;
    room = offset + reach;
    left = std::int64_t{offset} - reach;
    mask = Mask(plate.width + 2 * reach, plate.height + 2 * reach);
    for (std::uint32_t y = 0; y < plate.height; ++y)
      std::copy_n(plate.row(y), plate.width, mask.row(reach + y) + reach);
    blur_mask(mask, radius);
  }
};

void put_text(Picture& picture, const Mask& text, std::int64_t at, const ButtonLook& look,
              std::size_t state) {
  const std::int64_t place = at + (state == kPressed ? 1 : 0);
  if (look.values.number("highlight") != 0) {
    lay_mask(picture, place - 1, place - 1, text,
             mixed(look.material(state), kWhite, look.share("textHighFactor")));
    lay_mask(picture, place + 1, place + 1, text,
             mixed(look.material(state), kBlack, look.share("textShadowFactor")));
  }
  lay_mask(picture, place, place, text, look.color("textColor"));
}

std::optional<FieldFault> check(const FieldValues& values, const DocumentWindow&) {
  return check_sign_text(values, "button");
}

TextStyle style_of(const FieldValues& values) {
  TextStyle style{.family = values.text("font"), .points = static_cast<double>(values.number("pointsize"))};
  style.bold = values.number("bold") != 0;
  style.italic = values.number("italic") != 0;
  style.smooth = values.number("antialias") != 0;
  return style;
}

std::optional<FrameStream> make(const FieldValues& values, const GeneratorInputs& inputs, Host& host) {
  const Mask text = draw_sign_text(values.text("text"), style_of(values), host).mask;
  if (text.values.empty()) return std::nullopt;
  const std::int64_t padding = values.number("padding");
  const auto both = static_cast<std::uint32_t>(2 * padding);
  const Extent body{text.width + both, text.height + both};
  if (!can_be_held(body, 8, 32)) {
    host.fail({FaultKind::Limit, 0, -1, -1, translated("the button would be too large")});
    return std::nullopt;
  }
  const double radius =
      std::min(body.width, body.height) / 2.0 * static_cast<double>(values.number("roundness")) / 100;
  const Plate plate{static_cast<double>(body.width), static_cast<double>(body.height), radius};
  const auto mask = std::make_shared<const Mask>(plate_mask(plate, body));
  const auto shadow = std::make_shared<const ButtonShadow>(*mask, values);
  const Extent canvas{body.width + shadow->room, body.height + shadow->room};
  const bool clear = values.number("transparent") != 0;
  const auto picture = [=](std::size_t state) {
    const ButtonLook look{values};
    Picture made = clear ? PictureCreateAlpha(canvas.width, canvas.height)
                         : PictureCreateFilled(canvas.width, canvas.height, look.color("backColor"));
    const Picture plated = plate_picture(plate, *mask, look, state);
    if (!made || !plated) return Picture();
    lay_mask(made, shadow->left, shadow->left, shadow->mask, kBlack, kShadowPercent);
    lay_picture(made, 0, 0, plated);
    put_text(made, text, padding, look, state);
    return made;
  };
  return stream_of(
      {canvas, values.number("states") != 0 ? kStates : kNormal + 1, clear, picture,
       [delay = static_cast<std::uint32_t>(values.number("delay"))](std::size_t) { return delay; }},
      inputs.kind, host);
}

bool still(const FieldValues& values) { return values.number("states") == 0; }

}  // namespace

constinit const Generator kButton{
    .parameters =
        {
            .name = "button",
            .title = "Button",
            .help = "A raised plate with a text, as a still or with its states",
            .command = 257,
            .stateFile = "ButtonState.txt",
            .texts = "EditButtonHistory.txt",
            .fields = kFields,
            .fit = offer_sign_fonts,
            .check = check,
        },
    .document = "Button",
    .still = still,
    .failure = StringId::TextNotDrawn,
    .make = make,
};

}  // namespace vellum
