#include "image/png_filter.h"

#include <cstdlib>
#include <cstring>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

#include "image/lanes.h"
#include "image/png_filter_wave.h"

namespace vellum {
namespace {

enum Filter : std::uint8_t { kNone, kSub, kUp, kAverage, kPaeth };

/// PNG standard, "Filter type 4: Paeth".
std::uint8_t paeth(int left, int up, int corner) {
  const int to_left = std::abs(up - corner);
  const int to_up = std::abs(left - corner);
  const int to_corner = std::abs(left + up - 2 * corner);
  if (to_left <= to_up && to_left <= to_corner) return static_cast<std::uint8_t>(left);
  return static_cast<std::uint8_t>(to_up <= to_corner ? up : corner);
}

// ---------------------------------------------------------------------------------------------- undoing,
// byte by byte

void undo_up(std::uint8_t* row, const std::uint8_t* prior, std::size_t bytes) {
  for (std::size_t i = 0; i < bytes; ++i) row[i] = static_cast<std::uint8_t>(row[i] + prior[i]);
}

void undo_by_bytes(std::uint8_t type, std::uint8_t* row, const std::uint8_t* prior, std::size_t bytes,
                   std::size_t distance) {
  for (std::size_t i = 0; i < bytes; ++i) {
    const int left = i < distance ? 0 : row[i - distance];
    const int corner = i < distance ? 0 : prior[i - distance];
    const int predicted = type == kSub       ? left
                          : type == kAverage ? (left + prior[i]) / 2
                                             : paeth(left, prior[i], corner);
    row[i] = static_cast<std::uint8_t>(row[i] + predicted);
  }
}

// ------------------------------------------------------------------------------------------ undoing, pixel
// by pixel

#if defined(__SSE2__)

// A pixel depends on the one before it, so the bytes of one pixel are what can be done at the same time.
// Loads take 8 bytes (hence kFilterSlack), stores exactly a pixel.

template <std::size_t kPixel>
__m128i load_pixel(const std::uint8_t* p) {
  if constexpr (kPixel <= 4) {
    int bits;
    std::memcpy(&bits, p, 4);
    return _mm_cvtsi32_si128(bits);
  } else {
    return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
  }
}

template <std::size_t kPixel>
void store_pixel(std::uint8_t* p, __m128i pixel) {
  alignas(16) std::uint8_t bytes[16];
  if constexpr (kPixel <= 4) {
    const int bits = _mm_cvtsi128_si32(pixel);
    // In parts that a register gives: three bytes at once would go through memory, and wait for it.
    if constexpr (kPixel == 3) {
      const auto low = static_cast<std::uint16_t>(bits);
      std::memcpy(p, &low, sizeof low);
      p[2] = static_cast<std::uint8_t>(bits >> 16);
    } else {
      std::memcpy(p, &bits, kPixel);
    }
  } else {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(bytes), pixel);
    std::memcpy(p, bytes, kPixel);
  }
}

template <std::size_t kPixel>
void undo_sub(std::uint8_t* row, std::size_t bytes) {
  __m128i left = _mm_setzero_si128();
  for (std::size_t i = 0; i < bytes; i += kPixel) {
    left = _mm_add_epi8(left, load_pixel<kPixel>(row + i));
    store_pixel<kPixel>(row + i, left);
  }
}

// The instruction that averages rounds up, the filter down: so all is done on inverted bytes, of which the
// average rounded up is that of the plain ones rounded down.
/// `from`, `to`: bytes of the row.
template <std::size_t kPixel>
void undo_average(std::uint8_t* row, const std::uint8_t* prior, std::size_t from, std::size_t to) {
  const __m128i ones = _mm_set1_epi8(-1);
  __m128i left = from == 0 ? ones : _mm_xor_si128(load_pixel<kPixel>(row + from - kPixel), ones);
  for (std::size_t i = from; i < to; i += kPixel) {
    const __m128i up = _mm_xor_si128(load_pixel<kPixel>(prior + i), ones);
    left = _mm_sub_epi8(_mm_avg_epu8(left, up), load_pixel<kPixel>(row + i));
    store_pixel<kPixel>(row + i, _mm_xor_si128(left, ones));
  }
}

/// The same for pixels of three bytes, which are loaded and stored four at a time.
VELLUM_AVX2 void undo_average_of_threes(std::uint8_t* row, const std::uint8_t* prior, std::size_t bytes) {
  const __m128i ones = _mm_set1_epi8(-1);
  const __m128i close = _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
  __m128i left = ones;
  std::size_t i = 0;
  for (; i + 12 <= bytes; i += 12) {
    const __m128i raw = _mm_loadu_si128(reinterpret_cast<const __m128i*>(row + i));
    const __m128i up = _mm_xor_si128(_mm_loadu_si128(reinterpret_cast<const __m128i*>(prior + i)), ones);
    const __m128i a = _mm_sub_epi8(_mm_avg_epu8(left, up), raw);
    const __m128i b = _mm_sub_epi8(_mm_avg_epu8(a, _mm_srli_si128(up, 3)), _mm_srli_si128(raw, 3));
    const __m128i c = _mm_sub_epi8(_mm_avg_epu8(b, _mm_srli_si128(up, 6)), _mm_srli_si128(raw, 6));
    left = _mm_sub_epi8(_mm_avg_epu8(c, _mm_srli_si128(up, 9)), _mm_srli_si128(raw, 9));
    const __m128i all = _mm_unpacklo_epi64(_mm_unpacklo_epi32(a, b), _mm_unpacklo_epi32(c, left));
    const __m128i pixels = _mm_shuffle_epi8(_mm_xor_si128(all, ones), close);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(row + i), pixels);
    const int rest = _mm_extract_epi32(pixels, 2);
    std::memcpy(row + i + 8, &rest, sizeof rest);
  }
  for (; i < bytes; i += 3) {
    const __m128i up = _mm_xor_si128(load_pixel<3>(prior + i), ones);
    left = _mm_sub_epi8(_mm_avg_epu8(left, up), load_pixel<3>(row + i));
    store_pixel<3>(row + i, _mm_xor_si128(left, ones));
  }
}

__m128i absolute_16(__m128i value) { return _mm_max_epi16(value, _mm_sub_epi16(_mm_setzero_si128(), value)); }

__m128i choose(__m128i mask, __m128i yes, __m128i no) {
  return _mm_or_si128(_mm_and_si128(mask, yes), _mm_andnot_si128(mask, no));
}

/// `from`, `to`: bytes of the row.
template <std::size_t kPixel>
void undo_paeth(std::uint8_t* row, const std::uint8_t* prior, std::size_t from, std::size_t to) {
  const __m128i zero = _mm_setzero_si128();
  __m128i left = zero, corner = zero;  // 16 bits a channel
  if (from != 0) {
    left = _mm_unpacklo_epi8(load_pixel<kPixel>(row + from - kPixel), zero);
    corner = _mm_unpacklo_epi8(load_pixel<kPixel>(prior + from - kPixel), zero);
  }
  for (std::size_t i = from; i < to; i += kPixel) {
    const __m128i up = _mm_unpacklo_epi8(load_pixel<kPixel>(prior + i), zero);
    const __m128i up_step = _mm_sub_epi16(up, corner);
    const __m128i left_step = _mm_sub_epi16(left, corner);
    const __m128i to_left = absolute_16(up_step);
    const __m128i to_up = absolute_16(left_step);
    const __m128i to_corner = absolute_16(_mm_add_epi16(up_step, left_step));
    const __m128i least = _mm_min_epi16(to_corner, _mm_min_epi16(to_left, to_up));
    const __m128i nearest =
        choose(_mm_cmpeq_epi16(least, to_left), left, choose(_mm_cmpeq_epi16(least, to_up), up, corner));
    const __m128i value = _mm_add_epi8(load_pixel<kPixel>(row + i), _mm_packus_epi16(nearest, nearest));
    store_pixel<kPixel>(row + i, value);
    left = _mm_unpacklo_epi8(value, zero);
    corner = up;
  }
}

template <std::size_t kPixel>
void undo_pixels(std::uint8_t type, std::uint8_t* row, const std::uint8_t* prior, std::size_t bytes) {
  if (type == kSub) undo_sub<kPixel>(row, bytes);
  if (type == kAverage && kPixel == 3 && has_avx2()) return undo_average_of_threes(row, prior, bytes);
  if (type == kAverage) undo_average<kPixel>(row, prior, 0, bytes);
  if (type == kPaeth) undo_paeth<kPixel>(row, prior, 0, bytes);
}

bool undo_by_pixels(std::uint8_t type, std::uint8_t* row, const std::uint8_t* prior, std::size_t bytes,
                    std::size_t distance) {
  switch (distance) {
    case 3:
      undo_pixels<3>(type, row, prior, bytes);
      return true;
    case 4:
      undo_pixels<4>(type, row, prior, bytes);
      return true;
    case 6:
      undo_pixels<6>(type, row, prior, bytes);
      return true;
    case 8:
      undo_pixels<8>(type, row, prior, bytes);
      return true;
    default:
      return false;
  }
}

#else

bool undo_by_pixels(std::uint8_t, std::uint8_t*, const std::uint8_t*, std::size_t, std::size_t) {
  return false;
}

#endif

// -----------------------------------------------------------------------------------------------------------
// filtering

/// How much a filtered byte weighs: its distance from 0 as a signed number.
constexpr std::uint32_t weight(std::uint8_t byte) { return byte < 128 ? byte : 256u - byte; }

std::uint64_t sum_of_weights(const std::uint8_t* row, std::size_t bytes) {
  // In pieces whose sum fits 32 bits, so that the inner loop runs on narrow lanes.
  std::uint64_t sum = 0;
  for (std::size_t i = 0; i < bytes;) {
    const std::size_t end = std::min(bytes, i + (std::size_t{1} << 20));
    std::uint32_t piece = 0;
    for (; i < end; ++i) piece += weight(row[i]);
    sum += piece;
  }
  return sum;
}

/// The bytes of the first pixel, whose left neighbours are 0.
void filter_head(std::uint8_t type, const std::uint8_t* row, const std::uint8_t* prior, std::size_t bytes,
                 std::size_t distance, std::uint8_t* out) {
  for (std::size_t i = 0; i < std::min(bytes, distance); ++i) {
    const int predicted = type == kSub ? 0 : type == kAverage ? prior[i] / 2 : prior[i];
    out[i] = static_cast<std::uint8_t>(row[i] - predicted);
  }
}

void filter_row(std::uint8_t type, const std::uint8_t* __restrict row, const std::uint8_t* __restrict prior,
                std::size_t bytes, std::size_t distance, std::uint8_t* __restrict out) {
  filter_head(type, row, prior, bytes, distance, out);
  switch (type) {
    case kSub:
      for (std::size_t i = distance; i < bytes; ++i)
        out[i] = static_cast<std::uint8_t>(row[i] - row[i - distance]);
      break;
    case kUp:
      for (std::size_t i = distance; i < bytes; ++i) out[i] = static_cast<std::uint8_t>(row[i] - prior[i]);
      break;
    case kAverage:
      for (std::size_t i = distance; i < bytes; ++i)
        out[i] = static_cast<std::uint8_t>(row[i] - (row[i - distance] + prior[i]) / 2);
      break;
    default:
      for (std::size_t i = distance; i < bytes; ++i) {
        // As paeth(), written so that it runs on 16-bit lanes.
        const auto left = static_cast<std::int16_t>(row[i - distance]);
        const auto up = static_cast<std::int16_t>(prior[i]);
        const auto corner = static_cast<std::int16_t>(prior[i - distance]);
        const auto up_step = static_cast<std::int16_t>(up - corner);
        const auto left_step = static_cast<std::int16_t>(left - corner);
        const auto both = static_cast<std::int16_t>(up_step + left_step);
        const auto to_left = static_cast<std::int16_t>(up_step < 0 ? -up_step : up_step);
        const auto to_up = static_cast<std::int16_t>(left_step < 0 ? -left_step : left_step);
        const auto to_corner = static_cast<std::int16_t>(both < 0 ? -both : both);
        const std::int16_t second = to_up <= to_corner ? up : corner;
        const std::int16_t nearest = ((to_left <= to_up) & (to_left <= to_corner)) ? left : second;
        out[i] = static_cast<std::uint8_t>(row[i] - nearest);
      }
  }
}

}  // namespace

bool png_unfilter(std::uint8_t type, std::uint8_t* row, const std::uint8_t* prior, std::size_t bytes,
                  std::size_t distance) {
  if (type > kPaeth) return false;
  if (type == kUp) undo_up(row, prior, bytes);
  if (type == kNone || type == kUp) return true;
  if (bytes % distance != 0 || !undo_by_pixels(type, row, prior, bytes, distance))
    undo_by_bytes(type, row, prior, bytes, distance);
  return true;
}

void png_undo_part(std::uint8_t type, std::uint8_t* row, const std::uint8_t* prior, std::size_t from,
                   std::size_t to, std::size_t distance) {
  if (type == kPaeth)
    distance == 3 ? undo_paeth<3>(row, prior, from, to) : undo_paeth<4>(row, prior, from, to);
  else
    distance == 3 ? undo_average<3>(row, prior, from, to) : undo_average<4>(row, prior, from, to);
}

std::size_t png_unfilter_some(std::uint8_t* rows, std::size_t count, const std::uint8_t* prior,
                              std::size_t bytes, std::size_t distance) {
  const std::uint8_t type = rows[0];
  const auto is_same = [&](std::size_t row) { return rows[row * (bytes + 1)] == type; };
  if ((type == kPaeth || type == kAverage) && count >= kWaveRows && is_same(1) && is_same(2) && is_same(3) &&
      can_undo_in_waves(bytes, distance)) {
    undo_in_waves(type, rows + 1, prior, bytes, distance);
    return kWaveRows;
  }
  return png_unfilter(type, rows + 1, prior, bytes, distance) ? 1 : 0;
}

void png_filter_row(const PngFilterChoice& choice, const std::uint8_t* row, const std::uint8_t* prior,
                    std::size_t bytes, std::size_t distance, std::uint8_t* out, std::uint8_t* scratch) {
  if (choice.fixed > kNone) {
    out[0] = static_cast<std::uint8_t>(choice.fixed);
    return filter_row(out[0], row, prior, bytes, distance, out + 1);
  }
  std::uint8_t best = kNone;
  const std::uint8_t* best_row = row;
  if (!choice.none_only && choice.fixed != kNone) {
    std::uint64_t least = sum_of_weights(row, bytes);
    std::uint8_t* trial = scratch;
    for (const Filter type : {kSub, kUp, kAverage, kPaeth}) {
      if ((type != kUp && !choice.horizontal) || (type != kSub && !choice.vertical)) continue;
      filter_row(type, row, prior, bytes, distance, trial);
      const std::uint64_t sum = sum_of_weights(trial, bytes);
      if (sum >= least) continue;
      least = sum;
      best = type;
      best_row = trial;
      trial = trial == scratch ? scratch + bytes : scratch;
    }
  }
  out[0] = best;
  std::memcpy(out + 1, best_row, bytes);
}

}  // namespace vellum
