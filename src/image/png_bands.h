// Large images of PNG and its family, decoded band by band: one core inflates while another undoes filters
// and puts samples in place. Nothing but the picture is as large as the image.
#pragma once

#include <span>

#include "image/picture.h"
#include "image/png_header.h"

namespace vellum {

using PngPieces = std::span<const std::span<const std::uint8_t>>;

/// Whether an image is large enough to be worth it, and has rows in order, several to a band.
bool png_goes_in_bands(const PngHeader& header);

/// Bytes of filtered rows in a band.
inline constexpr std::size_t kPngBandBytes = std::size_t{512} << 10;

/// The picture of a stream that holds this image and not a byte more; null for any other, and where memory is
/// exhausted: `png_decode` says why. For headers that it would take, without interlacing. A stream whose
/// codes are sparser than RFC 1951 allows gives its picture here, where other readers refuse it.
Picture png_decode_in_bands(const PngHeader& header, PngPieces data, const Palette& palette,
                            std::size_t band_bytes = kPngBandBytes);

}  // namespace vellum
