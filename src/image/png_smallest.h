// The smallest image data that can be found for a picture.
#pragma once

#include <array>
#include <functional>
#include <optional>

#include "image/picture.h"
#include "image/png_header.h"

namespace vellum {

/// As png_encode, by the best of all filters: each is packed quickly, and those that did well at the highest
/// level. The best of them once more by the slow packer, where `iterations` isn't 0, until `stop` gives true.
std::vector<std::uint8_t> png_encode_smallest(const PngHeader& header, const Picture& picture,
                                              std::optional<std::array<std::uint16_t, 3>> key, int iterations,
                                              const std::function<bool()>& stop = {});

}  // namespace vellum
