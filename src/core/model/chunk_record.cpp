#include "core/model/chunk_record.h"

#include <algorithm>

namespace vellum {

std::span<const std::uint8_t> raw_payload(const ChunkRecord& record) {
  const std::size_t wanted = record.size < 0 ? 0 : static_cast<std::size_t>(record.size);
  return record.data.bytes().first(std::min(wanted, record.data.size()));
}

std::uint8_t payload_byte(const ChunkRecord& record, std::size_t i) {
  return i < record.data.size() ? record.data.data()[i] : 0;
}

std::uint32_t payload_be32(const ChunkRecord& record, std::size_t offset) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i) value = value << 8 | payload_byte(record, offset + i);
  return value;
}

bool put_payload(ChunkRecord& record, std::span<const std::uint8_t> bytes, std::size_t spare) {
  record.data = ChunkHandle::copy_of(bytes, spare);
  record.size = static_cast<std::int32_t>(bytes.size());
  return static_cast<bool>(record.data);
}

}  // namespace vellum
