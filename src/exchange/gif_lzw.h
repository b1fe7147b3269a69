// The compressed indexes of a GIF's image (GIF89a, appendix F).
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace vellum {

using Bytes = std::vector<std::uint8_t>;

/// Minimum code size and data in blocks, for a table of 2^bits entries. Codes begin anew when there are 4096.
void put_lzw(Bytes& out, std::span<const std::uint8_t> indexes, std::uint32_t bits);

/// When codes begin anew.
enum class LzwClear { WhenFull, WhenWorse };

/// What a pixel may be: the first is the one to take where all are as good; the others may repeat it.
using PixelChoice = std::array<std::uint8_t, 4>;

/// The same for pixels that may have one index or another: whichever makes the data smaller, as far as is
/// seen some codes ahead. Gives the indexes that were taken. Takes some times as long.
std::vector<std::uint8_t> put_smaller_lzw(Bytes& out, std::span<const PixelChoice> pixels, std::uint32_t bits,
                                          LzwClear clear);

}  // namespace vellum
