#include "image/hue_shift.h"

#include <algorithm>
#include <cmath>

#include "image/lanes.h"

namespace vellum {
namespace {

/// Added before rounding, so that halves go up that a sum of shares comes a little below.
constexpr double kSlack = 1e-9;

std::uint8_t rounded(double value) {
  return static_cast<std::uint8_t>(std::clamp(std::lround(value + kSlack), 0L, 255L));
}

/// A value moved by a share is factor * value + add.
struct Line {
  double factor, add;
  explicit Line(double share) : factor(share < 0 ? 1 + share : 1 - share), add(share < 0 ? 0 : share) {}
};

double moved(double value, double share) {
  return share < 0 ? value * (1 + share) : value + (1 - value) * share;
}

/// One channel of a color of hue, saturation and lightness: a hexagon of six ramps. `p` and `q` are the least
/// and the greatest channel.
double ramp(double p, double q, double turn) {
  turn -= std::floor(turn);
  if (turn < 1.0 / 6) return p + (q - p) * 6 * turn;
  if (turn < 0.5) return q;
  return turn < 2.0 / 3 ? p + (q - p) * (2.0 / 3 - turn) * 6 : p;
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpsabi"

using Doubles4 = double __attribute__((vector_size(32)));
using Longs4 = std::int64_t __attribute__((vector_size(32)));

struct Lines {
  double sixths;
  Line saturation, lightness;
};

// Vectors of this size are not returned: without AVX that is done in another way.
VELLUM_INLINE void take(Doubles4& to, const Lanes4& lanes) { to = __builtin_convertvector(lanes, Doubles4); }
template <class Vector>
VELLUM_INLINE void lower(Vector& a, const Vector& b) {
  a = a < b ? a : b;
}
template <class Vector>
VELLUM_INLINE void raise(Vector& a, const Vector& b) {
  a = a > b ? a : b;
}
VELLUM_INLINE bool any(const Lanes8& lanes) {
  const Lanes4 either =
      __builtin_shufflevector(lanes, lanes, 0, 1, 2, 3) | __builtin_shufflevector(lanes, lanes, 4, 5, 6, 7);
  const Words2 words = reinterpret_cast<Words2>(either);
  return (words[0] | words[1]) != 0;
}

/// Where a channel stands between the least and the greatest one, of its hue in sixths of a turn.
VELLUM_INLINE void follow_ramp(Doubles4& at) {
  const Doubles4 zero = {}, full = zero + 1, six = zero + 6;
  at = at < 0 ? at + six : at;
  at = at >= six ? at - six : at;
  lower(at, 4 - at);
  lower(at, full);
  raise(at, zero);
}

/// Four pixels of 32 bits at a time, with other sums than those of `shift_color` that differ from them by
/// less than the guard below. False where a value lies so near to where rounding changes that it could
/// matter.
template <bool kTurns>
VELLUM_INLINE bool shift_four(Lanes4& pixels, const Lines& lines) {
  constexpr double kGuard = 1e-10;
  const Lanes4 colors[] = {pixels & 255, pixels >> 8 & 255, pixels >> 16 & 255};
  const auto& [b, g, r] = colors;
  const Lanes4 most = greatest(b, greatest(g, r)), low = least(b, least(g, r)), range = most - low,
               sum = most + low, room = least(sum, 510 - sum), one = Lanes4{} + 1;
  Doubles4 ranges, rooms, sums, product;
  take(ranges, range);
  take(rooms, room);
  take(sums, sum);
  take(product, greatest(range * room, one));
  const Doubles4 share = 1 / product;  // one division for hue and saturation
  const Doubles4 twice = sums * lines.lightness.factor + 510 * lines.lightness.add;
  Doubles4 reach = 510 - twice;
  lower(reach, twice);
  // From the least channel to the greatest by the range that there was. What is grey stays grey: it has none.
  const Doubles4 slope = (ranges * lines.saturation.factor + rooms * lines.saturation.add) * share * reach;
  const Doubles4 chroma = slope * ranges, base = (twice - chroma) * 0.5 + (0.5 + kSlack);
  Doubles4 hue = {}, furthest = {};
  if constexpr (kTurns) {
    take(hue, most == r ? g - b : most == g ? b - r + range * 2 : r - g + range * 4);
    hue = hue * rooms * share + lines.sixths;
  }
  Lanes4 made = pixels & static_cast<std::int32_t>(0xFF000000);
  for (int channel = 0; channel < 3; ++channel) {
    Doubles4 at, rounded_down;
    if constexpr (kTurns) {
      at = hue + (2 * channel - 2);
      follow_ramp(at);
      at = base + chroma * at;
    } else {
      take(at, colors[channel] - low);
      at = base + at * slope;
    }
    const Lanes4 whole = __builtin_convertvector(at, Lanes4);
    take(rounded_down, whole);
    at -= rounded_down;
    raise(furthest, at);
    raise(furthest, 1 - at);
    made |= whole << 8 * channel;
  }
  pixels = made;
  const Longs4 doubt = furthest > 1 - kGuard;
  return (doubt[0] | doubt[1] | doubt[2] | doubt[3]) == 0;
}

/// Eight pixels whose hues stay, in single precision: their sums differ from the others by less than 0.0003.
VELLUM_INLINE bool shift_eight(Lanes8& pixels, const Lines& lines) {
  constexpr float kGuard = 1e-3F;
  const Lanes8 colors[] = {pixels & 255, pixels >> 8 & 255, pixels >> 16 & 255};
  Lanes8 most = colors[0], low = colors[0];
  for (const Lanes8& color : {colors[1], colors[2]}) {
    raise(most, color);
    lower(low, color);
  }
  const Lanes8 range = most - low, sum = most + low;
  Lanes8 room = sum, divisor;
  lower(room, 510 - sum);
  divisor = range * room;
  raise(divisor, Lanes8{} + 1);
  const auto factor = static_cast<float>(lines.saturation.factor),
             add = static_cast<float>(lines.saturation.add);
  const Floats8 ranges = __builtin_convertvector(range, Floats8),
                rooms = __builtin_convertvector(room, Floats8);
  const Floats8 twice = __builtin_convertvector(sum, Floats8) * static_cast<float>(lines.lightness.factor) +
                        static_cast<float>(510 * lines.lightness.add);
  Floats8 reach = 510 - twice, furthest = {};
  lower(reach, twice);
  const Floats8 slope = (ranges * factor + rooms * add) * reach / __builtin_convertvector(divisor, Floats8);
  const Floats8 base = (twice - slope * ranges) * 0.5F + 0.5F;
  Lanes8 made = pixels & static_cast<std::int32_t>(0xFF000000);
  for (int channel = 0; channel < 3; ++channel) {
    Floats8 at = base + __builtin_convertvector(colors[channel] - low, Floats8) * slope;
    const Lanes8 whole = __builtin_convertvector(at, Lanes8);
    at -= __builtin_convertvector(whole, Floats8);
    raise(furthest, at);
    raise(furthest, 1 - at);
    made |= whole << 8 * channel;
  }
  pixels = made;
  return !any(furthest > 1 - kGuard);
}

template <std::size_t kBytes, class Lanes>
VELLUM_INLINE void load_pixels(Lanes& pixels, const std::uint8_t* at) {
  if constexpr (kBytes == 4) {
    std::memcpy(&pixels, at, sizeof pixels);
  } else {
    for (std::size_t i = 0; i < sizeof pixels / 4; ++i) {
      std::int32_t pixel;
      std::memcpy(&pixel, at + i * kBytes, 4);
      pixels[i] = pixel;
    }
  }
}

/// With 24 bits the fourth byte is the next pixel's first, as it was. Behind the last one it isn't written: a
/// load across what was just stored would wait for it.
template <std::size_t kBytes, class Lanes>
VELLUM_INLINE void store_pixels(std::uint8_t* at, const Lanes& pixels) {
  if constexpr (kBytes == 4) {
    std::memcpy(at, &pixels, sizeof pixels);
  } else {
    constexpr std::size_t kCount = sizeof pixels / 4;
    for (std::size_t i = 0; i < kCount; ++i) {
      const std::int32_t pixel = pixels[i];
      std::memcpy(at + i * kBytes, &pixel, i + 1 < kCount ? 4 : kBytes);
    }
  }
}

VELLUM_INLINE bool same(const Lanes4& a, const Lanes4& b) {
  const Words2 differing = reinterpret_cast<Words2>(a) ^ reinterpret_cast<Words2>(b);
  return (differing[0] | differing[1]) == 0;
}

/// As many pixels as go by fours with one behind them, whose byte 24 bits need. Gives their number.
template <std::size_t kBytes, bool kTurns>
VELLUM_INLINE std::size_t shift_fours(std::uint8_t* row, std::size_t width, const HueShift& shift,
                                      const Lines& lines) {
  Lanes4 before = {}, after = {};
  bool known = false;  // neighbors are often alike
  std::size_t x = 0;
  for (; x + 4 < width; x += 4) {
    std::uint8_t* at = row + x * kBytes;
    Lanes4 pixels;
    load_pixels<kBytes>(pixels, at);
    if (!known || !same(pixels, before)) {
      before = after = pixels;
      known = shift_four<kTurns>(after, lines);
    }
    if (known)
      store_pixels<kBytes>(at, after);
    else
      for (std::size_t i = 0; i < 4; ++i) shift_color(at + i * kBytes, shift);
  }
  return x;
}

/// The same by eights where hues stay; those near to where rounding changes by fours.
template <std::size_t kBytes>
VELLUM_INLINE std::size_t shift_eights(std::uint8_t* row, std::size_t width, const HueShift& shift,
                                       const Lines& lines) {
  Lanes8 before = {}, after = {};
  bool known = false;
  std::size_t x = 0;
  for (; x + 8 < width; x += 8) {
    std::uint8_t* at = row + x * kBytes;
    Lanes8 pixels;
    load_pixels<kBytes>(pixels, at);
    if (!known || any(pixels ^ before)) {
      before = after = pixels;
      known = shift_eight(after, lines);
    }
    if (known)
      store_pixels<kBytes>(at, after);
    else
      shift_fours<kBytes, false>(at, 9, shift, lines);
  }
  return x + shift_fours<kBytes, false>(row + x * kBytes, width - x, shift, lines);
}

template <std::size_t kBytes>
VELLUM_AVX2 std::size_t shift_most_avx2(std::uint8_t* row, std::size_t width, const HueShift& shift,
                                        const Lines& lines) {
  return lines.sixths != 0 ? shift_fours<kBytes, true>(row, width, shift, lines)
                           : shift_eights<kBytes>(row, width, shift, lines);
}

template <std::size_t kBytes>
std::size_t shift_most_plain(std::uint8_t* row, std::size_t width, const HueShift& shift,
                             const Lines& lines) {
  return lines.sixths != 0 ? shift_fours<kBytes, true>(row, width, shift, lines)
                           : shift_eights<kBytes>(row, width, shift, lines);
}

#pragma GCC diagnostic pop

template <std::size_t kBytes>
void shift_pixels(std::uint8_t* row, std::size_t width, const HueShift& shift) {
  const Lines lines{6 * shift.hue, Line(shift.saturation), Line(shift.lightness)};
  const auto shift_most = has_avx2() ? shift_most_avx2<kBytes> : shift_most_plain<kBytes>;
  for (std::size_t x = shift_most(row, width, shift, lines); x < width; ++x)
    shift_color(row + x * kBytes, shift);
}

}  // namespace

void shift_color(std::uint8_t* color, const HueShift& shift) {
  const double b = color[0] / 255.0, g = color[1] / 255.0, r = color[2] / 255.0;
  const double most = std::max({r, g, b}), least = std::min({r, g, b}), range = most - least;
  double hue = 0, saturation = 0, lightness = (most + least) / 2;
  if (range > 0) {
    saturation = range / (1 - std::abs(2 * lightness - 1));
    hue = most == r ? (g - b) / range : most == g ? (b - r) / range + 2 : (r - g) / range + 4;
  }
  hue = hue / 6 + shift.hue;
  if (range > 0) saturation = std::clamp(moved(saturation, shift.saturation), 0.0, 1.0);
  lightness = moved(lightness, shift.lightness);
  const double q =
      lightness < 0.5 ? lightness * (1 + saturation) : lightness + saturation - lightness * saturation;
  const double p = 2 * lightness - q;
  color[0] = rounded(255 * ramp(p, q, hue - 1.0 / 3));
  color[1] = rounded(255 * ramp(p, q, hue));
  color[2] = rounded(255 * ramp(p, q, hue + 1.0 / 3));
}

void shift_row(std::uint8_t* row, std::size_t width, std::size_t pixel_bytes, const HueShift& shift) {
  pixel_bytes == 4 ? shift_pixels<4>(row, width, shift) : shift_pixels<3>(row, width, shift);
}

}  // namespace vellum
