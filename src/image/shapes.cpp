#include "image/shapes.h"

#include <cstring>

#include "image/drawing_library.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

constexpr std::uint32_t kMostSamples = 32000;  // in a row; Cairo ends at 32767

/// The mean of the samples of a pixel, whose colors are multiplied by alpha, as straight alpha.
void put_mean(std::uint8_t* out, const std::uint8_t* from, std::size_t stride, std::uint32_t samples) {
  std::uint32_t sums[4] = {};
  for (std::uint32_t y = 0; y < samples; ++y)
    for (std::uint32_t x = 0; x < samples; ++x) {
      std::uint32_t value = 0;  // Cairo's pixels are words
      std::memcpy(&value, from + y * stride + 4 * std::size_t{x}, 4);
      for (unsigned c = 0; c < 4; ++c) sums[c] += value >> 8 * c & 255;
    }
  const std::uint32_t count = samples * samples;
  const std::uint32_t alpha = (sums[3] + count / 2) / count;
  for (unsigned c = 0; c < 3 && alpha != 0; ++c)
    out[c] = static_cast<std::uint8_t>(std::min(255u, (sums[c] * 255 + sums[3] / 2) / sums[3]));
  out[3] = static_cast<std::uint8_t>(alpha);
}

}  // namespace

Picture drawn_shapes(std::uint32_t width, std::uint32_t height, const std::function<void(cairo_t*)>& draw,
                     std::uint32_t samples) {
  if (std::max(width, height) > kMostSamples / samples) return {};
  Picture picture = PictureCreate(width, height, nullptr, 32);
  const EditRows rows(picture);
  if (!rows) return {};
  cairo_surface_t* surface = cairo_image_surface_create(
      CAIRO_FORMAT_ARGB32, static_cast<int>(width * samples), static_cast<int>(height * samples));
  cairo_t* cairo = cairo_create(surface);
  cairo_scale(cairo, samples, samples);
  draw(cairo);
  const bool drawn = cairo_status(cairo) == CAIRO_STATUS_SUCCESS;
  cairo_destroy(cairo);
  cairo_surface_flush(surface);
  if (drawn) {
    const std::uint8_t* data = cairo_image_surface_get_data(surface);
    const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(surface));
    for_each_row(height, std::size_t{samples} * samples * 4 * width, [&](std::uint32_t y) {
      for (std::uint32_t x = 0; x < width; ++x)
        put_mean(rows[y] + 4 * std::size_t{x},
                 data + std::size_t{y} * samples * stride + std::size_t{4} * samples * x, stride, samples);
    });
  }
  cairo_surface_destroy(surface);
  return drawn ? picture : Picture();
}

void use_color(cairo_t* cairo, Colour color, double opacity) {
  cairo_set_source_rgba(cairo, red_of(color) / 255.0, green_of(color) / 255.0, blue_of(color) / 255.0,
                        opacity);
}

}  // namespace vellum
