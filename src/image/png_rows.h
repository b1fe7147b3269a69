// Rows of PNG samples to rows of a picture and back. Sample rows are as the standard packs them; picture rows
// as image/picture.h does, padding left alone.
#pragma once

#include <cstdint>

#include "image/png_header.h"

namespace vellum {

/// `width` pixels from samples to a picture row of png_picture_bits(header).
using PngRowReader = void (*)(const std::uint8_t* samples, std::uint8_t* row, std::uint32_t width);
PngRowReader png_row_reader(const PngHeader& header);

/// `width` pixels from a picture row to samples. `key`: red, green, blue (or the grey first), samples of 16
/// bits: a pixel whose 8-bit samples are their high bytes is written as exactly them. Null where there is
/// none, and below 16 bits.
using PngRowWriter = void (*)(const std::uint8_t* row, std::uint8_t* samples, std::uint32_t width,
                              const std::uint16_t* key);
/// Null for a pair of picture bits and header that does not go together (see image/png_form.h).
PngRowWriter png_row_writer(std::uint32_t picture_bits, const PngHeader& header);

}  // namespace vellum
