// The smallest image data that can be found for a picture.
#pragma once

#include <array>
#include <optional>
#include <vector>

#include "image/picture.h"
#include "image/png_header.h"

namespace vellum {

struct PngEffort {
  int iterations = 0;  ///< of the slow packer; 0: it is not asked
  /// One filter alone is packed as well as can be, at the level below the highest: 1 or 2 per cent more in a
  /// third of the time.
  bool quick = false;
};

/// As png_encode, by the best of all filters: each is packed quickly, and those that did well at the highest
/// level; the best of them once more by the slow packer.
std::vector<std::uint8_t> png_encode_smallest(const PngHeader& header, const Picture& picture,
                                              std::optional<std::array<std::uint16_t, 3>> key,
                                              const PngEffort& effort);

}  // namespace vellum
