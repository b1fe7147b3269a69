#include "image/rotate.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <mutex>
#include <new>
#include <numbers>
#include <vector>

#include "image/alpha_rows.h"
#include "image/lanes.h"
#include "image/orientation.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

/// Clockwise: quarter turns, and the rest of -45 to 45 degrees.
struct Turn {
  int quarters;
  double rest;  ///< radians
};

Turn turn_of(int degrees) {
  int rest = 360 - degrees, quarters = 0;
  for (; rest < -45; rest += 90) --quarters;
  for (; rest > 45; rest -= 90) ++quarters;
  return {quarters & 3, rest * std::numbers::pi / 180};
}

/// The orientation of EXIF that a number of clockwise quarter turns undoes.
constexpr int kOrientations[] = {1, 6, 3, 8};

/// How far a row or column is moved: whole pixels, and 1/256 of the next one.
struct Shift {
  std::int64_t whole;
  std::uint32_t part;
};

/// Of the nth of `count` rows or columns, against their middle.
Shift shift_of(double factor, std::uint32_t n, std::uint32_t count) {
  const double pixels = factor * (n + 0.5 - count / 2.0), whole = std::floor(pixels);
  const auto part = static_cast<std::uint32_t>(std::lround((pixels - whole) * 256));
  return part == 256 ? Shift{static_cast<std::int64_t>(whole) + 1, 0}
                     : Shift{static_cast<std::int64_t>(whole), part};
}

/// The rim that a shear needs at each side.
std::uint32_t margin_of(double factor, std::uint32_t count) {
  return static_cast<std::uint32_t>(std::ceil(std::abs(factor) * count / 2)) + 1;
}

/// Rows of pixels in memory that is used again and again: a page that the system gives costs more than what
/// is written into it.
class Scratch {
 public:
  explicit Scratch(std::size_t bytes) {
    const std::scoped_lock lock(mutex);
    if (!spare.empty()) {
      bytes_ = std::move(spare.back());
      spare.pop_back();
    }
    if (bytes_.size() < bytes) bytes_ = std::vector<std::uint8_t>(bytes);
  }
  ~Scratch() {
    const std::scoped_lock lock(mutex);
    if (spare.size() < kMostSpare && bytes_.size() <= kMostKept) spare.push_back(std::move(bytes_));
  }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;

  std::uint8_t* data() { return bytes_.data(); }

 private:
  static constexpr std::size_t kMostSpare = 8, kMostKept = std::size_t{8} << 20;
  static inline std::mutex mutex;
  static inline std::vector<std::vector<std::uint8_t>> spare;

  std::vector<std::uint8_t> bytes_;
};

/// Rows of pixels from the top. Behind each row there is room for four bytes that nobody reads.
struct Plane {
  std::uint8_t* top = nullptr;
  std::uint32_t width = 0, height = 0;
  std::size_t stride = 0;

  std::uint8_t* row(std::uint32_t y) const { return top + y * stride; }
};

std::size_t stride_of(std::uint32_t width, std::size_t bytes) { return (width * bytes + 4 + 63) / 64 * 64; }
/// What lies around a picture, as bytes of a pixel: with 32 bits nothing.
using Edge = std::array<std::uint8_t, 4>;

/// A pixel whose part has moved on to its neighbor.
template <std::size_t kBytes>
void mix(std::uint8_t* out, const std::uint8_t* here, const std::uint8_t* before, std::uint32_t part) {
  for (std::size_t c = 0; c < kBytes; ++c)
    out[c] = static_cast<std::uint8_t>((here[c] * (256 - part) + before[c] * part + 128) >> 8);
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpsabi"

using Halves16 = std::uint16_t __attribute__((vector_size(32)));

/// The same for 32 bytes: two in each lane, of which each has the share of its lane.
VELLUM_INLINE void mix_lanes(Halves16& here, const Halves16& before, const Halves16& share,
                             const Halves16& part) {
  const Halves16 even = (here & 255) * share + (before & 255) * part + 128;
  const Halves16 odd = (here >> 8) * share + (before >> 8) * part + 128;
  here = (even >> 8) | (odd & 0xFF00);
}

/// And for the bytes of many pixels.
VELLUM_INLINE void mix_bytes(std::uint8_t* out, const std::uint8_t* here, const std::uint8_t* before,
                             std::size_t bytes, std::uint32_t part) {
  const Halves16 moved = Halves16{} + static_cast<std::uint16_t>(part), stays = 256 - moved;
  std::size_t i = 0;
  for (; i + sizeof moved <= bytes; i += sizeof moved) {
    Halves16 mixing, other;
    std::memcpy(&mixing, here + i, sizeof mixing);
    std::memcpy(&other, before + i, sizeof other);
    mix_lanes(mixing, other, stays, moved);
    std::memcpy(out + i, &mixing, sizeof mixing);
  }
  for (; i < bytes; ++i) mix<1>(out + i, here + i, before + i, part);
}

VELLUM_AVX2 void mix_bytes_avx2(std::uint8_t* out, const std::uint8_t* here, const std::uint8_t* before,
                                std::size_t bytes, std::uint32_t part) {
  mix_bytes(out, here, before, bytes, part);
}
void mix_bytes_plain(std::uint8_t* out, const std::uint8_t* here, const std::uint8_t* before,
                     std::size_t bytes, std::uint32_t part) {
  mix_bytes(out, here, before, bytes, part);
}

void mix_run(std::uint8_t* out, const std::uint8_t* here, const std::uint8_t* before, std::size_t bytes,
             std::uint32_t part) {
  const auto mix = has_avx2() ? mix_bytes_avx2 : mix_bytes_plain;
  mix(out, here, before, bytes, part);
}

template <std::size_t kBytes>
void fill(std::uint8_t* out, std::size_t count, const Edge& edge) {
  for (std::size_t i = 0; i < count; ++i) std::memcpy(out + kBytes * i, edge.data(), kBytes);
}

/// `count` pixels of a row that has moved, from its pixel `first` on.
template <std::size_t kBytes>
void shear_row(std::uint8_t* out, std::int64_t first, std::int64_t count, const std::uint8_t* in,
               std::int64_t width, Shift shift, const Edge& edge) {
  // Pixel i comes of the pixels at + i and at + i - 1.
  const std::int64_t at = first - shift.whole;
  const auto until = [&](std::int64_t pixel) { return std::clamp<std::int64_t>(pixel - at, 0, count); };
  const std::int64_t begin = until(0), inner = until(1), last = until(width), end = until(width + 1);
  fill<kBytes>(out, static_cast<std::size_t>(begin), edge);
  if (inner > begin) mix<kBytes>(out + kBytes * begin, in, edge.data(), shift.part);
  if (last > inner) {
    const std::uint8_t* here = in + static_cast<std::int64_t>(kBytes) * (at + inner);
    mix_run(out + kBytes * inner, here, here - kBytes, kBytes * static_cast<std::size_t>(last - inner),
            shift.part);
  }
  if (end > last) mix<kBytes>(out + kBytes * last, edge.data(), in + kBytes * (width - 1), shift.part);
  fill<kBytes>(out + kBytes * end, static_cast<std::size_t>(count - end), edge);
}

/// Columns that are moved side by side: as many as a line of the cache holds.
constexpr std::uint32_t kColumns = 16;

/// Rows of kColumns pixels, each of which comes of the pixel at its place in `at` and of the one above that.
template <std::size_t kBytes>
VELLUM_INLINE void mix_columns(std::uint8_t* to, std::size_t to_stride, std::int64_t rows,
                               const std::uint8_t* const (&at)[kColumns], std::size_t stride,
                               const std::uint32_t (&part)[kColumns]) {
  constexpr std::size_t kLanes = 8, kGroups = kColumns / kLanes;
  Lanes8 before[kGroups], parts[kGroups];
  Halves16 moved[kGroups], stays[kGroups];
  const auto load = [&at](Lanes8 & lanes, std::size_t group, std::ptrdiff_t offset)
      __attribute__((always_inline)) {
    std::int32_t pixel[kLanes];
    for (std::size_t i = 0; i < kLanes; ++i) std::memcpy(&pixel[i], at[group * kLanes + i] + offset, 4);
    lanes = Lanes8{pixel[0], pixel[1], pixel[2], pixel[3], pixel[4], pixel[5], pixel[6], pixel[7]};
  };
  for (std::size_t group = 0; group < kGroups; ++group) {
    load(before[group], group, -static_cast<std::ptrdiff_t>(stride));
    std::memcpy(&parts[group], part + group * kLanes, sizeof parts[group]);
    moved[group] = reinterpret_cast<Halves16>(parts[group]);
    moved[group] |= reinterpret_cast<Halves16>(parts[group] <<= 16);
    stays[group] = 256 - moved[group];
  }
  for (std::size_t offset = 0; rows > 0; --rows, to += to_stride, offset += stride)
    for (std::size_t group = 0; group < kGroups; ++group) {
      Lanes8 here;
      load(here, group, offset);
      Halves16 mixing = reinterpret_cast<Halves16>(here);
      mix_lanes(mixing, reinterpret_cast<Halves16>(before[group]), stays[group], moved[group]);
      before[group] = here;
      std::uint8_t* out = to + kBytes * kLanes * group;
      if constexpr (kBytes == 4) {
        std::memcpy(out, &mixing, sizeof mixing);
      } else {
        const Lanes8 made = reinterpret_cast<Lanes8>(mixing);
        for (std::size_t i = 0; i < kLanes; ++i) {
          const std::int32_t pixel = made[i];
          std::memcpy(out + kBytes * i, &pixel, kBytes);
        }
      }
    }
}

template <std::size_t kBytes>
VELLUM_AVX2 void mix_columns_avx2(std::uint8_t* to, std::size_t to_stride, std::int64_t rows,
                                  const std::uint8_t* const (&at)[kColumns], std::size_t stride,
                                  const std::uint32_t (&part)[kColumns]) {
  mix_columns<kBytes>(to, to_stride, rows, at, stride, part);
}
template <std::size_t kBytes>
void mix_columns_plain(std::uint8_t* to, std::size_t to_stride, std::int64_t rows,
                       const std::uint8_t* const (&at)[kColumns], std::size_t stride,
                       const std::uint32_t (&part)[kColumns]) {
  mix_columns<kBytes>(to, to_stride, rows, at, stride, part);
}

#pragma GCC diagnostic pop

/// `columns` columns from `left` on: row y of `out` is row first + y of what they become.
template <std::size_t kBytes>
void shear_columns(const Plane& out, const Plane& in, std::uint32_t left, std::uint32_t columns,
                   double factor, std::int64_t first, const Edge& edge) {
  std::int64_t from[kColumns];  // the row of the picture that comes to row 0
  std::uint32_t part[kColumns];
  std::int64_t inner = 0, last = out.height;
  for (std::uint32_t x = 0; x < columns; ++x) {
    const Shift shift = shift_of(factor, left + x, in.width);
    from[x] = first - shift.whole;
    part[x] = shift.part;
    inner = std::max(inner, 1 - from[x]);
    last = std::min(last, in.height - from[x]);
  }
  inner = std::min<std::int64_t>(inner, out.height);
  last = std::max(last, inner);
  const auto outside = [&](std::int64_t y) {
    std::uint8_t* to = out.row(static_cast<std::uint32_t>(y)) + kBytes * left;
    for (std::uint32_t x = 0; x < columns; ++x) {
      const std::int64_t row = y + from[x];
      const auto pixel = [&](std::int64_t of) -> const std::uint8_t* {
        return of < 0 || of >= in.height ? edge.data()
                                         : in.row(static_cast<std::uint32_t>(of)) + kBytes * (left + x);
      };
      mix<kBytes>(to + kBytes * x, pixel(row), pixel(row - 1), part[x]);
    }
  };
  for (std::int64_t y = 0; y < inner; ++y) outside(y);
  if (columns < kColumns) {
    for (std::int64_t y = inner; y < last; ++y) outside(y);
  } else if (inner < last) {
    const std::uint8_t* at[kColumns];
    for (std::uint32_t x = 0; x < columns; ++x)
      at[x] = in.row(static_cast<std::uint32_t>(inner + from[x])) + kBytes * (left + x);
    const auto mix_all = has_avx2() ? mix_columns_avx2<kBytes> : mix_columns_plain<kBytes>;
    mix_all(out.row(static_cast<std::uint32_t>(inner)) + kBytes * left, out.stride, last - inner, at,
            in.stride, part);
  }
  for (std::int64_t y = last; y < out.height; ++y) outside(y);
}

template <std::size_t kBytes>
void shear_all_columns(const Plane& out, const Plane& in, double factor, std::int64_t first,
                       const Edge& edge) {
  const std::uint32_t groups = (in.width + kColumns - 1) / kColumns;
  for_each_row(groups, kColumns * kBytes * in.height, [&](std::uint32_t group) {
    const std::uint32_t left = group * kColumns;
    shear_columns<kBytes>(out, in, left, std::min(kColumns, in.width - left), factor, first, edge);
  });
}

bool is_opaque_row(const std::uint8_t* row, std::size_t width) {
  std::uint8_t all = 255;
  for (std::size_t x = 0; x < width; ++x) all &= row[4 * x + 3];
  return all == 255;
}

/// What a shear works on: pixels that can be mixed, in rows with room behind them.
template <std::size_t kBytes>
class Weighted {
 public:
  explicit Weighted(const Picture& picture)
      : picture_(picture), spare_(kBytes == 4 ? std::size_t{4} * picture.width() : 0) {}
  const std::uint8_t* row(std::uint32_t y) {
    const std::uint8_t* row = picture_.row(y);
    if (kBytes == 3 || is_opaque_row(row, picture_.width())) return row;
    weigh_row(spare_.data(), row, picture_.width());
    return spare_.data();
  }

 private:
  const Picture& picture_;
  std::vector<std::uint8_t> spare_;
};

/// Bands of rows, each with what one thread needs.
template <class Work>
void for_each_band(std::uint32_t height, std::size_t row_bytes, const Work& work) {
  constexpr std::uint32_t kBand = 64;
  const std::uint32_t bands = (height + kBand - 1) / kBand;
  for_each_row(bands, kBand * row_bytes,
               [&](std::uint32_t band) { work(band * kBand, std::min((band + 1) * kBand, height)); });
}

Edge edge_of(Colour background) { return {blue_of(background), green_of(background), red_of(background), 0}; }

/// The picture with its rows moved: the part of this width that begins at `first`.
template <std::size_t kBytes>
void shear_rows(const Plane& out, const Picture& picture, double factor, std::int64_t first,
                const Edge& edge) {
  for_each_band(picture.height(), out.stride, [&](std::uint32_t top, std::uint32_t bottom) {
    Weighted<kBytes> in(picture);
    for (std::uint32_t y = top; y < bottom; ++y)
      shear_row<kBytes>(out.row(y), first, out.width, in.row(y), picture.width(),
                        shift_of(factor, y, picture.height()), edge);
  });
}

/// Where a part of this length begins in the middle of a whole one that has `margin` at each side.
std::int64_t middle_of(std::uint32_t length, std::uint32_t margin, std::uint32_t part) {
  return (std::int64_t{length} + 2 * std::int64_t{margin} - part) / 2 - std::int64_t{margin};
}

/// Three shears, of which the second and the third make only what the result shows.
template <std::size_t kBytes>
Picture turned_rest(const Picture& picture, double rest, std::uint32_t width, std::uint32_t height,
                    const Edge& edge) {
  const double along = -std::tan(rest / 2), across = std::sin(rest);
  const std::uint32_t w = picture.width(), h = picture.height();
  const std::uint32_t side = margin_of(along, h), wide = w + 2 * side, down = margin_of(across, wide);
  const std::uint32_t high = h + 2 * down, more = margin_of(along, high);
  Picture result = create_rows(width, height, nullptr, 8 * kBytes);
  const EditRows rows(result);
  if (!rows) return {};
  const std::size_t stride = stride_of(wide, kBytes);
  Scratch first(stride * h + 64), second(stride * height + 64);
  const Plane leaning{first.data(), wide, h, stride}, turning{second.data(), wide, height, stride};
  shear_rows<kBytes>(leaning, picture, along, -std::int64_t{side}, edge);
  // Row y of the result is row top + y of all the rows that the second shear would make.
  const std::int64_t top = (std::int64_t{high} - height) / 2;
  shear_all_columns<kBytes>(turning, leaning, across, top - std::int64_t{down}, edge);
  const std::int64_t left = middle_of(wide, more, width);
  for_each_row(height, stride, [&](std::uint32_t y) {
    const auto row = static_cast<std::uint32_t>(top + y);
    shear_row<kBytes>(rows[y], left, width, turning.row(y), wide, shift_of(along, row, high), edge);
    if (kBytes == 4) straighten_row(rows[y], width);
  });
  return result;
}

template <std::size_t kBytes>
Picture sheared_once(const Picture& picture, double factor, bool columns, std::uint32_t width,
                     std::uint32_t height, const Edge& edge) {
  const std::uint32_t w = picture.width(), h = picture.height();
  Picture result = create_rows(width, height, nullptr, 8 * kBytes);
  const EditRows rows(result);
  if (!rows) return {};
  const std::size_t stride = stride_of(columns ? w : width, kBytes);
  Scratch first(columns ? stride * h + 64 : 0), second(stride * height + 64);
  const Plane whole{first.data(), w, h, stride}, moved{second.data(), columns ? w : width, height, stride};
  if (columns) {
    shear_rows<kBytes>(whole, picture, 0, 0, edge);
    shear_all_columns<kBytes>(moved, whole, factor, middle_of(h, margin_of(factor, w), height), edge);
  } else {
    shear_rows<kBytes>(moved, picture, factor, middle_of(w, margin_of(factor, h), width), edge);
  }
  for_each_row(height, stride, [&](std::uint32_t y) {
    std::memcpy(rows[y], moved.row(y), kBytes * width);
    if (kBytes == 4) straighten_row(rows[y], width);
  });
  return result;
}

double shear_factor(int degrees) { return std::tan(degrees * std::numbers::pi / 180); }

std::uint32_t sheared_side(std::uint32_t side, std::uint32_t other, int degrees) {
  return side + static_cast<std::uint32_t>(std::ceil(std::abs(shear_factor(degrees)) * other));
}

}  // namespace

std::pair<std::uint32_t, std::uint32_t> rotated_size(std::uint32_t width, std::uint32_t height, int degrees) {
  const Turn turn = turn_of(degrees);
  if (turn.quarters & 1) std::swap(width, height);
  if (turn.rest == 0) return {width, height};
  const double c = std::cos(turn.rest), s = std::abs(std::sin(turn.rest));
  return {static_cast<std::uint32_t>(std::ceil(width * c + height * s)),
          static_cast<std::uint32_t>(std::ceil(width * s + height * c))};
}

Picture rotated(const Picture& picture, int degrees, Colour background) try {
  if (picture.bits() < 24) return {};
  const Turn turn = turn_of(degrees);
  const Picture upright = oriented(picture, kOrientations[turn.quarters]);
  if (!upright || turn.rest == 0) return upright;
  const auto [width, height] = rotated_size(picture.width(), picture.height(), degrees);
  return picture.bits() == 32 ? turned_rest<4>(upright, turn.rest, width, height, {})
                              : turned_rest<3>(upright, turn.rest, width, height, edge_of(background));
} catch (const std::bad_alloc&) {
  return {};
}

Picture sheared(const Picture& picture, int degrees, bool columns, Colour background) try {
  if (picture.bits() < 24 || std::abs(degrees) > 60) return {};
  if (degrees == 0) return picture;
  // Positive degrees move the top to the right, and the left side up.
  const double factor = columns ? shear_factor(degrees) : -shear_factor(degrees);
  const std::uint32_t w = picture.width(), h = picture.height();
  const std::uint32_t width = columns ? w : sheared_side(w, h, degrees),
                      height = columns ? sheared_side(h, w, degrees) : h;
  return picture.bits() == 32 ? sheared_once<4>(picture, factor, columns, width, height, {})
                              : sheared_once<3>(picture, factor, columns, width, height, edge_of(background));
} catch (const std::bad_alloc&) {
  return {};
}

}  // namespace vellum
