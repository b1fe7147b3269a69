#include "image/picture.h"

#include <cstring>

#include "base/byte_order.h"
#include "base/limits.h"

namespace vellum {
namespace {

// Offsets of the header's fields (BITMAPINFOHEADER).
constexpr std::size_t kSize = 0;
constexpr std::size_t kWidth = 4;
constexpr std::size_t kHeight = 8;
constexpr std::size_t kPlanes = 12;
constexpr std::size_t kBitCount = 14;
constexpr std::size_t kSizeImage = 20;
constexpr std::size_t kClrUsed = 32;
constexpr std::size_t kClrImportant = 36;

bool is_depth(std::uint32_t bits) { return bits == 1 || bits == 4 || bits == 8 || bits == 24 || bits == 32; }

std::size_t table_bytes(std::uint32_t bits) { return bits < 9 ? std::size_t{4} << bits : 0; }

void write_header(std::uint8_t* block, std::uint32_t width, std::uint32_t height, std::uint32_t bits) {
  std::memset(block, 0, Picture::kHeaderBytes + table_bytes(bits));
  write_le32(block + kSize, Picture::kHeaderBytes);
  write_le32(block + kWidth, width);
  write_le32(block + kHeight, height);
  write_le16(block + kPlanes, 1);
  write_le16(block + kBitCount, bits);
  write_le32(block + kSizeImage, static_cast<std::uint32_t>(picture_stride(width, bits) * height));
  const std::uint32_t colours = bits < 9 ? 1u << bits : 0;
  write_le32(block + kClrUsed, colours);
  write_le32(block + kClrImportant, colours);
}

void write_table(std::uint8_t* table, std::uint32_t colours, const Palette& palette) {
  for (std::uint32_t i = 0; i < colours; ++i) {
    table[4 * i] = palette[3 * i + 2];
    table[4 * i + 1] = palette[3 * i + 1];
    table[4 * i + 2] = palette[3 * i];
    table[4 * i + 3] = 0;
  }
}

enum class Rows { Zero, Unspecified, None };

Picture create(std::uint32_t width, std::uint32_t height, const Palette* palette, std::uint32_t depth,
               Rows rows) {
  if (width == 0 || height == 0 || width > kMaximumDimension || height > kMaximumDimension) return {};
  const std::uint32_t bits = picture_bits(depth);
  const std::uint64_t head = Picture::kHeaderBytes + table_bytes(bits);
  const std::uint64_t bytes = head + std::uint64_t{picture_stride(width, bits)} * height;
  if (bytes > kMaximumPictureBytes) return {};
  ChunkHandle block = rows == Rows::None          ? ChunkHandle::create(head)
                      : rows == Rows::Unspecified ? ChunkHandle::create_for_overwrite(bytes)
                                                  : ChunkHandle::create(bytes);
  if (!block) return {};
  std::uint8_t* bytes_of = block.edit();
  write_header(bytes_of, width, height, bits);
  if (bits < 9 && palette) write_table(bytes_of + Picture::kHeaderBytes, 1u << bits, *palette);
  return Picture(std::move(block));
}

}  // namespace

bool is_picture(const ChunkHandle& block) {
  if (!block || block.size() < Picture::kHeaderBytes) return false;
  const std::uint8_t* p = block.head();
  const std::uint32_t width = read_le32(p + kWidth);
  const std::uint32_t height = read_le32(p + kHeight);
  const std::uint32_t bits = read_le16(p + kBitCount);
  if (read_le32(p + kSize) != Picture::kHeaderBytes || !is_depth(bits) || width == 0 || height == 0 ||
      width > kMaximumDimension || height > kMaximumDimension)
    return false;
  const std::uint64_t head = Picture::kHeaderBytes + table_bytes(bits);
  const std::uint64_t whole = head + std::uint64_t{picture_stride(width, bits)} * height;
  return block.size() == whole || block.size() == head;
}

Picture::Picture(ChunkHandle block)
    : block_(is_picture(block) ? std::move(block) : ChunkHandle()), pin_(block_) {}

std::uint32_t Picture::width() const { return read_le32(block_.head() + kWidth); }
std::uint32_t Picture::height() const { return read_le32(block_.head() + kHeight); }
std::uint32_t Picture::bits() const { return read_le16(block_.head() + kBitCount); }
std::size_t Picture::stride() const { return block_ ? picture_stride(width(), bits()) : 0; }

std::size_t Picture::row_offset(std::uint32_t y) const {
  return kHeaderBytes + table_bytes(bits()) + stride() * (height() - 1 - y);
}

const std::uint8_t* Picture::row(std::uint32_t y) const { return block_.data() + row_offset(y); }

std::uint8_t* Picture::edit_block() {
  std::uint8_t* block = block_.edit();
  if (pin_) pin_ = {};  // what is written is no kept block any more
  return block;
}

std::uint8_t* Picture::edit_table() {
  std::uint8_t* block = edit_block();
  return block ? block + kHeaderBytes : nullptr;
}

std::uint8_t* Picture::edit_row(std::uint32_t y) {
  if (!block_) return nullptr;
  const std::size_t offset = row_offset(y);
  std::uint8_t* block = edit_block();
  return block ? block + offset : nullptr;
}

std::uint32_t picture_bits(std::uint32_t depth) {
  if (depth == 0 || depth > 24) return 32;
  if (depth == 1) return 1;
  if (depth <= 4) return 4;
  return depth <= 8 ? 8 : 24;
}

Picture PictureCreate(std::uint32_t width, std::uint32_t height, const Palette* palette,
                      std::uint32_t depth) {
  return create(width, height, palette, depth, Rows::Zero);
}

Picture PictureCreateForOverwrite(std::uint32_t width, std::uint32_t height, const Palette* palette,
                                  std::uint32_t depth) {
  return create(width, height, palette, depth, Rows::Unspecified);
}

Picture PictureCreateHeaderOnly(std::uint32_t width, std::uint32_t height, const Palette* palette,
                                std::uint32_t depth) {
  return create(width, height, palette, depth, Rows::None);
}

Picture PictureCreateAlpha(std::uint32_t width, std::uint32_t height) {
  return PictureCreate(width, height, nullptr, 32);
}

Picture PictureCreateFilled(std::uint32_t width, std::uint32_t height, Colour colour) {
  Picture picture = PictureCreate(width, height, nullptr, 24);
  if (!picture) return picture;
  std::uint8_t* first = picture.edit_row(0);
  for (std::uint32_t x = 0; x < width; ++x) {
    first[3 * x] = blue_of(colour);
    first[3 * x + 1] = green_of(colour);
    first[3 * x + 2] = red_of(colour);
  }
  for (std::uint32_t y = 1; y < height; ++y) std::memcpy(picture.edit_row(y), first, picture.stride());
  return picture;
}

Picture PictureDuplicate(const Picture& picture) {
  return picture ? Picture(ChunkHandle::copy_of(picture.handle().bytes(), 0)) : Picture();
}

Colour PictureGetPixel(const Picture& picture, std::int64_t x, std::int64_t y) {
  if (!picture || x < 0 || y < 0 || x >= picture.width() || y >= picture.height()) return 0xFFFFFFFF;
  const std::uint8_t* row = picture.row(static_cast<std::uint32_t>(y));
  switch (picture.bits()) {
    case 1:
      return row[x >> 3] >> (7 - (x & 7)) & 1;
    case 4:
      return x & 1 ? row[x >> 1] & 15 : row[x >> 1] >> 4;
    case 8:
      return row[x];
    case 24:
      return make_colour(row[3 * x + 2], row[3 * x + 1], row[3 * x]);
    default:
      return make_colour(row[4 * x + 2], row[4 * x + 1], row[4 * x], row[4 * x + 3]);
  }
}

void PicturePutPixel(Picture& picture, std::int64_t x, std::int64_t y, Colour value) {
  if (!picture || x < 0 || y < 0 || x >= picture.width() || y >= picture.height()) return;
  std::uint8_t* row = picture.edit_row(static_cast<std::uint32_t>(y));
  if (!row) return;
  switch (picture.bits()) {
    case 1: {
      const auto bit = static_cast<std::uint8_t>(0x80 >> (x & 7));
      row[x >> 3] = static_cast<std::uint8_t>(value & 1 ? row[x >> 3] | bit : row[x >> 3] & ~bit);
      return;
    }
    case 4: {
      const auto nibble = static_cast<std::uint8_t>(value & 15);
      row[x >> 1] = static_cast<std::uint8_t>(x & 1 ? (row[x >> 1] & 0xF0) | nibble
                                                    : (row[x >> 1] & 0x0F) | nibble << 4);
      return;
    }
    case 8:
      row[x] = static_cast<std::uint8_t>(value);
      return;
    case 32:
      row[4 * x + 3] = alpha_of(value);
      row += x;
      break;
    default:
      break;
  }
  row += 3 * x;
  row[0] = blue_of(value);
  row[1] = green_of(value);
  row[2] = red_of(value);
}

Colour PictureGetPixelOpaque(const Picture& picture, std::int64_t x, std::int64_t y) {
  const Colour value = PictureGetPixel(picture, x, y);
  return picture && picture.bits() == 24 ? value | 0xFF000000 : value;
}

std::uint32_t PictureGetPalette(const Picture& picture, Palette& palette) {
  palette.fill(0);
  if (!picture || picture.bits() > 8) return 0;
  const std::uint8_t* table = picture.table();
  for (std::uint32_t i = 0; i < picture.colours(); ++i) {
    palette[3 * i] = table[4 * i + 2];
    palette[3 * i + 1] = table[4 * i + 1];
    palette[3 * i + 2] = table[4 * i];
  }
  return picture.colours();
}

void PictureSetPalette(Picture& picture, const Palette& palette) {
  if (!picture || picture.bits() > 8) return;
  if (std::uint8_t* table = picture.edit_table()) write_table(table, picture.colours(), palette);
}

bool PictureInfo(const Picture& picture, std::uint32_t* width, std::uint32_t* height, std::uint32_t* bits,
                 Palette* palette) {
  if (!picture) return false;
  if (width) *width = picture.width();
  if (height) *height = picture.height();
  if (bits) *bits = picture.bits();
  if (palette) PictureGetPalette(picture, *palette);
  return true;
}

}  // namespace vellum
