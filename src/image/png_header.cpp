#include "image/png_header.h"

#include "base/byte_order.h"
#include "base/limits.h"
#include "base/translation.h"
#include "image/builtin_palette.h"

namespace vellum {
namespace {

/// The depths that a color type allows, as a set of bits (PNG standard, table "Allowed combinations").
constexpr std::uint32_t allowed_depths(std::uint8_t colorType) {
  constexpr std::uint32_t any = 1u << 1 | 1u << 2 | 1u << 4 | 1u << 8;
  constexpr std::uint32_t whole = 1u << 8 | 1u << 16;
  constexpr std::uint32_t depths[] = {any | whole, 0, whole, any, whole, 0, whole};
  return colorType < 7 ? depths[colorType] : 0;
}

}  // namespace

PngHeader parse_png_header(std::span<const std::uint8_t, 13> p) {
  return {read_be32(&p[0]), read_be32(&p[4]), p[8], p[9], p[10], p[11], p[12]};
}

std::array<std::uint8_t, 13> png_header_payload(const PngHeader& header) {
  std::array<std::uint8_t, 13> payload{};
  write_be32(&payload[0], header.width);
  write_be32(&payload[4], header.height);
  payload[8] = header.bitDepth;
  payload[9] = header.colorType;
  payload[10] = header.compression;
  payload[11] = header.filter;
  payload[12] = header.interlace;
  return payload;
}

const char* png_header_fault(const PngHeader& header) {
  if (header.width == 0 || header.height == 0) return translated("the image has no pixels");
  if (header.width > kMaximumDimension || header.height > kMaximumDimension)
    return translated("the image is too large");
  if (header.bitDepth > 16 || !(allowed_depths(header.colorType) >> header.bitDepth & 1))
    return translated("the bit depth and color type do not exist together");
  if (header.compression != 0) return translated("the compression method is unknown");
  if (header.filter != 0) return translated("the filter method is unknown");
  if (header.interlace > 1) return translated("the interlace method is unknown");
  return nullptr;
}

std::uint32_t png_picture_bits(const PngHeader& header) {
  switch (header.colorType) {
    case 2:
      return 24;
    case 4:
    case 6:
      return 32;
    default:
      return header.bitDepth == 1 || header.bitDepth == 4 ? header.bitDepth : 8;
  }
}

Palette png_grey_palette(std::uint8_t bitDepth) {
  const int id = bitDepth == 1 ? 0 : bitDepth == 2 ? 12 : bitDepth == 4 ? 10 : 8;
  Palette palette;
  BuiltInPalette(&palette, nullptr, id);
  return palette;
}

PngPasses png_passes(const PngHeader& header) {
  // PNG standard, "Interlacing": where each of the seven passes of Adam7 begins, and its steps.
  static constexpr std::uint32_t adam7[7][4] = {{0, 0, 8, 8}, {4, 0, 8, 8}, {0, 4, 4, 8}, {2, 0, 4, 4},
                                                {0, 2, 2, 4}, {1, 0, 2, 2}, {0, 1, 1, 2}};
  PngPasses result;
  if (header.interlace == 0) {
    result.passes[result.count++] = {0, 0, 1, 1, header.width, header.height};
    return result;
  }
  const auto covered = [](std::uint32_t size, std::uint32_t first, std::uint32_t step) {
    return size > first ? (size - first + step - 1) / step : 0;
  };
  for (const auto& [x0, y0, dx, dy] : adam7) {
    const PngPass pass{x0, y0, dx, dy, covered(header.width, x0, dx), covered(header.height, y0, dy)};
    if (pass.width != 0 && pass.height != 0) result.passes[result.count++] = pass;
  }
  return result;
}

std::uint64_t png_row_bytes(const PngHeader& header, std::uint32_t width) {
  return (std::uint64_t{width} * png_samples(header.colorType) * header.bitDepth + 7) / 8;
}

std::uint64_t png_filtered_bytes(const PngHeader& header) {
  std::uint64_t bytes = 0;
  for (const PngPass& pass : png_passes(header))
    bytes += (png_row_bytes(header, pass.width) + 1) * pass.height;
  return bytes;
}

std::size_t png_filter_distance(const PngHeader& header) {
  return std::max<std::size_t>(1, png_samples(header.colorType) * header.bitDepth / 8);
}

}  // namespace vellum
