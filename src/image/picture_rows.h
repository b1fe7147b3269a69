// Rows of pictures below the pixel accessors: what the operations and the codecs share.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>

#include "base/parallel.h"
#include "image/picture.h"

namespace vellum {

/// Pixels that a row loop handles at a time through a buffer on the stack. A multiple of 8, so that every run
/// of a row begins at a whole byte in every depth.
inline constexpr std::size_t kPixelRun = 512;

/// Whether the picture is not null and holds rows: a header-only picture does not.
bool has_rows(const Picture& picture);

/// As PictureCreateForOverwrite, with the padding of every row already zero.
Picture create_rows(std::uint32_t width, std::uint32_t height, const Palette* palette, std::uint32_t depth);

/// A copy whose padding is zero, whatever the source's is.
Picture whole_of(const Picture& picture);

/// Index i is the grey (i, i, i).
const Palette& grey_ramp();
Palette palette_of(const Picture& picture);

/// The rows of a picture for writing, from the top; detached once, so that several threads may write rows.
struct EditRows {
  explicit EditRows(Picture& picture) : top(picture.edit_row(0)), stride(picture.stride()) {}
  explicit operator bool() const { return top != nullptr; }
  std::uint8_t* operator[](std::size_t y) const { return top - y * stride; }

  std::uint8_t* top;
  std::size_t stride;
};

/// Calls work(y) for every row below `height`, in bands on all cores when the rows are many bytes.
template <class Work>
void for_each_row(std::uint32_t height, std::size_t row_bytes, const Work& work) {
  constexpr std::size_t kBandBytes = std::size_t{256} << 10;
  const std::size_t bands =
      std::clamp<std::size_t>(height * row_bytes / kBandBytes, 1, std::min<std::size_t>(64, height));
  const auto band = [&](std::size_t i) {
    const auto end = static_cast<std::uint32_t>(height * (i + 1) / bands);
    for (auto y = static_cast<std::uint32_t>(height * i / bands); y < end; ++y) work(y);
  };
  parallel_for(bands, std::cref(band));
}

/// The index of pixel x of a row with 1, 4 or 8 bits.
inline std::uint8_t get_index(const std::uint8_t* row, std::size_t x, std::uint32_t bits) {
  if (bits == 8) return row[x];
  if (bits == 4) return x & 1 ? row[x >> 1] & 15 : row[x >> 1] >> 4;
  return row[x >> 3] >> (7 - (x & 7)) & 1;
}
inline void put_index(std::uint8_t* row, std::size_t x, std::uint32_t bits, std::uint32_t value) {
  if (bits == 8) {
    row[x] = static_cast<std::uint8_t>(value);
    return;
  }
  const unsigned shift = bits == 4 ? (x & 1 ? 0 : 4) : 7 - (x & 7);
  const unsigned mask = (1u << bits) - 1;
  std::uint8_t& byte = row[x * bits / 8];
  byte = static_cast<std::uint8_t>((byte & ~(mask << shift)) | (value & mask) << shift);
}

/// Copies pixels of one depth between rows that do not overlap. Neighbouring pixels of shared bytes stay.
void copy_pixels(std::uint8_t* dst, std::size_t dst_x, const std::uint8_t* src, std::size_t src_x,
                 std::size_t count, std::uint32_t bits);
void fill_pixels(std::uint8_t* row, std::size_t x, std::size_t count, std::uint32_t bits, Colour value);

/// `count` indices from pixel x on, one byte each. x begins a whole byte.
void unpack_indices(std::uint8_t* out, const std::uint8_t* row, std::size_t x, std::size_t count,
                    std::uint32_t bits);
/// The reverse. The bits of the last byte behind the last pixel become zero.
void pack_indices(std::uint8_t* row, std::size_t x, const std::uint8_t* indices, std::size_t count,
                  std::uint32_t bits);

/// Calls use(x, indices, count) for runs of at most kPixelRun pixels that cover an indexed row.
template <class Use>
void for_each_index_run(const std::uint8_t* row, std::size_t width, std::uint32_t bits, const Use& use) {
  std::uint8_t indices[kPixelRun];
  for (std::size_t x = 0; x < width; x += kPixelRun) {
    const std::size_t count = std::min(kPixelRun, width - x);
    if (bits == 8) {
      use(x, row + x, count);
      continue;
    }
    unpack_indices(indices, row, x, count, bits);
    use(x, static_cast<const std::uint8_t*>(indices), count);
  }
}

}  // namespace vellum
