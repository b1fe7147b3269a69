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

/// Where codes that begin anew make the data smallest: pixels in their order, found by packing from each of
/// some places on. Between them codes go on where there are no more.
std::vector<std::size_t> best_clears(std::span<const std::uint8_t> indexes, std::uint32_t bits);

/// What a pixel may be: the first is the one to take where all are as good; the others may repeat it.
using PixelChoice = std::array<std::uint8_t, 4>;

/// The same for pixels that may have one index or another: whichever makes the data smaller, as far as is
/// seen some codes ahead. Codes begin anew when there are no more or, where they are told, at places as
/// above. Gives the indexes that were taken. Takes some times as long.
std::vector<std::uint8_t> put_smaller_lzw(Bytes& out, std::span<const PixelChoice> pixels, std::uint32_t bits,
                                          const std::vector<std::size_t>* clears = nullptr);

}  // namespace vellum
