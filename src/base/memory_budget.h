// How much memory the bytes of kept blocks take together. Beyond it those that nobody has read for the
// longest time are let go, and made again when they are read.
#pragma once

#include <cstdint>

namespace vellum {

/// `PictureMemoryMegabytes` in bytes. What is pinned stays, also beyond it.
std::uint64_t memory_budget();
/// Bytes of kept blocks that are in memory now.
std::uint64_t resident_bytes();

}  // namespace vellum
