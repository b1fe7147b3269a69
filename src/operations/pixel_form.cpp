#include "operations/pixel_form.h"

#include <algorithm>
#include <tuple>

#include "base/byte_order.h"

namespace vellum {
namespace {

std::uint32_t luminance(Pixel pixel) {
  return (pixel >> 16 & 255) * 77 + (pixel >> 8 & 255) * 150 + (pixel & 255) * 28;
}

/// A palette in the order of its light, those with alpha in front: tRNS ends with them.
PixelForm palette_form(const PixelStock& stock, bool holes) {
  std::vector<Pixel> pixels;
  for (const auto& [pixel, _] : stock.few) pixels.push_back(pixel);
  if (holes && !stock.clear) pixels.push_back(0);
  std::ranges::sort(pixels, [](Pixel a, Pixel b) {
    return std::tuple(alpha_of_pixel(a) == 255, luminance(a), a) <
           std::tuple(alpha_of_pixel(b) == 255, luminance(b), b);
  });
  PixelForm form{.colors = {.colorType = 3}, .bits = pixels.size() > 16 ? 8u : pixels.size() > 2 ? 4u : 1u};
  for (std::uint32_t i = 0; i < pixels.size(); ++i) {
    for (unsigned c = 0; c < 3; ++c)
      form.colors.palette[3 * i + c] = static_cast<std::uint8_t>(pixels[i] >> (16 - 8 * c));
    if (alpha_of_pixel(pixels[i]) != 255)
      form.colors.transparency.push_back(static_cast<std::uint8_t>(alpha_of_pixel(pixels[i])));
    form.indexes.emplace(pixels[i], i);
  }
  form.colors.bitDepth = static_cast<std::uint8_t>(pixels.size() > 2 && pixels.size() <= 4 ? 2 : form.bits);
  form.colors.colors = static_cast<std::uint32_t>(pixels.size());
  form.holes = holes;
  return form;
}

}  // namespace

PixelForm smallest_form(const PixelStock& stock, bool animated) {
  const bool fits = stock.few.size() <= 256;
  const bool room = stock.clear || stock.few.size() < 256;
  if (fits) return palette_form(stock, stock.clear || (animated && room));
  const auto unused = std::ranges::find(stock.used, false);
  if (stock.partial || ((stock.clear || animated) && unused == stock.used.end()))
    return {.colors = {.colorType = stock.grey ? std::uint8_t{4} : std::uint8_t{6}}};
  PixelForm form{.colors = {.colorType = 2}, .bits = 24, .holes = stock.clear || animated};
  if (!form.holes) return form;
  form.key = static_cast<Pixel>(unused - stock.used.begin());
  form.colors.transparency.resize(6);
  for (unsigned c = 0; c < 3; ++c)
    form.colors.transparency[2 * c + 1] = static_cast<std::uint8_t>(*form.key >> (16 - 8 * c));
  return form;
}

void PixelStock::add(const Picture& canvas) {
  Pixel last = 1;  // a clear pixel with a color: none is like it
  for (std::uint32_t y = 0; y < canvas.height() && !settled(); ++y) {
    const std::uint8_t* row = canvas.row(y);
    for (std::size_t x = 0, width = canvas.width(); x < width; ++x) {
      const Pixel pixel = read_le32(row + 4 * x);
      if (pixel == last) continue;
      last = pixel;
      const Pixel alpha = alpha_of_pixel(pixel);
      clear = clear || alpha == 0;
      grey = grey && (pixel & 255) == (pixel >> 8 & 255) && (pixel & 255) == (pixel >> 16 & 255);
      partial = partial || (alpha != 0 && alpha != 255);
      if (alpha == 255) used[pixel & 0xFFFFFF] = true;
      if (few.size() <= 256) few.try_emplace(pixel, 0);
    }
  }
}

}  // namespace vellum
