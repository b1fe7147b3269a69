// The types of banners whose text stays where it is: scanners, teletype, wave.
#include <cmath>
#include <numbers>

#include "generators/banner_text.h"
#include "image/lay.h"

namespace vellum {
namespace {

/// What a text is drawn with beside its own color.
struct DropShadow {
  bool drops;
  std::int64_t offset;
  Colour color;

  explicit DropShadow(const BannerValues& values)
      : drops(values.flag("dropshadow")),
        offset(values.number("offset")),
        color(values.color("shadowColor")) {}
  void lay(Picture& picture, std::int64_t x, std::int64_t y, const Mask& mask) const {
    if (drops) lay_mask(picture, x + offset, y + offset, mask, color);
  }
};

// ---------------------------------------------------------------------------------------------------------
// scanners

struct Beam {
  std::int64_t wide;
  Colour scan, scatter, text;
  bool leading;  ///< light is scattered behind it alone

  /// The color of the text at `away` pixels right of the middle of the beam.
  Colour at(double away) const {
    const double distance = std::abs(away), width = static_cast<double>(wide);
    if (distance <= width / 2) return scan;
    if (distance >= 2 * width || (leading && away > 0)) return text;
    return mixed(scatter, text, (distance - width / 2) / (1.5 * width));
  }
};

// ---------------------------------------------------------------------------------------------------------
// teletype

/// Where the cursor stands behind each number of letters, from the left of the ink. In a text that runs from
/// right to left that is on the left of them.
std::vector<std::int64_t> cursor_places(const BannerText& text, std::uint32_t width) {
  const auto places = character_places(text.text, text.style);
  const bool leftward = places.size() > 1 && places.back().right <= places.front().left;
  std::vector<std::int64_t> cursors(1, leftward ? std::int64_t{text.ink().width} - width : 0);
  for (const CharacterPlace& place : places) {
    const std::int64_t left = std::lround(place.left) - text.drawn.left,
                       right = std::lround(place.right) - text.drawn.left;
    cursors.push_back(leftward ? std::min(cursors.back(), left - width) : std::max(cursors.back(), right));
  }
  cursors.resize(count_characters(text.text) + 1, cursors.back());
  return cursors;
}

// ---------------------------------------------------------------------------------------------------------
// wave

struct Wave {
  double turns;  ///< over the text
  std::uint32_t width;

  double at(std::uint32_t column, double share) const {
    return std::sin(2 * std::numbers::pi * (turns * column / width + share));
  }
};

}  // namespace

BannerDrawing scanners_banner(const BannerText& text, const BannerValues& values) {
  const Beam beam{values.values.number("wide"), static_cast<Colour>(values.values.number("scanColor")),
                  static_cast<Colour>(values.values.number("scatterColor")), values.color("textColor"),
                  values.values.number("leadingEdge") != 0};
  const std::int64_t frames = values.number("cells"), delay = values.number("delay");
  const auto draw = [mask = text.drawn.mask, beam, frames, at = text.margin, shadow = DropShadow(values),
                     width = text.canvas().width](Picture& picture, std::size_t frame) {
    shadow.lay(picture, at, at, mask);
    if (static_cast<std::int64_t>(frame) + 1 == frames) {
      lay_mask(picture, at, at, mask, beam.text);
      return;
    }
    const double middle = static_cast<double>(-beam.wide) + (width + 2.0 * static_cast<double>(beam.wide)) *
                                                                static_cast<double>(frame) /
                                                                static_cast<double>(frames - 1);
    std::vector<Colour> colors(mask.width);
    for (std::uint32_t x = 0; x < mask.width; ++x)
      colors[x] = beam.at(static_cast<double>(at) + x + 0.5 - middle);
    lay_picture(picture, at, at,
                painted_mask(mask, [&](std::uint32_t x, std::uint32_t) { return colors[x]; }));
  };
  return {text.canvas(), static_cast<std::size_t>(frames), draw,
          [frames, delay, rest = rest_delay(values)](std::size_t frame) {
            return static_cast<std::int64_t>(frame) + 1 == frames ? rest : static_cast<std::uint32_t>(delay);
          }};
}

BannerDrawing teletype_banner(const BannerText& text, const BannerValues& values) {
  const std::size_t letters = count_characters(text.text);
  // The cursor is as wide as an "n", and as high as the ink.
  const auto n = character_places("n", text.style);
  const auto cursor_width =
      static_cast<std::uint32_t>(std::max(1L, n.empty() ? 1L : std::lround(n[0].right)));
  const std::vector<std::int64_t> cursors = cursor_places(text, cursor_width);
  const auto draw = [text, cursors, cursor_width, letters, color = values.color("textColor"),
                     shadow = DropShadow(values)](Picture& picture, std::size_t frame) {
    const Mask mask = frame >= letters ? text.drawn.mask : draw_text(text.text, text.style, frame).mask;
    shadow.lay(picture, text.margin, text.margin, mask);
    lay_mask(picture, text.margin, text.margin, mask, color);
    if (frame >= letters) return;
    Mask cursor(cursor_width, text.drawn.mask.height);
    std::ranges::fill(cursor.values, std::uint8_t{255});
    lay_mask(picture, text.margin + cursors[frame], text.margin, cursor, color);
  };
  return {text.canvas(), letters + 1, draw,
          [letters, delay = values.number("delay"), rest = rest_delay(values)](std::size_t frame) {
            return frame == letters ? rest : static_cast<std::uint32_t>(delay);
          }};
}

BannerDrawing wave_banner(const BannerText& text, const BannerValues& values) {
  const Mask& ink = text.drawn.mask;
  const Wave wave{static_cast<double>(values.values.number("frequency")), ink.width};
  const double height = ink.height / 4.0;
  const auto room = static_cast<std::int64_t>(std::ceil(height));
  Extent canvas = text.canvas();
  canvas.height += ink.height / 2;
  const std::int64_t frames = values.number("cells"), top = text.margin + ink.height / 4 - room;
  const auto draw = [ink, wave, height, room, frames, left = text.margin, top, shadow = DropShadow(values),
                     crest = static_cast<Colour>(values.values.number("crestColor")),
                     trough = static_cast<Colour>(values.values.number("troughColor"))](Picture& picture,
                                                                                        std::size_t frame) {
    const double share = static_cast<double>(frame) / static_cast<double>(frames);
    Mask moved(ink.width, ink.height + 2 * static_cast<std::uint32_t>(room));
    std::vector<Colour> colors(ink.width);
    for (std::uint32_t x = 0; x < ink.width; ++x) {
      const double up = wave.at(x, share);
      const auto down = static_cast<std::uint32_t>(room - std::lround(height * up));
      for (std::uint32_t y = 0; y < ink.height; ++y) moved.row(y + down)[x] = ink.row(y)[x];
      colors[x] = mixed(trough, crest, (1 + up) / 2);
    }
    shadow.lay(picture, left, top, moved);
    lay_picture(picture, left, top,
                painted_mask(moved, [&](std::uint32_t x, std::uint32_t) { return colors[x]; }));
  };
  return {canvas, static_cast<std::size_t>(frames), draw,
          [delay = values.number("delay")](std::size_t) { return static_cast<std::uint32_t>(delay); }};
}

}  // namespace vellum
