#include "base/crc.h"

#include <libdeflate.h>

#include "base/byte_order.h"

namespace vellum {

std::uint32_t crc32_of(std::span<const std::uint8_t> bytes, std::uint32_t crc) {
  return bytes.empty() ? crc : libdeflate_crc32(crc, bytes.data(), bytes.size());
}

std::uint32_t chunk_crc(std::uint32_t tag, std::span<const std::uint8_t> data) {
  std::uint8_t type[4];
  write_be32(type, tag);
  return crc32_of(data, crc32_of(type));
}

}  // namespace vellum
