#include "core/model/tags.h"

#include "base/byte_order.h"

namespace vellum {

std::string tag_letters(ChunkTag tag) {
  std::uint8_t bytes[4];
  write_be32(bytes, tag);
  std::string letters;
  for (const std::uint8_t byte : bytes) letters += byte >= 32 && byte < 127 ? static_cast<char>(byte) : '?';
  return letters;
}

std::string kind_letters(DocumentKind kind) {
  std::uint8_t bytes[4];
  write_le32(bytes, static_cast<std::uint32_t>(kind));
  return tag_letters(read_be32(bytes));
}

bool is_valid_tag(ChunkTag tag) {
  for (int shift = 0; shift < 32; shift += 8) {
    const std::uint32_t letter = tag >> shift & 0xDF;
    if (letter < 'A' || letter > 'Z') return false;
  }
  return (tag & 0x2000) == 0;
}

}  // namespace vellum
