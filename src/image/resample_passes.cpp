// A tile of columns, and then a strip of rows, at a time: what a sum needs stays in the cache.
#include "image/resample_passes.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <vector>

#include "image/alpha_runs.h"
#include "image/picture_rows.h"
#include "image/resample_sums.h"

namespace vellum {
namespace {

#pragma GCC diagnostic ignored "-Wpsabi"  // vectors are passed to functions that are inlined

// --------------------------------------------------------------------------------------- down columns

/// Bytes of a row that are summed at a time: what a sum of some rows needs stays in the first cache. Whole
/// blocks of both forms.
constexpr std::size_t kTile = 512;

/// Target rows `top` to `end` of a pass that changes the height.
struct DownJob {
  SourceRows source;
  const FastAxis& axis;
  std::uint32_t top, end;
  std::uint8_t* out;
  std::ptrdiff_t stride;  ///< from a row of `out` to the next
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
  VELLUM_INLINE const float* row(const SourceRows& source, std::uint32_t y, std::size_t at,
                                 std::size_t count) {
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

void sum_again(OpaqueForm, const DownJob& job, const ResampleAxis::Position& position, std::size_t at,
               TileResult& tile, std::size_t i) {
  tile.bytes[i] = exact_pixel(job.axis.exact.weights_of(position), [&](std::size_t k) {
    return job.source.row(position.first + static_cast<std::uint32_t>(k)) + at + i / 4 * 4;
  })[i % 4];
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
  const std::size_t bytes = job.source.bytes;
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

void sum_again(OpaqueForm, const AcrossJob& job, std::size_t x, std::size_t i) {
  sum_again(AlphaForm{}, job, x, i);
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

/// Calls work(top, end) for parts of the rows, on all cores.
template <class Work>
void for_each_part(std::uint32_t height, const Work& work) {
  const std::size_t most = 4 * parallel_width(), bands = (height + DownFirst::kRows - 1) / DownFirst::kRows;
  const std::size_t parts = std::min(bands, most);
  parallel_for(parts, [&](std::size_t i) {
    work(static_cast<std::uint32_t>(bands * i / parts * DownFirst::kRows),
         static_cast<std::uint32_t>(
             std::min<std::size_t>(height, bands * (i + 1) / parts * DownFirst::kRows)));
  });
}

bool is_opaque(const SourceRows& source, std::uint32_t top, std::uint32_t end) {
  for (std::uint32_t y = top; y < end; ++y)
    if (!is_opaque_run(source.row(y), source.bytes / 4)) return false;
  return true;
}

}  // namespace

struct DownFirst::Scratch {
  const FastAxis& across;
  const FastAxis& down;
  std::uint32_t bits;
  TileRows tiles;
  Strip strip;
  std::vector<std::uint8_t> band;

  template <class Form>
  void make(const SourceRows& source, std::uint32_t top, std::uint32_t end, const EditRows& rows) {
    const std::size_t bytes = source.bytes;
    filter_down<Form>({source, down, top, end, band.data(), static_cast<std::ptrdiff_t>(bytes)}, tiles);
    filter_across<Form>(
        across, strip, bytes, top, end, [&](std::uint32_t y) { return &band[bytes * (y - top)]; }, rows);
  }
};

DownFirst::DownFirst(const FastAxis& across, const FastAxis& down, std::uint32_t width, std::uint32_t bits)
    : scratch_(new Scratch{across, down, bits, TileRows(down.longest), Strip(width, bits / 8),
                           std::vector<std::uint8_t>(std::size_t{width} * (bits / 8) * kRows)}) {}

DownFirst::~DownFirst() = default;
DownFirst::DownFirst(DownFirst&&) noexcept = default;

void DownFirst::make(const SourceRows& source, std::uint32_t top, std::uint32_t end, const EditRows& rows) {
  if (scratch_->bits != 32) return scratch_->make<ByteForm>(source, top, end, rows);
  const auto& positions = scratch_->down.exact.positions;
  std::uint32_t first = positions[top].first, last = first;
  for (std::uint32_t y = top; y < end; ++y) {
    first = std::min(first, positions[y].first);
    last = std::max(last, positions[y].first + positions[y].count);
  }
  if (is_opaque(source, first, last))
    scratch_->make<OpaqueForm>(source, top, end, rows);
  else
    scratch_->make<AlphaForm>(source, top, end, rows);
}

namespace {

Picture down_first(const Picture& source, const FastAxis& across, const FastAxis& down) {
  Picture result = create_rows(across.size(), down.size(), nullptr, source.bits());
  if (!result) return {};
  const EditRows rows(result);
  const SourceRows from(source);
  for_each_part(down.size(), [&](std::uint32_t top, std::uint32_t end) {
    DownFirst bands(across, down, source.width(), source.bits());
    for (std::uint32_t y = top; y < end; y += DownFirst::kRows)
      bands.make(from, y, std::min(end, y + DownFirst::kRows), rows);
  });
  return result;
}

template <class Form>
Picture across_first(const Picture& source, const FastAxis& across, const FastAxis& down) {
  Picture between = create_rows(across.size(), source.height(), nullptr, source.bits());
  Picture result = create_rows(across.size(), down.size(), nullptr, source.bits());
  if (!between || !result) return {};
  const EditRows between_rows(between), rows(result);
  const SourceRows from(source);
  for_each_part(source.height(), [&](std::uint32_t top, std::uint32_t end) {
    Strip strip(source.width(), Form::kChannels);
    filter_across<Form>(
        across, strip, from.bytes, top, end, [&](std::uint32_t y) { return from.row(y); }, between_rows);
  });
  for_each_part(down.size(), [&](std::uint32_t top, std::uint32_t end) {
    TileRows tile_rows(down.longest);
    filter_down<Form>(
        {SourceRows(between), down, top, end, rows[top], -static_cast<std::ptrdiff_t>(rows.stride)},
        tile_rows);
  });
  return result;
}

}  // namespace

Picture resample_passes(const Picture& source, const ResampleAxis& across, const ResampleAxis& down,
                        PassOrder order) {
  const FastAxis fast_across(across), fast_down(down);
  if (order == PassOrder::DownFirst) return down_first(source, fast_across, fast_down);
  if (source.bits() != 32) return across_first<ByteForm>(source, fast_across, fast_down);
  return is_opaque(SourceRows(source), 0, source.height())
             ? across_first<OpaqueForm>(source, fast_across, fast_down)
             : across_first<AlphaForm>(source, fast_across, fast_down);
}

}  // namespace vellum
