#include "exchange/riff.h"

#include <algorithm>

#include "base/byte_order.h"

namespace vellum {
namespace {

std::string_view letters_at(std::span<const std::uint8_t> bytes, std::size_t at) {
  return {reinterpret_cast<const char*>(bytes.data()) + at, 4};
}

bool is_tag(std::span<const std::uint8_t> bytes, std::size_t at) {
  const auto is_letter = [](std::uint8_t byte) {
    return byte == ' ' || (byte >= '0' && byte <= '9') || ((byte | 32) >= 'a' && (byte | 32) <= 'z');
  };
  return bytes.size() >= at + 8 && std::ranges::all_of(bytes.subspan(at, 4), is_letter);
}

/// Where the chunk behind one begins that ends at `at`. Some writers forget the byte behind an odd length, or
/// count it where it isn't: a whole chunk is then sought close by.
std::size_t next_chunk(std::span<const std::uint8_t> bytes, std::size_t at) {
  if (bytes.size() < at + 8 || is_tag(bytes, at)) return at;
  for (const std::size_t place : {at - 1, at + 1, at - 2, at + 2})
    if (is_tag(bytes, place) && read_le32(&bytes[place + 4]) <= bytes.size() - place - 8) return place;
  return at;
}

}  // namespace

std::vector<RiffChunk> riff_chunks(std::span<const std::uint8_t> bytes) {
  std::vector<RiffChunk> chunks;
  while (bytes.size() >= 8) {
    const std::size_t length = read_le32(&bytes[4]), there = std::min(length, bytes.size() - 8);
    RiffChunk chunk{letters_at(bytes, 0), {}, bytes.subspan(8, there), there < length};
    if ((chunk.tag == "RIFF" || chunk.tag == "LIST") && there >= 4) {
      chunk.form = letters_at(chunk.data, 0);
      chunk.data = chunk.data.subspan(4);
    }
    chunks.push_back(chunk);
    bytes = bytes.subspan(std::min(bytes.size(), next_chunk(bytes, 8 + there + (there & 1))));
  }
  return chunks;
}

const RiffChunk* find_chunk(std::span<const RiffChunk> chunks, std::string_view tag, std::string_view form) {
  const auto found = std::ranges::find_if(chunks, [&](const RiffChunk& chunk) {
    return chunk.tag == tag && (form.empty() || chunk.form == form);
  });
  return found == chunks.end() ? nullptr : &*found;
}

void put_riff_head(std::vector<std::uint8_t>& out, std::string_view tag, std::uint32_t length) {
  out.insert(out.end(), tag.begin(), tag.end());
  for (int shift = 0; shift < 32; shift += 8) out.push_back(static_cast<std::uint8_t>(length >> shift));
}

}  // namespace vellum
