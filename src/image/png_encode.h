// From a picture to the image data of a PNG, of a frame of an animated PNG, or of an image in an MNG.
#pragma once

#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "image/picture.h"
#include "image/png_header.h"

namespace vellum {

/// The zlib stream that the IDAT chunks of the image hold together; empty when memory was exhausted or header
/// and picture do not fit each other (image/png_form.h makes them fit). `level`: 0 (stored, unfiltered) to 9
/// (smallest). `key`: the tRNS samples of a 16-bit image, red, green, blue or grey; pixels of that color are
/// written as exactly these.
///
/// Filters are chosen as libpng does by default. A large image is filtered and packed in parts on all cores;
/// the result does not depend on how many there are.
std::vector<std::uint8_t> png_encode(const PngHeader& header, const Picture& picture, int level,
                                     std::optional<std::array<std::uint16_t, 3>> key = std::nullopt);

/// How the rows of an image are filtered.
enum class PngFiltering : std::uint8_t { None, Sub, Up, Average, Paeth, Least };

/// The bytes that a stream of the image packs: each row behind the byte that names its filter, one filter in
/// all of them, or the least by sum, whatever the color type. Empty as above.
std::vector<std::uint8_t> png_filtered(const PngHeader& header, const Picture& picture,
                                       PngFiltering filtering,
                                       std::optional<std::array<std::uint16_t, 3>> key = std::nullopt);
/// A quarter of these bytes, in bands of rows all over the image, for a trial.
std::vector<std::uint8_t> png_filtered_bands(const PngHeader& header, const Picture& picture,
                                             PngFiltering filtering,
                                             std::optional<std::array<std::uint16_t, 3>> key = std::nullopt);

/// The stream of level 0, which `write` takes in pieces of about 1 MB, one at a time and on any thread, while
/// the next ones are made. False where `write` was, or header and picture do not fit each other.
bool png_write_stored(const PngHeader& header, const Picture& picture,
                      const std::function<bool(std::span<const std::uint8_t>)>& write,
                      std::optional<std::array<std::uint16_t, 3>> key = std::nullopt);

/// As png_encode, as a block; at level 0, where it is as long as the picture, it is made in its place.
ChunkHandle png_encode_block(const PngHeader& header, const Picture& picture, int level,
                             std::optional<std::array<std::uint16_t, 3>> key = std::nullopt);

}  // namespace vellum
