// How pictures lie in the memory budget.
#include "image/png_encode.h"
#include "image/stored_image.h"

namespace vellum {
namespace {

/// Below this, what is known of a kept block takes as much as could be won.
constexpr std::size_t kWorthKeeping = 16384;
constexpr int kFastest = 1;

/// A header under which a stream holds the picture whole.
PngHeader packed_header(const Picture& picture) {
  PngHeader header;
  header.width = picture.width();
  header.height = picture.height();
  header.bitDepth = static_cast<std::uint8_t>(std::min(picture.bits(), 8u));
  header.colorType = picture.bits() == 32 ? 6 : picture.bits() == 24 ? 2 : 3;
  return header;
}

/// The picture packed at the fastest level; null where that takes as much as it does.
std::shared_ptr<const BlockSource> packed_picture(const ChunkHandle& block) {
  const Picture picture(block);
  if (!picture) return nullptr;
  const PngHeader header = packed_header(picture);
  const auto stream = png_encode(header, picture, kFastest);
  if (stream.empty() || stream.size() > block.size() / 8 * 7) return nullptr;
  Palette table;
  PictureGetPalette(picture, table);
  const auto owner = std::make_shared<const FileContent>(ChunkHandle::copy_of(stream, 0));
  return std::make_shared<const StoredImage>(header, table, std::vector{StoredImage::Bytes(*owner)}, owner,
                                             StoredImage::Finding{nullptr, false, true});
}

}  // namespace

ChunkHandle kept_picture(const Picture& picture, std::shared_ptr<const BlockSource> source) {
  if (!picture) return {};
  return ChunkHandle::kept(picture.handle(), Picture::kHeaderBytes + 4 * std::size_t{picture.colours()},
                           std::move(source), packed_picture);
}

ChunkHandle block_to_keep(const Picture& picture) {
  const ChunkHandle& block = picture.handle();
  return block.is_kept() || block.size() < kWorthKeeping ? block : kept_picture(picture, nullptr);
}

}  // namespace vellum
