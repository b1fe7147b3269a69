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

/// Whether functions with the attribute below may be called.
inline bool has_avx2() {
  static const bool has = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
  return has;
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

#pragma GCC diagnostic pop

}  // namespace vellum
