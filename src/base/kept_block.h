// The block behind a kept handle.
#pragma once

#include <atomic>
#include <list>
#include <mutex>
#include <vector>

#include "base/chunk_handle.h"

namespace vellum {

/// Its bytes are in memory or not; the budget's lock guards that for blocks that nobody has pinned, the pin
/// for all others.
class KeptBlock : public std::enable_shared_from_this<KeptBlock> {
 public:
  KeptBlock(const ChunkHandle& block, std::size_t head, std::shared_ptr<const BlockSource> source,
            BlockPacker pack);
  /// One whose bytes are not in memory yet.
  KeptBlock(std::size_t size, std::span<const std::uint8_t> head, std::shared_ptr<const BlockSource> source);
  ~KeptBlock();
  KeptBlock(const KeptBlock&) = delete;
  KeptBlock& operator=(const KeptBlock&) = delete;

  void pin();
  void unpin();
  /// The bytes, made again where they are not in memory. Throws std::bad_alloc when they can't be. The block
  /// is pinned.
  const std::uint8_t* bytes();
  bool at_hand() const { return resident_ != nullptr; }
  const std::uint8_t* head() const { return head_.data(); }
  std::shared_ptr<const BlockSource> source() const { return source_; }
  /// See ChunkHandle::held_bytes.
  std::size_t held_bytes() const;
  std::size_t size() const { return size_; }

 private:
  friend class MemoryBudget;
  const std::size_t size_;
  std::vector<std::uint8_t> head_;
  const std::shared_ptr<const BlockSource> source_;
  BlockPacker pack_;                          ///< null where it is not to be asked, or not any more
  std::shared_ptr<const BlockSource> maker_;  ///< what the bytes are made from again; null until packed
  std::shared_ptr<std::uint8_t[]> memory_;    ///< while `resident_`
  std::atomic<const std::uint8_t*> resident_{nullptr};
  std::atomic<int> pins_{0};
  std::mutex making_;
  std::list<KeptBlock*>::iterator place_;  ///< among the resident ones, the last read behind
};

}  // namespace vellum
