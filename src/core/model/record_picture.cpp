#include "core/model/record_picture.h"

#include <algorithm>

namespace vellum {
namespace {

bool same_colors(const EmbeddedImage& image, const Palette& palette, std::uint32_t bytes) {
  return image.paletteBytes <= bytes &&
         std::equal(palette.begin(), palette.begin() + image.paletteBytes, image.palette.begin());
}

/// The image's own palette, transparency and background, where `kept` says that the color type is the old
/// one.
void take_embedded(ChunkRecord& record, const Picture& picture, bool kept) {
  Palette palette;
  const std::uint32_t bytes = 3 * PictureGetPalette(picture, palette);
  if (bytes != 0) kept = kept && (record.flags & CRF_PLTE) && same_colors(*record.image, palette, bytes);
  if (!kept) {
    record.flags &= ~std::uint32_t{CRF_BKGD | CRF_PLTE};
    put_image_transparency(record, {});
  }
  record.flags |= CRF_IHDR | CRF_IDAT;
  if (bytes == 0) {
    if (record.flags & CRF_PLTE) record.image.edit().paletteBytes = 0;
    record.flags &= ~std::uint32_t{CRF_PLTE};
    return;
  }
  record.flags |= CRF_PLTE;
  EmbeddedImage& image = record.image.edit();
  image.palette = palette;
  image.paletteBytes = bytes;
}

}  // namespace

void put_image_transparency(ChunkRecord& record, std::span<const std::uint8_t> bytes) {
  record.flags = bytes.empty() ? record.flags & ~std::uint32_t{CRF_TRNS} : record.flags | CRF_TRNS;
  if (bytes.empty() && record.image->transBytes == 0) return;
  EmbeddedImage& image = record.image.edit();
  image.trans.fill(0);
  image.transBytes = static_cast<std::uint32_t>(std::min(bytes.size(), image.trans.size()));
  std::copy_n(bytes.begin(), image.transBytes, image.trans.begin());
}

void record_take_pixels(ChunkRecord& record, DocumentKind kind, const Picture& picture) {
  record.data = block_to_keep(picture);
  record.size = static_cast<std::int32_t>(std::min<std::size_t>(picture.handle().size(), 0x7FFFFFFF));
  record.width = picture.width();
  record.height = picture.height();
  if (kind == DocumentKind::APNG) {
    record.frameControl.frameWidth = picture.width();
    record.frameControl.frameHeight = picture.height();
  }
  if (kind == DocumentKind::WEBP) {
    record.webpImage.width = picture.width();
    record.webpImage.height = picture.height();
  }
}

void record_take_picture(ChunkRecord& record, DocumentKind kind, const Picture& picture) {
  const std::uint8_t type = color_type_of_bits(picture.bits());
  const bool kept = record.colorType == type;
  record_take_pixels(record, kind, picture);
  record.bitDepth = static_cast<std::uint8_t>(std::min(picture.bits(), 8u));
  record.colorType = type;
  if (kind == DocumentKind::MING) take_embedded(record, picture, kept);
  if (kind == DocumentKind::WEBP) {
    record.webpImage.bitsPerPixel = picture.bits();
    record.webpImage.colorType = picture.bits() == 32 ? 6 : 2;
  }
}

}  // namespace vellum
