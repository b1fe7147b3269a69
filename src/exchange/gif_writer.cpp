#include "exchange/gif_writer.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "exchange/gif_lzw.h"

namespace vellum {
namespace {

void put16(Bytes& out, std::uint32_t value) {
  out.push_back(static_cast<std::uint8_t>(value));
  out.push_back(static_cast<std::uint8_t>(value >> 8));
}

void put_table(Bytes& out, const GifColors& colors) {
  out.insert(out.end(), colors.palette.begin(), colors.palette.begin() + (3 << table_bits(colors.count)));
}

}  // namespace

std::uint32_t table_bits(std::uint32_t colors) {
  return static_cast<std::uint32_t>(std::bit_width(std::clamp(colors, 2u, 256u) - 1));
}

void put_gif_head(Bytes& out, std::uint32_t width, std::uint32_t height, const GifColors& colors,
                  std::uint8_t background) {
  constexpr char kSignature[] = "GIF89a";
  out.insert(out.end(), kSignature, kSignature + 6);
  put16(out, width);
  put16(out, height);
  out.push_back(static_cast<std::uint8_t>(0x80 | (table_bits(colors.count) - 1)));
  out.push_back(background);
  out.push_back(0);
  put_table(out, colors);
}

void put_gif_plays(Bytes& out, std::uint32_t plays) {
  constexpr char kHead[] = "\x21\xFF\x0BNETSCAPE2.0\x03\x01";
  out.insert(out.end(), kHead, kHead + sizeof kHead - 1);
  put16(out, plays);
  out.push_back(0);
}

void put_gif_comment(Bytes& out, std::span<const std::uint8_t> text) {
  out.insert(out.end(), {0x21, 0xFE});
  for (; !text.empty(); text = text.subspan(std::min<std::size_t>(text.size(), 255))) {
    const auto block = text.first(std::min<std::size_t>(text.size(), 255));
    out.push_back(static_cast<std::uint8_t>(block.size()));
    out.insert(out.end(), block.begin(), block.end());
  }
  out.push_back(0);
}

std::vector<std::uint8_t> put_gif_image(Bytes& out, const GifImage& image, std::uint32_t bits) {
  out.insert(out.end(), {0x21, 0xF9, 4});
  out.push_back(
      static_cast<std::uint8_t>((image.transparent ? 1 : 0) | static_cast<unsigned>(image.disposal) << 2));
  put16(out, image.delay);
  out.push_back(image.transparent.value_or(0));
  out.insert(out.end(), {0, 0x2C});
  for (const std::uint32_t value : {image.left, image.top, image.width, image.height}) put16(out, value);
  out.push_back(
      static_cast<std::uint8_t>(image.local ? 0x80 | (table_bits(image.local->count) - 1) : image.packed));
  if (image.local) put_table(out, *image.local);
  if (!image.choices.empty()) return put_smaller_lzw(out, image.choices, bits, image.clears);
  put_lzw(out, image.indexes, bits);
  return {};
}

}  // namespace vellum
