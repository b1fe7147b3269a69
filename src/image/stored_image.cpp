#include "image/stored_image.h"

#include "base/memory_budget.h"
#include "image/picture_rows.h"

namespace vellum {

StoredImage::StoredImage(const PngHeader& header, const Palette& table, std::vector<Bytes> pieces,
                         std::shared_ptr<const FileContent> owner, bool exact)
    : header_(header),
      table_(png_picture_bits(header) <= 8 ? std::make_unique<const Palette>(table) : nullptr),
      pieces_(std::move(pieces)),
      owner_(std::move(owner)),
      exact_(exact) {
  for (const Bytes piece : pieces_) bytes_ += piece.size();
}

ChunkHandle StoredImage::make() const {
  static constexpr Palette kNone{};
  if (!intact()) return {};
  return png_decode(header_, pieces_, table_ ? *table_ : kNone, PngShortData::Zeros).picture.handle();
}

std::shared_ptr<const StoredImage> stored_image_of(const ChunkHandle& block) {
  return std::dynamic_pointer_cast<const StoredImage>(block.source());
}

ChunkHandle kept_with_stream(const PngDecoded& decoded, const PngHeader& header,
                             std::vector<StoredImage::Bytes> pieces, std::shared_ptr<const FileContent> owner,
                             std::shared_ptr<const void> context) {
  if (!decoded.picture) return {};
  if (!owner) {
    std::vector<std::uint8_t> copy;
    for (const auto piece : pieces) copy.insert(copy.end(), piece.begin(), piece.end());
    owner = std::make_shared<const FileContent>(ChunkHandle::copy_of(copy, 0));
    std::size_t at = 0;
    for (auto& piece : pieces) {
      piece = StoredImage::Bytes(*owner).subspan(at, piece.size());
      at += piece.size();
    }
  }
  Palette table;
  PictureGetPalette(decoded.picture, table);
  const auto source =
      std::make_shared<StoredImage>(header, table, std::move(pieces), std::move(owner), decoded.exact);
  source->keep_context(std::move(context));
  const Picture& picture = decoded.picture;
  if (has_rows(picture)) return kept_picture(picture, source);
  return cold_block(picture.handle().size() + picture.stride() * picture.height(), picture.handle().bytes(),
                    source);
}

}  // namespace vellum
