#include "base/memory_budget.h"

#include <unistd.h>

#include <algorithm>
#include <new>

#include "base/kept_block.h"
#include "base/settings.h"

namespace vellum {
namespace {

std::uint64_t quarter_of_machine() {
  static const std::uint64_t bytes = static_cast<std::uint64_t>(std::max(sysconf(_SC_PHYS_PAGES), 1L)) *
                                     static_cast<std::uint64_t>(std::max(sysconf(_SC_PAGESIZE), 1L)) / 4;
  return bytes;
}

}  // namespace

std::uint64_t memory_budget() {
  constexpr int kMostMegabytes = 1 << 20;
  const int megabytes = std::clamp(settings::PictureMemoryMegabytes, 0, kMostMegabytes);
  return megabytes == 0 ? quarter_of_machine() : std::uint64_t(megabytes) << 20;
}

/// The resident blocks, in the order in which they were read last.
class MemoryBudget {
 public:
  static MemoryBudget& instance() {
    static auto* budget = new MemoryBudget;  // blocks of static objects may outlive anything else
    return *budget;
  }

  std::mutex& lock() { return lock_; }

  // The lock is held in all that follows.

  std::uint64_t resident() const { return resident_; }

  void add(KeptBlock& block, std::shared_ptr<std::uint8_t[]> memory) {
    block.memory_ = std::move(memory);
    block.place_ = blocks_.insert(blocks_.end(), &block);
    resident_ += block.size_;
    block.resident_ = block.memory_.get();
  }

  std::shared_ptr<std::uint8_t[]> remove(KeptBlock& block) {
    if (!block.resident_) return nullptr;
    block.resident_ = nullptr;
    blocks_.erase(block.place_);
    resident_ -= block.size_;
    return std::move(block.memory_);
  }

  void touch(KeptBlock& block) {
    if (block.resident_) blocks_.splice(blocks_.end(), blocks_, block.place_);
  }

  /// Lets go what is too much. The memory is freed when the caller has given the lock up.
  std::vector<std::shared_ptr<std::uint8_t[]>> trim() {
    std::vector<std::shared_ptr<std::uint8_t[]>> freed;
    for (auto at = blocks_.begin(); at != blocks_.end() && resident_ > memory_budget();) {
      KeptBlock& block = **at++;
      if (block.pins_ == 0 && block.source_) freed.push_back(remove(block));
    }
    return freed;
  }

 private:
  std::mutex lock_;
  std::list<KeptBlock*> blocks_;
  std::uint64_t resident_ = 0;
};

KeptBlock::KeptBlock(const ChunkHandle& block, std::size_t head, std::shared_ptr<const BlockSource> source)
    : size_(block.size()),
      head_(block.head(), block.head() + std::min(head, block.size())),
      source_(std::move(source)) {
  const BlockPin pin(block);
  if (block.kept_) block.kept_->bytes();
  MemoryBudget& budget = MemoryBudget::instance();
  std::vector<std::shared_ptr<std::uint8_t[]>> freed;
  const std::lock_guard guard(budget.lock());
  budget.add(*this, block.kept_ ? block.kept_->memory_ : block.block_);
  freed = budget.trim();
}

KeptBlock::~KeptBlock() {
  MemoryBudget& budget = MemoryBudget::instance();
  std::shared_ptr<std::uint8_t[]> freed;
  const std::lock_guard guard(budget.lock());
  freed = budget.remove(*this);
}

void KeptBlock::pin() {
  int pins = pins_;
  while (pins > 0)
    if (pins_.compare_exchange_weak(pins, pins + 1)) return;
  // The first pin: nobody may be about to let the bytes go.
  const std::lock_guard guard(MemoryBudget::instance().lock());
  ++pins_;
}

void KeptBlock::unpin() {
  if (--pins_ > 0) return;
  MemoryBudget& budget = MemoryBudget::instance();
  std::vector<std::shared_ptr<std::uint8_t[]>> freed;
  const std::lock_guard guard(budget.lock());
  budget.touch(*this);
  freed = budget.trim();
}

const std::uint8_t* KeptBlock::bytes() {
  if (const std::uint8_t* there = resident_) return there;
  const std::lock_guard making(making_);
  if (const std::uint8_t* there = resident_) return there;
  ChunkHandle made = source_->make();
  if (!made || made.size() != size_) throw std::bad_alloc();
  MemoryBudget& budget = MemoryBudget::instance();
  std::vector<std::shared_ptr<std::uint8_t[]>> freed;
  const std::lock_guard guard(budget.lock());
  budget.add(*this, std::move(made.block_));
  freed = budget.trim();
  return resident_;
}

std::shared_ptr<const BlockSource> KeptBlock::source() const { return source_; }

std::uint64_t resident_bytes() {
  MemoryBudget& budget = MemoryBudget::instance();
  const std::lock_guard guard(budget.lock());
  return budget.resident();
}

}  // namespace vellum
