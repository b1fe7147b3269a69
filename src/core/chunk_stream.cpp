#include "core/chunk_stream.h"

#include "base/byte_order.h"
#include "base/crc.h"

namespace vellum {
namespace {

constexpr std::size_t kHead = 8;  // length and type
constexpr std::size_t kCrcBytes = 4;

}  // namespace

GatheredChunks gather_chunks(std::span<const std::uint8_t> file, std::size_t start, ChunkTag last) {
  GatheredChunks result;
  std::size_t at = start;
  while (!result.complete && file.size() - at >= kHead + kCrcBytes) {
    const std::uint32_t length = read_be32(&file[at]);
    if (length > file.size() - at - kHead - kCrcBytes) break;
    StreamChunk chunk;
    chunk.tag = read_be32(&file[at + 4]);
    chunk.data = file.subspan(at + kHead, length);
    chunk.storedCrc = read_be32(&file[at + kHead + length]);
    chunk.offset = at;
    result.chunks.push_back(chunk);
    result.complete = chunk.tag == last;
    at += kHead + length + kCrcBytes;
  }
  result.end = at;
  return result;
}

bool crc_agrees(const StreamChunk& chunk) { return chunk.storedCrc == chunk_crc(chunk.tag, chunk.data); }

bool crc_agrees_with_type(const StreamChunk& chunk) { return chunk.storedCrc == chunk_crc(chunk.tag, {}); }

bool write_chunk(SafeFile& file, ChunkTag tag, std::span<const std::uint8_t> payload) {
  std::uint8_t head[8], tail[4];
  write_be32(head, static_cast<std::uint32_t>(payload.size()));
  write_be32(head + 4, tag);
  write_be32(tail, chunk_crc(tag, payload));
  return file.write(head) && file.write(payload) && file.write(tail);
}

}  // namespace vellum
