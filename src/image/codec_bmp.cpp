// Windows and OS/2 bitmaps: headers of 12 bytes, and of 16 to 124 (BITMAPINFOHEADER to BITMAPV5HEADER,
// OS/2 2.x).
#include <bit>

#include "base/byte_order.h"
#include "base/limits.h"
#include "base/translation.h"
#include "image/codecs.h"

namespace vellum {
namespace {

constexpr std::size_t kFileHeader = 14;
constexpr std::size_t kCoreHeader = 12;
constexpr std::size_t kV4Header = 108;

enum Compression : std::uint32_t { kPlain = 0, kRle8 = 1, kRle4 = 2, kBitFields = 3, kAlphaBitFields = 6 };

struct Shape {
  std::uint32_t width = 0, height = 0;
  std::uint32_t stored_bits = 0;  ///< 1, 2, 4, 8, 16, 24 or 32
  std::uint32_t compression = kPlain;
  bool top_down = false;
  std::array<std::uint32_t, 4> masks{};  ///< red, green, blue, alpha of 16 and 32 bits
  Palette palette{};
  FileBytes rows;                ///< from the first row to the end of the file
  std::uint32_t whole_rows = 0;  ///< of rows without runs, those that the file has, in stored order

  bool run_length() const { return compression == kRle8 || compression == kRle4; }
  std::size_t stride() const { return picture_stride(width, stored_bits); }
};

bool known_depth(std::uint32_t bits, std::uint32_t compression) {
  switch (compression) {
    case kPlain:
      return bits == 1 || bits == 2 || bits == 4 || bits == 8 || bits == 16 || bits == 24 || bits == 32;
    case kRle8:
      return bits == 8;
    case kRle4:
      return bits == 4;
    case kBitFields:
    case kAlphaBitFields:
      return bits == 16 || bits == 32;
    default:
      return false;
  }
}

/// The header's own fields. `header` is its size, checked against the file.
bool read_fields(FileBytes file, std::size_t header, Shape& shape) {
  const std::uint8_t* p = file.data() + kFileHeader;
  if (header == kCoreHeader) {
    shape.width = read_le16(p + 4);
    shape.height = read_le16(p + 6);
    shape.stored_bits = read_le16(p + 10);
  } else {
    shape.width = read_le32(p + 4);
    const auto height = static_cast<std::int32_t>(read_le32(p + 8));
    shape.top_down = height < 0;
    shape.height = height < 0 ? 0 - static_cast<std::uint32_t>(height) : static_cast<std::uint32_t>(height);
    shape.stored_bits = read_le16(p + 14);
    if (header >= 20) shape.compression = read_le32(p + 16);
  }
  if (shape.width == 0 || shape.width > kMaximumDimension || shape.height == 0 ||
      shape.height > kMaximumDimension)
    return false;
  return known_depth(shape.stored_bits, shape.compression);
}

/// Masks of 16 and 32 bits; `at` is where masks behind a 40-byte header begin and moves behind them.
bool read_masks(FileBytes file, std::size_t header, Shape& shape, std::size_t& at) {
  if (shape.compression == kPlain) {
    if (shape.stored_bits == 16) shape.masks = {0x7C00, 0x03E0, 0x001F, 0};
    if (shape.stored_bits == 32) shape.masks = {0xFF0000, 0xFF00, 0xFF, 0xFF000000};
    return true;
  }
  if (shape.run_length()) return true;
  // Headers from 52 bytes on hold the masks themselves, those from 56 on the alpha mask too.
  const bool inside = header >= 52;
  const std::size_t count = inside ? (header >= 56 ? 4 : 3) : shape.compression == kAlphaBitFields ? 4 : 3;
  const std::size_t from = kFileHeader + 40;
  if (from + 4 * count > file.size()) return false;
  for (std::size_t i = 0; i < count; ++i) shape.masks[i] = read_le32(file.data() + from + 4 * i);
  if (!inside) at += 4 * count;
  return (shape.masks[0] | shape.masks[1] | shape.masks[2]) != 0;
}

bool read_shape(FileBytes file, Shape& shape) {
  if (file.size() < kFileHeader + kCoreHeader || file[0] != 'B' || file[1] != 'M') return false;
  const std::size_t header = read_le32(file.data() + kFileHeader);
  if ((header != kCoreHeader && (header < 16 || header > 124)) || kFileHeader + header > file.size())
    return false;
  std::size_t at = kFileHeader + header;
  if (!read_fields(file, header, shape) || !read_masks(file, header, shape, at)) return false;
  if (shape.stored_bits <= 8) {
    const std::size_t entry = header == kCoreHeader ? 3 : 4, full = std::size_t{1} << shape.stored_bits;
    std::size_t entries = header >= 36 ? read_le32(file.data() + kFileHeader + 32) : 0;
    if (entries == 0) entries = full;
    // A table may be cut off by the rows when the header does not count it.
    const std::size_t rows_at = read_le32(file.data() + 10);
    const std::size_t room = rows_at > at && rows_at <= file.size() ? (rows_at - at) / entry : entries;
    if (entries > full && entries > room) return false;
    entries = std::min({entries, room, full});
    if (entries > (file.size() - at) / entry) return false;
    shape.palette = palette_from_bgr(file.data() + at, entries, entry);
    at += entry * entries;
  }
  const std::size_t rows_at = std::max<std::size_t>(at, read_le32(file.data() + 10));
  if (rows_at > file.size()) return false;
  shape.rows = file.subspan(rows_at);
  // The padding of the last row may be missing.
  const std::size_t padding = shape.stride() - (std::size_t{shape.width} * shape.stored_bits + 7) / 8;
  shape.whole_rows = static_cast<std::uint32_t>(
      std::min<std::size_t>((shape.rows.size() + padding) / shape.stride(), shape.height));
  return true;
}

/// Row `i` of those that the file has.
const std::uint8_t* stored_row(const Shape& shape, std::size_t i) {
  return shape.rows.data() + shape.stride() * i;
}
/// Its place from the top.
std::size_t place_of(const Shape& shape, std::size_t i) { return shape.top_down ? i : shape.height - 1 - i; }

std::uint32_t stored_pixel(const Shape& shape, const std::uint8_t* row, std::size_t x) {
  return shape.stored_bits == 16 ? read_le16(row + 2 * x) : read_le32(row + 4 * x);
}

/// Whether a pixel has an alpha that is not 0: files without alpha leave the field zero.
bool uses_alpha(const Shape& shape) {
  const std::uint32_t mask = shape.masks[3];
  if (mask == 0) return false;
  for (std::size_t i = 0; i < shape.whole_rows; ++i)
    for (std::size_t x = 0; x < shape.width; ++x)
      if (stored_pixel(shape, stored_row(shape, i), x) & mask) return true;
  return false;
}

std::uint32_t result_bits(const Shape& shape) {
  if (shape.stored_bits <= 8) return shape.stored_bits == 2 ? 4 : shape.stored_bits;
  return uses_alpha(shape) ? 32 : 24;
}

/// A field of a pixel as eight bits. Of a longer field the high eight count.
struct Field {
  int shift = 0;
  std::uint32_t mask = 0;
  std::array<std::uint8_t, 256> scaled{};

  explicit Field(std::uint32_t bits) {
    if (bits == 0) return;
    const int width = std::min(static_cast<int>(std::bit_width(bits)) - std::countr_zero(bits), 8);
    shift = static_cast<int>(std::bit_width(bits)) - width;
    mask = (1u << width) - 1;
    for (std::uint32_t i = 0; i <= mask; ++i) scaled[i] = widened(i, width);
  }
  std::uint8_t of(std::uint32_t pixel) const { return scaled[pixel >> shift & mask]; }
};

void decode_fields(const Shape& shape, Picture& picture) {
  const Field red(shape.masks[0]), green(shape.masks[1]), blue(shape.masks[2]), alpha(shape.masks[3]);
  const std::size_t size = picture.bits() / 8;
  const EditRows rows(picture);
  if (shape.whole_rows == 0) return;
  for_each_row(shape.whole_rows, rows.stride, [&](std::uint32_t i) {
    const std::uint8_t* in = stored_row(shape, i);
    std::uint8_t* out = rows[place_of(shape, i)];
    for (std::size_t x = 0; x < shape.width; ++x, out += size) {
      const std::uint32_t pixel = stored_pixel(shape, in, x);
      out[0] = blue.of(pixel);
      out[1] = green.of(pixel);
      out[2] = red.of(pixel);
      if (size == 4) out[3] = alpha.of(pixel);
    }
  });
}

void decode_rows(const Shape& shape, Picture& picture) {
  const EditRows rows(picture);
  for (std::size_t i = 0; i < shape.whole_rows; ++i) {
    const std::uint8_t* in = stored_row(shape, i);
    std::uint8_t* out = rows[place_of(shape, i)];
    if (shape.stored_bits != 2) {
      copy_pixels(out, 0, in, 0, shape.width, picture.bits());
      continue;
    }
    for (std::size_t x = 0; x < shape.width; ++x) put_index(out, x, 4, in[x / 4] >> (6 - 2 * (x & 3)) & 3);
  }
}

/// Run-length coded rows. Pixels that the runs leave out keep index 0; the stream may say that it ends early.
/// Returns the number of rows that the file speaks of: fewer than the height where it is cut off.
std::uint32_t decode_runs(const Shape& shape, Picture& picture) {
  const std::uint32_t bits = shape.stored_bits;
  const EditRows rows(picture);
  const FileBytes in = shape.rows;
  std::size_t x = 0, y = 0;
  for (std::size_t at = 0; at + 2 <= in.size() && y < shape.height;) {
    const std::size_t count = in[at], value = in[at + 1];
    std::uint8_t* row = rows[place_of(shape, y)];
    at += 2;
    if (count > 0) {
      for (std::size_t i = 0; i < count && x < shape.width; ++i, ++x)
        put_index(row, x, bits,
                  static_cast<std::uint32_t>(bits == 8 ? value
                                             : i & 1   ? value & 15
                                                       : value >> 4));
    } else if (value == 0) {
      x = 0;
      ++y;
    } else if (value == 1) {
      return shape.height;
    } else if (value == 2) {
      if (at + 2 > in.size()) break;
      x = std::min<std::size_t>(x + in[at], shape.width);
      y += in[at + 1];
      at += 2;
    } else {
      const std::size_t bytes = bits == 8 ? value : (value + 1) / 2;
      if (at + bytes > in.size()) break;
      for (std::size_t i = 0; i < value && x < shape.width; ++i, ++x)
        put_index(row, x, bits, get_index(in.data() + at, i, bits));
      at += bytes + (bytes & 1);
    }
  }
  // Without the end mark the last row counts when it is full.
  if (y < shape.height && x == shape.width) ++y;
  return static_cast<std::uint32_t>(std::min<std::size_t>(y, shape.height));
}

/// Red, green, blue and alpha masks, then a color space of 0 that needs no further fields: BITMAPV4HEADER.
std::array<std::uint8_t, kV4Header> v4_header(const Picture& picture) {
  std::array<std::uint8_t, kV4Header> header{};
  std::copy_n(picture.handle().data(), Picture::kHeaderBytes, header.data());
  write_le32(header.data(), kV4Header);
  write_le32(header.data() + 16, kBitFields);
  constexpr std::array<std::uint32_t, 4> masks = {0xFF0000, 0xFF00, 0xFF, 0xFF000000};
  for (std::size_t i = 0; i < masks.size(); ++i) write_le32(header.data() + 40 + 4 * i, masks[i]);
  write_le32(header.data() + 56, 0x73524742);  // LCS_sRGB
  return header;
}

bool encode_bmp(const Picture& picture, SafeFile& file) {
  const FileBytes block = picture.handle().bytes();
  const bool alpha = picture.bits() == 32;
  const std::size_t header = alpha ? kV4Header : Picture::kHeaderBytes;
  const std::size_t rows_at = kFileHeader + header + 4 * std::size_t{picture.colours()};
  const std::size_t size = kFileHeader + header + block.size() - Picture::kHeaderBytes;
  std::array<std::uint8_t, kFileHeader> start{'B', 'M'};
  write_le32(start.data() + 2, static_cast<std::uint32_t>(size));
  write_le32(start.data() + 10, static_cast<std::uint32_t>(rows_at));
  file.write(start);
  // Below 32 bits a picture's block is what the format holds.
  if (!alpha) return file.write(block);
  file.write(v4_header(picture));
  return file.write(block.subspan(Picture::kHeaderBytes));
}

}  // namespace

bool is_bmp(FileBytes file) {
  if (file.size() < kFileHeader + 4 || file[0] != 'B' || file[1] != 'M') return false;
  const std::uint32_t header = read_le32(file.data() + kFileHeader);
  return header == kCoreHeader || (header >= 16 && header <= 124);
}

GraphicReading decode_bmp(FileBytes file, Part part, const GraphicSwitches&) {
  Shape shape;
  if (!read_shape(file, shape)) return {{}, GraphicFault::Damaged, translated("the header is damaged")};
  GraphicReading reading =
      reading_of_size(shape.width, shape.height, &shape.palette, result_bits(shape), part, file.size());
  if (!reading.picture || part == Part::Header) return reading;
  if (shape.run_length()) {
    const std::uint32_t rows = decode_runs(shape, reading.picture);
    return cut_reading(std::move(reading), rows, shape.height);
  }
  if (shape.stored_bits == 16 || shape.stored_bits == 32)
    decode_fields(shape, reading.picture);
  else
    decode_rows(shape, reading.picture);
  return cut_reading(std::move(reading), shape.whole_rows, shape.height);
}

bool BMPWriteGraphicFile(const std::filesystem::path& path, const GraphicSwitches&, const Picture& picture) {
  return write_through(path, picture, [&](SafeFile& file) { return encode_bmp(picture, file); });
}

}  // namespace vellum
