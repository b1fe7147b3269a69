// Which PNG header can hold a picture: the one that is wanted where it can, otherwise the nearest.
#pragma once

#include "image/picture.h"
#include "image/png_header.h"

namespace vellum {

struct PngForm {
  PngHeader header;  ///< what is written
  Picture picture;   ///< what is encoded with it: the given one, or a copy that fits the header
};

/// Fits header and picture to each other without losing a pixel value. The wanted header stays where the
/// picture can be expressed in it; otherwise the smallest change that holds it is made, the bit depth first,
/// then the color type (to 8 bits 3, 24 bits 2, 32 bits 6).
///
/// - Color type 3, and 0 over an indexed picture: the index is the sample; the depth is raised until every
/// index of the
///   picture (and, for type 3, `palette_entries` entries) fits.
/// - Color types 0 and 4 over true color: kept when every pixel is grey (and, for 0, opaque).
/// - Color type 2 over 32 bits: kept when every pixel is opaque.
/// - Color types 2, 4 and 6 over an indexed picture: its colors, through the table.
///
/// A picture of another size than the header's is cropped, or padded with index 0, black or transparency. The
/// picture of the result is null only when memory is exhausted.
PngForm png_form(const Picture& picture, const PngHeader& wanted, std::uint32_t palette_entries);

/// What the pixels of a true-color picture need.
struct PictureContent {
  bool grey = true;    ///< red, green and blue are the same in every pixel
  bool opaque = true;  ///< alpha is 255 in every pixel (of 32 bits)
};
PictureContent picture_content(const Picture& picture);

/// The largest index that an indexed picture uses; 0 above 8 bits.
std::uint32_t largest_index(const Picture& picture);

}  // namespace vellum
