#include "image/resample_filter.h"

#include <math.h>  // j1, which <cmath> does not name

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vellum {
namespace {

using std::numbers::pi;

constexpr double kLeastScale = 0.0001;
constexpr double kBesselSupport = 3.238300085067749;  // the third zero of J1(pi * x)
constexpr double kSincSupport = 4;

double sinc(double x) { return x == 0 ? 1 : std::sin(pi * x) / (pi * x); }
double blackman(double x) { return 0.42 + 0.5 * std::cos(pi * x) + 0.08 * std::cos(2 * pi * x); }

double box(double x) { return x >= -0.5 && x < 0.5 ? 1 : 0; }
double triangle(double x) { return 1 - std::abs(x); }
double hermite(double x) { return (2 * std::abs(x) - 3) * x * x + 1; }
double hanning(double x) { return 0.5 + 0.5 * std::cos(pi * x); }
double hamming(double x) { return 0.54 + 0.46 * std::cos(pi * x); }
double gaussian(double x) { return std::sqrt(2 / pi) * std::exp(-2 * x * x); }

double quadratic(double x) {
  const double a = std::abs(x);
  return a <= 0.5 ? 0.75 - x * x : 0.5 * (a - 1.5) * (a - 1.5);
}

double cubic(double x) {
  const double a = std::abs(x);
  return a <= 1 ? (3 * a * a * a - 6 * a * a + 4) / 6 : (2 - a) * (2 - a) * (2 - a) / 6;
}

double catrom(double x) {
  const double a = std::abs(x);
  return a <= 1 ? (3 * a * a * a - 5 * a * a + 2) / 2 : (((5 - a) * a - 8) * a + 4) / 2;
}

/// Mitchell and Netravali 1988, B = C = 1/3.
double mitchell(double x) {
  const double a = std::abs(x);
  return a <= 1 ? 7.0 / 6 * a * a * a - 2 * a * a + 8.0 / 9
                : -7.0 / 18 * a * a * a + 2 * a * a - 10.0 / 3 * a + 16.0 / 9;
}

double lanczos(double x) { return sinc(x) * sinc(x / 3); }

double bessel(double x) {
  const double window = blackman(x / kBesselSupport);
  return x == 0 ? pi / 4 * window : j1(pi * x) / (2 * x) * window;
}

double windowed_sinc(double x) { return sinc(x) * blackman(x / kSincSupport); }

constexpr ResampleFilterRow kFilters[] = {
    {"Automatic", 0, box},
    {"Point", 0, box},
    {"Box", 0.5, box},
    {"Triangle", 1, triangle},
    {"Hermite", 1, hermite},
    {"Hanning", 1, hanning},
    {"Hamming", 1, hamming},
    {"Blackman", 1, blackman},
    {"Gaussian", 1.25, gaussian},
    {"Quadratic", 1.5, quadratic},
    {"Cubic", 2, cubic},
    {"Catrom", 2, catrom},
    {"Mitchell", 2, mitchell},
    {"Lanczos", 3, lanczos},
    {"Bessel", kBesselSupport, bessel},
    {"Sinc", kSincSupport, windowed_sinc},
};

/// An axis as a fraction, so that each end of an interval is rounded once: whether a source position lies on
/// it is decided exactly.
struct Scaling {
  double source, target;
  double reach;  ///< of the kernel, in pixels of the target where the axis is reduced, else of the source

  Scaling(std::uint32_t from, std::uint32_t to, double kernel_reach)
      : source(from), target(to), reach(kernel_reach) {
    if (target / source >= kLeastScale) return;
    source = 1 / kLeastScale;
    target = 1;
  }
  bool reduces() const { return source > target; }
  /// The middle of target pixel `i` in the source, moved by `side` times the reach.
  double end(std::uint32_t i, double side) const {
    return reduces() ? (i + 0.5 + side * reach) * source / target
                     : (i + 0.5) * source / target + side * reach;
  }
};

/// The source pixels whose middles lie from `low` to `high`. What stands on the upper end belongs to the next
/// interval where `half_open` is set.
struct Interval {
  std::uint32_t first, end;

  Interval(double low, double high, bool half_open, std::uint32_t source) {
    const auto held = [source](double at) {
      return static_cast<std::uint32_t>(std::clamp(at, 0.0, static_cast<double>(source)));
    };
    first = held(std::ceil(low - 0.5));
    end = held(half_open ? std::ceil(high - 0.5) : std::floor(high + 0.5));
  }
};

/// Appends the position of the weights from `begin` on, for the source pixels from `first` on; without any,
/// the nearest pixel alone counts.
void add_position(ResampleAxis& axis, std::size_t begin, std::uint32_t first, std::uint32_t nearest) {
  double sum = 0;
  for (std::size_t i = begin; i < axis.weights.size(); ++i) sum += axis.weights[i];
  if (sum == 0) {
    axis.weights.resize(begin);
    first = nearest;
    axis.weights.push_back(sum = 1);
  }
  for (std::size_t i = begin; i < axis.weights.size(); ++i) axis.weights[i] /= sum;
  axis.positions.push_back({first, static_cast<std::uint32_t>(axis.weights.size() - begin), begin});
}

}  // namespace

std::span<const ResampleFilterRow> resample_filter_table() { return kFilters; }

ResampleFilter resample_filter_of(int index) {
  return static_cast<ResampleFilter>(std::clamp(index, 0, static_cast<int>(std::size(kFilters)) - 1));
}

ResampleAxis resample_axis(std::uint32_t source, std::uint32_t target, ResampleFilter filter, double blur,
                           std::uint32_t begin, std::uint32_t end) {
  const ResampleFilterRow& row = kFilters[static_cast<std::size_t>(filter)];
  const Scaling scaling(source, target, row.support * blur);
  const double scale = std::max(static_cast<double>(target) / source, kLeastScale);
  const double stretch = std::max(1 / scale, 1.0) * blur;
  const double support = stretch * row.support;
  const bool is_box = row.kernel == box;
  ResampleAxis axis;
  end = std::min(end, target);
  axis.positions.reserve(end - begin);
  axis.weights.reserve(
      static_cast<std::size_t>((end - begin) * std::min(2 * support + 3, static_cast<double>(source))));
  for (std::uint32_t i = begin; i < end; ++i) {
    const double center = (i + 0.5) / scale;
    const std::size_t first_weight = axis.weights.size();
    Interval interval(scaling.end(i, -1), scaling.end(i, 1), is_box, source);
    if (!(support >= 0.5)) interval.end = interval.first;
    // The interval has decided what stands on an end of the box.
    for (std::uint32_t at = interval.first; at < interval.end; ++at)
      axis.weights.push_back(is_box ? 1 : row.kernel((at + 0.5 - center) / stretch));
    add_position(axis, first_weight, interval.first,
                 std::min(static_cast<std::uint32_t>(center), source - 1));
  }
  return axis;
}

}  // namespace vellum
