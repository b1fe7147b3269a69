#include "image/png_filter_wave.h"

#include <immintrin.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "image/lanes.h"
#include "image/png_filter.h"

// A pixel waits for the one to its left, so a row by itself leaves most of the processor idle. Here each row
// follows the one above it at a distance of two pixels, and the four pixels of a step lie in one register, 16
// bits a channel. What a row needs of the one above it was ready a step ago.

namespace vellum {
namespace {

constexpr std::size_t kLag = 2;    ///< pixels from a row to the next one
constexpr std::size_t kBlock = 4;  ///< pixels of a row that are loaded and stored together
constexpr std::uint8_t kPaethType = 4;
constexpr std::size_t kHead = kLag * (kWaveRows - 1);

/// The rows and the one above them, at [0].
using Rows = std::array<std::uint8_t*, kWaveRows + 1>;

/// Four pixels in 32 bits each, whose fourth byte is the channel or has no meaning.
template <std::size_t kPixel>
VELLUM_AVX2 inline __m128i load_block(const std::uint8_t* from) {
  const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
  if constexpr (kPixel == 4) return bytes;
  return _mm_shuffle_epi8(bytes, _mm_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1));
}

template <std::size_t kPixel>
VELLUM_AVX2 inline void store_block(std::uint8_t* to, __m128i pixels) {
  if constexpr (kPixel == 4) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), pixels);
  } else {
    const __m128i bytes =
        _mm_shuffle_epi8(pixels, _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(to), bytes);
    const int rest = _mm_extract_epi32(bytes, 2);
    std::memcpy(to + 8, &rest, sizeof rest);
  }
}

VELLUM_AVX2 inline void transpose(__m128i (&block)[kBlock]) {
  const __m128i a = _mm_unpacklo_epi32(block[0], block[1]), b = _mm_unpacklo_epi32(block[2], block[3]);
  const __m128i c = _mm_unpackhi_epi32(block[0], block[1]), d = _mm_unpackhi_epi32(block[2], block[3]);
  block[0] = _mm_unpacklo_epi64(a, b);
  block[1] = _mm_unpackhi_epi64(a, b);
  block[2] = _mm_unpacklo_epi64(c, d);
  block[3] = _mm_unpackhi_epi64(c, d);
}

/// What one step of Paeth leaves for the next ones. Row r has the lanes from 4 r on.
struct PaethWave {
  __m256i value, valueBefore;  ///< of the last step and the one in front of it
  __m256i corner;              ///< the pixels above those of the last step
};

/// The pixels of four rows, of which the first is rows[first], at `x` and, from row to row, the lag before;
/// zeros left of the picture.
template <std::size_t kPixel>
VELLUM_AVX2 inline __m256i pixels_at(const Rows& rows, std::size_t first, std::ptrdiff_t x) {
  alignas(16) std::uint8_t bytes[4 * kWaveRows] = {};
  for (std::size_t r = 0; r < kWaveRows; ++r) {
    const std::ptrdiff_t at = x - static_cast<std::ptrdiff_t>(kLag * r);
    if (at >= 0) std::memcpy(bytes + 4 * r, rows[first + r] + kPixel * static_cast<std::size_t>(at), kPixel);
  }
  return _mm256_cvtepu8_epi16(_mm_load_si128(reinterpret_cast<const __m128i*>(bytes)));
}

VELLUM_AVX2 inline __m128i bytes_of(__m256i value) {
  return _mm_packus_epi16(_mm256_castsi256_si128(value), _mm256_extracti128_si256(value, 1));
}

/// `above`: the pixel above that of the first row.
VELLUM_AVX2 inline void step(PaethWave& wave, __m128i raw, __m128i above) {
  const __m256i shifted = _mm256_permute4x64_epi64(wave.valueBefore, 0x90);
  const __m256i up = _mm256_blend_epi32(shifted, _mm256_castsi128_si256(_mm_cvtepu8_epi16(above)), 3);
  const __m256i up_step = _mm256_sub_epi16(up, wave.corner);
  const __m256i left_step = _mm256_sub_epi16(wave.value, wave.corner);
  const __m256i to_left = _mm256_abs_epi16(up_step), to_up = _mm256_abs_epi16(left_step);
  const __m256i to_corner = _mm256_abs_epi16(_mm256_add_epi16(up_step, left_step));
  const __m256i least = _mm256_min_epi16(to_corner, _mm256_min_epi16(to_left, to_up));
  const __m256i second = _mm256_blendv_epi8(wave.corner, up, _mm256_cmpeq_epi16(least, to_up));
  const __m256i nearest = _mm256_blendv_epi8(second, wave.value, _mm256_cmpeq_epi16(least, to_left));
  wave.valueBefore = wave.value;
  wave.corner = up;
  wave.value = _mm256_and_si256(_mm256_add_epi16(_mm256_cvtepu8_epi16(raw), nearest), _mm256_set1_epi16(255));
}

template <std::size_t kPixel>
VELLUM_AVX2 inline void begin(PaethWave& wave, const Rows& rows, std::ptrdiff_t first) {
  wave = {pixels_at<kPixel>(rows, 1, first - 1), pixels_at<kPixel>(rows, 1, first - 2),
          pixels_at<kPixel>(rows, 0, first - 1)};
}

VELLUM_AVX2 inline __m128i shown(const PaethWave& wave) { return bytes_of(wave.value); }

/// What one step of Average leaves, as bytes that are inverted: the instruction rounds up, the filter down.
struct AverageWave {
  __m128i value, valueBefore;
};

VELLUM_AVX2 inline __m128i inverted(__m128i bytes) { return _mm_xor_si128(bytes, _mm_set1_epi8(-1)); }

template <std::size_t kPixel>
VELLUM_AVX2 inline void begin(AverageWave& wave, const Rows& rows, std::ptrdiff_t first) {
  wave.value = inverted(bytes_of(pixels_at<kPixel>(rows, 1, first - 1)));
  wave.valueBefore = inverted(bytes_of(pixels_at<kPixel>(rows, 1, first - 2)));
}

VELLUM_AVX2 inline void step(AverageWave& wave, __m128i raw, __m128i above) {
  const __m128i up = _mm_blend_epi32(_mm_slli_si128(wave.valueBefore, 4), inverted(above), 1);
  wave.valueBefore = wave.value;
  wave.value = _mm_sub_epi8(_mm_avg_epu8(wave.value, up), raw);
}

VELLUM_AVX2 inline __m128i shown(const AverageWave& wave) { return inverted(wave.value); }

/// The pixels from kHead on of the first row, as many blocks as it has; gives where it ended.
template <class Wave, std::size_t kPixel>
VELLUM_AVX2 std::size_t undo_blocks(const Rows& rows, std::size_t width) {
  Wave wave;
  begin<kPixel>(wave, rows, static_cast<std::ptrdiff_t>(kHead));
  std::size_t x = kHead;
  for (; x + kBlock <= width; x += kBlock) {
    __m128i block[kBlock];
    for (std::size_t r = 0; r < kWaveRows; ++r)
      block[r] = load_block<kPixel>(rows[r + 1] + kPixel * (x - kLag * r));
    const __m128i above = load_block<kPixel>(rows[0] + kPixel * x);
    transpose(block);
    step(wave, block[0], above);
    block[0] = shown(wave);
    step(wave, block[1], _mm_srli_si128(above, 4));
    block[1] = shown(wave);
    step(wave, block[2], _mm_srli_si128(above, 8));
    block[2] = shown(wave);
    step(wave, block[3], _mm_srli_si128(above, 12));
    block[3] = shown(wave);
    transpose(block);
    for (std::size_t r = 0; r < kWaveRows; ++r)
      store_block<kPixel>(rows[r + 1] + kPixel * (x - kLag * r), block[r]);
  }
  return x;
}

}  // namespace

bool can_undo_in_waves(std::size_t bytes, std::size_t distance) {
  return (distance == 3 || distance == 4) && bytes % distance == 0 && bytes / distance >= 4 * kHead &&
         has_avx2();
}

void undo_in_waves(std::uint8_t type, std::uint8_t* rows, const std::uint8_t* prior, std::size_t bytes,
                   std::size_t distance) {
  const std::size_t width = bytes / distance;
  Rows all{const_cast<std::uint8_t*>(prior)};  // which is only read
  for (std::size_t r = 0; r < kWaveRows; ++r) all[r + 1] = rows + r * (bytes + 1);
  const auto undo_part = [&](std::size_t r, std::size_t from, std::size_t to) {
    png_undo_part(type, all[r + 1], all[r], from * distance, to * distance, distance);
  };
  for (std::size_t r = 0; r < kWaveRows; ++r) undo_part(r, 0, kHead - kLag * r);
  const bool threes = distance == 3;
  const auto undo = type == kPaethType ? (threes ? undo_blocks<PaethWave, 3> : undo_blocks<PaethWave, 4>)
                                       : (threes ? undo_blocks<AverageWave, 3> : undo_blocks<AverageWave, 4>);
  const std::size_t end = undo(all, width);
  for (std::size_t r = 0; r < kWaveRows; ++r) undo_part(r, end - kLag * r, width);
}

}  // namespace vellum
