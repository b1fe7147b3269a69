#include "image/stream_inflate.h"

#include <isa-l/igzip_lib.h>

#include <algorithm>

namespace vellum {
namespace {

/// The library counts in 32 bits.
constexpr std::size_t kMostAtOnce = std::size_t{1} << 30;

/// Each call costs as much as inflating some ten thousand bytes, so smaller pieces go in together.
constexpr std::size_t kWorthACall = std::size_t{256} << 10;

}  // namespace

StreamInflate::StreamInflate(Pieces pieces) : pieces_(pieces), state_(std::make_unique<inflate_state>()) {
  isal_inflate_init(state_.get());
  state_->crc_flag = ISAL_ZLIB;
  for (const auto& piece : pieces) left_ += piece.size();
}

StreamInflate::~StreamInflate() = default;

std::size_t StreamInflate::read(std::span<std::uint8_t> out) {
  std::size_t produced = 0;
  while (produced < out.size() && !damaged_ && state_->block_state != ISAL_BLOCK_FINISH) {
    const bool fed = state_->avail_in > 0 || feed();
    const auto room = static_cast<std::uint32_t>(std::min(out.size() - produced, kMostAtOnce));
    state_->next_out = out.data() + produced;
    state_->avail_out = room;
    damaged_ = isal_inflate(state_.get()) != ISAL_DECOMP_OK;
    produced += room - state_->avail_out;
    if (!fed && state_->avail_out == room) break;  // it wants more than there is
  }
  return produced;
}

bool StreamInflate::ended() const {
  // Whole bytes that the library holds and didn't need are bytes behind the stream, too.
  return !damaged_ && state_->block_state == ISAL_BLOCK_FINISH && state_->avail_in == 0 &&
         state_->read_in_length < 8 && left_ == 0;
}

/// Of the next piece that has some; empty at the end.
std::span<const std::uint8_t> StreamInflate::next_bytes(std::size_t most) {
  while (next_ < pieces_.size() && in_piece_ == pieces_[next_].size()) ++next_, in_piece_ = 0;
  if (next_ == pieces_.size()) return {};
  const auto rest = pieces_[next_].subspan(in_piece_);
  const auto bytes = rest.first(std::min(rest.size(), most));
  in_piece_ += bytes.size();
  left_ -= bytes.size();
  return bytes;
}

bool StreamInflate::feed() {
  std::span<const std::uint8_t> bytes = next_bytes(kMostAtOnce);
  if (bytes.empty()) return false;
  if (bytes.size() < kWorthACall) {
    gathered_.assign(bytes.begin(), bytes.end());
    while (gathered_.size() < kWorthACall) {
      bytes = next_bytes(kWorthACall - gathered_.size());
      if (bytes.empty()) break;
      gathered_.insert(gathered_.end(), bytes.begin(), bytes.end());
    }
    bytes = gathered_;
  }
  state_->next_in = const_cast<std::uint8_t*>(bytes.data());
  state_->avail_in = static_cast<std::uint32_t>(bytes.size());
  return true;
}

}  // namespace vellum
