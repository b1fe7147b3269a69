// Shapes drawn by Cairo, each pixel the mean of 4 x 4 samples or of as many as somebody says.
#pragma once

#include <functional>

#include "image/picture.h"

using cairo_t = struct _cairo;  // NOLINT(bugprone-reserved-identifier): the library's name of it

namespace vellum {

/// What `draw` paints on nothing, 32 bits with straight alpha. Its coordinates are pixels; paths are filled
/// and stroked without a screen's hints. A null picture when memory is exhausted, or beyond 32000
/// samples in either direction. `samples`: of a pixel, in either direction.
Picture drawn_shapes(std::uint32_t width, std::uint32_t height, const std::function<void(cairo_t*)>& draw,
                     std::uint32_t samples = 4);

/// Sets the source of a drawing: a color and how much of it, 0 to 1.
void use_color(cairo_t* cairo, Colour color, double opacity = 1);

}  // namespace vellum
