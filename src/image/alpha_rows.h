// Rows of 32 bits: colors multiplied by their alpha, without it again, and pixels over others.
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

/// Straight pixels with this much of their alpha (0 to 100 per cent) over others: `blend_channel` where those
/// are opaque, else "over" of the PNG standard, rounded. `atop`: always the former, and alpha stays.
void lay_row(std::uint8_t* out, const std::uint8_t* in, std::size_t width, std::uint32_t percent, bool atop);

}  // namespace vellum
