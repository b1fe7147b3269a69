// Pictures of another size.
#pragma once

#include <span>

#include "image/picture_operations.h"
#include "image/resample_filter.h"

namespace vellum {

/// What the indexes of a picture may be and mean.
struct PaletteUse {
  std::uint32_t entries = 256;                      ///< entries behind these never come up
  std::span<const std::uint8_t> transparency = {};  ///< alpha by index, as PictureWithTransparency takes it
};

/// The picture scaled to `width` x `height` pixels, with its depth and palette. Two passes, the cheaper order
/// first, each channel rounded to 8 bits in between; the colors of a 32-bit picture are weighted by their
/// alpha. Indexed pictures: Point copies indexes, other filters work in true color (with alpha where an entry
/// is transparent) and take the nearest opaque color of the palette; where the alpha comes below 128, the
/// most transparent entry. Automatic is Mitchell where the area grows, otherwise Lanczos. The same size with
/// a blur of 1 gives a copy. Null for a size of 0 or beyond the limits, for a null picture, or when memory is
/// exhausted.
Picture PictureResample(const Picture& picture, std::uint32_t width, std::uint32_t height,
                        ResampleFilter filter, double blur = 1, const PaletteUse& use = {});

/// The pixels of `part`, which lies inside of `width` x `height`, as PictureResample of a picture of 24 or 32
/// bits has them, made from the source around it alone. Null as there.
Picture PictureResamplePart(const Picture& picture, std::uint32_t width, std::uint32_t height,
                            const PictureRect& part, ResampleFilter filter, double blur = 1);

/// A picture of 24 or 32 bits in the colors and the depth of the indexed one `like`, as PictureResample makes
/// its results so.
Picture PictureInColoursOf(const Picture& picture, const Picture& like, const PaletteUse& use);

/// Scaled by per cent of each side, rounded, at least 1 pixel.
Picture PictureScalePercent(const Picture& picture, double x_percent, double y_percent,
                            ResampleFilter filter);

}  // namespace vellum
