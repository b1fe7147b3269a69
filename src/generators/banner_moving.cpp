// The types of banners whose text comes in and rests: embossed, simple, soft, texture; and glow, which may.
#include <cmath>

#include "generators/banner_text.h"
#include "generators/random15.h"
#include "generators/textures.h"
#include "image/lay.h"

namespace vellum {
namespace {

/// Draws at the place where a movement has the text.
BannerDrawing moving(const BannerText& text, const BannerValues& values,
                     std::function<void(Picture& picture, std::int64_t x, std::int64_t y)> draw) {
  const BannerMovement movement(text, values);
  return {text.canvas(), movement.count(),
          [movement, y = text.margin, draw = std::move(draw)](Picture& picture, std::size_t frame) {
            draw(picture, movement.left(frame), y);
          },
          [movement](std::size_t frame) { return movement.delay_of(frame); }};
}

Mask with_room(const Mask& mask, std::uint32_t room) {
  Mask result(mask.width + 2 * room, mask.height + 2 * room);
  for (std::uint32_t y = 0; y < mask.height; ++y)
    std::copy_n(mask.row(y), mask.width, result.row(room + y) + room);
  return result;
}

/// The mask blurred, and what it reaches beyond itself at each side.
struct BlurredMask {
  Mask mask;
  std::uint32_t reach;

  BlurredMask(const Mask& sharp, std::uint32_t radius) : reach(3 * radius) {
    mask = with_room(sharp, reach);
    blur_mask(mask, radius);
  }
};

// ---------------------------------------------------------------------------------------------------------
// glow

enum GlowType { kSteadyGlow, kPulseGlow, kFlickerGlow, kLetterGlow };
constexpr std::uint32_t kFlickerSeed = 1;

/// Thin letters, which a blur nearly dissolves, glow as bright as thick ones.
void brighten(Mask& glow) {
  const std::uint8_t most = *std::ranges::max_element(glow.values);
  if (most == 0) return;
  for (std::uint8_t& value : glow.values) value = static_cast<std::uint8_t>((value * 255 + most / 2) / most);
}

void add_light(Picture& picture, std::int64_t x, std::int64_t y, const Mask& glow, Colour color,
               double brightness) {
  const EditRows rows(picture);
  const std::uint8_t light[] = {blue_of(color), green_of(color), red_of(color)};
  const auto part = static_cast<std::uint32_t>(std::lround(brightness * 256));
  const auto left = std::max<std::int64_t>(x, 0),
             right = std::min<std::int64_t>(x + glow.width, picture.width()),
             top = std::max<std::int64_t>(y, 0),
             bottom = std::min<std::int64_t>(y + glow.height, picture.height());
  for (std::int64_t row = top; rows && row < bottom; ++row) {
    const std::uint8_t* in = glow.row(static_cast<std::uint32_t>(row - y));
    std::uint8_t* out = rows[static_cast<std::size_t>(row)];
    for (std::int64_t i = left; i < right; ++i)
      for (int c = 0; c < 3; ++c) {
        const std::uint32_t added = light[c] * in[i - x] / 255 * part / 256;
        out[3 * i + c] = static_cast<std::uint8_t>(std::min(255u, out[3 * i + c] + added));
      }
  }
}

/// The brightness of each frame of a cycle, 0 to 1.
std::vector<double> levels_of(std::int64_t type, std::int64_t steps) {
  std::vector<double> levels;
  if (type == kPulseGlow)
    for (std::int64_t i = 0; i < 2 * steps; ++i)
      levels.push_back(static_cast<double>(std::min(i, 2 * steps - i)) / static_cast<double>(steps));
  if (type == kFlickerGlow) {
    Random15 random(kFlickerSeed);
    for (std::int64_t i = 0; i < steps; ++i) levels.push_back(random.next() / 32767.0);
    const double most = *std::ranges::max_element(levels);
    for (double& level : levels) level = most > 0 ? level / most : 1;
  }
  return levels;
}

/// A cycle as a table of what each frame is: how bright, and how many letters are lit.
struct GlowShow {
  BannerText text;
  Mask mask;  ///< of all letters
  std::uint32_t radius;
  Colour color, tube;
  std::vector<double> levels;  ///< of a cycle; without it all is bright
  bool byLetter = false;
  std::size_t letters = 0;
  std::shared_ptr<const BlurredMask> all = {};  ///< of all letters

  void draw(Picture& picture, std::size_t frame, std::int64_t x, std::int64_t y, std::size_t lit) const {
    const double level = levels.empty() ? 1 : levels[frame % levels.size()];
    if (lit >= letters) {
      const auto reach = static_cast<std::int64_t>(all->reach);
      add_light(picture, x - reach, y - reach, all->mask, tube, level);
      lay_mask(picture, x, y, mask, mixed(tube, color, level));
      return;
    }
    lay_mask(picture, x, y, mask, mixed(0, tube, 0.5));  // tubes that are off
    const DrawnText some = draw_text(text.text, text.style, lit);
    BlurredMask glow(some.mask, radius);
    brighten(glow.mask);
    const auto reach = static_cast<std::int64_t>(glow.reach);
    add_light(picture, x - reach, y - reach, glow.mask, tube, 1);
    lay_mask(picture, x, y, some.mask, color);
  }
};

}  // namespace

BannerDrawing embossed_banner(const BannerText& text, const BannerValues& values) {
  const std::int64_t offset = values.number("offset");
  return moving(
      text, values,
      [mask = text.drawn.mask, offset, face = values.color("backColor"), shadow = values.color("shadowColor"),
       light = static_cast<Colour>(values.values.number("highlightColor")),
       dark = values.values.number("useShadow") != 0,
       bright = values.values.number("useHighlight") != 0](Picture& picture, std::int64_t x, std::int64_t y) {
        if (dark) lay_mask(picture, x + offset, y + offset, mask, shadow);
        if (bright) lay_mask(picture, x - offset, y - offset, mask, light);
        // The face has the color of the ground: on nothing it is nothing.
        if (picture.bits() == 32)
          erase_mask(picture, x, y, mask);
        else
          lay_mask(picture, x, y, mask, face);
      });
}

BannerDrawing simple_banner(const BannerText& text, const BannerValues& values) {
  const std::int64_t offset = values.number("offset");
  return moving(text, values,
                [mask = text.drawn.mask, offset, color = values.color("textColor"),
                 shadow = values.color("shadowColor"),
                 drops = values.flag("dropshadow")](Picture& picture, std::int64_t x, std::int64_t y) {
                  if (drops) lay_mask(picture, x + offset, y + offset, mask, shadow);
                  lay_mask(picture, x, y, mask, color);
                });
}

BannerDrawing soft_banner(const BannerText& text, const BannerValues& values) {
  const std::uint32_t radius =
      values.pixels("offset") + static_cast<std::uint32_t>(values.values.number("extra"));
  const auto soft = std::make_shared<const BlurredMask>(text.drawn.mask, radius);
  const std::int64_t away = values.number("offset") - std::int64_t{soft->reach};
  return moving(text, values,
                [mask = text.drawn.mask, soft, away, color = values.color("textColor"),
                 shadow = values.color("shadowColor")](Picture& picture, std::int64_t x, std::int64_t y) {
                  lay_mask(picture, x + away, y + away, soft->mask, shadow);
                  lay_mask(picture, x, y, mask, color);
                });
}

BannerDrawing texture_banner(const BannerText& text, const BannerValues& values) {
  const Mask& mask = text.drawn.mask;
  const Picture texture = texture_picture(static_cast<std::size_t>(values.values.number("texture")));
  const Picture filled = painted_mask(mask, [&](std::uint32_t x, std::uint32_t y) {
    return PictureGetPixel(texture, x % texture.width(), y % texture.height());
  });
  const bool outlined = values.values.number("outline") != 0;
  const Mask edge = outlined ? grown_mask(mask, 1) : Mask();
  return moving(
      text, values,
      [edge, filled, shape = outlined ? edge : mask, outlined, offset = values.number("offset"),
       line = static_cast<Colour>(values.values.number("outlineColor")), shadow = values.color("shadowColor"),
       drops = values.flag("dropshadow")](Picture& picture, std::int64_t x, std::int64_t y) {
        const int grown = outlined ? 1 : 0;
        if (drops) lay_mask(picture, x + offset - grown, y + offset - grown, shape, shadow);
        if (outlined) lay_mask(picture, x - 1, y - 1, edge, line);
        lay_picture(picture, x, y, filled);
      });
}

BannerDrawing glow_banner(const BannerText& text, const BannerValues& values) {
  const std::int64_t type = values.values.number("glow");
  GlowShow show{.text = text,
                .mask = text.drawn.mask,
                .radius = values.pixels("offset"),
                .color = values.color("textColor"),
                .tube = static_cast<Colour>(values.values.number("tubeColor")),
                .levels = levels_of(type, values.values.number("steps")),
                .byLetter = type == kLetterGlow,
                .letters = count_characters(text.text)};
  const BannerMovement movement(text, values);
  auto glow = std::make_shared<BlurredMask>(show.mask, show.radius);
  brighten(glow->mask);
  show.all = glow;
  if (type == kSteadyGlow || movement.rolling) {
    // The letters of one that rolls are lit while it comes in.
    const auto draw = [show, movement](Picture& picture, std::size_t frame) {
      const auto cells = static_cast<std::size_t>(movement.cells);
      const std::size_t lit =
          show.byLetter ? show.letters * std::min(frame + 1, cells) / cells : show.letters;
      const bool rests = frame + 1 == cells;
      const std::size_t brightest =
          static_cast<std::size_t>(std::ranges::max_element(show.levels) - show.levels.begin());
      show.draw(picture, rests ? brightest : frame, movement.left(frame), show.text.margin, lit);
    };
    return {text.canvas(), movement.count(), draw,
            [movement](std::size_t frame) { return movement.delay_of(frame); }};
  }
  const std::size_t count = show.byLetter ? show.letters : show.levels.size();
  const std::size_t rest =
      show.byLetter ? count - 1
                    : static_cast<std::size_t>(std::ranges::max_element(show.levels) - show.levels.begin());
  return {text.canvas(), count,
          [show, left = text.margin](Picture& picture, std::size_t frame) {
            show.draw(picture, frame, left, show.text.margin, show.byLetter ? frame + 1 : show.letters);
          },
          [movement, rest](std::size_t frame) {
            return static_cast<std::uint32_t>(frame == rest ? movement.pause : movement.delay);
          }};
}

}  // namespace vellum
