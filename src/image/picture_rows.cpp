#include "image/picture_rows.h"

#include <array>
#include <cstring>

namespace vellum {
namespace {

/// The eight bits of a byte, one byte each, as they lie in a row.
constexpr auto kBitsOfByte = [] {
  std::array<std::array<std::uint8_t, 8>, 256> table{};
  for (std::size_t value = 0; value < 256; ++value)
    for (std::size_t i = 0; i < 8; ++i) table[value][i] = value >> (7 - i) & 1;
  return table;
}();

bool at_byte(std::size_t x, std::uint32_t bits) { return x * bits % 8 == 0; }

/// Whole bytes of a row from a source that begins at any bit.
void copy_shifted(std::uint8_t* dst, const std::uint8_t* src, std::size_t src_bit, std::size_t bytes) {
  src += src_bit / 8;
  const unsigned shift = src_bit % 8;
  if (shift == 0) {
    std::memcpy(dst, src, bytes);
    return;
  }
  for (std::size_t i = 0; i < bytes; ++i)
    dst[i] = static_cast<std::uint8_t>(src[i] << shift | src[i + 1] >> (8 - shift));
}

void copy_packed(std::uint8_t* dst, std::size_t dst_x, const std::uint8_t* src, std::size_t src_x,
                 std::size_t count, std::uint32_t bits) {
  for (; count > 0 && !at_byte(dst_x, bits); --count)
    put_index(dst, dst_x++, bits, get_index(src, src_x++, bits));
  const std::size_t bytes = count * bits / 8;
  if (bytes > 0) copy_shifted(dst + dst_x * bits / 8, src, src_x * bits, bytes);
  for (std::size_t i = bytes * 8 / bits; i < count; ++i)
    put_index(dst, dst_x + i, bits, get_index(src, src_x + i, bits));
}

void fill_packed(std::uint8_t* row, std::size_t x, std::size_t count, std::uint32_t bits, Colour value) {
  for (; count > 0 && !at_byte(x, bits); --count) put_index(row, x++, bits, value);
  const std::size_t bytes = count * bits / 8;
  const std::uint32_t pattern = bits == 1 ? (value & 1) * 255 : (value & 15) * 17;
  if (bytes > 0) std::memset(row + x * bits / 8, static_cast<int>(pattern), bytes);
  for (std::size_t i = bytes * 8 / bits; i < count; ++i) put_index(row, x + i, bits, value);
}

}  // namespace

bool has_rows(const Picture& picture) {
  return picture && picture.handle().size() == Picture::kHeaderBytes + 4 * std::size_t{picture.colours()} +
                                                   picture.stride() * picture.height();
}

Picture create_rows(std::uint32_t width, std::uint32_t height, const Palette* palette, std::uint32_t depth) {
  Picture picture = PictureCreateForOverwrite(width, height, palette, depth);
  if (!picture || std::uint64_t{width} * picture.bits() % 32 == 0) return picture;
  const EditRows rows(picture);
  for (std::uint32_t y = 0; y < height; ++y) std::memset(rows[y] + rows.stride - 4, 0, 4);
  return picture;
}

const Palette& grey_ramp() {
  static const Palette ramp = [] {
    Palette palette{};
    for (std::size_t i = 0; i < palette.size(); ++i) palette[i] = static_cast<std::uint8_t>(i / 3);
    return palette;
  }();
  return ramp;
}

Palette palette_of(const Picture& picture) {
  Palette palette;
  PictureGetPalette(picture, palette);
  return palette;
}

void copy_pixels(std::uint8_t* dst, std::size_t dst_x, const std::uint8_t* src, std::size_t src_x,
                 std::size_t count, std::uint32_t bits) {
  if (bits < 8)
    copy_packed(dst, dst_x, src, src_x, count, bits);
  else if (count > 0)
    std::memcpy(dst + dst_x * (bits / 8), src + src_x * (bits / 8), count * (bits / 8));
}

void fill_pixels(std::uint8_t* row, std::size_t x, std::size_t count, std::uint32_t bits, Colour value) {
  if (count == 0) return;
  if (bits < 8) return fill_packed(row, x, count, bits, value);
  const std::size_t size = bits / 8;
  std::uint8_t* first = row + x * size;
  if (size == 1) {
    std::memset(first, static_cast<int>(value & 255), count);
    return;
  }
  const std::uint8_t pixel[4] = {blue_of(value), green_of(value), red_of(value), alpha_of(value)};
  std::memcpy(first, pixel, size);
  // What is filled already doubles with every copy.
  for (std::size_t done = 1; done < count; done *= 2)
    std::memcpy(first + done * size, first, std::min(done, count - done) * size);
}

void unpack_indices(std::uint8_t* out, const std::uint8_t* row, std::size_t x, std::size_t count,
                    std::uint32_t bits) {
  std::size_t i = 0;
  if (bits == 8) {
    std::memcpy(out, row + x, count);
    return;
  }
  const std::uint8_t* packed = row + x * bits / 8;
  if (bits == 4) {
    for (; i + 2 <= count; i += 2) {
      out[i] = packed[i / 2] >> 4;
      out[i + 1] = packed[i / 2] & 15;
    }
  } else {
    for (; i + 8 <= count; i += 8) std::memcpy(out + i, kBitsOfByte[packed[i / 8]].data(), 8);
  }
  for (; i < count; ++i) out[i] = get_index(packed, i, bits);
}

void pack_indices(std::uint8_t* row, std::size_t x, const std::uint8_t* indices, std::size_t count,
                  std::uint32_t bits) {
  std::uint8_t* packed = row + x * bits / 8;
  if (bits == 8) {
    std::memcpy(packed, indices, count);
    return;
  }
  const std::size_t per_byte = 8 / bits;
  const unsigned mask = (1u << bits) - 1;
  for (std::size_t i = 0; i < count; i += per_byte) {
    unsigned byte = 0;
    for (std::size_t k = 0; k < per_byte; ++k)
      byte = byte << bits | (i + k < count ? indices[i + k] & mask : 0);
    *packed++ = static_cast<std::uint8_t>(byte);
  }
}

}  // namespace vellum
