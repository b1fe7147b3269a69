#include "base/large_block.h"

#include <optional>

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

/// Gives the pages of a block back, and keeps its region for as long as it lives.
struct FreeBlock {
  std::shared_ptr<ScratchPages> region;
  std::size_t offset, bytes;
  void operator()(std::uint8_t*) const { region->release(offset, bytes); }
};

std::shared_ptr<std::uint8_t[]> block_of(const std::shared_ptr<ScratchPages>& region, std::size_t offset,
                                         std::size_t bytes) {
  return {region->bytes().data() + offset, FreeBlock{region, offset, bytes}};
}

}  // namespace

std::shared_ptr<std::uint8_t[]> allocate_large_block(std::size_t bytes) {
  if (bytes > kLargestShared) {
    const auto own = std::make_shared<ScratchPages>(bytes);
    return *own ? block_of(own, 0, bytes) : nullptr;
  }
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
