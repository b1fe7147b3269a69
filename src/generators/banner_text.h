// What the types of banners share: the text as a mask, their values, and how it comes in and leaves.
#pragma once

#include "generators/drawn_frames.h"
#include "generators/mixed_colors.h"
#include "image/picture_rows.h"
#include "image/text_mask.h"
#include "operations/parameters.h"

namespace vellum {

enum BannerType {
  kEmbossedBanner,
  kGlowBanner,
  kScannersBanner,
  kSimpleBanner,
  kSoftBanner,
  kTeletypeBanner,
  kTextureBanner,
  kWaveBanner
};

/// The values of one type: "delay" is "glowDelay".
struct BannerValues {
  const FieldValues& values;
  std::string type;

  std::int64_t number(std::string_view name) const;
  bool flag(std::string_view name) const { return number(name) != 0; }
  Colour color(std::string_view name) const { return static_cast<Colour>(number(name)); }
  std::uint32_t pixels(std::string_view name) const { return static_cast<std::uint32_t>(number(name)); }
};

/// The text of a banner, drawn.
struct BannerText {
  std::string text;
  TextStyle style;
  DrawnText drawn;
  std::int64_t margin = 0;  ///< around the ink, where it rests

  Extent ink() const { return {drawn.mask.width, drawn.mask.height}; }
  Extent canvas() const {
    const auto both = static_cast<std::uint32_t>(2 * margin);
    return {drawn.mask.width + both, drawn.mask.height + both};
  }
};

/// How a text comes in from the right, rests, and with Rolling leaves at the left.
struct BannerMovement {
  std::int64_t width, rest, text;  ///< of the canvas; left of the text at rest; its width
  std::int64_t cells, delay, pause;
  bool rolling;

  BannerMovement(const BannerText& text, const BannerValues& values);
  std::size_t count() const { return static_cast<std::size_t>(cells * (rolling ? 2 : 1)); }
  std::int64_t left(std::size_t frame) const;
  std::uint32_t delay_of(std::size_t frame) const;
};

/// The delay of a frame at rest.
std::uint32_t rest_delay(const BannerValues& values);

/// How one type draws on the ground of its background color, or on nothing.
struct BannerDrawing {
  Extent canvas;
  std::size_t count = 0;
  std::function<void(Picture& picture, std::size_t frame)> draw;
  std::function<std::uint32_t(std::size_t frame)> delay;
};

BannerDrawing embossed_banner(const BannerText& text, const BannerValues& values);
BannerDrawing glow_banner(const BannerText& text, const BannerValues& values);
BannerDrawing scanners_banner(const BannerText& text, const BannerValues& values);
BannerDrawing simple_banner(const BannerText& text, const BannerValues& values);
BannerDrawing soft_banner(const BannerText& text, const BannerValues& values);
BannerDrawing teletype_banner(const BannerText& text, const BannerValues& values);
BannerDrawing texture_banner(const BannerText& text, const BannerValues& values);
BannerDrawing wave_banner(const BannerText& text, const BannerValues& values);

/// A picture of 32 bits whose alpha is the mask, and whose colors are those that color(x, y) gives.
template <class Color>
Picture painted_mask(const Mask& mask, const Color& color) {
  Picture picture = PictureCreate(mask.width, mask.height, nullptr, 32);
  const EditRows rows(picture);
  for (std::uint32_t y = 0; rows && y < mask.height; ++y)
    for (std::uint32_t x = 0; x < mask.width; ++x) {
      const std::uint8_t alpha = mask.row(y)[x];
      if (alpha == 0) continue;
      const Colour value = color(x, y);
      std::uint8_t* out = rows[y] + 4 * std::size_t{x};
      out[0] = blue_of(value), out[1] = green_of(value), out[2] = red_of(value), out[3] = alpha;
    }
  return picture;
}

}  // namespace vellum
