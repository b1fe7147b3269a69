// Floyd-Steinberg dithering of true color to a palette.
#pragma once

#include <functional>
#include <memory>
#include <span>

#include "image/picture.h"

namespace vellum {

/// The picture (24 bits; or 32 bits, whose pixels with little alpha neither take an error nor spread one: see
/// kLeastOpaque) with `depth` bits and the first `count` colors of the palette;
/// see DitherPicture. `fast`: colors are matched by their cells. `go_on(row)` is asked at every fourth row,
/// from 0 on; null when it says no or memory is exhausted.
Picture dither_to_palette(const Picture& picture, const Palette& palette, std::uint32_t count,
                          std::uint32_t depth, bool fast, const std::function<bool(std::uint32_t)>& go_on);

/// The same for one picture after the other, on one core, for who has as many pictures as cores: what was
/// found of the palette stays.
class Ditherer {
 public:
  /// Pixels of 32 bits with an alpha below `least_opaque` are those that are passed over.
  Ditherer(const Palette& palette, std::uint32_t count, bool fast, std::uint32_t least_opaque);
  Ditherer(Ditherer&&) noexcept;
  ~Ditherer();
  /// Indexes of a picture of 24 or 32 bits, one byte a pixel, rows from the top, into as many.
  void dither(const Picture& picture, std::span<std::uint8_t> out);

 private:
  struct Work;
  std::unique_ptr<Work> work_;
};

}  // namespace vellum
