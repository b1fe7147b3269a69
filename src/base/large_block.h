// Memory of pictures: large blocks cut from regions of huge pages.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace vellum {

/// Blocks from this size on are worth a region; smaller ones come from the ordinary heap.
inline constexpr std::size_t kLargeBlock = std::size_t{512} << 10;

/// `bytes` (at least kLargeBlock) of unspecified content; null when memory is exhausted.
///
/// The frames of an animation are too small for huge pages of their own, and faulting them in page by page
/// takes longer than filling them. So blocks of a thread are laid side by side in regions that the system
/// backs with huge pages. The blocks that were freed last are given out again with their pages; others give
/// theirs back. A region goes with its last block.
std::shared_ptr<std::uint8_t[]> allocate_large_block(std::size_t bytes);

}  // namespace vellum
