#include "core/chunk_payload.h"

#include <algorithm>

#include "core/png_chunks_out.h"
#include "core/settings.h"
#include "core/write_mng.h"

namespace vellum {
namespace {

std::vector<std::uint8_t> png_header_bytes(const ChunkRecord& record) {
  const auto payload = png_header_payload({record.width, record.height, record.bitDepth, record.colorType,
                                           record.compression, record.filter, record.interlace});
  return {payload.begin(), payload.end()};
}

}  // namespace

std::optional<std::vector<std::uint8_t>> chunk_payload(const ChunkRecord& record, DocumentKind kind) {
  if (is_image_entry(kind, record.tag) || record.tag == tag::WEBH) return std::nullopt;
  if (record.tag == tag::fcTL && kind == DocumentKind::APNG) return std::nullopt;
  if (record.tag == tag::IHDR) return png_header_bytes(record);
  if (record.tag == tag::MHDR) return mng_header_payload(record);
  return plain_payload(record, std::clamp(settings::PngCompression, 0, 9));
}

}  // namespace vellum
