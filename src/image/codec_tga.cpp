// Truevision TGA 2.0: color-mapped, true-color and grey, plain or run-length coded, with any of the four
// origins.
#include <vector>

#include "base/byte_order.h"
#include "base/translation.h"
#include "image/codecs.h"

namespace vellum {
namespace {

constexpr std::size_t kHeader = 18;
constexpr std::string_view kSignature{"TRUEVISION-XFILE.\0", 18};

enum Kind : std::uint32_t { kMapped = 1, kTrueColour = 2, kGrey = 3 };

struct Shape {
  std::uint32_t width = 0, height = 0;
  std::uint32_t kind = 0;
  bool runs = false;
  std::uint32_t pixel_bits = 0;
  bool from_right = false, from_top = false;
  bool states_alpha = false;  ///< the descriptor counts alpha bits
  Palette palette{};
  FileBytes pixels;

  std::size_t pixel_bytes() const { return (pixel_bits + 7) / 8; }
};

bool known_depth(std::uint32_t kind, std::uint32_t bits) {
  if (kind == kMapped) return bits == 8;
  if (kind == kGrey) return bits == 8 || bits == 16;
  return kind == kTrueColour && (bits == 15 || bits == 16 || bits == 24 || bits == 32);
}

/// A 15- or 16-bit entry as blue, green, red.
void store_555(std::uint8_t* out, std::uint32_t entry) {
  out[0] = widened(entry & 31, 5);
  out[1] = widened(entry >> 5 & 31, 5);
  out[2] = widened(entry >> 10 & 31, 5);
}

/// The color map. `first` is the index of its first entry; entries above 255 cannot be used by 8-bit pixels.
Palette read_map(FileBytes map, std::uint32_t first, std::uint32_t entries, std::uint32_t entry_bits) {
  const std::size_t size = (entry_bits + 7) / 8;
  std::array<std::uint8_t, 768> table{};
  for (std::uint32_t i = 0; i < entries && first + i < 256; ++i) {
    const std::uint8_t* entry = map.data() + size * i;
    std::uint8_t* out = table.data() + 3 * std::size_t{first + i};
    if (size == 2)
      store_555(out, read_le16(entry));
    else
      std::copy_n(entry, 3, out);
  }
  return palette_from_bgr(table.data(), 256, 3);
}

bool read_shape(FileBytes file, Shape& shape) {
  if (file.size() < kHeader || file[1] > 1) return false;
  const std::uint8_t* p = file.data();
  shape.kind = p[2] & ~8u;
  shape.runs = p[2] & 8;
  shape.width = read_le16(p + 12);
  shape.height = read_le16(p + 14);
  shape.pixel_bits = p[16];
  shape.states_alpha = p[17] & 15;
  shape.from_right = p[17] & 16;
  shape.from_top = p[17] & 32;
  if (shape.width == 0 || shape.height == 0 || !known_depth(shape.kind, shape.pixel_bits)) return false;
  const bool has_map = p[1] == 1;
  const std::uint32_t first = read_le16(p + 3), entries = read_le16(p + 5), entry_bits = p[7];
  if (has_map && entry_bits != 15 && entry_bits != 16 && entry_bits != 24 && entry_bits != 32) return false;
  const std::size_t map_at = kHeader + p[0],
                    map_bytes = has_map ? std::size_t{entries} * ((entry_bits + 7) / 8) : 0;
  if (map_at + map_bytes > file.size()) return false;
  if (shape.kind == kMapped) {
    if (!has_map || entries == 0) return false;
    shape.palette = read_map(file.subspan(map_at, map_bytes), first, entries, entry_bits);
  } else {
    shape.palette = grey_ramp();
  }
  shape.pixels = file.subspan(map_at + map_bytes);
  return true;
}

/// Stored pixels one row after the other. A packet may reach into the next row.
class RowReader {
 public:
  explicit RowReader(const Shape& shape) : in_(shape.pixels), size_(shape.pixel_bytes()), runs_(shape.runs) {}

  /// False at the end of the file.
  bool read(std::span<std::uint8_t> row) {
    for (std::size_t x = 0; x < row.size();) {
      if (left_ == 0 && !next_packet(row.size())) return false;
      const std::size_t bytes = std::min(left_, row.size() - x);
      if (!repeat_) std::copy_n(in_.data() + at_, bytes, row.data() + x);
      for (std::size_t i = 0; repeat_ && i < bytes; i += size_)
        std::copy_n(in_.data() + at_, size_, row.data() + x + i);
      x += bytes;
      left_ -= bytes;
      if (!repeat_) at_ += bytes;
      if (repeat_ && left_ == 0) at_ += size_;
    }
    return true;
  }

 private:
  bool next_packet(std::size_t row_bytes) {
    left_ = row_bytes;
    if (runs_) {
      if (at_ >= in_.size()) return false;
      const std::uint8_t head = in_[at_++];
      repeat_ = head & 128;
      left_ = size_ * ((head & 127u) + 1);
    }
    return in_.size() - at_ >= (repeat_ ? size_ : left_);
  }

  FileBytes in_;
  std::size_t size_;
  bool runs_;
  bool repeat_ = false;
  std::size_t at_ = 0, left_ = 0;  ///< bytes of the packet that are still to come
};

/// Calls use(y, row) with every stored row that the file has and its place from the top, until it gives true.
template <class Use>
void for_each_stored_row(const Shape& shape, const Use& use) {
  RowReader reader(shape);
  std::vector<std::uint8_t> row(shape.pixel_bytes() * shape.width);
  for (std::uint32_t i = 0; i < shape.height; ++i) {
    if (!reader.read(row) || use(shape.from_top ? i : shape.height - 1 - i, row)) return;
  }
}

/// Alpha that the descriptor does not count is taken when a pixel has any.
bool uses_alpha(const Shape& shape) {
  if (shape.kind == kGrey) return shape.pixel_bits == 16;
  if (shape.pixel_bits != 32 || shape.states_alpha) return shape.pixel_bits == 32;
  bool found = false;
  for_each_stored_row(shape, [&](std::uint32_t, const std::vector<std::uint8_t>& row) {
    for (std::size_t i = 3; i < row.size() && !found; i += 4) found = row[i] != 0;
    return found;
  });
  return found;
}

std::uint32_t result_bits(const Shape& shape) {
  if (shape.kind == kMapped || (shape.kind == kGrey && shape.pixel_bits == 8)) return 8;
  return uses_alpha(shape) ? 32 : 24;
}

void store_pixel(const Shape& shape, const std::uint8_t* in, std::uint8_t* out, std::size_t out_bytes) {
  if (shape.kind == kGrey && out_bytes == 4) {
    out[0] = out[1] = out[2] = in[0];
    out[3] = in[1];
  } else if (shape.kind == kTrueColour && shape.pixel_bits < 24) {
    store_555(out, read_le16(in));
  } else {
    std::copy_n(in, out_bytes, out);
  }
}

std::array<std::uint8_t, kHeader> header_of(const Picture& picture, bool mapped) {
  std::array<std::uint8_t, kHeader> header{};
  header[1] = mapped;
  header[2] = mapped ? kMapped : picture.bits() == 8 ? kGrey : kTrueColour;
  if (mapped) {
    write_le16(header.data() + 5, picture.colours());
    header[7] = 24;
  }
  write_le16(header.data() + 12, picture.width());
  write_le16(header.data() + 14, picture.height());
  header[16] = static_cast<std::uint8_t>(std::max(picture.bits(), 8u));
  header[17] = picture.bits() == 32 ? 8 : 0;
  return header;
}

void write_map(const Picture& picture, SafeFile& file) {
  for (std::uint32_t i = 0; i < picture.colours(); ++i) file.write({picture.table() + 4 * std::size_t{i}, 3});
}

/// Bottom row first, as the format's oldest readers expect, then the footer of version 2.
bool encode_tga(const Picture& picture, SafeFile& file) {
  if (picture.width() > 65535 || picture.height() > 65535) return false;
  const std::uint32_t bits = picture.bits();
  const bool mapped = bits < 9 && !has_grey_ramp(picture);
  file.write(header_of(picture, mapped));
  if (mapped) write_map(picture, file);
  for (std::uint32_t y = picture.height(); y-- > 0;) {
    const std::uint8_t* row = picture.row(y);
    if (bits > 8) {
      file.write({row, picture.width() * std::size_t{bits / 8}});
      continue;
    }
    for_each_index_run(row, picture.width(), bits,
                       [&](std::size_t, const std::uint8_t* indices, std::size_t count) {
                         file.write({indices, count});
                       });
  }
  std::array<std::uint8_t, 26> footer{};
  std::ranges::copy(kSignature, footer.begin() + 8);
  return file.write(footer);
}

}  // namespace

bool is_tga(FileBytes file) {
  if (file.size() < kHeader || file[1] > 1) return false;
  return known_depth(file[2] & ~8u, file[16]) && read_le16(file.data() + 12) != 0 &&
         read_le16(file.data() + 14) != 0;
}

GraphicReading decode_tga(FileBytes file, Part part, const GraphicSwitches&) {
  Shape shape;
  if (!read_shape(file, shape)) return {{}, GraphicFault::Damaged, translated("the header is damaged")};
  GraphicReading reading =
      reading_of_size(shape.width, shape.height, &shape.palette, result_bits(shape), part, file.size());
  if (!reading.picture || part == Part::Header) return reading;
  const EditRows rows(reading.picture);
  const std::size_t size = reading.picture.bits() / 8, stored = shape.pixel_bytes(), width = shape.width;
  std::uint32_t count = 0;
  for_each_stored_row(shape, [&](std::uint32_t y, const std::vector<std::uint8_t>& row) {
    ++count;
    if (stored == size && !shape.from_right)
      std::ranges::copy(row, rows[y]);
    else
      for (std::size_t x = 0; x < width; ++x)
        store_pixel(shape, row.data() + stored * x, rows[y] + size * (shape.from_right ? width - 1 - x : x),
                    size);
    return false;
  });
  return cut_reading(std::move(reading), count, shape.height);
}

bool TGAWriteGraphicFile(const std::filesystem::path& path, const GraphicSwitches&, const Picture& picture) {
  return write_through(path, picture, [&](SafeFile& file) { return encode_tga(picture, file); });
}

}  // namespace vellum
