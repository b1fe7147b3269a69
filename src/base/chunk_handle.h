// ChunkHandle: the memory block in which every payload and every picture lies.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace vellum {

class ChunkHandle;
class KeptBlock;

/// From where the content of a block can be made again after its memory was let go.
class BlockSource {
 public:
  virtual ~BlockSource() = default;
  /// The whole block as it was, in memory of its own; null when that is exhausted. Asked on any thread.
  virtual ChunkHandle make() const = 0;
  /// Whether `make` knows all that it needs; a source for which this is false only tells where a block came
  /// from.
  virtual bool can_make() const { return true; }
  /// Bytes of memory that the source itself takes.
  virtual std::size_t held_bytes() const = 0;
};

/// Makes a source of a block that has none: its content, packed. Null where that gains nothing. Asked on any
/// thread.
using BlockPacker = std::shared_ptr<const BlockSource> (*)(const ChunkHandle& block);

/// An owning value: a zero-filled block of bytes, shared when copied and copied on its first write. Copying a
/// handle therefore costs no bytes. Reading never detaches; `edit()` is the one call that does.
///
/// A *kept* block lies in the memory budget (base/memory_budget.h): its bytes may be let go and made again
/// from its source. Who reads its bytes holds a `BlockPin` for as long; `head()`, sizes and copies need none.
///
/// Handles may be copied and read on several threads; a handle that is written belongs to one.
class ChunkHandle {
 public:
  ChunkHandle() = default;

  /// A zero-filled block of `size` bytes; null when memory is exhausted. A block of 0 bytes is not null.
  static ChunkHandle create(std::size_t size);
  /// The same with unspecified content, for callers that write every byte before anyone reads one.
  static ChunkHandle create_for_overwrite(std::size_t size);
  /// A block that holds `bytes` and `spare` zero bytes behind them (one by default, so that a payload can be
  /// read as a string); null when memory is exhausted.
  static ChunkHandle copy_of(std::span<const std::uint8_t> bytes, std::size_t spare = 1);
  /// The block as one that the memory budget holds. `head` bytes of its beginning always stay in memory. A
  /// block that is a kept one shares its memory with the new one. Where `source` can't make the block, `pack`
  /// is asked for another before the memory is let go; without either it stays.
  static ChunkHandle kept(const ChunkHandle& block, std::size_t head,
                          std::shared_ptr<const BlockSource> source, BlockPacker pack = nullptr);

  explicit operator bool() const { return block_ || kept_; }
  std::size_t size() const { return size_; }
  const std::uint8_t* data() const { return kept_ ? kept_bytes() : block_.get(); }
  std::span<const std::uint8_t> bytes() const { return {data(), size_}; }
  /// The beginning of the block: of a kept one as many bytes as always stay, of others all.
  const std::uint8_t* head() const { return kept_ ? kept_head() : block_.get(); }
  bool is_kept() const { return kept_ != nullptr; }
  /// Whether the bytes are in memory now. Those of a kept block that nobody has pinned may go at any time.
  bool at_hand() const;
  /// What a kept block came from, and what it was packed to does not count; null for others.
  std::shared_ptr<const BlockSource> source() const;
  /// Which block this is, for comparing.
  const void* identity() const { return kept_ ? static_cast<const void*>(kept_.get()) : block_.get(); }
  /// Bytes of memory that only go with the last handle: what can be let go doesn't count.
  std::size_t held_bytes() const;

  /// The block for writing, now shared with nobody and no kept one. Null for a null handle, and when memory
  /// for the copy is exhausted (the handle is then unchanged).
  std::uint8_t* edit();

  bool shares_with(const ChunkHandle& other) const { return identity() && identity() == other.identity(); }
  void reset() { *this = {}; }

 private:
  friend class BlockPin;
  friend class KeptBlock;
  friend class MemoryBudget;
  const std::uint8_t* kept_bytes() const;
  const std::uint8_t* kept_head() const;

  std::shared_ptr<std::uint8_t[]> block_;
  std::shared_ptr<KeptBlock> kept_;
  std::size_t size_ = 0;
};

/// While one lives, the bytes of a kept block stay where they are, once somebody has asked for them.
class BlockPin {
 public:
  BlockPin() = default;
  explicit BlockPin(const ChunkHandle& block);
  BlockPin(const BlockPin& other);
  BlockPin(BlockPin&& other) noexcept : block_(std::move(other.block_)) {}
  BlockPin& operator=(BlockPin other) noexcept {
    block_.swap(other.block_);
    return *this;
  }
  ~BlockPin() { release(); }
  explicit operator bool() const { return block_ != nullptr; }

 private:
  void release();
  std::shared_ptr<KeptBlock> block_;
};

}  // namespace vellum
