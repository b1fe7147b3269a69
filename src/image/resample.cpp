// Each result is what a sum of doubles in the order of the source gives, rounded half up. The sums are made
// in single precision, which is several times as fast; where that comes so near to a half that its error
// could matter, the sum is made again.
#include "image/resample.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <new>
#include <vector>

#include "base/limits.h"

#include "image/palette_match.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

/// One axis with its weights in single precision, and how far a sum of theirs may be off.
struct FastAxis {
  explicit FastAxis(ResampleAxis exact_axis) : exact(std::move(exact_axis)) {
    fast.assign(exact.weights.begin(), exact.weights.end());
    std::size_t longest = 0;
    double largest = 1;
    for (const auto& position : exact.positions) {
      longest = std::max<std::size_t>(longest, position.count);
      double sum = 0;
      for (const double weight : exact.weights_of(position)) sum += std::abs(weight);
      largest = std::max(largest, sum);
    }
    // Each product and each addition is off by 2^-24 of its value at most; twice that, to be safe.
    error = static_cast<float>(static_cast<double>(longest + 3) * 0x1p-23 * 255 * largest);
  }

  ResampleAxis exact;
  std::vector<float> fast;
  float error = 0;
};

constexpr int kLeastOpaque = 128;  ///< alpha from here on is opaque in a palette

std::uint8_t rounded(double value) { return static_cast<std::uint8_t>(std::clamp(value + 0.5, 0.0, 255.0)); }

/// A sum as a byte. Whether the error of the sum may have changed it: it lies so near to a half.
inline bool round_fast(float sum, float error, std::uint8_t& out) {
  constexpr float kMagic = 12582912;  // 1.5 * 2^23: adding it leaves no bits behind the point
  const float raised = sum + 0.5f;
  const float whole = (raised + kMagic) - kMagic;
  out = static_cast<std::uint8_t>(static_cast<int>(std::clamp(raised, 0.0f, 255.0f)));
  const bool near_half = std::abs(raised - whole) < error;
  return near_half & (whole >= 1) & (whole <= 255);
}

/// Reads channel `c` of the k-th source pixel of one sum.
template <class Source>
std::uint8_t exact_channel(std::span<const double> weights, const Source& source, std::size_t c) {
  double sum = 0;
  for (std::size_t k = 0; k < weights.size(); ++k) sum += weights[k] * source(k, c);
  return rounded(sum);
}

/// A pixel of four channels, its colors weighted by alpha.
template <class Source>
void exact_pixel(std::span<const double> weights, const Source& source, std::uint8_t* out) {
  double alpha = 0, colors[3] = {};
  for (std::size_t k = 0; k < weights.size(); ++k) {
    const double share = weights[k] * source(k, 3);
    alpha += share;
    for (std::size_t c = 0; c < 3; ++c) colors[c] += share * source(k, c);
  }
  out[3] = rounded(alpha);
  for (std::size_t c = 0; c < 3; ++c) out[c] = out[3] == 0 ? std::uint8_t{0} : rounded(colors[c] / alpha);
}

/// The four sums of one pixel (colors times alpha, alpha) as bytes; true where they need an exact look.
inline bool round_pixel_fast(const float* sums, float error, std::uint8_t* out) {
  const float alpha = sums[3];
  bool near_half = round_fast(alpha, error, out[3]);
  // The quotient of two sums loses more the smaller the alpha is.
  if (!(alpha >= 1)) return true;
  const float share = 1 / alpha, error_of_quotient = error * 4 * 255 * share;
  for (std::size_t c = 0; c < 3; ++c) near_half |= round_fast(sums[c] * share, error_of_quotient, out[c]);
  return near_half;
}

// ------------------------------------------------------------------------------------------------ down
// columns

/// Bytes that are summed at a time: the sums stay in the first cache. A multiple of whole pixels of any
/// depth.
constexpr std::size_t kBlock = 384;

/// One target row of a pass that changes the height.
struct ColumnsJob {
  const Picture& source;
  const FastAxis& axis;
  const ResampleAxis::Position& position;

  std::span<const double> weights() const { return axis.exact.weights_of(position); }
  const float* fast() const { return &axis.fast[position.weights]; }
  const std::uint8_t* row(std::size_t k) const {
    return source.row(position.first + static_cast<std::uint32_t>(k));
  }
};

void sum_bytes(const ColumnsJob& job, std::size_t at, std::size_t count, float* sums) {
  std::fill_n(sums, count, 0.0f);
  for (std::size_t k = 0; k < job.position.count; ++k) {
    const std::uint8_t* row = job.row(k) + at;
    const float weight = job.fast()[k];
    for (std::size_t i = 0; i < count; ++i) sums[i] += weight * static_cast<float>(row[i]);
  }
}

void sum_pixels(const ColumnsJob& job, std::size_t at, std::size_t count, float* sums) {
  std::fill_n(sums, count, 0.0f);
  for (std::size_t k = 0; k < job.position.count; ++k) {
    const std::uint8_t* row = job.row(k) + at;
    const float weight = job.fast()[k];
    for (std::size_t i = 0; i < count; i += 4) {
      const float share = weight * static_cast<float>(row[i + 3]);
      for (std::size_t c = 0; c < 3; ++c) sums[i + c] += share * static_cast<float>(row[i + c]);
      sums[i + 3] += share;
    }
  }
}

void filter_bytes_down(const ColumnsJob& job, std::uint8_t* out, std::size_t bytes) {
  std::array<float, kBlock> sums;
  for (std::size_t at = 0; at < bytes; at += kBlock) {
    const std::size_t count = std::min(kBlock, bytes - at);
    sum_bytes(job, at, count, sums.data());
    bool near_half = false;
    for (std::size_t i = 0; i < count; ++i) near_half |= round_fast(sums[i], job.axis.error, out[at + i]);
    if (!near_half) continue;
    const auto source = [&](std::size_t k, std::size_t c) { return job.row(k)[c]; };
    for (std::size_t i = 0; i < count; ++i)
      if (round_fast(sums[i], job.axis.error, out[at + i]))
        out[at + i] = exact_channel(job.weights(), source, at + i);
  }
}

void filter_pixels_down(const ColumnsJob& job, std::uint8_t* out, std::size_t bytes) {
  std::array<float, kBlock> sums;
  for (std::size_t at = 0; at < bytes; at += kBlock) {
    const std::size_t count = std::min(kBlock, bytes - at);
    sum_pixels(job, at, count, sums.data());
    for (std::size_t i = 0; i < count; i += 4) {
      if (!round_pixel_fast(&sums[i], job.axis.error, out + at + i)) continue;
      exact_pixel(
          job.weights(), [&](std::size_t k, std::size_t c) { return job.row(k)[at + i + c]; }, out + at + i);
    }
  }
}

Picture filter_down(const Picture& source, std::uint32_t height, const FastAxis& axis) {
  Picture result = create_rows(source.width(), height, nullptr, source.bits());
  if (!result) return result;
  const EditRows rows(result);
  const std::size_t bytes = std::size_t{source.width()} * source.bits() / 8;
  const auto filter = source.bits() == 32 ? filter_pixels_down : filter_bytes_down;
  for_each_row(height, bytes, [&](std::uint32_t y) {
    filter({source, axis, axis.exact.positions[y]}, rows[y], bytes);
  });
  return result;
}

// -------------------------------------------------------------------------------------------------- along
// rows

/// Rows that are filtered side by side: their values lie next to each other, so that one step of the sum
/// works on all of them.
constexpr std::size_t kLanes = 8;

/// `kLanes` source rows with the lanes innermost: value `v` of lane `l` at kLanes * v + l. Rows behind the
/// last one repeat it.
class Strip {
 public:
  Strip(const Picture& source, std::uint32_t top)
      : channels_(source.bits() / 8), values_(source.width() * channels_ * kLanes) {
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
      rows_[lane] = source.row(std::min(top + static_cast<std::uint32_t>(lane), source.height() - 1));
      load(lane, source.width() * channels_);
    }
  }
  const float* values(std::size_t x) const { return &values_[x * channels_ * kLanes]; }
  const std::uint8_t* row(std::size_t lane) const { return rows_[lane]; }

 private:
  void load(std::size_t lane, std::size_t bytes) {
    const std::uint8_t* row = rows_[lane];
    float* to = values_.data() + lane;
    if (channels_ == 3) {
      for (std::size_t i = 0; i < bytes; ++i) to[kLanes * i] = static_cast<float>(row[i]);
      return;
    }
    for (std::size_t i = 0; i < bytes; i += 4) {
      const auto alpha = static_cast<float>(row[i + 3]);
      for (std::size_t c = 0; c < 3; ++c) to[kLanes * (i + c)] = alpha * static_cast<float>(row[i + c]);
      to[kLanes * (i + 3)] = alpha;
    }
  }

  std::size_t channels_;
  std::vector<float> values_;
  std::array<const std::uint8_t*, kLanes> rows_{};
};

/// A strip and where its results go.
struct RowsJob {
  const Strip& strip;
  const FastAxis& axis;
  const EditRows& rows;
  std::uint32_t top;
  std::size_t lanes;  ///< of the strip that are rows of the result
};

template <std::size_t kChannels>
void sum_lanes(const Strip& strip, const ResampleAxis::Position& position, const float* weights,
               float* sums) {
  constexpr std::size_t kCount = kChannels * kLanes;
  std::array<float, kCount> sum{};
  for (std::size_t k = 0; k < position.count; ++k) {
    const float* values = strip.values(position.first + k);
    const float weight = weights[k];
    for (std::size_t i = 0; i < kCount; ++i) sum[i] += weight * values[i];
  }
  std::ranges::copy(sum, sums);
}

void filter_bytes_along(const RowsJob& job, std::size_t x) {
  const ResampleAxis::Position& position = job.axis.exact.positions[x];
  std::array<float, 3 * kLanes> sums;
  sum_lanes<3>(job.strip, position, &job.axis.fast[position.weights], sums.data());
  std::array<std::uint8_t, 3 * kLanes> bytes;
  std::array<bool, 3 * kLanes> near_half;
  bool any = false;
  for (std::size_t i = 0; i < sums.size(); ++i)
    any |= near_half[i] = round_fast(sums[i], job.axis.error, bytes[i]);
  for (std::size_t lane = 0; lane < job.lanes; ++lane)
    for (std::size_t c = 0; c < 3; ++c) job.rows[job.top + lane][3 * x + c] = bytes[kLanes * c + lane];
  if (!any) return;
  for (std::size_t lane = 0; lane < job.lanes; ++lane)
    for (std::size_t c = 0; c < 3; ++c)
      if (near_half[kLanes * c + lane])
        job.rows[job.top + lane][3 * x + c] = exact_channel(
            job.axis.exact.weights_of(position),
            [&](std::size_t k, std::size_t channel) {
              return job.strip.row(lane)[3 * (position.first + k) + channel];
            },
            c);
}

void filter_pixels_along(const RowsJob& job, std::size_t x) {
  const ResampleAxis::Position& position = job.axis.exact.positions[x];
  std::array<float, 4 * kLanes> sums;
  sum_lanes<4>(job.strip, position, &job.axis.fast[position.weights], sums.data());
  for (std::size_t lane = 0; lane < job.lanes; ++lane) {
    std::uint8_t* out = job.rows[job.top + lane] + 4 * x;
    const float pixel[4] = {sums[lane], sums[kLanes + lane], sums[2 * kLanes + lane],
                            sums[3 * kLanes + lane]};
    if (!round_pixel_fast(pixel, job.axis.error, out)) continue;
    exact_pixel(
        job.axis.exact.weights_of(position),
        [&](std::size_t k, std::size_t c) { return job.strip.row(lane)[4 * (position.first + k) + c]; }, out);
  }
}

Picture filter_along(const Picture& source, std::uint32_t width, const FastAxis& axis) {
  Picture result = create_rows(width, source.height(), nullptr, source.bits());
  if (!result) return result;
  const EditRows rows(result);
  const auto filter = source.bits() == 32 ? filter_pixels_along : filter_bytes_along;
  const std::size_t strips = (source.height() + kLanes - 1) / kLanes;
  parallel_for(strips, [&](std::size_t i) {
    const auto top = static_cast<std::uint32_t>(i * kLanes);
    const Strip strip(source, top);
    const RowsJob job{strip, axis, rows, top, std::min<std::size_t>(kLanes, source.height() - top)};
    for (std::size_t x = 0; x < width; ++x) filter(job, x);
  });
  return result;
}

// -------------------------------------------------------------------------------------------------------
// whole

/// The nearest source pixel for each target pixel, in any depth.
Picture point_sampled(const Picture& source, std::uint32_t width, std::uint32_t height) {
  const Palette palette = palette_of(source);
  Picture result = create_rows(width, height, &palette, source.bits());
  if (!result) return result;
  const ResampleAxis across = resample_axis(source.width(), width, ResampleFilter::Point, 1);
  const ResampleAxis down = resample_axis(source.height(), height, ResampleFilter::Point, 1);
  const EditRows rows(result);
  for_each_row(height, rows.stride, [&](std::uint32_t y) {
    const std::uint8_t* from = source.row(down.positions[y].first);
    for (std::size_t x = 0; x < width; ++x)
      copy_pixels(rows[y], x, from, across.positions[x].first, 1, source.bits());
  });
  return result;
}

Picture filtered(const Picture& source, std::uint32_t width, std::uint32_t height, ResampleFilter filter,
                 double blur) {
  const FastAxis across(resample_axis(source.width(), width, filter, blur));
  const FastAxis down(resample_axis(source.height(), height, filter, blur));
  const std::uint64_t down_first = (std::uint64_t{source.height()} + height) * width;
  const std::uint64_t along_first = (std::uint64_t{source.width()} + width) * height;
  const bool first_down = down_first <= along_first;
  const Picture between =
      first_down ? filter_down(source, height, down) : filter_along(source, width, across);
  if (!between) return {};
  return first_down ? filter_along(between, width, across) : filter_down(between, height, down);
}

/// The colors of a palette that can be matched, and what stands for transparency.
struct OpaqueEntries {
  Palette palette{};
  std::array<std::uint8_t, 256> index{};  ///< of each of them in the picture
  std::uint32_t count = 0;
  std::uint8_t clear = 0;

  OpaqueEntries(const Picture& picture, const PaletteUse& use) {
    const Palette all = palette_of(picture);
    const auto alpha = [&](std::size_t i) { return i < use.transparency.size() ? use.transparency[i] : 255; };
    const std::uint32_t entries = std::clamp(use.entries, 1u, picture.colours());
    for (std::uint32_t i = 0; i < entries; ++i) {
      if (alpha(i) < alpha(clear)) clear = static_cast<std::uint8_t>(i);
      if (alpha(i) < kLeastOpaque) continue;
      std::copy_n(&all[3 * i], 3, &palette[3 * count]);
      index[count++] = static_cast<std::uint8_t>(i);
    }
  }
};

/// A picture of 24 or 32 bits in the colors and the depth of an indexed one.
Picture back_to_palette(const Picture& scaled, const Picture& like, const PaletteUse& use) {
  const OpaqueEntries opaque(like, use);
  const Palette palette = palette_of(like);
  Picture result = create_rows(scaled.width(), scaled.height(), &palette, like.bits());
  const Picture colors = scaled.bits() == 32 ? PictureToTrueColor(scaled) : scaled;
  const Picture matched = colors ? match_to_palette(colors, opaque.palette, opaque.count, 8) : Picture();
  const EditRows rows(result);
  if (!rows || !matched) return {};
  std::vector<std::uint8_t> line(scaled.width());
  for (std::uint32_t y = 0; y < scaled.height(); ++y) {
    for (std::size_t x = 0; x < line.size(); ++x) {
      const bool clear = scaled.bits() == 32 && scaled.row(y)[4 * x + 3] < kLeastOpaque;
      line[x] = clear ? opaque.clear : opaque.index[matched.row(y)[x]];
    }
    pack_indices(rows[y], 0, line.data(), line.size(), like.bits());
  }
  return result;
}

Picture filtered_in_palette(const Picture& picture, std::uint32_t width, std::uint32_t height,
                            ResampleFilter filter, double blur, const PaletteUse& use) {
  // PictureToTrueColor knows black and white alone in a 1-bit picture.
  Picture source = PictureToTrueColor(picture.bits() == 1 ? PictureToTrueColorAlpha(picture) : picture);
  if (!use.transparency.empty()) source = PictureWithTransparency(picture, use.transparency);
  const Picture scaled = source ? filtered(source, width, height, filter, blur) : Picture();
  return scaled ? back_to_palette(scaled, picture, use) : Picture();
}

bool size_allowed(std::uint32_t width, std::uint32_t height) {
  return width != 0 && height != 0 && width <= kMaximumDimension && height <= kMaximumDimension;
}

}  // namespace

Picture PictureResample(const Picture& picture, std::uint32_t width, std::uint32_t height,
                        ResampleFilter filter, double blur, const PaletteUse& use) try {
  if (!has_rows(picture) || !size_allowed(width, height)) return {};
  if (width == picture.width() && height == picture.height() && blur == 1) return PictureDuplicate(picture);
  if (filter == ResampleFilter::Automatic) {
    const bool grows = std::uint64_t{width} * height > std::uint64_t{picture.width()} * picture.height();
    filter = grows ? ResampleFilter::Mitchell : ResampleFilter::Lanczos;
  }
  if (filter == ResampleFilter::Point) return point_sampled(picture, width, height);
  return picture.bits() <= 8 ? filtered_in_palette(picture, width, height, filter, blur, use)
                             : filtered(picture, width, height, filter, blur);
} catch (const std::bad_alloc&) {
  return {};
}

Picture PictureScalePercent(const Picture& picture, double x_percent, double y_percent,
                            ResampleFilter filter) {
  if (!picture) return {};
  const auto scaled = [](std::uint32_t size, double percent) {
    return static_cast<std::uint32_t>(std::clamp(size * percent / 100 + 0.5, 1.0, 4e9));
  };
  return PictureResample(picture, scaled(picture.width(), x_percent), scaled(picture.height(), y_percent),
                         filter);
}

}  // namespace vellum
