#include "image/png_stored.h"

#include <libdeflate.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <atomic>
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

StoredStream::StoredStream(std::vector<std::size_t> part_bytes)
    : bytes_(std::move(part_bytes)), adlers_(bytes_.size()) {
  begins_.push_back(0);
  for (std::size_t i = 0; i < parts(); ++i)
    begins_.push_back(begins_.back() + (i == 0 ? kStreamHead.size() : 0) + stored_bytes(bytes_[i]));
  begins_.back() += kLastBlock.size() + kCheckBytes;
}

void StoredStream::lay(std::size_t part, std::uint8_t* out, const GivePart& give) {
  if (part == 0) out = std::ranges::copy(kStreamHead, out).out;
  BlockWriter writer(out, bytes_[part]);
  give(part, [&writer](std::span<const std::uint8_t> bytes) { writer.take(bytes); });
  adlers_[part] = writer.adler();
}

void StoredStream::close(std::uint8_t* out) const {
  std::uint8_t* const check = out + length(parts() - 1) - kCheckBytes;
  std::ranges::copy(kLastBlock, check - kLastBlock.size());
  uLong adler = 1;
  for (std::size_t i = 0; i < parts(); ++i)
    adler = adler32_combine(adler, adlers_[i], static_cast<z_off_t>(bytes_[i]));
  write_be32(check, static_cast<std::uint32_t>(adler));
}

ChunkHandle stored_stream(StoredStream stream, const GivePart& give) {
  ChunkHandle block = ChunkHandle::create_for_overwrite(stream.begin(stream.parts()));
  std::uint8_t* const out = block.edit();
  if (!out) return {};
  parallel_for(stream.parts(), [&](std::size_t i) { stream.lay(i, out + stream.begin(i), give); });
  stream.close(out + stream.begin(stream.parts() - 1));
  return block;
}

bool write_stored_stream(StoredStream stream, const GivePart& give,
                         const std::function<bool(std::span<const std::uint8_t>)>& write) {
  constexpr std::size_t kAhead = 2;
  std::array<std::vector<std::uint8_t>, kAhead + 1> slots;
  std::atomic<bool> written = true;
  parallel_relay(
      stream.parts(), kAhead,
      [&](std::size_t part) {
        if (!written) return;
        std::vector<std::uint8_t>& slot = slots[part % slots.size()];
        slot.resize(stream.length(part));
        stream.lay(part, slot.data(), give);
        if (part + 1 == stream.parts()) stream.close(slot.data());
      },
      [&](std::size_t part) {
        if (written && !write(slots[part % slots.size()])) written = false;
      });
  return written;
}

}  // namespace vellum
