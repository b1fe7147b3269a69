// Runs of 32-bit pixels as loops over bytes want them, for laying pictures over each other.
#pragma once

#include <array>
#include <cstring>

#include "base/byte_order.h"
#include "image/picture_rows.h"

namespace vellum {

/// A run of 32-bit pixels taken apart: the channels, and for each byte its pixel's alpha. The alpha of the
/// result is a channel whose source is 255. The 24-bit form is written 4 bytes at a time, hence the spare
/// bytes.
struct SourceRun {
  std::array<std::uint8_t, 4 * kPixelRun + 4> channels;
  std::array<std::uint8_t, 4 * kPixelRun + 4> alphas;

  void load_for_24(const std::uint8_t* in, std::size_t count) {
    for (std::size_t x = 0; x < count; ++x) {
      write_le32(channels.data() + 3 * x, read_le32(in + 4 * x));
      write_le32(alphas.data() + 3 * x, in[4 * x + 3] * 0x010101u);
    }
  }
  void load_for_32(const std::uint8_t* in, std::size_t count) {
    for (std::size_t x = 0; x < count; ++x) {
      write_le32(channels.data() + 4 * x, read_le32(in + 4 * x) | 0xFF000000);
      write_le32(alphas.data() + 4 * x, in[4 * x + 3] * 0x01010101u);
    }
  }
};

inline bool is_opaque_run(const std::uint8_t* pixels, std::size_t count) {
  std::uint32_t all = 0xFF000000;
  for (std::size_t x = 0; x < count; ++x) all &= read_le32(pixels + 4 * x);
  return all == 0xFF000000;
}

/// Opaque pixels come through as they are.
inline void take_colors(std::uint8_t* __restrict out, const std::uint8_t* __restrict pixels,
                        std::size_t count) {
  for (std::size_t x = 0; x < count; ++x) std::memcpy(out + 3 * x, pixels + 4 * x, 3);
}

/// 24-bit pixels cover what is there; in 32 bits they are opaque.
inline void cover_row(std::uint8_t* dst, std::size_t dst_size, const std::uint8_t* src, std::size_t width) {
  if (dst_size == 3) {
    std::memcpy(dst, src, 3 * width);
    return;
  }
  for (std::size_t x = 0; x < width; ++x) {
    std::memcpy(dst + 4 * x, src + 3 * x, 3);
    dst[4 * x + 3] = 255;
  }
}

}  // namespace vellum
