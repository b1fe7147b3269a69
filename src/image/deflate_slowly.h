// A packer that takes its time.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace vellum {

/// A zlib stream that is smaller than those of `deflate_bytes` mostly, in some hundred times their time:
/// `iterations` (from 1) times over each piece of a megabyte. Empty when memory was exhausted, or `stop`,
/// which is asked in front of each piece, gives true.
std::vector<std::uint8_t> deflate_slowly(std::span<const std::uint8_t> bytes, int iterations,
                                         const std::function<bool()>& stop = {});

}  // namespace vellum
