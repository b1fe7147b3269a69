// Each result is what a sum of doubles in the order of the source gives, rounded half up. The sums are made
// in single precision, which is several times as fast; where that comes so near to a half that its error
// could matter, the sum is made again.
#include "image/resample_passes.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <vector>

#include "image/lanes.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

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
    // A weight, its product and each addition are off by 2^-24 of their value at most; twice that, to be
    // safe.
    error = static_cast<float>(static_cast<double>(longest + 3) * 0x1p-23 * 255 * largest);
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

// --------------------------------------------------------------------------------------- exact sums

std::uint8_t rounded(double value) { return static_cast<std::uint8_t>(std::clamp(value + 0.5, 0.0, 255.0)); }

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

// --------------------------------------------------------------------------------------- fast sums

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

// --------------------------------------------------------------------------------------- down columns

/// Bytes of a row that are summed at a time: what a sum of some rows needs stays in the first cache. Whole
/// blocks of both forms.
constexpr std::size_t kTile = 512;

/// Target rows `top` to `end` of a pass that changes the height.
struct DownJob {
  const Picture& source;
  const FastAxis& axis;
  std::uint32_t top, end;
  std::uint8_t* out;
  std::ptrdiff_t stride;  ///< from a row of `out` to the next

  std::size_t bytes() const { return std::size_t{source.width()} * source.bits() / 8; }
};

/// Rows of a tile as values; a row is converted once for all sums that need it.
class TileRows {
 public:
  static constexpr std::size_t kMostSlots = 64;

  explicit TileRows(std::size_t longest)
      : slots_(std::min(std::bit_ceil(longest), kMostSlots)), values_(slots_ * kTile), held_(slots_) {}
  std::size_t slots() const { return slots_; }
  void forget() { std::ranges::fill(held_, kNothing); }

  template <class Form>
  VELLUM_INLINE const float* row(const Picture& source, std::uint32_t y, std::size_t at, std::size_t count) {
    const std::size_t slot = y & (slots_ - 1);
    float* values = &values_[slot * kTile];
    if (held_[slot] == y) return values;
    held_[slot] = y;
    const std::uint8_t* from = source.row(y) + at;
    std::size_t i = 0;
    for (; i + Form::kBlock <= count; i += Form::kBlock) Form::load(from + i, values + i);
    if (i == count) return values;
    std::array<std::uint8_t, Form::kBlock> last{};
    std::memcpy(last.data(), from + i, count - i);
    Form::load(last.data(), values + i);
    return values;
  }

 private:
  static constexpr std::uint32_t kNothing = ~std::uint32_t{0};
  std::size_t slots_;
  std::vector<float> values_;
  std::vector<std::uint32_t> held_;
};

/// Bytes `at` and the following of one target row.
struct TileResult {
  alignas(32) std::array<float, kTile> sums;
  std::array<std::uint8_t, kTile> bytes, marks;
};

void sum_again(ByteForm, const DownJob& job, const ResampleAxis::Position& position, std::size_t at,
               TileResult& tile, std::size_t i) {
  tile.bytes[i] = exact_channel(job.axis.exact.weights_of(position), [&](std::size_t k) {
    return job.source.row(position.first + static_cast<std::uint32_t>(k)) + at + i;
  });
}

void sum_again(AlphaForm, const DownJob& job, const ResampleAxis::Position& position, std::size_t at,
               TileResult& tile, std::size_t i) {
  const std::size_t block = i / AlphaForm::kBlock * AlphaForm::kBlock, lane = i % kLanes;
  const auto pixel = exact_pixel(job.axis.exact.weights_of(position), [&](std::size_t k) {
    return job.source.row(position.first + static_cast<std::uint32_t>(k)) + at + block + 4 * lane;
  });
  for (std::size_t c = 0; c < 4; ++c) tile.bytes[block + kLanes * c + lane] = pixel[c];
}

/// Makes the marked sums of the first `count` bytes again.
template <class Form>
void mend_tile(const DownJob& job, const ResampleAxis::Position& position, std::size_t at, std::size_t count,
               TileResult& tile) {
  for_each_mark(tile.marks.data(), count,
                [&](std::size_t i) { sum_again(Form{}, job, position, at, tile, i); });
}

template <class Form>
VELLUM_INLINE void put_tile(const TileResult& tile, std::size_t count, std::uint8_t* out) {
  std::size_t i = 0;
  for (; i + Form::kBlock <= count; i += Form::kBlock) Form::store(&tile.bytes[i], out + i);
  if (i == count) return;
  std::array<std::uint8_t, Form::kBlock> last;
  Form::store(&tile.bytes[i], last.data());
  std::memcpy(out + i, last.data(), count - i);
}

template <class Form, std::size_t kVectors>
VELLUM_INLINE void filter_tile(const DownJob& job, TileRows& rows, std::size_t at, std::size_t count) {
  const std::size_t whole = (count + Form::kBlock - 1) / Form::kBlock * Form::kBlock;
  constexpr std::size_t kStep = kVectors * kLanes;
  TileResult tile;
  tile.sums.fill(0);
  std::array<const float*, TileRows::kMostSlots> some;
  for (std::uint32_t y = job.top; y < job.end; ++y) {
    const ResampleAxis::Position& position = job.axis.exact.positions[y];
    const float* weights = job.axis.weights_of(position);
    for (std::size_t k = 0; k < position.count;) {
      const std::size_t group = std::min<std::size_t>(rows.slots(), position.count - k);
      for (std::size_t i = 0; i < group; ++i)
        some[i] = rows.row<Form>(job.source, position.first + static_cast<std::uint32_t>(k + i), at, count);
      for (std::size_t i = 0; i < whole; i += kStep)
        sum_rows<kVectors>(some.data(), weights + k, group, i, k != 0, &tile.sums[i]);
      k += group;
    }
    Form::template round<kTile>(tile.sums.data(), Form::error(job.axis), tile.bytes.data(),
                                tile.marks.data());
    if (any_mark(tile.marks.data(), whole)) mend_tile<Form>(job, position, at, whole, tile);
    put_tile<Form>(tile, count, job.out + job.stride * (y - job.top) + at);
  }
}

template <class Form>
void filter_tile_plain(const DownJob& job, TileRows& rows, std::size_t at, std::size_t count) {
  filter_tile<Form, 4>(job, rows, at, count);
}
template <class Form>
VELLUM_AVX2 void filter_tile_avx2(const DownJob& job, TileRows& rows, std::size_t at, std::size_t count) {
  filter_tile<Form, 8>(job, rows, at, count);
}

template <class Form>
void filter_down(const DownJob& job, TileRows& rows) {
  const auto filter = has_avx2() ? filter_tile_avx2<Form> : filter_tile_plain<Form>;
  const std::size_t bytes = job.bytes();
  for (std::size_t at = 0; at < bytes; at += kTile) {
    rows.forget();
    filter(job, rows, at, std::min(kTile, bytes - at));
  }
}

// --------------------------------------------------------------------------------------- across rows

/// Eight source rows with their values innermost: value v of row i at kLanes * v + i.
struct Strip {
  std::array<const std::uint8_t*, kLanes> rows{};  ///< behind the last one it is repeated
  std::vector<float> values;

  Strip(std::uint32_t width, std::size_t channels) : values((width * channels + 8) * kLanes) {}
};

/// A strip and where its results go.
struct AcrossJob {
  const FastAxis& axis;
  Strip& strip;
  std::size_t bytes;  ///< of a source row
  std::size_t lanes;  ///< of the strip that are rows of the result
  std::uint8_t* out;
  std::ptrdiff_t stride;
};

template <class Form>
VELLUM_INLINE void load_strip(Strip& strip, std::size_t bytes) {
  std::uint8_t ends[kLanes][8] = {};
  alignas(16) std::uint8_t columns[8 * kLanes];
  for (std::size_t at = 0; at < bytes; at += 8) {
    const std::uint8_t* from[kLanes];
    for (std::size_t i = 0; i < kLanes; ++i) {
      from[i] = strip.rows[i] + at;
      if (at + 8 <= bytes) continue;
      std::memcpy(ends[i], from[i], bytes - at);
      from[i] = ends[i];
    }
    transpose_8x8(from, columns);
    Form::load_columns(columns, &strip.values[kLanes * at]);
  }
}

/// The sums of one target position for all channels and rows. Odd and even ones apart: each addition waits
/// for the one before it.
template <std::size_t kChannels>
VELLUM_INLINE void sum_across(const float* values, const float* weights, std::size_t count, float* sums) {
  Floats8 even[kChannels]{}, odd[kChannels]{};
  constexpr std::size_t kStep = kChannels * kLanes;
  const std::size_t pairs = count / 2;
  for (std::size_t k = 0; k < pairs; ++k, values += 2 * kStep, weights += 2) {
    for (std::size_t c = 0; c < kChannels; ++c) add_product(even[c], values + kLanes * c, weights[0]);
    for (std::size_t c = 0; c < kChannels; ++c) add_product(odd[c], values + kStep + kLanes * c, weights[1]);
  }
  for (std::size_t c = 0; c < kChannels && count % 2 != 0; ++c)
    add_product(even[c], values + kLanes * c, weights[0]);
  for (std::size_t c = 0; c < kChannels; ++c) even[c] += odd[c];
  std::memcpy(sums, even, sizeof even);
}

/// Target positions that are rounded and put at a time.
constexpr std::size_t kPixels = 8;

void sum_again(ByteForm, const AcrossJob& job, std::size_t x, std::size_t i) {
  const std::size_t lane = i % kLanes, c = i / kLanes % ByteForm::kChannels;
  x += i / kLanes / ByteForm::kChannels;
  if (lane >= job.lanes || x >= job.axis.size()) return;
  const ResampleAxis::Position& position = job.axis.exact.positions[x];
  job.out[job.stride * static_cast<std::ptrdiff_t>(lane) + static_cast<std::ptrdiff_t>(3 * x + c)] =
      exact_channel(job.axis.exact.weights_of(position),
                    [&](std::size_t k) { return job.strip.rows[lane] + 3 * (position.first + k) + c; });
}

void sum_again(AlphaForm, const AcrossJob& job, std::size_t x, std::size_t i) {
  const std::size_t lane = i % kLanes;
  x += i / AlphaForm::kBlock;
  if (lane >= job.lanes || x >= job.axis.size()) return;
  const ResampleAxis::Position& position = job.axis.exact.positions[x];
  const auto pixel = exact_pixel(job.axis.exact.weights_of(position), [&](std::size_t k) {
    return job.strip.rows[lane] + 4 * (position.first + k);
  });
  std::ranges::copy(
      pixel, job.out + job.stride * static_cast<std::ptrdiff_t>(lane) + static_cast<std::ptrdiff_t>(4 * x));
}

template <class Form>
void mend_pixels(const AcrossJob& job, std::size_t x, const std::uint8_t* marks) {
  for_each_mark(marks, kPixels * Form::kChannels * kLanes,
                [&](std::size_t i) { sum_again(Form{}, job, x, i); });
}

/// Bytes with the rows innermost to their rows, `count` of each.
VELLUM_INLINE void put_columns(const AcrossJob& job, const std::uint8_t* columns, std::size_t at,
                               std::size_t count) {
  alignas(16) std::uint8_t rows[kLanes * 8];
  const std::uint8_t* from[8];
  for (std::size_t i = 0; i < 8; ++i) from[i] = columns + kLanes * i;
  transpose_8x8(from, rows);
  std::uint8_t* out = job.out + at;
  for (std::size_t lane = 0; lane < job.lanes; ++lane, out += job.stride)
    std::memcpy(out, rows + 8 * lane, count == 8 ? 8 : count);
}

template <class Form>
VELLUM_INLINE void filter_strip(const AcrossJob& job) {
  constexpr std::size_t kChannels = Form::kChannels, kValues = kPixels * kChannels * kLanes;
  load_strip<Form>(job.strip, job.bytes);
  alignas(32) std::array<float, kValues> sums{};
  std::array<std::uint8_t, kValues> bytes, marks;
  const std::size_t width = job.axis.size();
  for (std::size_t x = 0; x < width; x += kPixels) {
    const std::size_t count = std::min(kPixels, width - x);
    for (std::size_t i = 0; i < count; ++i) {
      const ResampleAxis::Position& position = job.axis.exact.positions[x + i];
      sum_across<kChannels>(&job.strip.values[position.first * kChannels * kLanes],
                            job.axis.weights_of(position), position.count, &sums[i * kChannels * kLanes]);
    }
    Form::template round<kValues>(sums.data(), Form::error(job.axis), bytes.data(), marks.data());
    for (std::size_t at = 0; at < count * kChannels; at += 8)
      put_columns(job, &bytes[kLanes * at], x * kChannels + at,
                  std::min<std::size_t>(8, count * kChannels - at));
    if (any_mark(marks.data(), kValues)) mend_pixels<Form>(job, x, marks.data());
  }
}

template <class Form>
void filter_strip_plain(const AcrossJob& job) {
  filter_strip<Form>(job);
}
template <class Form>
VELLUM_AVX2 void filter_strip_avx2(const AcrossJob& job) {
  filter_strip<Form>(job);
}

/// Rows `top` to `end`; `row(y)` tells where a source row lies.
template <class Form, class Row>
void filter_across(const FastAxis& axis, Strip& strip, std::size_t bytes, std::uint32_t top,
                   std::uint32_t end, const Row& row, const EditRows& rows) {
  const auto filter = has_avx2() ? filter_strip_avx2<Form> : filter_strip_plain<Form>;
  for (std::uint32_t y = top; y < end; y += kLanes) {
    const std::size_t lanes = std::min<std::size_t>(kLanes, end - y);
    for (std::size_t i = 0; i < kLanes; ++i)
      strip.rows[i] = row(y + static_cast<std::uint32_t>(std::min(i, lanes - 1)));
    filter({axis, strip, bytes, lanes, rows[y], -static_cast<std::ptrdiff_t>(rows.stride)});
  }
}

// --------------------------------------------------------------------------------------- passes

/// Rows between the passes that are under way on one core: they stay in its cache.
constexpr std::uint32_t kBandRows = 16;

/// Calls work(top, end) for parts of the rows, on all cores.
template <class Work>
void for_each_part(std::uint32_t height, const Work& work) {
  const std::size_t most = 4 * parallel_width(), bands = (height + kBandRows - 1) / kBandRows;
  const std::size_t parts = std::min(bands, most);
  parallel_for(parts, [&](std::size_t i) {
    work(static_cast<std::uint32_t>(bands * i / parts * kBandRows),
         static_cast<std::uint32_t>(std::min<std::size_t>(height, bands * (i + 1) / parts * kBandRows)));
  });
}

template <class Form>
Picture down_first(const Picture& source, const FastAxis& across, const FastAxis& down) {
  Picture result = create_rows(across.size(), down.size(), nullptr, source.bits());
  if (!result) return {};
  const EditRows rows(result);
  const std::size_t bytes = std::size_t{source.width()} * Form::kChannels;
  for_each_part(down.size(), [&](std::uint32_t top, std::uint32_t end) {
    TileRows tile_rows(down.longest);
    Strip strip(source.width(), Form::kChannels);
    std::vector<std::uint8_t> band(bytes * kBandRows);
    for (std::uint32_t y = top; y < end; y += kBandRows) {
      const std::uint32_t band_end = std::min(end, y + kBandRows);
      filter_down<Form>({source, down, y, band_end, band.data(), static_cast<std::ptrdiff_t>(bytes)},
                        tile_rows);
      filter_across<Form>(
          across, strip, bytes, y, band_end, [&](std::uint32_t at) { return &band[bytes * (at - y)]; }, rows);
    }
  });
  return result;
}

template <class Form>
Picture across_first(const Picture& source, const FastAxis& across, const FastAxis& down) {
  Picture between = create_rows(across.size(), source.height(), nullptr, source.bits());
  Picture result = create_rows(across.size(), down.size(), nullptr, source.bits());
  if (!between || !result) return {};
  const EditRows between_rows(between), rows(result);
  for_each_part(source.height(), [&](std::uint32_t top, std::uint32_t end) {
    Strip strip(source.width(), Form::kChannels);
    filter_across<Form>(
        across, strip, std::size_t{source.width()} * Form::kChannels, top, end,
        [&](std::uint32_t y) { return source.row(y); }, between_rows);
  });
  for_each_part(down.size(), [&](std::uint32_t top, std::uint32_t end) {
    TileRows tile_rows(down.longest);
    filter_down<Form>({between, down, top, end, rows[top], -static_cast<std::ptrdiff_t>(rows.stride)},
                      tile_rows);
  });
  return result;
}

}  // namespace

Picture resample_passes(const Picture& source, const ResampleAxis& across, const ResampleAxis& down,
                        PassOrder order) {
  const FastAxis fast_across(across), fast_down(down);
  const bool alpha = source.bits() == 32;
  if (order == PassOrder::DownFirst)
    return alpha ? down_first<AlphaForm>(source, fast_across, fast_down)
                 : down_first<ByteForm>(source, fast_across, fast_down);
  return alpha ? across_first<AlphaForm>(source, fast_across, fast_down)
               : across_first<ByteForm>(source, fast_across, fast_down);
}

}  // namespace vellum
