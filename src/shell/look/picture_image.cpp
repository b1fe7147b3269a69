#include "shell/look/picture_image.h"

#include <cstring>

#include "configuration/shell_settings.h"
#include "core/edit/picture_fitting.h"
#include "image/picture_rows.h"
#include "image/png_form.h"

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

bool has_opaque_table(const QImage& image) {
  const QList<QRgb> table = image.colorTable();
  return std::ranges::all_of(table, [](QRgb colour) { return qAlpha(colour) == 255; });
}

Palette palette_of_table(const QList<QRgb>& table) {
  Palette palette{};
  const auto colours = std::min<std::size_t>(static_cast<std::size_t>(table.size()), 256);
  for (std::size_t i = 0; i < colours; ++i) {
    const QRgb colour = table[static_cast<qsizetype>(i)];
    palette[i * 3] = static_cast<std::uint8_t>(qRed(colour));
    palette[i * 3 + 1] = static_cast<std::uint8_t>(qGreen(colour));
    palette[i * 3 + 2] = static_cast<std::uint8_t>(qBlue(colour));
  }
  return palette;
}

/// The rows as they are, in one of the formats that pictures share with images.
Picture with_rows_of(const QImage& image, const Palette* palette, std::uint32_t bits) {
  if (image.isNull()) return {};
  const auto width = static_cast<std::uint32_t>(image.width());
  Picture picture = create_rows(width, static_cast<std::uint32_t>(image.height()), palette, bits);
  if (!picture) return {};
  const EditRows rows(picture);
  if (!rows) return {};
  const std::size_t bytes = (std::size_t{width} * bits + 7) / 8;
  for (int y = 0; y < image.height(); ++y)
    std::memcpy(rows[static_cast<std::size_t>(y)], image.constScanLine(y), bytes);
  return picture;
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
  const bool hard = settings::AntiAliasMode == 0 || is_whole_enlargement(picture, size);
  QImage image = upside_down_image(picture);
  // Few of the pixels are looked at where that has to be enough.
  const QSize rough = 2 * size;
  if (settings::AntiAliasMode == 1 && image.width() > rough.width() && image.height() > rough.height())
    image = image.scaled(rough, Qt::IgnoreAspectRatio, Qt::FastTransformation);
  return image.scaled(size, Qt::IgnoreAspectRatio, hard ? Qt::FastTransformation : Qt::SmoothTransformation)
      .mirrored();
}

QImage image_of_picture(const Picture& picture) { return upside_down_image(picture).mirrored(); }

Picture picture_of_image(const QImage& image) {
  if (image.isNull()) return {};
  if (image.format() == QImage::Format_Grayscale8) return with_rows_of(image, &grey_ramp(), 8);
  const bool mono = image.format() == QImage::Format_Mono || image.format() == QImage::Format_MonoLSB;
  if ((mono || image.format() == QImage::Format_Indexed8) && has_opaque_table(image)) {
    const Palette palette = palette_of_table(image.colorTable());
    return mono ? with_rows_of(image.convertToFormat(QImage::Format_Mono), &palette, 1)
                : with_rows_of(image, &palette, 8);
  }
  if (!image.hasAlphaChannel())
    return with_rows_of(image.convertToFormat(QImage::Format_BGR888), nullptr, 24);
  const Picture picture = with_rows_of(image.convertToFormat(QImage::Format_ARGB32), nullptr, 32);
  return picture && picture_content(picture).opaque ? opaque_true_color(picture) : picture;
}

}  // namespace vellum
