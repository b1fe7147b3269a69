#include "image/png_rows.h"

#include <cstring>

#include "image/lanes.h"

namespace vellum {
namespace {

// ------------------------------------------------------------------------------------------------ samples to
// pictures

/// Whole bits of a packed row; the bits behind the last pixel become 0.
template <unsigned kBits>
void read_packed(const std::uint8_t* samples, std::uint8_t* row, std::uint32_t width) {
  const std::size_t bits = std::size_t{width} * kBits;
  std::memcpy(row, samples, (bits + 7) / 8);
  if constexpr (kBits < 8)
    if (bits % 8 != 0) row[bits / 8] = static_cast<std::uint8_t>(row[bits / 8] & 0xFF00 >> bits % 8);
}

void read_two_bits(const std::uint8_t* samples, std::uint8_t* row, std::uint32_t width) {
  for (std::uint32_t x = 0; x < width; ++x) row[x] = samples[x >> 2] >> (6 - 2 * (x & 3)) & 3;
}

/// `kBytes` is 1 or 2: samples of two bytes give their high one. Three or four channels, red first.
template <unsigned kChannels, unsigned kBytes>
void read_colors(const std::uint8_t* __restrict samples, std::uint8_t* __restrict row, std::uint32_t width) {
  for (std::size_t x = 0; x < width; ++x) {
    row[kChannels * x] = samples[kChannels * kBytes * x + 2 * kBytes];
    row[kChannels * x + 1] = samples[kChannels * kBytes * x + kBytes];
    row[kChannels * x + 2] = samples[kChannels * kBytes * x];
    if constexpr (kChannels == 4) row[kChannels * x + 3] = samples[kChannels * kBytes * x + 3 * kBytes];
  }
}

/// Red and blue change places in pixels of three bytes. Five pixels at a time; the sixteenth byte, which
/// belongs to the next pixel, is written anew with that one.
VELLUM_AVX2 std::size_t swap_fives(const std::uint8_t* from, std::uint8_t* to, std::size_t width) {
  std::size_t x = 0;
  for (; x + 6 <= width; x += 5) {
    Bytes16 bytes;
    std::memcpy(&bytes, from + 3 * x, sizeof bytes);
    bytes = __builtin_shufflevector(bytes, bytes, 2, 1, 0, 5, 4, 3, 8, 7, 6, 11, 10, 9, 14, 13, 12, 15);
    std::memcpy(to + 3 * x, &bytes, sizeof bytes);
  }
  return x;
}

void read_three_bytes(const std::uint8_t* samples, std::uint8_t* row, std::uint32_t width) {
  const std::size_t done = has_avx2() ? swap_fives(samples, row, width) : 0;
  read_colors<3, 1>(samples + 3 * done, row + 3 * done, width - static_cast<std::uint32_t>(done));
}

template <unsigned kBytes>
void read_grey_alpha(const std::uint8_t* __restrict samples, std::uint8_t* __restrict row,
                     std::uint32_t width) {
  for (std::size_t x = 0; x < width; ++x) {
    const std::uint8_t grey = samples[2 * kBytes * x];
    row[4 * x] = row[4 * x + 1] = row[4 * x + 2] = grey;
    row[4 * x + 3] = samples[2 * kBytes * x + kBytes];
  }
}

void read_high_bytes(const std::uint8_t* __restrict samples, std::uint8_t* __restrict row,
                     std::uint32_t width) {
  for (std::size_t x = 0; x < width; ++x) row[x] = samples[2 * x];
}

// ------------------------------------------------------------------------------------------------ pictures
// to samples

template <unsigned kBits>
void write_packed(const std::uint8_t* row, std::uint8_t* samples, std::uint32_t width, const std::uint16_t*) {
  read_packed<kBits>(row, samples, width);
}

/// Red, green, blue of a picture that holds them the other way round.
void write_three_bytes(const std::uint8_t* row, std::uint8_t* samples, std::uint32_t width,
                       const std::uint16_t*) {
  read_three_bytes(row, samples, width);
}

/// Indexes of `kFrom` bits each, packed `kTo` bits each.
template <unsigned kFrom, unsigned kTo>
void write_repacked(const std::uint8_t* row, std::uint8_t* samples, std::uint32_t width,
                    const std::uint16_t*) {
  constexpr unsigned from_mask = (1u << kFrom) - 1, to_mask = (1u << kTo) - 1;
  std::memset(samples, 0, (std::size_t{width} * kTo + 7) / 8);
  for (std::size_t x = 0; x < width; ++x) {
    const unsigned index = row[x * kFrom / 8] >> (8 - kFrom - x * kFrom % 8) & from_mask;
    samples[x * kTo / 8] =
        static_cast<std::uint8_t>(samples[x * kTo / 8] | (index & to_mask) << (8 - kTo - x * kTo % 8));
  }
}

/// Indexes of `kFrom` bits as grey samples of 16 bits: index * 257, or the key's.
template <unsigned kFrom>
void write_deep_grey(const std::uint8_t* row, std::uint8_t* samples, std::uint32_t width,
                     const std::uint16_t* key) {
  for (std::size_t x = 0; x < width; ++x) {
    const unsigned index = row[x * kFrom / 8] >> (8 - kFrom - x * kFrom % 8) & ((1u << kFrom) - 1);
    samples[2 * x] = static_cast<std::uint8_t>(index);
    samples[2 * x + 1] = static_cast<std::uint8_t>(key && index == key[0] >> 8 ? key[0] & 255 : index);
  }
}

/// Red, green, blue (and alpha) of a picture of `kFrom` bytes a pixel, `kBytes` 1 or 2 a sample. Alpha is 255
/// where the picture has none.
template <unsigned kFrom, unsigned kChannels, unsigned kBytes>
void write_colors(const std::uint8_t* __restrict row, std::uint8_t* __restrict samples, std::uint32_t width,
                  const std::uint16_t* key) {
  for (std::size_t x = 0; x < width; ++x) {
    const std::uint8_t* pixel = row + kFrom * x;
    std::uint8_t* out = samples + kChannels * kBytes * x;
    const std::uint8_t channels[4] = {pixel[2], pixel[1], pixel[0],
                                      kFrom == 4 ? pixel[kFrom - 1] : std::uint8_t{255}};
    if constexpr (kBytes == 1) {
      for (unsigned c = 0; c < kChannels; ++c) out[c] = channels[c];
    } else {
      const bool is_key = kChannels == 3 && key && channels[0] == key[0] >> 8 && channels[1] == key[1] >> 8 &&
                          channels[2] == key[2] >> 8;
      for (unsigned c = 0; c < kChannels; ++c) {
        out[2 * c] = channels[c];
        out[2 * c + 1] = is_key ? static_cast<std::uint8_t>(key[c]) : channels[c];
      }
    }
  }
}

/// Pictures whose pixels are all grey: red stands for the three.
template <unsigned kFrom, unsigned kChannels, unsigned kBytes>
void write_greys(const std::uint8_t* __restrict row, std::uint8_t* __restrict samples, std::uint32_t width,
                 const std::uint16_t* key) {
  for (std::size_t x = 0; x < width; ++x) {
    const std::uint8_t channels[2] = {row[kFrom * x + 2],
                                      kFrom == 4 ? row[kFrom * x + kFrom - 1] : std::uint8_t{255}};
    std::uint8_t* out = samples + kChannels * kBytes * x;
    for (unsigned c = 0; c < kChannels; ++c) {
      out[kBytes * c] = channels[c];
      if constexpr (kBytes == 2)
        out[2 * c + 1] = kChannels == 1 && key && channels[0] == key[0] >> 8
                             ? static_cast<std::uint8_t>(key[0])
                             : channels[c];
    }
  }
}

struct WriterRow {
  std::uint32_t picture_bits;
  std::uint8_t colorType, bitDepth;
  PngRowWriter write;
};

// Color types 0 and 3 treat indexes alike, but for the 16 bits that only grey has.
constexpr WriterRow kIndexWriters[] = {
    {1, 3, 1, write_packed<1>},      {1, 3, 2, write_repacked<1, 2>}, {1, 3, 4, write_repacked<1, 4>},
    {1, 3, 8, write_repacked<1, 8>}, {4, 3, 1, write_repacked<4, 1>}, {4, 3, 2, write_repacked<4, 2>},
    {4, 3, 4, write_packed<4>},      {4, 3, 8, write_repacked<4, 8>}, {8, 3, 1, write_repacked<8, 1>},
    {8, 3, 2, write_repacked<8, 2>}, {8, 3, 4, write_repacked<8, 4>}, {8, 3, 8, write_packed<8>},
    {1, 3, 16, write_deep_grey<1>},  {4, 3, 16, write_deep_grey<4>},  {8, 3, 16, write_deep_grey<8>},
};

constexpr WriterRow kColorWriters[] = {
    {24, 0, 8, write_greys<3, 1, 1>},  {24, 0, 16, write_greys<3, 1, 2>},
    {32, 0, 8, write_greys<4, 1, 1>},  {32, 0, 16, write_greys<4, 1, 2>},
    {24, 4, 8, write_greys<3, 2, 1>},  {24, 4, 16, write_greys<3, 2, 2>},
    {32, 4, 8, write_greys<4, 2, 1>},  {32, 4, 16, write_greys<4, 2, 2>},
    {24, 2, 8, write_three_bytes},     {24, 2, 16, write_colors<3, 3, 2>},
    {32, 2, 8, write_colors<4, 3, 1>}, {32, 2, 16, write_colors<4, 3, 2>},
    {24, 6, 8, write_colors<3, 4, 1>}, {24, 6, 16, write_colors<3, 4, 2>},
    {32, 6, 8, write_colors<4, 4, 1>}, {32, 6, 16, write_colors<4, 4, 2>},
};

template <std::size_t kCount>
PngRowWriter find_writer(const WriterRow (&rows)[kCount], std::uint32_t bits, std::uint8_t type,
                         std::uint8_t depth) {
  for (const WriterRow& row : rows)
    if (row.picture_bits == bits && row.colorType == type && row.bitDepth == depth) return row.write;
  return nullptr;
}

}  // namespace

PngRowReader png_row_reader(const PngHeader& header) {
  const bool deep = header.bitDepth == 16;
  switch (header.colorType) {
    case 2:
      return deep ? read_colors<3, 2> : read_three_bytes;
    case 4:
      return deep ? read_grey_alpha<2> : read_grey_alpha<1>;
    case 6:
      return deep ? read_colors<4, 2> : read_colors<4, 1>;
    default:
      break;
  }
  switch (header.bitDepth) {
    case 1:
      return read_packed<1>;
    case 2:
      return read_two_bits;
    case 4:
      return read_packed<4>;
    case 16:
      return read_high_bytes;
    default:
      return read_packed<8>;
  }
}

PngRowWriter png_row_writer(std::uint32_t picture_bits, const PngHeader& header) {
  if (picture_bits > 8) return find_writer(kColorWriters, picture_bits, header.colorType, header.bitDepth);
  if (header.colorType != 0 && header.colorType != 3) return nullptr;
  return find_writer(kIndexWriters, picture_bits, 3, header.bitDepth);
}

}  // namespace vellum
