#include "exchange/gif_writer.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "base/byte_order.h"

namespace vellum {
namespace {

void put16(Bytes& out, std::uint32_t value) {
  out.push_back(static_cast<std::uint8_t>(value));
  out.push_back(static_cast<std::uint8_t>(value >> 8));
}

/// Bits, lowest first, in blocks of at most 255 bytes with their lengths in front (GIF89a, 15 and appendix
/// F).
class BlockWriter {
 public:
  explicit BlockWriter(Bytes& out) : out_(out) {}

  void put(std::uint32_t code, std::uint32_t width) {
    bits_ |= std::uint64_t{code} << held_;
    held_ += width;
    for (; held_ >= 8; held_ -= 8, bits_ >>= 8) put_byte(static_cast<std::uint8_t>(bits_));
  }
  void finish() {
    if (held_ > 0) put_byte(static_cast<std::uint8_t>(bits_));
    flush();
    out_.push_back(0);
  }

 private:
  void put_byte(std::uint8_t byte) {
    block_[count_++] = byte;
    if (count_ == block_.size()) flush();
  }
  void flush() {
    if (count_ == 0) return;
    out_.push_back(static_cast<std::uint8_t>(count_));
    out_.insert(out_.end(), block_.begin(), block_.begin() + static_cast<std::ptrdiff_t>(count_));
    count_ = 0;
  }

  Bytes& out_;
  std::array<std::uint8_t, 255> block_{};
  std::size_t count_ = 0;
  std::uint64_t bits_ = 0;
  std::uint32_t held_ = 0;
};

/// Strings of the dictionary by the code of all but their last pixel and that pixel. 5003 places are a prime
/// a fifth above the 4096 codes.
class Dictionary {
 public:
  static constexpr std::uint32_t kPlaces = 5003;

  Dictionary() { clear(); }
  void clear() { keys_.fill(kEmpty); }

  /// The code of the string, or where it goes.
  bool find(std::uint32_t prefix, std::uint8_t pixel, std::uint32_t& code) {
    const std::uint32_t key = prefix << 8 | pixel;
    place_ = (std::uint32_t{pixel} << 4 ^ prefix) % kPlaces;
    const std::uint32_t step = place_ == 0 ? 1 : kPlaces - place_;
    while (keys_[place_] != kEmpty) {
      if (keys_[place_] == key) {
        code = codes_[place_];
        return true;
      }
      place_ = place_ < step ? place_ + kPlaces - step : place_ - step;
    }
    key_ = key;
    return false;
  }
  /// Adds what `find` didn't find.
  void add(std::uint32_t code) {
    keys_[place_] = key_;
    codes_[place_] = static_cast<std::uint16_t>(code);
  }

 private:
  static constexpr std::uint32_t kEmpty = 0xFFFFFFFF;
  std::array<std::uint32_t, kPlaces> keys_{};
  std::array<std::uint16_t, kPlaces> codes_{};
  std::uint32_t place_ = 0, key_ = 0;
};

constexpr std::uint32_t kMostCodes = 4096;

void put_lzw(Bytes& out, std::span<const std::uint8_t> indexes, std::uint32_t bits) {
  const std::uint32_t least = std::max(bits, 2u), clear = 1u << least, end = clear + 1;
  out.push_back(static_cast<std::uint8_t>(least));
  BlockWriter writer(out);
  Dictionary strings;
  std::uint32_t next = end + 1, width = least + 1;
  writer.put(clear, width);
  if (!indexes.empty()) {
    std::uint32_t prefix = indexes[0];
    for (const std::uint8_t pixel : indexes.subspan(1)) {
      std::uint32_t code = 0;
      if (strings.find(prefix, pixel, code)) {
        prefix = code;
        continue;
      }
      writer.put(prefix, width);
      if (next < kMostCodes) {
        // A reader knows this string one code later.
        if (next == 1u << width) ++width;
        strings.add(next++);
      } else {
        writer.put(clear, width);
        strings.clear();
        next = end + 1;
        width = least + 1;
      }
      prefix = pixel;
    }
    writer.put(prefix, width);
    if (next == 1u << width && width < 12) ++width;
  }
  writer.put(end, width);
  writer.finish();
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

void put_gif_image(Bytes& out, const GifImage& image, std::uint32_t bits) {
  out.insert(out.end(), {0x21, 0xF9, 4});
  out.push_back(
      static_cast<std::uint8_t>((image.transparent ? 1 : 0) | static_cast<unsigned>(image.disposal) << 2));
  put16(out, image.delay);
  out.push_back(image.transparent.value_or(0));
  out.insert(out.end(), {0, 0x2C});
  for (const std::uint32_t value : {image.left, image.top, image.width, image.height}) put16(out, value);
  if (image.local) bits = table_bits(image.local->count);
  out.push_back(static_cast<std::uint8_t>(image.local ? 0x80 | (bits - 1) : image.packed));
  if (image.local) put_table(out, *image.local);
  put_lzw(out, image.indexes, bits);
}

}  // namespace vellum
