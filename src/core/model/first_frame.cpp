#include "core/model/first_frame.h"

#include "core/model/chunk_description.h"
#include "core/model/record_picture.h"
#include "image/picture_operations.h"

namespace vellum {

Colour frame_surroundings(const ChunkList& list, const Picture& frame) {
  const std::size_t at = chunk_find_first(list, tag::bKGD), header = chunk_find_first(list, tag::IHDR);
  const auto raw = at == kNoEntry ? std::span<const std::uint8_t>() : raw_payload(list.record(at));
  if (frame.bits() <= 8) return raw.size() == 1 ? raw[0] : 0;
  if (frame.bits() == 32 || raw.size() != 6 || header == kNoEntry) return 0;
  const std::size_t byte = list.record(header).bitDepth == 16 ? 0 : 1;
  return make_colour(raw[byte], raw[byte + 2], raw[byte + 4]);
}

bool pad_first_frame(DocumentWindow& window) {
  if (window.document.kind != DocumentKind::APNG || window.document.defaultImage) return true;
  ChunkRecord record;
  const std::size_t at = chunk_find_first(window.list, tag::IDAT, &record);
  const Picture picture = picture_of(record);
  if (at == kNoEntry || !picture) return true;
  const Extent size = document_size(window.list, window.document);
  FrameControl& control = record.frameControl;
  if (picture.width() == size.width && picture.height() == size.height && control.xOffset == 0 &&
      control.yOffset == 0)
    return true;
  const Picture padded = PictureExtendCanvas(
      picture, size.width, size.height, static_cast<std::int32_t>(control.xOffset),
      static_cast<std::int32_t>(control.yOffset), frame_surroundings(window.list, picture));
  if (!padded) return false;
  record_take_picture(record, DocumentKind::APNG, padded);
  control.xOffset = control.yOffset = 0;
  record.description = chunk_description(record);
  return chunk_list_put(window.list, at, record);
}

}  // namespace vellum
