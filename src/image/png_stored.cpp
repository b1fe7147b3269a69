#include "image/png_stored.h"

#include <libdeflate.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <vector>

#include "base/byte_order.h"
#include "base/parallel.h"

namespace vellum {
namespace {

// RFC 1951, 3.2.4: a block begins with five bytes, of which four are its length and that inverted.
constexpr std::size_t kLongestBlock = 65535, kBlockHead = 5;
constexpr std::array<std::uint8_t, 2> kStreamHead = {0x78, 0x01};  // RFC 1950: 32 KiB, the fastest class
constexpr std::array<std::uint8_t, kBlockHead> kLastBlock = {1, 0, 0, 255, 255};
constexpr std::size_t kCheckBytes = 4;

std::size_t stored_bytes(std::size_t bytes) {
  return bytes + (bytes + kLongestBlock - 1) / kLongestBlock * kBlockHead;
}

/// Puts the bytes of a part behind the heads of their blocks.
class BlockWriter {
 public:
  BlockWriter(std::uint8_t* out, std::size_t bytes) : out_(out), left_(bytes) {}

  void take(std::span<const std::uint8_t> bytes) {
    adler_ = libdeflate_adler32(adler_, bytes.data(), bytes.size());
    while (!bytes.empty()) {
      if (block_left_ == 0) begin_block();
      const std::size_t count = std::min(bytes.size(), block_left_);
      out_ = std::ranges::copy(bytes.first(count), out_).out;
      bytes = bytes.subspan(count);
      block_left_ -= count;
    }
  }
  std::uint32_t adler() const { return adler_; }

 private:
  void begin_block() {
    block_left_ = std::min(left_, kLongestBlock);
    left_ -= block_left_;
    out_[0] = 0;
    write_le16(out_ + 1, static_cast<std::uint32_t>(block_left_));
    write_le16(out_ + 3, static_cast<std::uint32_t>(~block_left_));
    out_ += kBlockHead;
  }

  std::uint8_t* out_;
  std::size_t left_, block_left_ = 0;
  std::uint32_t adler_ = 1;
};

}  // namespace

ChunkHandle stored_stream(std::span<const std::size_t> part_bytes,
                          const std::function<void(std::size_t, const TakeBytes&)>& give) {
  std::vector<std::size_t> places;
  std::size_t at = kStreamHead.size();
  for (const std::size_t bytes : part_bytes) {
    places.push_back(at);
    at += stored_bytes(bytes);
  }
  const std::size_t length = at + kLastBlock.size() + kCheckBytes;
  ChunkHandle block = ChunkHandle::create_for_overwrite(length);
  std::uint8_t* const stream = block.edit();
  if (!stream) return {};
  std::vector<std::uint32_t> adlers(part_bytes.size());
  parallel_for(part_bytes.size(), [&](std::size_t i) {
    BlockWriter writer(&stream[places[i]], part_bytes[i]);
    give(i, [&writer](std::span<const std::uint8_t> bytes) { writer.take(bytes); });
    adlers[i] = writer.adler();
  });
  std::ranges::copy(kStreamHead, stream);
  std::ranges::copy(kLastBlock, &stream[at]);
  uLong adler = 1;
  for (std::size_t i = 0; i < adlers.size(); ++i)
    adler = adler32_combine(adler, adlers[i], static_cast<z_off_t>(part_bytes[i]));
  write_be32(&stream[at + kLastBlock.size()], static_cast<std::uint32_t>(adler));
  return block;
}

}  // namespace vellum
