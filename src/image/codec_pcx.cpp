// PC Paintbrush files: a header of 128 bytes, rows of planes with runs, and behind 8 bits a palette at the
// very end.
#include <vector>

#include "base/byte_order.h"
#include "base/translation.h"
#include "image/codecs.h"

namespace vellum {
namespace {

constexpr std::size_t kHeader = 128;
constexpr std::size_t kHeaderPalette = 16;
constexpr std::size_t kEndPalette = 769;  ///< the mark 12 and 256 colors
constexpr std::uint8_t kVersionWithoutPalette = 3;

/// The colors of the EGA, for version 3, which brings no palette.
constexpr std::array<std::uint8_t, 48> kEgaPalette = {
    0x00, 0x00, 0x00, 0x00, 0x00, 0xAA, 0x00, 0xAA, 0x00, 0x00, 0xAA, 0xAA, 0xAA, 0x00, 0x00, 0xAA,
    0x00, 0xAA, 0xAA, 0x55, 0x00, 0xAA, 0xAA, 0xAA, 0x55, 0x55, 0x55, 0x55, 0x55, 0xFF, 0x55, 0xFF,
    0x55, 0x55, 0xFF, 0xFF, 0xFF, 0x55, 0x55, 0xFF, 0x55, 0xFF, 0xFF, 0xFF, 0x55, 0xFF, 0xFF, 0xFF};

struct Shape {
  std::uint32_t width = 0, height = 0;
  std::uint32_t plane_bits = 0, planes = 0;
  std::size_t plane_bytes = 0;  ///< of one row of one plane
  bool runs = false;
  Palette palette{};

  std::uint32_t bits() const {
    const std::uint32_t all = plane_bits * planes;
    return all == 1 || all == 8 || all == 24 ? all : 4;
  }
};

bool known_planes(std::uint32_t bits, std::uint32_t planes) {
  if (bits == 1) return planes >= 1 && planes <= 4;
  if (bits == 8) return planes == 1 || planes == 3;
  return (bits == 2 || bits == 4) && planes == 1;
}

Palette read_palette(FileBytes file, std::uint32_t bits) {
  Palette palette{};
  // One bit is black and white whatever the header says: so do all writers mean it.
  if (bits == 1) std::fill_n(palette.begin() + 3, 3, std::uint8_t{255});
  if (bits == 4 && file[1] == kVersionWithoutPalette) std::ranges::copy(kEgaPalette, palette.begin());
  if (bits == 4 && file[1] != kVersionWithoutPalette)
    std::ranges::copy(file.subspan(kHeaderPalette, 48), palette.begin());
  if (bits != 8) return palette;
  if (file.size() < kHeader + kEndPalette || file[file.size() - kEndPalette] != 12) return grey_ramp();
  std::ranges::copy(file.last(kEndPalette - 1), palette.begin());
  return palette;
}

bool read_shape(FileBytes file, Shape& shape) {
  if (file.size() < kHeader || file[0] != 10 || file[1] > 5 || file[2] > 1) return false;
  const std::uint32_t left = read_le16(file.data() + 4), top = read_le16(file.data() + 6);
  const std::uint32_t right = read_le16(file.data() + 8), bottom = read_le16(file.data() + 10);
  if (right < left || bottom < top) return false;
  shape.width = right - left + 1;
  shape.height = bottom - top + 1;
  shape.runs = file[2] == 1;
  shape.plane_bits = file[3];
  shape.planes = file[65];
  shape.plane_bytes = read_le16(file.data() + 66);
  if (!known_planes(shape.plane_bits, shape.planes)) return false;
  shape.palette = read_palette(file, shape.bits());
  return shape.plane_bytes >= (std::size_t{shape.width} * shape.plane_bits + 7) / 8;
}

/// Rows of all planes one after the other. A run may reach into the next row.
class RowReader {
 public:
  RowReader(FileBytes bytes, bool runs) : bytes_(bytes), runs_(runs) {}

  /// False at the end of the file.
  bool read(std::span<std::uint8_t> row) {
    if (!runs_) {
      if (bytes_.size() - at_ < row.size()) return false;
      std::ranges::copy(bytes_.subspan(at_, row.size()), row.begin());
      at_ += row.size();
      return true;
    }
    for (std::size_t x = 0; x < row.size();) {
      if (left_ == 0 && !next_run()) return false;
      const std::size_t count = std::min(left_, row.size() - x);
      std::fill_n(row.begin() + static_cast<std::ptrdiff_t>(x), count, value_);
      x += count;
      left_ -= count;
    }
    return true;
  }

 private:
  /// The next run that is not empty.
  bool next_run() {
    for (left_ = 0; left_ == 0 && at_ < bytes_.size();) {
      value_ = bytes_[at_++];
      left_ = 1;
      if (value_ < 0xC0) return true;
      left_ = at_ < bytes_.size() ? value_ & 0x3F : 0;
      if (at_ < bytes_.size()) value_ = bytes_[at_++];
    }
    return left_ > 0;
  }

  FileBytes bytes_;
  bool runs_;
  std::size_t at_ = 0, left_ = 0;
  std::uint8_t value_ = 0;
};

void store_row(const Shape& shape, const std::uint8_t* in, std::uint8_t* out) {
  if (shape.bits() == 24) {
    for (std::size_t x = 0; x < shape.width; ++x)
      for (std::size_t plane = 0; plane < 3; ++plane)
        out[3 * x + 2 - plane] = in[plane * shape.plane_bytes + x];
  } else if (shape.planes == 1 && shape.plane_bits != 2) {
    copy_pixels(out, 0, in, 0, shape.width, shape.bits());
  } else if (shape.plane_bits == 2) {
    for (std::size_t x = 0; x < shape.width; ++x) put_index(out, x, 4, in[x / 4] >> (6 - 2 * (x & 3)) & 3);
  } else {
    for (std::size_t x = 0; x < shape.width; ++x) {
      std::uint32_t index = 0;
      for (std::uint32_t plane = 0; plane < shape.planes; ++plane)
        index |= std::uint32_t{get_index(in + plane * shape.plane_bytes, x, 1)} << plane;
      put_index(out, x, 4, index);
    }
  }
}

/// Runs of at most 63; a single byte below 0xC0 stands for itself.
void append_runs(std::vector<std::uint8_t>& out, std::span<const std::uint8_t> plane) {
  for (std::size_t i = 0; i < plane.size();) {
    std::size_t count = 1;
    while (count < 63 && i + count < plane.size() && plane[i + count] == plane[i]) ++count;
    if (count > 1 || plane[i] >= 0xC0) out.push_back(static_cast<std::uint8_t>(0xC0 | count));
    out.push_back(plane[i]);
    i += count;
  }
}

bool is_black_and_white(const Picture& picture) {
  return read_le32(picture.table()) == 0 && read_le32(picture.table() + 4) == 0xFFFFFF;
}

/// How a picture is stored. One bit with other colors than black and white takes four planes, because readers
/// ignore the palette of one bit.
Shape shape_for(const Picture& picture) {
  Shape shape{.width = picture.width(),
              .height = picture.height(),
              .plane_bits = 1,
              .planes = 1,
              .runs = true,
              .palette = palette_of(picture)};
  if (picture.bits() >= 8) shape.plane_bits = 8;
  if (picture.bits() == 24) shape.planes = 3;
  if (picture.bits() == 4 || (picture.bits() == 1 && !is_black_and_white(picture))) shape.planes = 4;
  shape.plane_bytes = ((std::size_t{shape.width} * shape.plane_bits + 7) / 8 + 1) & ~std::size_t{1};
  return shape;
}

std::array<std::uint8_t, kHeader> header_of(const Shape& shape) {
  std::array<std::uint8_t, kHeader> header{10, 5, 1, static_cast<std::uint8_t>(shape.plane_bits)};
  write_le16(header.data() + 8, shape.width - 1);
  write_le16(header.data() + 10, shape.height - 1);
  write_le16(header.data() + 12, 72);  // dots per inch
  write_le16(header.data() + 14, 72);
  std::copy_n(shape.palette.begin(), 48, header.begin() + kHeaderPalette);
  header[65] = static_cast<std::uint8_t>(shape.planes);
  write_le16(header.data() + 66, static_cast<std::uint32_t>(shape.plane_bytes));
  write_le16(header.data() + 68, 1);  // a color palette, not a grey one
  return header;
}

/// The row of one plane into `plane`, whose bytes behind the pixels are zero.
void load_plane(const Picture& picture, const Shape& shape, std::uint32_t y, std::uint32_t number,
                std::vector<std::uint8_t>& plane) {
  const std::uint8_t* row = picture.row(y);
  for (std::size_t x = 0; x < shape.width; ++x) {
    if (shape.plane_bits == 8)
      plane[x] = shape.planes == 1 ? row[x] : row[3 * x + 2 - number];
    else
      put_index(plane.data(), x, 1, get_index(row, x, picture.bits()) >> number);
  }
}

bool encode_pcx(const Picture& picture, SafeFile& file) {
  if (!picture || picture.width() > 65536 || picture.height() > 65536) return false;
  const Shape shape = shape_for(picture);
  if (shape.plane_bytes > 65535) return false;
  file.write(header_of(shape));
  std::vector<std::uint8_t> plane(shape.plane_bytes), runs;
  for (std::uint32_t y = 0; y < shape.height; ++y) {
    runs.clear();
    for (std::uint32_t number = 0; number < shape.planes; ++number) {
      load_plane(picture, shape, y, number, plane);
      append_runs(runs, plane);
    }
    file.write(runs);
  }
  if (picture.bits() == 8) {
    file.write(std::array<std::uint8_t, 1>{12});
    file.write(shape.palette);
  }
  return file.ok();
}

}  // namespace

bool is_pcx(FileBytes file) {
  return file.size() >= kHeader && file[0] == 10 && file[1] <= 5 && file[2] <= 1 &&
         known_planes(file[3], file[65]);
}

GraphicReading decode_pcx(FileBytes file, Part part, const GraphicSwitches&) {
  Shape shape;
  if (!read_shape(file, shape)) return {{}, GraphicFault::Damaged, translated("the header is damaged")};
  GraphicReading reading =
      reading_of_size(shape.width, shape.height, &shape.palette, shape.bits(), part, file.size());
  if (!reading.picture || part == Part::Header) return reading;
  const EditRows rows(reading.picture);
  RowReader reader(file.subspan(kHeader), shape.runs);
  std::vector<std::uint8_t> row(shape.plane_bytes * shape.planes);
  std::uint32_t y = 0;
  for (; y < shape.height && reader.read(row); ++y) store_row(shape, row.data(), rows[y]);
  return cut_reading(std::move(reading), y, shape.height);
}

bool PCXWriteGraphicFile(const std::filesystem::path& path, const GraphicSwitches&, const Picture& picture) {
  return write_through(path, picture,
                       [&](SafeFile& file) { return encode_pcx(without_alpha(picture), file); });
}

}  // namespace vellum
