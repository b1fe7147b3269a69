#include "base/chunk_handle.h"

#include <atomic>
#include <cstring>
#include <new>

#include "base/kept_block.h"
#include "base/large_block.h"

namespace vellum {

ChunkHandle ChunkHandle::create_for_overwrite(std::size_t size) {
  ChunkHandle handle;
  try {
    handle.block_ = size >= kLargeBlock ? allocate_large_block(size)
                                        : std::make_shared_for_overwrite<std::uint8_t[]>(size);
  } catch (const std::bad_alloc&) {
    return {};
  }
  if (handle) handle.size_ = size;
  return handle;
}

ChunkHandle ChunkHandle::create(std::size_t size) {
  ChunkHandle handle = create_for_overwrite(size);
  if (handle && size != 0) std::memset(handle.block_.get(), 0, size);
  return handle;
}

ChunkHandle ChunkHandle::copy_of(std::span<const std::uint8_t> bytes, std::size_t spare) {
  ChunkHandle handle = create_for_overwrite(bytes.size() + spare);
  if (!handle) return handle;
  if (!bytes.empty()) std::memcpy(handle.block_.get(), bytes.data(), bytes.size());
  if (spare != 0) std::memset(handle.block_.get() + bytes.size(), 0, spare);
  return handle;
}

ChunkHandle ChunkHandle::kept(const ChunkHandle& block, std::size_t head,
                              std::shared_ptr<const BlockSource> source, BlockPacker pack) {
  ChunkHandle handle;
  handle.kept_ = std::make_shared<KeptBlock>(block, head, std::move(source), pack);
  handle.size_ = block.size();
  return handle;
}

const std::uint8_t* ChunkHandle::kept_bytes() const { return kept_->bytes(); }
const std::uint8_t* ChunkHandle::kept_head() const { return kept_->head(); }

std::shared_ptr<const BlockSource> ChunkHandle::source() const { return kept_ ? kept_->source() : nullptr; }

bool ChunkHandle::at_hand() const { return !kept_ || kept_->at_hand(); }

std::size_t ChunkHandle::held_bytes() const { return kept_ ? kept_->held_bytes() : size_; }

std::uint8_t* ChunkHandle::edit() {
  if (kept_ || block_.use_count() > 1) {
    const BlockPin pin(*this);
    ChunkHandle own = copy_of(bytes(), 0);
    if (!own) return nullptr;
    *this = std::move(own);
  }
  // use_count() is a relaxed load: what another thread read before it let its share go must be over by now.
  std::atomic_thread_fence(std::memory_order_acquire);
  return block_.get();
}

BlockPin::BlockPin(const ChunkHandle& block) : block_(block.kept_) {
  if (block_) block_->pin();
}

BlockPin::BlockPin(const BlockPin& other) : block_(other.block_) {
  if (block_) block_->pin();
}

void BlockPin::release() {
  if (block_) block_->unpin();
  block_.reset();
}

}  // namespace vellum
