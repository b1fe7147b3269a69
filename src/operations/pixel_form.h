// The smallest form that holds all pixels of an animation: color type, depth, palette.
#pragma once

#include <optional>
#include <unordered_map>
#include <vector>

#include "core/edit/document_colors.h"
#include "image/picture.h"
#include "image/png_header.h"

namespace vellum {

/// A pixel as rows of 32 bits hold it: blue lowest, alpha highest. 0 for all that is clear.
using Pixel = std::uint32_t;

constexpr Pixel alpha_of_pixel(Pixel pixel) { return pixel >> 24; }

/// What all pixels have in common.
struct PixelStock {
  std::unordered_map<Pixel, std::uint32_t> few;                      ///< colors, until they are more than 256
  std::vector<bool> used = std::vector<bool>(std::size_t{1} << 24);  ///< colors of opaque pixels
  bool partial = false;  ///< something has alpha between 0 and 255
  bool grey = true;      ///< everything is
  bool clear = false;    ///< something has alpha 0

  /// A picture of 32 bits whose clear pixels are 0. Once nothing can matter any more it is not looked at.
  void add(const Picture& canvas);
  /// Of true color with alpha, whatever else there is.
  bool settled() const { return few.size() > 256 && partial && !grey; }
};

/// The form in which all frames are written.
struct PixelForm {
  DocumentColors colors;  ///< what the document says
  std::uint32_t bits = 32;
  std::unordered_map<Pixel, std::uint32_t> indexes = {};  ///< of a palette
  std::optional<Pixel> key = {};                          ///< of 24 bits: the color that is transparent
  bool holes = true;                                      ///< something can be transparent

  PngHeader header(std::uint32_t width, std::uint32_t height) const {
    return {.width = width, .height = height, .bitDepth = colors.bitDepth, .colorType = colors.colorType};
  }
};

/// `animated`: frames may leave out what is there.
PixelForm smallest_form(const PixelStock& stock, bool animated);

}  // namespace vellum
