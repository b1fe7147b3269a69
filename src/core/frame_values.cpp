#include "core/frame_values.h"

#include "core/framing.h"
#include "core/settings.h"

namespace vellum {
namespace {

constexpr Colour kColourMask = 0xFFFFFF;

/// The low bytes of three 16-bit samples.
Colour three_samples(const ChunkRecord& record) {
  return make_colour(payload_byte(record, 1), payload_byte(record, 3), payload_byte(record, 5));
}

Colour grey_sample(const ChunkRecord& record, unsigned bit_depth) {
  const unsigned most = bit_depth < 8 ? (1u << bit_depth) - 1 : 255;
  const unsigned level = std::min<unsigned>(payload_byte(record, 1), most) * 255 / std::max(most, 1u);
  return make_colour(level, level, level);
}

std::optional<Colour> background_of_png(const ChunkList& list) {
  const std::size_t header = chunk_find_first(list, tag::IHDR);
  const std::size_t at = chunk_find_first(list, tag::bKGD, nullptr, 1);
  if (header == kNoEntry || at == kNoEntry) return std::nullopt;
  const std::uint8_t type = list.record(header).colorType;
  if (type == 2 || type == 6) return three_samples(list.record(at));
  if (type == 0 || type == 4) return grey_sample(list.record(at), list.record(header).bitDepth);
  return std::nullopt;
}

std::optional<Colour> background_of_mng(const ChunkList& list) {
  const std::size_t at = chunk_find_first(list, tag::BACK, nullptr, 1);
  if (at == kNoEntry) return std::nullopt;
  return three_samples(list.record(at));
}

std::optional<Colour> background_of_webp(const ChunkList& list) {
  const std::size_t at = chunk_find_first(list, tag::WEBH);
  if (at == kNoEntry) return std::nullopt;
  return list.record(at).webpHeader.backgroundColor & kColourMask;
}

std::optional<Colour> stated_background(const ChunkList& list, DocumentKind kind) {
  if (kind == DocumentKind::MING) return background_of_mng(list);
  if (kind == DocumentKind::WEBP) return background_of_webp(list);
  return background_of_png(list);
}

}  // namespace

FrameOffset frame_offset(const ChunkRecord& record, DocumentKind kind) {
  if (kind == DocumentKind::APNG)
    return {static_cast<std::int32_t>(record.frameControl.xOffset),
            static_cast<std::int32_t>(record.frameControl.yOffset)};
  if (kind == DocumentKind::WEBP)
    return {static_cast<std::int32_t>(record.webpImage.xOffset),
            static_cast<std::int32_t>(record.webpImage.yOffset)};
  if (kind != DocumentKind::MING || !(record.flags & CRF_DEFI) || record.image->defiBytes < 5) return {};
  return {from_file_order(record.image->defiBlock.xLocation),
          from_file_order(record.image->defiBlock.yLocation)};
}

Colour document_background(const ChunkList& list, const Document& document) {
  return stated_background(list, document.kind)
      .value_or(static_cast<Colour>(settings::DefaultBackgroundColour) & kColourMask);
}

}  // namespace vellum
