// One palette for all frames of a GIF, gathered from one picture after the other.
#pragma once

#include <optional>
#include <variant>

#include "exchange/gif_writer.h"
#include "image/dither.h"
#include "image/palette_match.h"
#include "image/quantize.h"

namespace vellum {

/// Colors of true color pictures; pixels of 32 bits whose alpha is `threshold` or less are holes and count as
/// none. Throws std::bad_alloc.
class GifPalette {
 public:
  explicit GifPalette(std::uint32_t threshold) : counted_{0xFFFFFF, true, threshold + 1} {}
  void add(std::span<const Picture> pictures);
  /// At most 256 colors, or 255 and one more where something is `transparent`: exactly those of the pictures
  /// where they are no more, else the octree's; `best`: refined.
  GifColors colors(bool transparent, Colour mask, bool best = false) const;
  /// Whether that holds all colors.
  bool is_exact(bool transparent) const { return few_ && count_ <= (transparent ? 255u : 256u); }

 private:
  void add_exact(const Picture& picture);

  CountedColors counted_;
  Palette exact_{};
  std::uint32_t count_ = 0;
  bool few_ = true;
  ColorOctree octree_;
};

/// Takes one true color picture after the other to the colors of a GIF, each pixel to the nearest one or with
/// its error spread, holes (as above) to the transparent entry, which is the last. `can_match` says for which
/// colors.
class GifMatcher {
 public:
  GifMatcher(const GifColors& colors, std::uint32_t threshold, bool dither);
  static bool can_match(const GifColors& colors);
  /// One byte a pixel, rows from the top, until the next call. What the last picture had is not matched anew.
  const std::vector<std::uint8_t>& match(const Picture& picture);

 private:
  void put_holes(const Picture& picture, std::uint32_t y);

  std::variant<NearestEntries, CornerEntries> entries_;
  std::optional<Ditherer> ditherer_;
  std::optional<std::uint8_t> transparent_;
  std::uint32_t threshold_;
  Picture last_;
  std::vector<std::uint8_t> indexes_;
};

/// The picture with alpha 0 where its alpha is `threshold` or less, or its own transparency makes it so, and
/// 255 elsewhere; 24 bits where all of it is opaque. Null when memory is exhausted.
Picture with_sharp_alpha(const Picture& picture, std::span<const std::uint8_t> transparency,
                         std::uint32_t threshold);

}  // namespace vellum
