#include "shell/picture_image.h"

namespace vellum {
namespace {

QList<QRgb> colour_table(const Picture& picture) {
  QList<QRgb> table(static_cast<qsizetype>(picture.colours()));
  const std::uint8_t* entry = picture.table();
  for (QRgb& colour : table) {
    colour = qRgb(entry[2], entry[1], entry[0]);
    entry += 4;
  }
  return table;
}

QImage unpacked_nibbles(const Picture& picture) {
  QImage image(static_cast<int>(picture.width()), static_cast<int>(picture.height()),
               QImage::Format_Indexed8);
  if (image.isNull()) return image;
  for (int y = 0; y < image.height(); ++y) {
    const std::uint8_t* from = picture.stored_row(static_cast<std::uint32_t>(y));
    uchar* to = image.scanLine(y);
    for (int x = 0; x < image.width(); ++x) to[x] = x % 2 ? from[x / 2] & 15 : from[x / 2] >> 4;
  }
  return image;
}

QImage::Format format_of(std::uint32_t bits) {
  switch (bits) {
    case 1:
      return QImage::Format_Mono;
    case 8:
      return QImage::Format_Indexed8;
    case 24:
      return QImage::Format_BGR888;
    default:
      return QImage::Format_ARGB32;
  }
}

QImage wrapped_rows(const Picture& picture) {
  return QImage(picture.stored_row(0), static_cast<int>(picture.width()), static_cast<int>(picture.height()),
                static_cast<qsizetype>(picture.stride()), format_of(picture.bits()));
}

/// Whether every pixel becomes a block of n x n pixels.
bool is_whole_enlargement(const Picture& picture, QSize size) {
  const auto width = static_cast<int>(picture.width()), height = static_cast<int>(picture.height());
  return size.width() % width == 0 && size.height() % height == 0 &&
         size.width() / width == size.height() / height;
}

}  // namespace

QImage upside_down_image(const Picture& picture) {
  if (!picture) return {};
  QImage image = picture.bits() == 4 ? unpacked_nibbles(picture) : wrapped_rows(picture);
  if (picture.colours() > 0) image.setColorTable(colour_table(picture));
  return image;
}

QImage scaled_image(const Picture& picture, QSize size) {
  if (!picture || size.isEmpty()) return {};
  const auto mode = is_whole_enlargement(picture, size) ? Qt::FastTransformation : Qt::SmoothTransformation;
  return upside_down_image(picture).scaled(size, Qt::IgnoreAspectRatio, mode).mirrored();
}

}  // namespace vellum
