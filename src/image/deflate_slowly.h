// A packer that takes its time.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace vellum {

/// A zlib stream that is smaller than those of `deflate_bytes` mostly, in some hundred times their time:
/// `iterations` (from 1) times over each piece of a megabyte.
std::vector<std::uint8_t> deflate_slowly(std::span<const std::uint8_t> bytes, int iterations);

}  // namespace vellum
