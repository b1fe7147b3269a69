#include "core/chunks/chunk_payload.h"

#include <algorithm>

#include "base/byte_order.h"
#include "core/chunks/chunk_table.h"
#include "core/chunks/compressed_text.h"
#include "core/model/clock.h"

#include "core/model/header_record.h"
#include "core/settings.h"

namespace vellum {

std::vector<std::uint8_t> plain_payload(const ChunkRecord& record, int level, bool update_time,
                                        bool as_stored) {
  if (record.tag == tag::zTXt) return compressed_text_payload(record, level, as_stored);
  if (record.tag == tag::acTL) {
    std::vector<std::uint8_t> payload(8);
    write_be32(&payload[0], record.numFrames);
    write_be32(&payload[4], record.numPlays);
    return payload;
  }
  if (record.tag == tag::tIME && update_time) {
    const auto now = local_time_payload();
    return {now.begin(), now.end()};
  }
  const auto raw = raw_payload(record);
  return {raw.begin(), raw.end()};
}

std::vector<std::uint8_t> mng_header_payload(const ChunkRecord& record) {
  std::vector<std::uint8_t> payload(28);
  const std::uint32_t fields[] = {record.frameWidth,       record.frameHeight, record.ticksPerSecond,
                                  record.layerCount,       record.frameCount,  record.playTime,
                                  record.simplicityProfile};
  for (std::size_t i = 0; i < std::size(fields); ++i) write_be32(&payload[4 * i], fields[i]);
  return payload;
}

std::optional<std::vector<std::uint8_t>> chunk_payload(const ChunkRecord& record, DocumentKind kind) {
  const bool png = kind == DocumentKind::PING || kind == DocumentKind::APNG;
  if (is_image_entry(kind, record.tag) || record.tag == tag::WEBH ||
      (kind == DocumentKind::APNG && record.tag == tag::fcTL))
    return std::nullopt;
  if (png && record.tag == tag::IHDR) {
    const auto bytes = png_header_payload(png_header_of(record));
    return std::vector<std::uint8_t>(bytes.begin(), bytes.end());
  }
  if (record.tag == tag::MHDR) return mng_header_payload(record);
  if (record.tag == tag::acTL && kind != DocumentKind::APNG) {
    const auto raw = raw_payload(record);
    return std::vector<std::uint8_t>(raw.begin(), raw.end());
  }
  return plain_payload(record, std::clamp(settings::PngCompression, 0, 9), settings::AutoUpdateTime != 0,
                       settings::KeepStoredImages != 0);
}

}  // namespace vellum
