#include "base/large_block.h"

#include <algorithm>
#include <deque>
#include <mutex>
#include <optional>
#include <vector>

#include "base/scratch_pages.h"

namespace vellum {
namespace {

constexpr std::size_t kRegion = std::size_t{64} << 20;
/// Larger blocks get a region of their own: little would be gained by sharing one.
constexpr std::size_t kLargestShared = std::size_t{8} << 20;
constexpr std::size_t kAlignment = 64;  // a cache line

/// A region and how much of it is given out. Used by one thread; its blocks may be freed by any.
struct Region {
  std::shared_ptr<ScratchPages> pages;
  std::size_t used = 0;
};

/// A piece of a region.
struct Piece {
  std::shared_ptr<ScratchPages> region;
  std::size_t offset = 0, bytes = 0;
  void release() const {
    if (region) region->release(offset, bytes);
  }
};

/// Blocks that were freed last, with their pages: whoever works on frames one after the other frees one and
/// wants another of the same size, and fresh pages cost more than much of the work.
class RecentBlocks {
 public:
  static RecentBlocks& instance() {
    static auto* blocks = new RecentBlocks;  // blocks of static objects may outlive anything else
    return *blocks;
  }

  /// One of this size; an empty piece where there is none.
  Piece take(std::size_t bytes) {
    const std::lock_guard guard(lock_);
    const auto found = std::ranges::find(pieces_, bytes, &Piece::bytes);
    if (found == pieces_.end()) return {};
    Piece piece = std::move(*found);
    pieces_.erase(found);
    held_ -= bytes;
    return piece;
  }

  void put(Piece piece) {
    std::vector<Piece> gone;
    {
      const std::lock_guard guard(lock_);
      held_ += piece.bytes;
      pieces_.push_back(std::move(piece));
      while (held_ > kMost) {
        held_ -= pieces_.front().bytes;
        gone.push_back(std::move(pieces_.front()));
        pieces_.pop_front();
      }
    }
    for (const Piece& old : gone) old.release();
  }

 private:
  static constexpr std::size_t kMost = std::size_t{24} << 20;
  std::mutex lock_;
  std::deque<Piece> pieces_;  ///< the one freed last behind
  std::size_t held_ = 0;
};

/// Keeps the region of a block for as long as it lives.
struct FreeBlock {
  Piece piece;
  void operator()(std::uint8_t*) const {
    if (piece.bytes <= kLargestShared)
      RecentBlocks::instance().put(piece);
    else
      piece.release();
  }
};

std::shared_ptr<std::uint8_t[]> block_of(const std::shared_ptr<ScratchPages>& region, std::size_t offset,
                                         std::size_t bytes) {
  return {region->bytes().data() + offset, FreeBlock{{region, offset, bytes}}};
}

}  // namespace

std::shared_ptr<std::uint8_t[]> allocate_large_block(std::size_t bytes) {
  if (bytes > kLargestShared) {
    const auto own = std::make_shared<ScratchPages>(bytes);
    return *own ? block_of(own, 0, bytes) : nullptr;
  }
  if (Piece again = RecentBlocks::instance().take(bytes); again.region)
    return block_of(again.region, again.offset, bytes);
  thread_local Region region;
  if (!region.pages || region.pages->bytes().size() - region.used < bytes) {
    region = {std::make_shared<ScratchPages>(kRegion), 0};
    if (!*region.pages) region = {};
    if (!region.pages) return nullptr;
  }
  const std::size_t offset = region.used;
  region.used += (bytes + kAlignment - 1) / kAlignment * kAlignment;
  return block_of(region.pages, offset, bytes);
}

}  // namespace vellum
