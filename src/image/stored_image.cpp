#include "image/stored_image.h"

namespace vellum {

StoredImage::StoredImage(const PngHeader& header, const Palette& table, std::vector<Bytes> pieces,
                         std::shared_ptr<const void> owner, bool exact)
    : header_(header),
      table_(png_picture_bits(header) <= 8 ? std::make_unique<const Palette>(table) : nullptr),
      pieces_(std::move(pieces)),
      owner_(std::move(owner)),
      exact_(exact) {
  for (const Bytes piece : pieces_) bytes_ += piece.size();
}

ChunkHandle StoredImage::make() const {
  static constexpr Palette kNone{};
  return png_decode(header_, pieces_, table_ ? *table_ : kNone, PngShortData::Zeros).picture.handle();
}

std::shared_ptr<const StoredImage> stored_image_of(const ChunkHandle& block) {
  return std::dynamic_pointer_cast<const StoredImage>(block.source());
}

ChunkHandle kept_with_stream(const PngDecoded& decoded, const PngHeader& header,
                             std::vector<StoredImage::Bytes> pieces, std::shared_ptr<const void> owner) {
  if (!decoded.picture) return {};
  if (!owner) {
    auto copy = std::make_shared<std::vector<std::uint8_t>>();
    for (const auto piece : pieces) copy->insert(copy->end(), piece.begin(), piece.end());
    std::size_t at = 0;
    for (auto& piece : pieces) {
      piece = StoredImage::Bytes(*copy).subspan(at, piece.size());
      at += piece.size();
    }
    owner = std::move(copy);
  }
  Palette table;
  PictureGetPalette(decoded.picture, table);
  return kept_picture(decoded.picture, std::make_shared<const StoredImage>(header, table, std::move(pieces),
                                                                           std::move(owner), decoded.exact));
}

}  // namespace vellum
