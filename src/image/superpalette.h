// The superpalette: one palette for the frames of an animation, gathered from one after the other.
#pragma once

#include <functional>

#include "base/host.h"
#include "image/palette_file.h"
#include "image/quantize.h"

namespace vellum {

/// Holds counts and no pictures, so frames may be asked for one at a time.
class Superpalette {
 public:
  /// Counts the pixels of a picture of any depth by the colors that they show. Those of 32 bits with little
  /// alpha (see kLeastOpaque) count as none. A null picture counts nothing. Throws std::bad_alloc.
  void add(const Picture& picture);
  /// At most `most` (2 to 256) colors by the octree, dark ones first (see sort_by_luminance); black where
  /// none is visible, and a count of 0 without a picture.
  PaletteColors colors(std::uint32_t most) const;

 private:
  ColorOctree octree_;
  bool any_ = false;
};

/// The same of `count` pictures that are asked for in their order; a null one ends it. `host` hears of the
/// progress. A count of 0 where there is none, the user stopped it or memory is exhausted.
PaletteColors superpalette(std::size_t count, const std::function<Picture(std::size_t)>& picture,
                           std::uint32_t most, Host& host);

/// Of 17 sorted colors or more, a first one that is nearly black (all channels below 17) becomes black and a
/// last one that is nearly white (all from 240 on) white.
void improve_ends(PaletteColors& colors);

}  // namespace vellum
