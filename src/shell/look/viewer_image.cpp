#include "shell/look/viewer_image.h"

#include <cstring>

#include "base/byte_order.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"
#include "shell/look/picture_image.h"

namespace vellum {
namespace {

constexpr std::size_t kPixelBytes = 4;

void make_ready(QImage& image, const Picture& picture, QImage::Format format) {
  const QSize size(static_cast<int>(picture.width()), static_cast<int>(picture.height()));
  if (image.size() != size || image.format() != format) image = QImage(size, format);
}

/// Blue, green, red, and a byte that is not looked at. Read four bytes at a time, but for the last pixel.
void widen_row(std::uint8_t* out, const std::uint8_t* row, std::size_t width) {
  for (std::size_t x = 0; x + 1 < width; ++x)
    write_le32(out + kPixelBytes * x, read_le32(row + 3 * x) | 0xFF000000);
  const std::size_t last = width - 1;
  std::memcpy(out + kPixelBytes * last, row + 3 * last, 3);
  out[kPixelBytes * last + 3] = 255;
}

/// The places of the source that pixel `to` of `size` covers: from the first to one past the last.
std::pair<std::uint32_t, std::uint32_t> covered(std::uint32_t to, std::uint32_t size, std::uint32_t source) {
  const auto from = static_cast<std::uint32_t>(std::uint64_t{to} * source / size);
  const auto end = static_cast<std::uint32_t>((std::uint64_t{to} + 1) * source / size);
  return {from, std::max(end, from + 1)};
}

}  // namespace

void fill_image(QImage& image, const Picture& picture, bool multiplied) {
  if (!has_rows(picture) || picture.bits() < 24) {
    image = image_of_picture(picture);
    return;
  }
  const bool opaque = picture.bits() == 24;
  make_ready(image, picture,
             opaque       ? QImage::Format_RGB32
             : multiplied ? QImage::Format_ARGB32_Premultiplied
                          : QImage::Format_ARGB32);
  if (image.isNull()) return;
  uchar* pixels = image.bits();
  const auto stride = static_cast<std::size_t>(image.bytesPerLine());
  for_each_row(picture.height(), stride, [&](std::uint32_t y) {
    if (opaque)
      widen_row(pixels + y * stride, picture.row(y), picture.width());
    else
      std::memcpy(pixels + y * stride, picture.row(y), kPixelBytes * picture.width());
  });
}

QImage black_on_white(const Picture& picture, QSize size) {
  QImage image(size, QImage::Format_Mono);
  if (image.isNull() || !has_rows(picture) || picture.bits() != 1) return {};
  image.setColorTable(image_of_picture(picture).colorTable());
  const auto width = static_cast<std::uint32_t>(size.width()),
             height = static_cast<std::uint32_t>(size.height());
  for (std::uint32_t y = 0; y < height; ++y) {
    uchar* row = image.scanLine(static_cast<int>(y));
    const auto [top, bottom] = covered(y, height, picture.height());
    for (std::uint32_t x = 0; x < width; ++x) {
      const auto [left, right] = covered(x, width, picture.width());
      std::uint32_t all = 1;
      for (std::uint32_t sy = top; sy < bottom; ++sy)
        for (std::uint32_t sx = left; sx < right; ++sx) all &= get_index(picture.row(sy), sx, 1);
      put_index(row, x, 1, all);
    }
  }
  return image;
}

}  // namespace vellum
