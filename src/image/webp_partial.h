// Images of WebP files outside their container: a file around the chunks of one image, and the rows of an
// image that is damaged or cut.
#pragma once

#include "image/picture.h"
#include "image/webp_container.h"

namespace vellum {

/// A still file of the chunks that hold one image: VP8, VP8L, or ALPH and VP8. Empty for others, or where the
/// image's head can't be read.
std::vector<std::uint8_t> webp_still(std::span<const WebpChunk> image);

/// The rows from the top that a still file holds before it is damaged or ends, in a picture of 32 bits whose
/// other rows are transparent; `rows` counts them. Null where not even the head is there.
Picture decode_webp_rows(std::span<const std::uint8_t> still, std::uint32_t& rows);

}  // namespace vellum
