// ChunkHandle: the memory block in which every payload and every picture lies.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace vellum {

/// An owning value: a zero-filled block of bytes, shared when copied and copied on its first write. Copying a
/// handle therefore costs no bytes. Reading never detaches; `edit()` is the one call that does.
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

  explicit operator bool() const { return block_ != nullptr; }
  std::size_t size() const { return size_; }
  const std::uint8_t* data() const { return block_.get(); }
  std::span<const std::uint8_t> bytes() const { return {block_.get(), size_}; }

  /// The block for writing, now shared with nobody. Null for a null handle, and when memory for the copy is
  /// exhausted (the handle is then unchanged).
  std::uint8_t* edit();

  bool shares_with(const ChunkHandle& other) const { return block_ && block_ == other.block_; }
  void reset() { *this = {}; }

 private:
  std::shared_ptr<std::uint8_t[]> block_;
  std::size_t size_ = 0;
};

}  // namespace vellum
