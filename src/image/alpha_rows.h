// Rows of 32 bits: colors multiplied by their alpha, without it again, and pixels over black.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vellum {

/// Colors multiplied by their alpha, rounded.
void weigh_row(std::uint8_t* out, const std::uint8_t* in, std::size_t width);

/// Colors that are multiplied by their alpha, without it. What can't be seen becomes black.
void straighten_row(std::uint8_t* row, std::size_t width);

/// Straight pixels over black that has the alpha of `out`: "over" of the PNG standard, rounded. Where
/// nothing can be seen, the pixel stays as it was.
void lay_over_black(std::uint8_t* out, const std::uint8_t* in, std::size_t width);

}  // namespace vellum
