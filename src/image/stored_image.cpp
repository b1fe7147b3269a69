#include "image/stored_image.h"

#include "base/memory_budget.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

/// Nothing where the stream was only decoded.
std::optional<StoredImage::Finding> finding_of(const PngDecoded& decoded) {
  if (!decoded.judged) return std::nullopt;
  return StoredImage::Finding{decoded.reason, decoded.isShort, decoded.exact};
}

}  // namespace

StoredImage::StoredImage(const PngHeader& header, const Palette& table, std::vector<Bytes> pieces,
                         std::shared_ptr<const FileContent> owner, std::optional<Finding> finding)
    : header_(header),
      table_(png_picture_bits(header) <= 8 ? std::make_unique<const Palette>(table) : nullptr),
      pieces_(std::move(pieces)),
      owner_(std::move(owner)),
      unchecked_(!finding),
      finding_(finding) {
  for (const Bytes piece : pieces_) bytes_ += piece.size();
}

ChunkHandle StoredImage::make() const {
  static constexpr Palette kNone{};
  if (!intact()) return {};
  const Palette& table = table_ ? *table_ : kNone;
  const PngDecoded decoded = png_decode(header_, pieces_, table, PngShortData::Zeros);
  if (decoded.picture && !decoded.isShort) keep_whole();
  if (!unchecked_ || decoded.limit) return decoded.picture.handle();
  const std::lock_guard guard(lock_);
  if (!finding_) finding_ = finding_of(decoded);
  if (decoded.picture) return decoded.picture.handle();
  return PictureCreate(header_.width, header_.height, &table, png_picture_bits(header_)).handle();
}

StoredImage::Finding StoredImage::finding() const {
  const std::lock_guard guard(lock_);
  if (!finding_) finding_ = finding_of(png_check(header_, pieces_, Palette{}, PngShortData::Zeros));
  return *finding_;
}

std::shared_ptr<const StoredImage> stored_image_of(const ChunkHandle& block) {
  return std::dynamic_pointer_cast<const StoredImage>(block.source());
}

ChunkHandle kept_with_stream(const PngDecoded& decoded, const PngHeader& header,
                             std::vector<StoredImage::Bytes> pieces, std::shared_ptr<const FileContent> owner,
                             std::shared_ptr<const void> context, StreamSeen seen) {
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
  const std::optional finding = seen == StreamSeen::Yes ? finding_of(decoded) : std::nullopt;
  const auto source =
      std::make_shared<StoredImage>(header, table, std::move(pieces), std::move(owner), finding);
  source->keep_context(std::move(context));
  const Picture& picture = decoded.picture;
  if (has_rows(picture)) return kept_picture(picture, source);
  return cold_block(picture.handle().size() + picture.stride() * picture.height(), picture.handle().bytes(),
                    source);
}

}  // namespace vellum
