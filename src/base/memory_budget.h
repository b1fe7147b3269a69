// How much memory the bytes of kept blocks take together. Beyond it those that nobody has read for the
// longest time are let go, and made again when they are read.
#pragma once

#include <cstdint>
#include <utility>

#include "base/chunk_handle.h"

namespace vellum {

/// `PictureMemoryMegabytes` in bytes. What is pinned stays, also beyond it.
std::uint64_t memory_budget();
/// Bytes of kept blocks that are in memory now.
std::uint64_t resident_bytes();

/// A kept block whose bytes are made when somebody asks for them: `size` bytes, of which `head` are known.
/// The source can make it.
ChunkHandle cold_block(std::size_t size, std::span<const std::uint8_t> head,
                       std::shared_ptr<const BlockSource> source);
/// Lets the bytes of a kept block go where they can be made again and nobody has pinned them: for who walks
/// over many and comes back to none. False where they are pinned: they may go later.
bool let_go(const ChunkHandle& block);

/// Bytes of the budget that something else uses, as pictures that a view has composed.
class BudgetShare {
 public:
  BudgetShare() = default;
  BudgetShare(BudgetShare&& other) noexcept : bytes_(std::exchange(other.bytes_, 0)) {}
  BudgetShare& operator=(BudgetShare&& other) noexcept {
    std::swap(bytes_, other.bytes_);
    return *this;
  }
  ~BudgetShare() { set(0); }
  /// How much it is from now on. Kept blocks make room.
  void set(std::uint64_t bytes);

 private:
  std::uint64_t bytes_ = 0;
};

}  // namespace vellum
