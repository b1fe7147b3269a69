// The kernels that pictures are resampled with, and the weights that they give on one axis.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace vellum {

/// In the order in which filters are offered.
enum class ResampleFilter : std::uint32_t {
  Automatic,
  Point,
  Box,
  Triangle,
  Hermite,
  Hanning,
  Hamming,
  Blackman,
  Gaussian,
  Quadratic,
  Cubic,
  Catrom,
  Mitchell,
  Lanczos,
  Bessel,
  Sinc,
};

struct ResampleFilterRow {
  const char* name;
  double support;              ///< the kernel is 0 beyond; in pixels of the source when it is not reduced
  double (*kernel)(double x);  ///< of x within the support
};

/// One row a filter, in the order of the enumeration.
std::span<const ResampleFilterRow> resample_filter_table();
/// The row of a number; numbers out of range are held to the first or last filter.
ResampleFilter resample_filter_of(int index);

/// What each target position of an axis is made from: the source positions `first` to `first + count - 1`
/// with weights whose sum is 1: those whose middles lie within the support, both ends included, of which the
/// box leaves the upper one to its neighbour. At the edges of the source the list is cut and its weights are
/// normalised.
struct ResampleAxis {
  struct Position {
    std::uint32_t first = 0, count = 0;
    std::size_t weights = 0;  ///< index of the first one
  };
  std::vector<Position> positions;
  std::vector<double> weights;

  std::span<const double> weights_of(const Position& position) const {
    return std::span(weights).subspan(position.weights, position.count);
  }
};

/// `blur` stretches the kernel: above 1 blurs, below 1 sharpens. A support below half a pixel takes the
/// nearest source position alone. Only the target positions from `begin` to in front of `end` are made.
ResampleAxis resample_axis(std::uint32_t source, std::uint32_t target, ResampleFilter filter, double blur,
                           std::uint32_t begin = 0, std::uint32_t end = UINT32_MAX);

}  // namespace vellum
