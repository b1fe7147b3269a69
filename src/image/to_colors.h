// A picture in given colors: the one way in which pictures come to a palette.
#pragma once

#include "base/host.h"
#include "image/picture.h"

namespace vellum {

/// Alpha from here on is opaque where a palette has one entry for what is transparent.
inline constexpr std::uint8_t kLeastOpaque = 128;

/// The colors of a palette.
struct GivenColors {
  Palette palette{};
  std::uint32_t count = 0;               ///< 1 to 256
  std::vector<std::uint8_t> alpha = {};  ///< of the first entries, as tRNS has it; the others are opaque
};

/// Whether indexes of the picture mean these colors.
bool has_colors(const Picture& picture, const Palette& palette, std::uint32_t colors);

/// The picture in these colors, with the least depth that holds all of them. Indexes that mean the colors
/// already are copied. Else opaque entries alone are matched, as RemapPicture does it or, with `dither`,
/// DitherPicture; where there is a transparent entry, pixels of 32 bits with little alpha get it, and
/// dithering passes over them. `host`, where it is given, hears of the progress and may stop it. Null when it
/// did, or memory is exhausted.
Picture to_colors(const Picture& picture, const GivenColors& colors, bool dither, Host* host = nullptr);

}  // namespace vellum
