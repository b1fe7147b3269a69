#include "core/chunk_payload.h"

#include <algorithm>

#include "core/png_chunks_out.h"
#include "core/png_reading.h"
#include "core/settings.h"
#include "core/write_mng.h"

namespace vellum {

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
  return plain_payload(record, std::clamp(settings::PngCompression, 0, 9));
}

}  // namespace vellum
