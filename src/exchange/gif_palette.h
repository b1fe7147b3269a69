// One palette for all frames of a GIF, gathered from one picture after the other.
#pragma once

#include "exchange/gif_writer.h"
#include "image/quantize.h"

namespace vellum {

/// Colors of true color pictures; pixels of 32 bits with little alpha are holes and count as none. Throws
/// std::bad_alloc.
class GifPalette {
 public:
  void add(const Picture& picture);
  /// At most 256 colors, or 255 and one more where something is `transparent`: exactly those of the pictures
  /// where they are no more, else the octree's; `best`: refined.
  GifColors colors(bool transparent, Colour mask, bool best = false) const;
  /// Whether that holds all colors.
  bool is_exact(bool transparent) const { return few_ && count_ <= (transparent ? 255u : 256u); }

 private:
  Palette exact_{};
  std::uint32_t count_ = 0;
  bool few_ = true;
  ColorOctree octree_;
};

/// The picture with alpha 0 where its alpha is `threshold` or less, or its own transparency makes it so, and
/// 255 elsewhere; 24 bits where all of it is opaque. Null when memory is exhausted.
Picture with_sharp_alpha(const Picture& picture, std::span<const std::uint8_t> transparency,
                         std::uint32_t threshold);

}  // namespace vellum
