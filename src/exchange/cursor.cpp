#include "exchange/cursor.h"

#include <algorithm>
#include <cstring>

#include "base/byte_order.h"
#include "core/edit/frame_layer.h"
#include "core/files/read_png.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"
#include "image/remap.h"

namespace vellum {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kDirectory = 6, kEntry = 16, kHeader = 40;
constexpr std::uint32_t kMostSide = 4096;  // of what is read; real ones have 256

/// A bitmap's header and where its parts lie.
struct Bitmap {
  std::uint32_t width = 0, height = 0, bits = 0, colors = 0;
  std::size_t table = 0, rows = 0, stride = 0, mask = 0, maskStride = 0;
};

std::optional<Bitmap> bitmap_of(Bytes bytes, bool masked) {
  if (bytes.size() < kHeader) return std::nullopt;
  const std::uint32_t header = read_le32(&bytes[0]), compression = read_le32(&bytes[16]),
                      height = read_le32(&bytes[8]);
  Bitmap map;
  map.width = read_le32(&bytes[4]);
  map.height = masked ? height / 2 : height;
  map.bits = read_le16(&bytes[14]);
  const bool known =
      map.bits == 1 || map.bits == 4 || map.bits == 8 || map.bits == 16 || map.bits == 24 || map.bits == 32;
  if (header < kHeader || header > bytes.size() || compression != 0 || !known || map.width == 0 ||
      map.height == 0 || map.width > kMostSide || map.height > kMostSide)
    return std::nullopt;
  if (map.bits <= 8) {
    const std::uint32_t told = read_le32(&bytes[32]);
    map.colors = told == 0 ? 1u << map.bits : std::min(told, 1u << map.bits);
  }
  map.table = header;
  map.rows = map.table + std::size_t{4} * map.colors;
  map.stride = picture_stride(map.width, map.bits);
  map.mask = map.rows + map.stride * map.height;
  map.maskStride = picture_stride(map.width, 1);
  return map.mask <= bytes.size() ? std::optional(map) : std::nullopt;
}

/// The picture without its mask.
Picture stored_picture(Bytes bytes, const Bitmap& map) {
  Palette palette{};
  for (std::uint32_t i = 0; i < map.colors; ++i) {
    const std::uint8_t* color = &bytes[map.table + std::size_t{4} * i];
    const std::uint8_t triple[] = {color[2], color[1], color[0]};
    std::ranges::copy(triple, palette.begin() + 3 * i);
  }
  Picture picture = create_rows(map.width, map.height, &palette, map.bits == 16 ? 24 : map.bits);
  const EditRows rows(picture);
  if (!rows) return {};
  for (std::uint32_t y = 0; y < map.height; ++y) {
    const std::uint8_t* from = &bytes[map.rows + map.stride * (map.height - 1 - y)];
    if (map.bits != 16) {
      copy_pixels(rows[y], 0, from, 0, map.width, map.bits);
      continue;
    }
    for (std::uint32_t x = 0; x < map.width; ++x) {
      const unsigned value = read_le16(from + 2 * x);
      for (unsigned c = 0; c < 3; ++c) {
        const unsigned five = value >> 5 * c & 31;
        rows[y][3 * x + c] = static_cast<std::uint8_t>(five << 3 | five >> 2);
      }
    }
  }
  return picture;
}

bool has_alpha(const Picture& picture) {
  for (std::uint32_t y = 0; picture.bits() == 32 && y < picture.height(); ++y)
    for (std::uint32_t x = 0; x < picture.width(); ++x)
      if (picture.row(y)[4 * x + 3] != 0) return true;
  return false;
}

/// With the transparency that the mask tells; a mask that is cut leaves opaque what it doesn't tell.
Picture masked(Picture picture, Bytes bytes, const Bitmap& map) {
  const auto bit = [&](std::uint32_t x, std::uint32_t y) {
    const std::size_t at = map.mask + map.maskStride * (map.height - 1 - y) + x / 8;
    return at < bytes.size() && (bytes[at] >> (7 - x % 8) & 1) != 0;
  };
  bool any = false;
  for (std::uint32_t y = 0; y < map.height && !any; ++y)
    for (std::uint32_t x = 0; x < map.width && !any; ++x) any = bit(x, y);
  if (!any) return picture.bits() == 32 ? PictureToTrueColor(picture) : picture;
  picture = PictureWithTransparency(picture.bits() == 32 ? PictureToTrueColor(picture) : picture, {});
  const EditRows rows(picture);
  for (std::uint32_t y = 0; rows && y < map.height; ++y)
    for (std::uint32_t x = 0; x < map.width; ++x)
      if (bit(x, y)) std::memset(rows[y] + 4 * x, 0, 4);
  return picture;
}

Picture read_png_picture(Bytes bytes) {
  DocumentWindow window;
  Host nobody;
  if (!read_png(window, bytes, nobody)) return {};
  const FrameSource source = frame_source_of(window);
  for (std::size_t i = 0; i < window.list.size(); ++i)
    if (is_image_entry(window.document.kind, window.list.record(i).tag))
      return frame_layer_of(source, window.list.record(i)).picture;
  return {};
}

std::size_t entries_of(Bytes cursor) {
  return std::min<std::size_t>(read_le16(&cursor[4]), (cursor.size() - kDirectory) / kEntry);
}

void put(std::vector<std::uint8_t>& out, std::uint32_t value, int bytes) {
  for (int shift = 0; shift < 8 * bytes; shift += 8) out.push_back(static_cast<std::uint8_t>(value >> shift));
}

}  // namespace

bool is_cursor(Bytes bytes) {
  return bytes.size() > kDirectory + kEntry && read_le16(&bytes[0]) == 0 && read_le16(&bytes[2]) == 2 &&
         entries_of(bytes) > 0 && bytes[9] == 0 && read_le32(&bytes[18]) >= kDirectory + kEntry &&
         read_le32(&bytes[18]) < bytes.size();
}

HotSpot hot_spot_of(Bytes cursor) {
  if (cursor.size() < 14) return {};
  return {read_le16(&cursor[10]), read_le16(&cursor[12])};
}

std::size_t largest_entry(Bytes cursor) {
  std::size_t largest = 0;
  std::uint32_t most = 0;
  for (std::size_t i = 0; i < entries_of(cursor); ++i) {
    const std::uint8_t* entry = &cursor[kDirectory + kEntry * i];
    const std::uint32_t width = entry[0] == 0 ? 256 : entry[0], height = entry[1] == 0 ? 256 : entry[1];
    if (width * height <= most) continue;
    most = width * height;
    largest = i;
  }
  return largest;
}

Picture read_cursor(Bytes cursor, std::size_t entry) {
  const std::size_t at = kDirectory + kEntry * entry;
  if (cursor.size() < at + kEntry) return {};
  const std::size_t offset = read_le32(&cursor[at + 12]);
  if (offset >= cursor.size()) return {};
  const Bytes image = cursor.subspan(offset);
  constexpr std::uint8_t kPng[] = {0x89, 'P', 'N', 'G'};
  if (image.size() > 4 && std::ranges::equal(image.first(4), kPng)) return read_png_picture(image);
  const auto map = bitmap_of(image, true);
  if (!map) return {};
  Picture picture = stored_picture(image, *map);
  return !picture || has_alpha(picture) ? picture : masked(picture, image, *map);
}

Picture read_bare_bitmap(Bytes bitmap) {
  const auto map = bitmap_of(bitmap, false);
  if (!map || read_le32(&bitmap[0]) != kHeader) return {};
  Picture picture = stored_picture(bitmap, *map);
  return picture && picture.bits() == 32 && !has_alpha(picture) ? PictureToTrueColor(picture) : picture;
}

std::size_t cursor_bytes(std::uint32_t width, std::uint32_t height, std::uint32_t bits) {
  const std::size_t colors = bits <= 8 ? std::size_t{1} << bits : 0;
  return kDirectory + kEntry + kHeader + 4 * colors +
         (picture_stride(width, bits) + picture_stride(width, 1)) * height;
}

std::vector<std::uint8_t> write_cursor(const Picture& picture, std::uint32_t bits, const Palette& palette,
                                       HotSpot hot, std::uint32_t threshold) {
  const std::uint32_t width = picture.width(), height = picture.height(), colors = bits <= 8 ? 1u << bits : 0;
  const std::size_t whole = cursor_bytes(width, height, bits), stride = picture_stride(width, bits),
                    maskStride = picture_stride(width, 1);
  std::vector<std::uint8_t> out;
  out.reserve(whole);
  put(out, 0, 2);
  put(out, 2, 2);
  put(out, 1, 2);
  put(out, width, 1);  // 256 is 0
  put(out, height, 1);
  put(out, colors, 1);
  put(out, 0, 1);
  put(out, std::min(hot.x, width - 1), 2);
  put(out, std::min(hot.y, height - 1), 2);
  put(out, static_cast<std::uint32_t>(whole - kDirectory - kEntry), 4);
  put(out, kDirectory + kEntry, 4);
  put(out, kHeader, 4);
  put(out, width, 4);
  put(out, 2 * height, 4);
  put(out, 1, 2);
  put(out, bits, 2);
  put(out, 0, 4);
  put(out, static_cast<std::uint32_t>((stride + maskStride) * height), 4);
  for (int i = 0; i < 4; ++i) put(out, 0, 4);
  for (std::uint32_t i = 0; i < colors; ++i)
    put(out, palette[3 * i + 2] | palette[3 * i + 1] << 8 | palette[3 * i] << 16, 4);
  // What is transparent inverts nothing when its color is black.
  const std::uint32_t black = NearestPaletteIndex(0, 0, 0, palette, colors);
  std::vector<std::uint8_t> image(stride * height), mask(maskStride * height);
  for (std::uint32_t y = 0; y < height; ++y) {
    const std::uint8_t* from = picture.row(height - 1 - y);
    for (std::uint32_t x = 0; x < width; ++x, from += 4) {
      const bool clear = from[3] < threshold;
      if (clear) put_index(&mask[maskStride * y], x, 1, 1);
      if (bits <= 8)
        put_index(&image[stride * y], x, bits,
                  clear ? black : NearestPaletteIndex(from[2], from[1], from[0], palette, colors));
      else if (!clear)
        std::memcpy(&image[stride * y + 4 * x], from, 4);
    }
  }
  out.insert(out.end(), image.begin(), image.end());
  out.insert(out.end(), mask.begin(), mask.end());
  return out;
}

}  // namespace vellum
