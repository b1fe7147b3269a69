#include "image/chunk_stream.h"

#include <algorithm>

#include "base/byte_order.h"
#include "base/crc.h"
#include "base/parallel.h"

namespace vellum {
namespace {

constexpr std::size_t kHead = 8;  // length and type
constexpr std::size_t kCrcBytes = 4;

/// What stands in front of a payload and behind it. The one place where chunks are framed.
struct ChunkFrame {
  std::array<std::uint8_t, kHead> head;
  std::array<std::uint8_t, kCrcBytes> crc;
};

ChunkFrame frame_of(std::uint32_t tag, std::span<const std::uint8_t> payload) {
  ChunkFrame frame{};
  write_be32(&frame.head[0], static_cast<std::uint32_t>(payload.size()));
  write_be32(&frame.head[4], tag);
  write_be32(frame.crc.data(), chunk_crc(tag, payload));
  return frame;
}

}  // namespace

GatheredChunks gather_chunks(std::span<const std::uint8_t> file, std::size_t start, std::uint32_t last) {
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

std::vector<const StreamChunk*> wrong_crcs(std::span<const StreamChunk* const> chunks,
                                           std::span<const std::uint32_t> ends) {
  constexpr std::size_t kWorthAnother = std::size_t{1} << 20, kMostParts = 64;
  std::size_t bytes = 0;
  for (const StreamChunk* chunk : chunks) bytes += chunk->data.size();
  std::vector<std::vector<const StreamChunk*>> wrong(
      std::clamp<std::size_t>(bytes / kWorthAnother, 1, kMostParts));
  parallel_for(wrong.size(), [&](std::size_t part) {
    const std::size_t begin = chunks.size() * part / wrong.size();
    for (const StreamChunk* chunk : chunks.subspan(begin, chunks.size() * (part + 1) / wrong.size() - begin))
      if (const bool end = std::ranges::find(ends, chunk->tag) != ends.end();
          !(end ? crc_agrees_with_type(*chunk) : crc_agrees(*chunk)))
        wrong[part].push_back(chunk);
  });
  std::vector<const StreamChunk*> all;
  for (const auto& part : wrong) all.insert(all.end(), part.begin(), part.end());
  return all;
}

bool write_chunk(const Sink& sink, std::uint32_t tag, std::span<const std::uint8_t> payload) {
  const ChunkFrame frame = frame_of(tag, payload);
  return sink.write(frame.head) && sink.write(payload) && sink.write(frame.crc);
}

void append_chunk(std::vector<std::uint8_t>& out, std::uint32_t tag, std::span<const std::uint8_t> payload) {
  const ChunkFrame frame = frame_of(tag, payload);
  out.insert(out.end(), frame.head.begin(), frame.head.end());
  out.insert(out.end(), payload.begin(), payload.end());
  out.insert(out.end(), frame.crc.begin(), frame.crc.end());
}

}  // namespace vellum
