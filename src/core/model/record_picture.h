// The picture of an image record, with every field that follows from it.
#pragma once

#include <span>

#include "core/model/chunk_record.h"

namespace vellum {

/// Gives the record of an image another picture: data, `size`, width, height, bitDepth (at most 8), colorType
/// (to 8 bits 3, 24 bits 2, 32 bits 6), the size in the frame control or the WebP fields. A PNGI takes the
/// picture's colors as its palette, and keeps its transparency and background only where they still mean the
/// same.
void record_take_picture(ChunkRecord& record, DocumentKind kind, const Picture& picture);

/// The same for a picture of the same depth and colors: `data`, `size` and the fields of the size alone.
void record_take_pixels(ChunkRecord& record, DocumentKind kind, const Picture& picture);

/// Gives an image of an MNG the transparency of a tRNS with these bytes; none when they are empty.
void put_image_transparency(ChunkRecord& record, std::span<const std::uint8_t> bytes);

/// The color type that holds a picture: to 8 bits 3, 24 bits 2, 32 bits 6.
constexpr std::uint8_t color_type_of_bits(std::uint32_t bits) { return bits > 24 ? 6 : bits > 8 ? 2 : 3; }

}  // namespace vellum
