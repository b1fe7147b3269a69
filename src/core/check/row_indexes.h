// The indexes of a row of samples.
#pragma once

#include <cstdint>

namespace vellum {

/// The largest index of a row of `width` pixels of `depth` bits (1, 2, 4 or 8), and the first place of it.
struct LargestIndex {
  unsigned value = 0;
  std::uint32_t x = 0;
};
inline LargestIndex largest_index(const std::uint8_t* row, std::uint32_t width, unsigned depth) {
  LargestIndex largest;
  const unsigned in_byte = 8 / depth, mask = (1u << depth) - 1;
  for (std::uint32_t x = 0; x < width; ++x) {
    const unsigned value = row[x / in_byte] >> (8 - depth - x % in_byte * depth) & mask;
    if (value > largest.value) largest = {value, x};
  }
  return largest;
}

}  // namespace vellum
