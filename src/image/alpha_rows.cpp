#include "image/alpha_rows.h"

#include "image/lanes.h"

namespace vellum {
namespace {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpsabi"

/// Eight pixels, alpha in the upper byte; two channels of a pixel in each pair of halves.
using Pixels8 = std::uint32_t __attribute__((vector_size(32)));
using Halves16 = std::uint16_t __attribute__((vector_size(32)));

constexpr std::uint32_t kEven = 0x00FF00FF;

/// (channel * factor + 127) / 255 of the channels in even bytes, there again.
VELLUM_INLINE void weigh_even(Pixels8& channels, const Pixels8& factors) {
  // A sum of 255ths in 16 bits: this is its division by 255.
  Halves16 sum = reinterpret_cast<Halves16>(channels) * reinterpret_cast<Halves16>(factors) + 128;
  sum = (sum + (sum >> 8)) >> 8;
  channels = reinterpret_cast<Pixels8>(sum);
}

struct Weigh {
  VELLUM_INLINE void change(Pixels8& out, const Pixels8& in) const {
    const Pixels8 alpha = in >> 24;
    Pixels8 even = in & kEven, odd = in >> 8 & kEven;
    weigh_even(even, alpha | alpha << 16);
    weigh_even(odd, alpha | 255u << 16);
    out = even | odd << 8;
  }
};

/// Quotients of whole numbers that a float holds, rounded down; the divisor is below 2^16, so that a quotient
/// below 256 is not rounded to the next whole number. More becomes 255.
VELLUM_INLINE void divide(Pixels8& sums, const Floats8& divisors) {
  const Floats8 quotients = __builtin_convertvector(reinterpret_cast<Lanes8>(sums), Floats8) / divisors;
  const Lanes8 whole = __builtin_convertvector(quotients, Lanes8);
  sums = reinterpret_cast<Pixels8>(whole < 255 ? whole : Lanes8{} + 255);
}

struct Straighten {
  VELLUM_INLINE void change(Pixels8& out, const Pixels8& in) const {
    const Pixels8 alpha = in >> 24;
    const Pixels8 seen = reinterpret_cast<Pixels8>(alpha > 0);
    const Floats8 divisors =
        __builtin_convertvector(reinterpret_cast<Lanes8>(2 * alpha + (~seen & 1)), Floats8);
    Pixels8 made = in & 0xFF000000;
    for (unsigned shift = 0; shift < 24; shift += 8) {
      Pixels8 sums = (in >> shift & 255) * 510 + alpha;
      divide(sums, divisors);
      made |= (sums & seen) << shift;
    }
    out = made;
  }
};

/// channel * factor / 255, rounded down, of the channels in even bytes.
VELLUM_INLINE void share_even(Pixels8& channels, const Pixels8& factors) {
  Halves16 product = reinterpret_cast<Halves16>(channels) * reinterpret_cast<Halves16>(factors);
  product = (product + 1 + (product >> 8)) >> 8;
  channels = reinterpret_cast<Pixels8>(product);
}

/// The sum of the shares of both colors; alpha stays.
VELLUM_INLINE void blend(Pixels8& out, const Pixels8& in, const Pixels8& alpha) {
  const Pixels8 above = alpha | alpha << 16, below = 0x00FF00FF - above;
  Pixels8 even = out & kEven, odd = out >> 8 & kEven, own_even = in & kEven, own_odd = in >> 8 & 255;
  share_even(even, below);
  share_even(odd, below & 255);
  share_even(own_even, above);
  share_even(own_odd, above & 255);
  out = (even + own_even) | (odd + own_odd) << 8 | (out & 0xFF000000);
}

VELLUM_INLINE void lay_straight(Pixels8& out, const Pixels8& in, const Pixels8& alpha) {
  const Pixels8 above = alpha * 255, below = (out >> 24) * (255 - alpha), both = above + below;
  const Pixels8 seen = reinterpret_cast<Pixels8>(both > 0), half = both >> 1;
  const Floats8 divisors = __builtin_convertvector(reinterpret_cast<Lanes8>(both | (~seen & 1)), Floats8);
  Pixels8 made = both + 128;
  made = (made + (made >> 8)) >> 8 << 24;
  for (unsigned shift = 0; shift < 24; shift += 8) {
    Pixels8 sums = (in >> shift & 255) * above + (out >> shift & 255) * below + half;
    divide(sums, divisors);
    made |= sums << shift;
  }
  out = (made & seen) | (out & ~seen);
}

struct OverBlack {
  VELLUM_INLINE void change(Pixels8& out, const Pixels8& in) const { lay_straight(out, in, in >> 24); }
};

VELLUM_INLINE bool all_set(const Pixels8& lanes) {
  std::uint32_t all = lanes[0];
  for (int i = 1; i < 8; ++i) all &= lanes[i];
  return all == ~0u;
}

struct LayOn {
  std::uint32_t percent;
  bool atop;

  VELLUM_INLINE void change(Pixels8& out, const Pixels8& in) const {
    Pixels8 alpha = in >> 24;
    if (percent != 100) {
      alpha = alpha * percent + 50;
      divide(alpha, Floats8{} + 100.0f);
    }
    const Pixels8 opaque = reinterpret_cast<Pixels8>(out >= 0xFF000000);
    Pixels8 blended = out;
    blend(blended, in, alpha);
    if (atop || all_set(opaque)) {
      out = blended;
      return;
    }
    Pixels8 laid = out;
    lay_straight(laid, in, alpha);
    out = (blended & opaque) | (laid & ~opaque);
  }
};

template <class Rule>
VELLUM_INLINE void change_row(std::uint8_t* out, const std::uint8_t* in, std::size_t width,
                              const Rule& rule) {
  Pixels8 from = {}, to = {};
  std::size_t x = 0;
  for (; x + 8 <= width; x += 8) {
    std::memcpy(&from, in + 4 * x, sizeof from);
    std::memcpy(&to, out + 4 * x, sizeof to);
    rule.change(to, from);
    std::memcpy(out + 4 * x, &to, sizeof to);
  }
  if (x == width) return;
  std::memcpy(&from, in + 4 * x, 4 * (width - x));
  std::memcpy(&to, out + 4 * x, 4 * (width - x));
  rule.change(to, from);
  std::memcpy(out + 4 * x, &to, 4 * (width - x));
}

template <class Rule>
VELLUM_AVX2 void change_row_avx2(std::uint8_t* out, const std::uint8_t* in, std::size_t width,
                                 const Rule& rule) {
  change_row(out, in, width, rule);
}
template <class Rule>
void change_row_plain(std::uint8_t* out, const std::uint8_t* in, std::size_t width, const Rule& rule) {
  change_row(out, in, width, rule);
}

#pragma GCC diagnostic pop

template <class Rule>
void change(std::uint8_t* out, const std::uint8_t* in, std::size_t width, const Rule& rule) {
  const auto change_all = has_avx2() ? change_row_avx2<Rule> : change_row_plain<Rule>;
  change_all(out, in, width, rule);
}

}  // namespace

void weigh_row(std::uint8_t* out, const std::uint8_t* in, std::size_t width) {
  change(out, in, width, Weigh());
}

void straighten_row(std::uint8_t* row, std::size_t width) { change(row, row, width, Straighten()); }

void lay_over_black(std::uint8_t* out, const std::uint8_t* in, std::size_t width) {
  change(out, in, width, OverBlack());
}

void lay_row(std::uint8_t* out, const std::uint8_t* in, std::size_t width, std::uint32_t percent, bool atop) {
  change(out, in, width, LayOn{percent, atop});
}

}  // namespace vellum
