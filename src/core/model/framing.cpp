#include "core/model/framing.h"

#include <algorithm>
#include <cstring>

#include "base/byte_order.h"

namespace vellum {
namespace {

/// The payload with zeros behind it, so that every fixed position can be read.
class PaddedPayload {
 public:
  explicit PaddedPayload(std::span<const std::uint8_t> payload) : length_(payload.size()) {
    std::copy_n(payload.begin(), std::min(payload.size(), bytes_.size()), bytes_.begin());
  }
  bool longer_than(std::size_t bytes) const { return length_ > bytes; }
  std::uint8_t byte(std::size_t at) const { return bytes_[at]; }
  std::uint32_t raw32(std::size_t at) const {
    std::uint32_t value;
    std::memcpy(&value, &bytes_[at], 4);
    return value;
  }

 private:
  std::array<std::uint8_t, 64> bytes_{};
  std::size_t length_;
};

constexpr std::size_t kNameLimit = 260;

void parse_name(std::span<const std::uint8_t> payload, FramBlock& block) {
  block.subframeName.fill(0);
  for (std::size_t i = 1; i < payload.size() && payload[i] != 0 && i <= kNameLimit; ++i)
    block.subframeName[i - 1] = static_cast<char>(payload[i]);
}

void append_raw(std::vector<std::uint8_t>& out, std::uint32_t value) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(&value);
  out.insert(out.end(), bytes, bytes + 4);
}

/// Takes values off the front of a payload; once something is missing, nothing is taken any more.
struct Front {
  std::span<const std::uint8_t> rest;
  bool whole = true;

  bool has(std::size_t bytes) {
    whole = whole && rest.size() >= bytes;
    return whole;
  }
  void take(std::uint8_t& value) {
    if (!has(1)) return;
    value = rest[0];
    rest = rest.subspan(1);
  }
  void take(std::uint32_t& value) {
    if (!has(4)) return;
    std::memcpy(&value, rest.data(), 4);
    rest = rest.subspan(4);
  }
};

}  // namespace

bool parse_laid_out_framing(std::span<const std::uint8_t> payload, FramBlock& block) {
  block = {};
  if (payload.empty()) return false;
  block.framingMode = payload[0];
  parse_name(payload, block);
  const std::size_t name = std::strlen(block.subframeName.data());
  if (payload.size() <= name + 2) return payload.size() == name + 1 || payload[name + 1] == 0;
  Front front{payload.subspan(name + 2)};
  if (payload[name + 1] != 0) return false;  // longer than a name can be
  for (std::uint8_t* flag :
       {&block.changeDelay, &block.changeTimeout, &block.changeClipping, &block.changeSyncId})
    front.take(*flag);
  if (block.changeDelay != 0) front.take(block.interframeDelay);
  if (block.changeTimeout != 0) front.take(block.timeout);
  if (block.changeClipping != 0) {
    front.take(block.clipType);
    for (std::uint32_t* edge : {&block.clipLeft, &block.clipRight, &block.clipTop, &block.clipBottom})
      front.take(*edge);
  }
  if (block.changeSyncId != 0) front.take(block.syncByte);
  return front.whole && front.rest.empty();
}

void parse_framing(std::span<const std::uint8_t> payload, FramBlock& block) {
  const PaddedPayload p(payload);
  block.framingMode = p.byte(0);
  parse_name(payload, block);
  if (p.longer_than(2)) block.changeDelay = p.byte(2);
  if (p.longer_than(3)) block.changeTimeout = p.byte(3);
  if (p.longer_than(4)) block.changeClipping = p.byte(4);
  if (p.longer_than(5)) block.changeSyncId = p.byte(5);
  if (p.longer_than(6)) {
    block.interframeDelay = p.raw32(6);
    block.timeout = p.raw32(10);
  }
  if (p.longer_than(10)) block.clipType = p.byte(14);
  if (p.longer_than(15)) block.clipLeft = p.raw32(19);
  if (p.longer_than(19)) block.clipRight = p.raw32(23);
  if (p.longer_than(23)) block.clipTop = p.raw32(27);
  if (p.longer_than(27)) block.clipBottom = p.raw32(31);
  if (p.longer_than(31)) block.syncByte = p.byte(35);
}

std::vector<std::uint8_t> framing_payload(const FramBlock& block) {
  std::vector<std::uint8_t> out = {block.framingMode};
  for (const char letter : block.subframeName) {
    if (letter == 0) break;
    out.push_back(static_cast<std::uint8_t>(letter));
  }
  out.push_back(0);
  if (block.framingMode == 0) return out;
  out.insert(out.end(), {block.changeDelay, block.changeTimeout, block.changeClipping, block.changeSyncId});
  if (block.changeDelay == 0) return out;
  append_raw(out, block.interframeDelay);
  if (block.changeTimeout == 0) return out;
  append_raw(out, block.timeout);
  if (block.changeClipping == 0) return out;
  out.push_back(block.clipType);
  for (const std::uint32_t edge : {block.clipLeft, block.clipRight, block.clipTop, block.clipBottom})
    append_raw(out, edge);
  if (block.changeSyncId != 0) out.push_back(block.syncByte);
  return out;
}

std::uint32_t parse_definition(std::span<const std::uint8_t> payload, DefiBlock& block) {
  static_assert(sizeof(DefiBlock) == 28, "the block lies as the chunk does");
  block = {};
  const std::size_t bytes = std::min<std::size_t>(payload.size(), sizeof block);
  std::memcpy(&block, payload.data(), bytes);
  return static_cast<std::uint32_t>(bytes);
}

std::vector<std::uint8_t> definition_payload(const DefiBlock& block, std::uint32_t bytes) {
  std::size_t length = 0;
  for (const std::size_t known : {3, 4, 12, 28})
    if (bytes >= known) length = known;
  const auto* begin = reinterpret_cast<const std::uint8_t*>(&block);
  return {begin, begin + length};
}

std::uint32_t from_file_order(std::uint32_t value) {
  std::uint8_t bytes[4];
  std::memcpy(bytes, &value, sizeof bytes);
  return read_be32(bytes);
}

}  // namespace vellum
