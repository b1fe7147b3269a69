#include "base/memory_budget.h"

#include <tbb/task_arena.h>
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

using Memory = std::shared_ptr<std::uint8_t[]>;

/// What trimming leaves to do when the lock has been given up.
struct Trimmed {
  std::vector<Memory> freed;
  std::vector<std::shared_ptr<KeptBlock>> to_pack;  ///< pinned
};

/// The resident blocks, in the order in which they were read last.
class MemoryBudget {
 public:
  static MemoryBudget& instance() {
    static auto* budget = new MemoryBudget;  // blocks of static objects may outlive anything else
    return *budget;
  }

  /// Calls `change(budget)` under the lock, and lets go what is too much then.
  template <class Change>
  void change(const Change& change) {
    Trimmed trimmed;
    {
      const std::lock_guard guard(lock_);
      change();
      trim(trimmed);
    }
    for (const auto& block : trimmed.to_pack) pack(*block);
  }
  std::mutex& lock() { return lock_; }

  // The lock is held in all that follows.

  std::uint64_t resident() const { return resident_; }

  void add(KeptBlock& block, Memory memory) {
    block.memory_ = std::move(memory);
    block.place_ = blocks_.insert(blocks_.end(), &block);
    resident_ += block.size_;
    block.resident_ = block.memory_.get();
  }

  Memory remove(KeptBlock& block) {
    if (!block.resident_) return nullptr;
    block.resident_ = nullptr;
    blocks_.erase(block.place_);
    resident_ -= block.size_;
    return std::move(block.memory_);
  }

  void touch(KeptBlock& block) {
    if (block.resident_) blocks_.splice(blocks_.end(), blocks_, block.place_);
  }

  static ChunkHandle cold(std::size_t size, std::span<const std::uint8_t> head,
                          std::shared_ptr<const BlockSource> source) {
    ChunkHandle handle;
    handle.kept_ = std::make_shared<KeptBlock>(size, head, std::move(source));
    handle.size_ = size;
    return handle;
  }

  bool let_go(const ChunkHandle& handle) {
    if (!handle.kept_) return true;
    KeptBlock& block = *handle.kept_;
    Memory freed;
    const std::lock_guard guard(lock_);
    if (block.pins_ != 0) return false;
    if (block.maker_) freed = remove(block);
    return true;
  }

  void share(std::uint64_t before, std::uint64_t now) { shared_ += now - before; }

 private:
  /// Chooses what goes. Nobody may let a block go that is being packed: it is pinned for as long.
  void trim(Trimmed& trimmed) {
    const std::uint64_t budget = memory_budget();
    for (auto at = blocks_.begin(); at != blocks_.end() && resident_ + shared_ > budget + leaving_;) {
      KeptBlock& block = **at++;
      if (block.pins_ != 0) continue;
      if (block.maker_) {
        trimmed.freed.push_back(remove(block));
      } else if (auto alive = block.pack_ ? block.weak_from_this().lock() : nullptr) {
        ++block.pins_;
        leaving_ += block.size_;
        trimmed.to_pack.push_back(std::move(alive));
      }
    }
  }

  void pack(KeptBlock& block) {
    ChunkHandle content;
    content.block_ = block.memory_;
    content.size_ = block.size_;
    std::shared_ptr<const BlockSource> packed;
    bool gains = true;
    try {
      // A thread that waits for parts of this must not begin what waits for this one.
      tbb::this_task_arena::isolate([&] { packed = block.pack_(content); });
      gains = packed != nullptr;
    } catch (const std::bad_alloc&) {
      // It stays as it is, and may be packed when there is memory again.
    }
    content.reset();
    Memory freed;
    const std::lock_guard guard(lock_);
    leaving_ -= block.size_;
    if (!gains) block.pack_ = nullptr;
    block.maker_ = std::move(packed);
    int alone = 1;
    if (!block.pins_.compare_exchange_strong(alone, 0))
      --block.pins_;
    else if (block.maker_)
      freed = remove(block);
  }

  std::mutex lock_;
  std::list<KeptBlock*> blocks_;
  std::uint64_t resident_ = 0;
  std::uint64_t shared_ = 0;   ///< what others use
  std::uint64_t leaving_ = 0;  ///< of the resident ones, what is being packed
};

KeptBlock::KeptBlock(const ChunkHandle& block, std::size_t head, std::shared_ptr<const BlockSource> source,
                     BlockPacker pack)
    : size_(block.size()),
      head_(block.head(), block.head() + std::min(head, block.size())),
      source_(std::move(source)),
      pack_(pack),
      maker_(source_ && source_->can_make() ? source_ : nullptr) {
  const BlockPin pin(block);
  if (block.kept_) block.kept_->bytes();
  MemoryBudget& budget = MemoryBudget::instance();
  budget.change([&] { budget.add(*this, block.kept_ ? block.kept_->memory_ : block.block_); });
}

KeptBlock::KeptBlock(std::size_t size, std::span<const std::uint8_t> head,
                     std::shared_ptr<const BlockSource> source)
    : size_(size),
      head_(head.begin(), head.end()),
      source_(std::move(source)),
      pack_(nullptr),
      maker_(source_) {}

KeptBlock::~KeptBlock() {
  MemoryBudget& budget = MemoryBudget::instance();
  Memory freed;
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
  budget.change([&] { budget.touch(*this); });
}

const std::uint8_t* KeptBlock::bytes() {
  if (const std::uint8_t* there = resident_) return there;
  const std::lock_guard making(making_);
  if (const std::uint8_t* there = resident_) return there;
  ChunkHandle made = maker_->make();
  if (!made || made.size() != size_) throw std::bad_alloc();
  MemoryBudget& budget = MemoryBudget::instance();
  budget.change([&] { budget.add(*this, std::move(made.block_)); });
  return resident_;
}

std::size_t KeptBlock::held_bytes() const {
  std::shared_ptr<const BlockSource> maker;
  {
    const std::lock_guard guard(MemoryBudget::instance().lock());
    maker = maker_;
  }
  return maker ? maker->held_bytes() : size_ + (source_ ? source_->held_bytes() : 0);
}

void BudgetShare::set(std::uint64_t bytes) {
  if (bytes == bytes_) return;
  MemoryBudget& budget = MemoryBudget::instance();
  budget.change([&] { budget.share(bytes_, bytes); });
  bytes_ = bytes;
}

ChunkHandle cold_block(std::size_t size, std::span<const std::uint8_t> head,
                       std::shared_ptr<const BlockSource> source) {
  return MemoryBudget::cold(size, head, std::move(source));
}

bool let_go(const ChunkHandle& block) { return MemoryBudget::instance().let_go(block); }

std::uint64_t resident_bytes() {
  MemoryBudget& budget = MemoryBudget::instance();
  const std::lock_guard guard(budget.lock());
  return budget.resident();
}

}  // namespace vellum
