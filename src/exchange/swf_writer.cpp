#include "exchange/swf_writer.h"

#include <bit>
#include <unordered_map>

#include "base/byte_order.h"
#include "image/deflate.h"
#include "image/picture_operations.h"
#include "image/superpalette.h"
#include "image/to_colors.h"

namespace vellum {
namespace {

enum SwfTag : std::uint16_t {
  kEnd = 0,
  kShowFrame = 1,
  kDefineShape = 2,
  kSetBackground = 9,
  kDoAction = 12,
  kPlaceObject2 = 26,
  kRemoveObject2 = 28,
  kDefineLossless2 = 36,
};

constexpr std::int32_t kTwips = 20;

void put16(SwfBytes& out, std::uint32_t value) {
  out.push_back(static_cast<std::uint8_t>(value));
  out.push_back(static_cast<std::uint8_t>(value >> 8));
}
void put32(SwfBytes& out, std::uint32_t value) {
  put16(out, value);
  put16(out, value >> 16);
}

void put_tag(SwfBytes& out, SwfTag tag, std::span<const std::uint8_t> bytes) {
  constexpr std::size_t kLong = 63;
  // Bitmaps always have the long form.
  const bool is_long = bytes.size() >= kLong || tag == kDefineLossless2;
  put16(out, static_cast<std::uint32_t>(tag << 6 | (is_long ? kLong : bytes.size())));
  if (is_long) put32(out, static_cast<std::uint32_t>(bytes.size()));
  out.insert(out.end(), bytes.begin(), bytes.end());
}

/// Values of any number of bits, the highest bit first.
class BitWriter {
 public:
  void put(std::uint32_t value, unsigned bits) {
    while (bits-- > 0) {
      if (free_ == 0) bytes.push_back(0), free_ = 8;
      --free_;
      bytes.back() = static_cast<std::uint8_t>(bytes.back() | (value >> bits & 1) << free_);
    }
  }
  void put_signed(std::int32_t value, unsigned bits) { put(static_cast<std::uint32_t>(value), bits); }
  void align() { free_ = 0; }
  SwfBytes bytes;

 private:
  unsigned free_ = 0;
};

/// Bits of a signed number.
unsigned bits_for(std::int32_t value) {
  const auto size = static_cast<std::uint32_t>(value < 0 ? ~value : value);
  return static_cast<unsigned>(std::bit_width(size)) + 1;
}

void put_rect(BitWriter& out, std::int32_t right, std::int32_t bottom) {
  const unsigned bits = std::max(bits_for(right), bits_for(bottom));
  out.put(bits, 5);
  for (const std::int32_t side : {0, right, 0, bottom}) out.put_signed(side, bits);
  out.align();
}

/// Colors that are multiplied by their alpha.
std::uint8_t multiplied(std::uint32_t value, std::uint32_t alpha) {
  return static_cast<std::uint8_t>((value * alpha + 127) / 255);
}

/// Indexes into at most 256 colors with alphas.
struct Crushed {
  std::vector<std::uint8_t> indexes;  ///< rows from the top
  std::vector<std::uint32_t> colors;  ///< blue, green, red, alpha
};

std::uint32_t color_at(const std::uint8_t* pixel) {
  const std::uint32_t color = read_le32(pixel);
  return color >> 24 == 0 ? 0 : color;
}

/// The colors as they are; false where there are more than 256.
bool keep_colors(const Picture& picture, Crushed& made) {
  std::unordered_map<std::uint32_t, std::uint8_t> numbers;
  for (std::uint32_t y = 0; y < picture.height(); ++y) {
    const std::uint8_t* row = picture.row(y);
    std::uint32_t last = 0;
    std::uint8_t number = 0;
    bool known = false;
    for (std::uint32_t x = 0; x < picture.width(); ++x) {
      const std::uint32_t color = color_at(row + std::size_t{4} * x);
      if (!known || color != last) {
        const auto [place, added] = numbers.try_emplace(color, static_cast<std::uint8_t>(made.colors.size()));
        if (added && made.colors.size() == 256) return false;
        if (added) made.colors.push_back(color);
        number = place->second;
        last = color;
        known = true;
      }
      made.indexes.push_back(number);
    }
  }
  return true;
}

/// The pixels of a picture that are opaque, or those that are half transparent: the others have alpha 0.
Picture with_alpha_between(const Picture& picture, std::uint32_t least, std::uint32_t most) {
  Picture part = PictureDuplicate(picture);
  if (!part || !part.edit_block()) return {};
  for (std::uint32_t y = 0; y < part.height(); ++y) {
    std::uint8_t* row = part.edit_row(y);
    for (std::uint32_t x = 0; x < part.width(); ++x) {
      std::uint8_t& alpha = row[std::size_t{4} * x + 3];
      alpha = alpha >= least && alpha <= most ? 255 : 0;
    }
  }
  return part;
}

/// Colors for one part of the picture, behind those that are there. Pixels get their indexes.
bool crush_part(const Picture& picture, std::uint32_t least, std::uint32_t most, std::uint32_t count,
                Crushed& made) {
  const Picture part = with_alpha_between(picture, least, most);
  if (!part) return false;
  Superpalette gathered;
  gathered.add(part);
  const PaletteColors found = gathered.colors(count);
  GivenColors given{found.palette, found.count};
  const std::size_t first = made.colors.size();
  std::vector<std::uint64_t> alphas(found.count), uses(found.count);
  // Alpha goes with the color: an entry has the mean of its pixels.
  if (found.count == 0) return true;
  const Picture mapped = to_colors(PictureToTrueColor(part), given, false);
  if (!mapped) return false;
  for (std::uint32_t y = 0; y < picture.height(); ++y) {
    const std::uint8_t* row = picture.row(y);
    for (std::uint32_t x = 0; x < picture.width(); ++x) {
      const std::uint8_t alpha = row[std::size_t{4} * x + 3];
      if (alpha < least || alpha > most) continue;
      const std::uint32_t index = std::min(PictureGetPixel(mapped, x, y), found.count - 1);
      made.indexes[std::size_t{y} * picture.width() + x] = static_cast<std::uint8_t>(first + index);
      alphas[index] += alpha;
      ++uses[index];
    }
  }
  for (std::uint32_t i = 0; i < found.count; ++i) {
    const std::uint8_t* rgb = found.palette.data() + std::size_t{3} * i;
    const auto alpha = static_cast<std::uint32_t>(uses[i] > 0 ? (alphas[i] + uses[i] / 2) / uses[i] : 255);
    made.colors.push_back(std::uint32_t{rgb[2]} | std::uint32_t{rgb[1]} << 8 | std::uint32_t{rgb[0]} << 16 |
                          alpha << 24);
  }
  return true;
}

/// Whether pixels have alphas that are neither 0 nor 255.
bool is_partial(const Picture& picture) {
  for (std::uint32_t y = 0; y < picture.height(); ++y) {
    const std::uint8_t* row = picture.row(y);
    for (std::uint32_t x = 0; x < picture.width(); ++x)
      if (const std::uint8_t alpha = row[std::size_t{4} * x + 3]; alpha != 0 && alpha != 255) return true;
  }
  return false;
}

bool crush(const Picture& picture, Crushed& made) {
  made.indexes.reserve(std::size_t{picture.width()} * picture.height());
  if (keep_colors(picture, made)) return true;
  made.colors = {0};
  made.indexes.assign(std::size_t{picture.width()} * picture.height(), 0);
  constexpr std::uint32_t kPartial = 63;
  if (!is_partial(picture)) return crush_part(picture, 255, 255, 255, made);
  return crush_part(picture, 255, 255, 255 - kPartial, made) && crush_part(picture, 1, 254, kPartial, made);
}

SwfBytes lossless_rows(const Picture& picture) {
  SwfBytes rows;
  rows.reserve(std::size_t{4} * picture.width() * picture.height());
  for (std::uint32_t y = 0; y < picture.height(); ++y) {
    const std::uint8_t* row = picture.row(y);
    for (std::uint32_t x = 0; x < picture.width(); ++x) {
      const std::uint8_t* p = row + std::size_t{4} * x;
      for (const std::uint8_t byte :
           {p[3], multiplied(p[2], p[3]), multiplied(p[1], p[3]), multiplied(p[0], p[3])})
        rows.push_back(byte);
    }
  }
  return rows;
}

SwfBytes crushed_rows(const Crushed& made, std::uint32_t width, std::uint32_t height) {
  SwfBytes rows;
  for (const std::uint32_t color : made.colors) {
    const std::uint32_t alpha = color >> 24;
    for (const unsigned shift : {16u, 8u, 0u}) rows.push_back(multiplied(color >> shift & 255, alpha));
    rows.push_back(static_cast<std::uint8_t>(alpha));
  }
  for (std::uint32_t y = 0; y < height; ++y) {
    const auto* row = made.indexes.data() + std::size_t{y} * width;
    rows.insert(rows.end(), row, row + width);
    rows.resize(rows.size() + (4 - width % 4) % 4);
  }
  return rows;
}

/// A rectangle filled with the bitmap, pixel for pixel.
void put_shape(SwfBytes& out, std::uint16_t number, std::uint16_t bitmap, std::uint32_t width,
               std::uint32_t height) {
  constexpr std::uint8_t kClipped = 0x41;
  constexpr std::uint32_t kScale = kTwips << 16;
  const auto right = static_cast<std::int32_t>(width) * kTwips,
             bottom = static_cast<std::int32_t>(height) * kTwips;
  SwfBytes body;
  put16(body, number);
  BitWriter bits;
  put_rect(bits, right, bottom);
  bits.bytes.push_back(1);
  bits.bytes.push_back(kClipped);
  put16(bits.bytes, bitmap);
  // The matrix: a pixel is 20 twips, nothing is turned or moved.
  const unsigned scale_bits = bits_for(kScale);
  bits.put(1, 1);
  bits.put(scale_bits, 5);
  bits.put(kScale, scale_bits);
  bits.put(kScale, scale_bits);
  bits.put(0, 1);
  bits.put(0, 5);
  bits.align();
  bits.bytes.push_back(0);  // no lines
  bits.put(1, 4);           // bits of a fill's number
  bits.put(0, 4);
  // A change of style that moves to the top left corner and takes fill 1 on the right side of the edges.
  bits.put(0b000101, 6);
  bits.put(1, 5);
  bits.put(0, 2);
  bits.put(1, 1);
  const unsigned edge = std::max({bits_for(right), bits_for(bottom), 2u});
  const auto line = [&](bool vertical, std::int32_t by) {
    bits.put(0b11, 2);
    bits.put(edge - 2, 4);
    bits.put(0, 1);
    bits.put(vertical ? 1 : 0, 1);
    bits.put_signed(by, edge);
  };
  line(false, right);
  line(true, bottom);
  line(false, -right);
  line(true, -bottom);
  bits.put(0, 6);
  body.insert(body.end(), bits.bytes.begin(), bits.bytes.end());
  put_tag(out, kDefineShape, body);
}

}  // namespace

void put_swf_head(SwfBytes& out, std::uint32_t width, std::uint32_t height, std::uint32_t rate256,
                  std::uint32_t frames) {
  BitWriter bits;
  put_rect(bits, static_cast<std::int32_t>(width) * kTwips, static_cast<std::int32_t>(height) * kTwips);
  out.insert(out.end(), bits.bytes.begin(), bits.bytes.end());
  put16(out, rate256);
  put16(out, frames);
}

SwfBytes swf_signature(std::uint32_t length) {
  SwfBytes out{'C', 'W', 'S', 6};
  put32(out, length);
  return out;
}

void put_swf_background(SwfBytes& out, Colour color) {
  const std::uint8_t rgb[] = {red_of(color), green_of(color), blue_of(color)};
  put_tag(out, kSetBackground, rgb);
}

bool put_swf_picture(SwfBytes& out, std::uint16_t number, const Picture& picture, bool crushed) {
  if (!picture || picture.bits() != 32) return false;
  SwfBytes body, rows;
  put16(body, number);
  Crushed made;
  if (crushed && !crush(picture, made)) return false;
  body.push_back(crushed ? 3 : 5);
  put16(body, picture.width());
  put16(body, picture.height());
  if (crushed) body.push_back(static_cast<std::uint8_t>(made.colors.size() - 1));
  rows = crushed ? crushed_rows(made, picture.width(), picture.height()) : lossless_rows(picture);
  const auto packed = deflate_bytes(rows, 7);
  if (packed.empty()) return false;
  body.insert(body.end(), packed.begin(), packed.end());
  put_tag(out, kDefineLossless2, body);
  put_shape(out, static_cast<std::uint16_t>(number + 1), number, picture.width(), picture.height());
  return true;
}

void put_swf_place(SwfBytes& out, std::uint16_t depth, std::uint16_t number, std::uint32_t x,
                   std::uint32_t y) {
  constexpr std::uint8_t kMatrixAndCharacter = 0b110;
  SwfBytes body{kMatrixAndCharacter};
  put16(body, depth);
  put16(body, number);
  BitWriter bits;
  const auto left = static_cast<std::int32_t>(x) * kTwips, top = static_cast<std::int32_t>(y) * kTwips;
  const unsigned size = std::max(bits_for(left), bits_for(top));
  bits.put(0, 2);  // neither scaled nor turned
  bits.put(size, 5);
  bits.put_signed(left, size);
  bits.put_signed(top, size);
  body.insert(body.end(), bits.bytes.begin(), bits.bytes.end());
  put_tag(out, kPlaceObject2, body);
}

void put_swf_remove(SwfBytes& out, std::uint16_t depth) {
  SwfBytes body;
  put16(body, depth);
  put_tag(out, kRemoveObject2, body);
}

void put_swf_show(SwfBytes& out) { put_tag(out, kShowFrame, {}); }

void put_swf_stop(SwfBytes& out) {
  constexpr std::uint8_t kStop[] = {0x07, 0};
  put_tag(out, kDoAction, kStop);
}

void put_swf_end(SwfBytes& out) { put_tag(out, kEnd, {}); }

}  // namespace vellum
