// Small vectors of whole numbers, and code that is made twice: for every processor, and for those with AVX2.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>

namespace vellum {

// Vectors stay inside functions that are inlined, so how they would be passed doesn't matter.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpsabi"

using Lanes4 = std::int32_t __attribute__((vector_size(16)));
using Lanes8 = std::int32_t __attribute__((vector_size(32)));
using Floats8 = float __attribute__((vector_size(32)));
using Bytes16 = std::uint8_t __attribute__((vector_size(16)));
using Words2 = std::uint64_t __attribute__((vector_size(16)));

/// Set by tests, which hold both kinds of code equal.
inline bool without_avx2 = false;

/// Whether functions with the attribute below may be called.
inline bool has_avx2() {
  static const bool has = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
  return has && !without_avx2;
}

#define VELLUM_AVX2 __attribute__((target("avx2,fma")))
/// What such a function calls is inlined into it, so that it is made of the same instructions.
#define VELLUM_INLINE __attribute__((always_inline)) inline

/// Adds eight products. Vectors of this size are not returned: without AVX that is done in another way.
VELLUM_INLINE void add_products(Lanes8& sum, const std::array<std::int32_t, 8>& values, std::int32_t factor) {
  Lanes8 lanes;
  std::memcpy(&lanes, values.data(), sizeof lanes);
  sum += lanes * factor;
}

VELLUM_INLINE Lanes4 least(Lanes4 a, Lanes4 b) { return a < b ? a : b; }
VELLUM_INLINE Lanes4 greatest(Lanes4 a, Lanes4 b) { return a > b ? a : b; }

/// The least of eight.
VELLUM_INLINE std::int32_t least_lane(const Lanes8& lanes) {
  Lanes4 low = __builtin_shufflevector(lanes, lanes, 0, 1, 2, 3);
  low = least(low, __builtin_shufflevector(lanes, lanes, 4, 5, 6, 7));
  low = least(low, __builtin_shufflevector(low, low, 2, 3, 2, 3));
  low = least(low, __builtin_shufflevector(low, low, 1, 1, 1, 1));
  return low[0];
}

VELLUM_INLINE void add_product(Floats8& sum, const float* values, float factor) {
  Floats8 lanes;
  std::memcpy(&lanes, values, sizeof lanes);
  sum += lanes * factor;
}

/// Eight columns of eight bytes become rows: byte j of `from[i]` goes to byte i of to[8 * j].
VELLUM_INLINE void transpose_8x8(const std::uint8_t* const (&from)[8], std::uint8_t* to) {
  Bytes16 row[8], pairs[4], fours[4];
  for (std::size_t i = 0; i < 8; ++i) {
    std::uint64_t bytes;
    std::memcpy(&bytes, from[i], sizeof bytes);
    row[i] = reinterpret_cast<Bytes16>(Words2{bytes, 0});
  }
  for (std::size_t i = 0; i < 4; ++i)
    pairs[i] = __builtin_shufflevector(row[2 * i], row[2 * i + 1], 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21,
                                       6, 22, 7, 23);
  for (std::size_t i = 0; i < 2; ++i) {
    const Bytes16 &a = pairs[2 * i], &b = pairs[2 * i + 1];
    fours[2 * i] = __builtin_shufflevector(a, b, 0, 1, 16, 17, 2, 3, 18, 19, 4, 5, 20, 21, 6, 7, 22, 23);
    fours[2 * i + 1] =
        __builtin_shufflevector(a, b, 8, 9, 24, 25, 10, 11, 26, 27, 12, 13, 28, 29, 14, 15, 30, 31);
  }
  for (std::size_t i = 0; i < 2; ++i) {
    const Bytes16 &a = fours[i], &b = fours[i + 2];
    const Bytes16 low = __builtin_shufflevector(a, b, 0, 1, 2, 3, 16, 17, 18, 19, 4, 5, 6, 7, 20, 21, 22, 23);
    const Bytes16 high =
        __builtin_shufflevector(a, b, 8, 9, 10, 11, 24, 25, 26, 27, 12, 13, 14, 15, 28, 29, 30, 31);
    std::memcpy(to + 32 * i, &low, sizeof low);
    std::memcpy(to + 32 * i + 16, &high, sizeof high);
  }
}

#pragma GCC diagnostic pop

}  // namespace vellum
