// The sums of resampling, for one axis: fast ones in single precision, and exact ones. Each result is what a
// sum of doubles in the order of the source gives, rounded half up. The sums are made in single precision,
// which is several times as fast; where that comes so near to a half that its error could matter, the sum is
// made again.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <span>
#include <vector>

#include "image/lanes.h"
#include "image/resample_filter.h"

namespace vellum {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpsabi"  // vectors are passed to functions that are inlined

/// One axis with its weights in single precision, and how far a sum of theirs may be off.
struct FastAxis {
  explicit FastAxis(const ResampleAxis& exact_axis) : exact(exact_axis) {
    fast.assign(exact.weights.begin(), exact.weights.end());
    double largest = 1;
    for (const auto& position : exact.positions) {
      longest = std::max<std::size_t>(longest, position.count);
      double sum = 0;
      for (const double weight : exact.weights_of(position)) sum += std::abs(weight);
      largest = std::max(largest, sum);
    }
    // A weight, its product and each addition, also that of the half, are off by 2^-24 of their value at
    // most. The first addition loses nothing, which leaves room for the products of these errors.
    error = static_cast<float>(static_cast<double>(longest + 3) * 0x1p-24 * 255 * largest);
    // With weights of few bits no product and no sum of bytes loses any.
    const auto few_bits = [](double weight) { return weight * 256 == std::floor(weight * 256); };
    errorOfBytes = largest < 256 && std::ranges::all_of(exact.weights, few_bits) ? 0 : error;
  }
  std::uint32_t size() const { return static_cast<std::uint32_t>(exact.positions.size()); }
  const float* weights_of(const ResampleAxis::Position& position) const { return &fast[position.weights]; }

  const ResampleAxis& exact;
  std::vector<float> fast;
  std::size_t longest = 0;  ///< source positions of one sum
  float error = 0, errorOfBytes = 0;
};

inline std::uint8_t rounded(double value) {
  return static_cast<std::uint8_t>(std::clamp(value + 0.5, 0.0, 255.0));
}

/// `source(k)` points to the k-th source value of one sum.
template <class Source>
std::uint8_t exact_channel(std::span<const double> weights, const Source& source) {
  double sum = 0;
  for (std::size_t k = 0; k < weights.size(); ++k) sum += weights[k] * *source(k);
  return rounded(sum);
}

/// A pixel of four channels, its colors weighted by alpha.
template <class Source>
std::array<std::uint8_t, 4> exact_pixel(std::span<const double> weights, const Source& source) {
  double alpha = 0, colors[3] = {};
  for (std::size_t k = 0; k < weights.size(); ++k) {
    const std::uint8_t* pixel = source(k);
    const double share = weights[k] * pixel[3];
    alpha += share;
    for (std::size_t c = 0; c < 3; ++c) colors[c] += share * pixel[c];
  }
  std::array<std::uint8_t, 4> result{0, 0, 0, rounded(alpha)};
  for (std::size_t c = 0; c < 3 && result[3] != 0; ++c) result[c] = rounded(colors[c] / alpha);
  return result;
}

/// Values that lie side by side: eight of one channel.
constexpr std::size_t kLanes = 8;

/// A sum as a byte, and whether its error may have changed it: it lies so near to a half.
VELLUM_INLINE std::uint8_t round_fast(float sum, float error, bool& near_half) {
  constexpr float kMagic = 12582912;  // 1.5 * 2^23: adding it leaves no bits behind the point
  const float raised = sum + 0.5f;
  const float whole = (raised + kMagic) - kMagic;
  near_half = std::abs(raised - whole) < error;
  const float low = raised < 0 ? 0 : raised;
  return static_cast<std::uint8_t>(static_cast<std::int32_t>(low > 255 ? 255 : low));
}

/// What the values of a picture are, by its depth: here bytes as they are.
struct ByteForm {
  static constexpr std::size_t kChannels = 3;
  static constexpr std::size_t kBlock = kLanes;  ///< bytes whose values lie together

  static float error(const FastAxis& axis) { return axis.errorOfBytes; }
  /// Values of a block of a row.
  VELLUM_INLINE static void load(const std::uint8_t* row, float* values) {
    for (std::size_t i = 0; i < kLanes; ++i) values[i] = static_cast<float>(row[i]);
  }
  /// A block of a row from its bytes in the order of the values.
  VELLUM_INLINE static void store(const std::uint8_t* bytes, std::uint8_t* row) {
    std::memcpy(row, bytes, kBlock);
  }
  /// Values of eight neighbouring bytes, each of eight rows: the rows innermost.
  VELLUM_INLINE static void load_columns(const std::uint8_t* columns, float* values) {
    for (std::size_t i = 0; i < 8 * kLanes; ++i) values[i] = static_cast<float>(columns[i]);
  }
  /// Sums as bytes, with marks at those that must be made again.
  template <std::size_t kCount>
  VELLUM_INLINE static void round(const float* sums, float error, std::uint8_t* bytes, std::uint8_t* marks) {
    for (std::size_t i = 0; i < kCount; ++i) {
      bool near_half;
      bytes[i] = round_fast(sums[i], error, near_half);
      marks[i] = near_half;
    }
  }
};

/// Pixels that are all opaque: bytes as they are. What is made again is the sum of a pixel with alpha.
struct OpaqueForm : ByteForm {
  static constexpr std::size_t kChannels = 4;
};

/// Pixels with alpha: the values are alpha and colors times alpha, eight of each channel side by side.
struct AlphaForm {
  static constexpr std::size_t kChannels = 4;
  static constexpr std::size_t kBlock = kChannels * kLanes;

  static float error(const FastAxis& axis) { return axis.error; }
  VELLUM_INLINE static void load(const std::uint8_t* row, float* values) {
    for (std::size_t i = 0; i < kLanes; ++i) {
      const float alpha = values[3 * kLanes + i] = static_cast<float>(row[4 * i + 3]);
      for (std::size_t c = 0; c < 3; ++c) values[kLanes * c + i] = alpha * static_cast<float>(row[4 * i + c]);
    }
  }
  VELLUM_INLINE static void store(const std::uint8_t* bytes, std::uint8_t* row) {
    for (std::size_t i = 0; i < kLanes; ++i)
      for (std::size_t c = 0; c < kChannels; ++c) row[4 * i + c] = bytes[kLanes * c + i];
  }
  VELLUM_INLINE static void load_columns(const std::uint8_t* columns, float* values) {
    for (std::size_t pixel = 0; pixel < 2; ++pixel, columns += kBlock, values += kBlock)
      for (std::size_t i = 0; i < kLanes; ++i) {
        const float alpha = values[3 * kLanes + i] = static_cast<float>(columns[3 * kLanes + i]);
        for (std::size_t c = 0; c < 3; ++c)
          values[kLanes * c + i] = alpha * static_cast<float>(columns[kLanes * c + i]);
      }
  }
  /// The mark of a pixel is that of its alpha.
  template <std::size_t kCount>
  VELLUM_INLINE static void round(const float* sums, float error, std::uint8_t* bytes, std::uint8_t* marks) {
    std::memset(marks, 0, kCount);
    for (std::size_t at = 0; at < kCount; at += kBlock)
      for (std::size_t i = 0; i < kLanes; ++i)
        marks[at + 3 * kLanes + i] = round_pixel(sums + at + i, error, bytes + at + i);
  }

 private:
  /// The channels are kLanes apart.
  VELLUM_INLINE static bool round_pixel(const float* sums, float error, std::uint8_t* bytes) {
    const float alpha = sums[3 * kLanes];
    const bool clear = alpha + error < 0.5f;  // whatever the colors are
    // The quotient of two sums loses more the smaller the alpha is.
    const float share = 1 / (alpha < 1 ? 1 : alpha), error_of_quotient = error * 4 * 255 * share;
    bool near_half;
    bytes[3 * kLanes] = round_fast(alpha, error, near_half);
    bool again = near_half | (alpha < 1);
    for (std::size_t c = 0; c < 3; ++c) {
      const std::uint8_t color = round_fast(sums[kLanes * c] * share, error_of_quotient, near_half);
      bytes[kLanes * c] = clear ? std::uint8_t{0} : color;
      again |= near_half;
    }
    return again & !clear;
  }
};

/// Sums `count` rows of values times their weights; `more`: on top of what is in `sums`.
template <std::size_t kVectors>
VELLUM_INLINE void sum_rows(const float* const* rows, const float* weights, std::size_t count, std::size_t at,
                            bool more, float* sums) {
  Floats8 sum[kVectors]{};
  if (more) std::memcpy(sum, sums, sizeof sum);
  for (std::size_t k = 0; k < count; ++k)
    for (std::size_t i = 0; i < kVectors; ++i) add_product(sum[i], rows[k] + at + kLanes * i, weights[k]);
  std::memcpy(sums, sum, sizeof sum);
}

/// Whether one of the marks is set, of which there are whole eights.
VELLUM_INLINE bool any_mark(const std::uint8_t* marks, std::size_t count) {
  std::uint64_t any = 0, eight;
  for (std::size_t at = 0; at < count; at += sizeof eight) {
    std::memcpy(&eight, marks + at, sizeof eight);
    any |= eight;
  }
  return any != 0;
}

template <class Use>
void for_each_mark(const std::uint8_t* marks, std::size_t count, const Use& use) {
  for (std::size_t at = 0; at < count; at += 8) {
    if (!any_mark(marks + at, 8)) continue;
    for (std::size_t i = at; i < at + 8; ++i)
      if (marks[i]) use(i);
  }
}

#pragma GCC diagnostic pop

}  // namespace vellum
