#include "image/png_form.h"

#include <algorithm>

#include "image/picture_operations.h"
#include "image/stored_image.h"

namespace vellum {
namespace {

/// The smallest of the depths 1, 2, 4, 8 that is at least `wanted` and tells `values` values apart.
std::uint8_t depth_for(std::uint32_t values, std::uint8_t wanted) {
  std::uint8_t depth = 1;
  while (depth < 8 && (depth < wanted || values > 1u << depth)) depth = static_cast<std::uint8_t>(depth * 2);
  return depth;
}

PngHeader indexed_form(const Picture& picture, PngHeader wanted, std::uint32_t palette_entries) {
  if (wanted.colorType == 0 && wanted.bitDepth == 16) return wanted;
  const std::uint32_t entries = wanted.colorType == 3 ? std::min(palette_entries, 256u) : 0;
  wanted.bitDepth = depth_for(std::max(largest_index(picture) + 1, entries), wanted.bitDepth);
  return wanted;
}

PngHeader color_form(const Picture& picture, PngHeader wanted) {
  const bool alpha = picture.bits() == 32;
  const auto by_bits = static_cast<std::uint8_t>(alpha ? 6 : 2);
  // True color under a paletted header is the one case whose depth says nothing about samples.
  wanted.bitDepth = wanted.bitDepth == 16 && wanted.colorType != 3 ? 16 : 8;
  if (wanted.colorType == 6 || wanted.colorType == by_bits) return wanted;
  const PictureContent content = picture_content(picture);
  const bool fits = wanted.colorType == 0   ? content.grey && content.opaque
                    : wanted.colorType == 4 ? content.grey
                                            : wanted.colorType == 2 && content.opaque;
  if (!fits) wanted.colorType = by_bits;
  return wanted;
}

std::uint32_t largest_of_rows(const Picture& picture) {
  const std::uint32_t bits = picture.bits(), mask = (1u << bits) - 1;
  std::uint32_t largest = 0;
  for (std::uint32_t y = 0; y < picture.height() && largest < mask; ++y) {
    const std::uint8_t* row = picture.row(y);
    if (bits == 8)
      largest = std::max<std::uint32_t>(largest, *std::max_element(row, row + picture.width()));
    else
      for (std::size_t x = 0; x < picture.width(); ++x)
        largest = std::max(largest, row[x * bits / 8] >> (8 - bits - x * bits % 8) & mask);
  }
  return largest;
}

}  // namespace

PictureContent picture_content(const Picture& picture) {
  PictureContent content;
  const std::size_t bytes = picture.bits() / 8, width = picture.width();
  for (std::uint32_t y = 0; y < picture.height() && (content.grey || content.opaque); ++y) {
    const std::uint8_t* row = picture.row(y);
    unsigned differences = 0, alpha = 255;
    for (std::size_t x = 0; x < width; ++x) {
      const std::uint8_t* pixel = row + bytes * x;
      differences |= static_cast<unsigned>((pixel[0] ^ pixel[1]) | (pixel[1] ^ pixel[2]));
      if (bytes == 4) alpha &= pixel[3];
    }
    content.grey = content.grey && differences == 0;
    content.opaque = content.opaque && alpha == 255;
  }
  return content;
}

std::uint32_t largest_index(const Picture& picture) {
  if (picture.bits() > 8) return 0;
  const auto stored = stored_image_of(picture.handle());
  if (stored && stored->largest_index() >= 0) return static_cast<std::uint32_t>(stored->largest_index());
  const std::uint32_t largest = largest_of_rows(picture);
  if (stored) stored->keep_largest_index(largest);
  return largest;
}

PngForm png_form(const Picture& picture, const PngHeader& wanted, std::uint32_t palette_entries) {
  // Where it came from says so without a look at its pixels.
  if (const auto stored = stored_image_of(picture.handle());
      stored && stored->exact() && stored->header() == wanted &&
      (wanted.colorType != 3 || palette_entries <= 1u << wanted.bitDepth))
    return {wanted, picture};
  PngForm form{wanted, picture};
  if (picture.width() != wanted.width || picture.height() != wanted.height)
    form.picture = PictureExtendCanvas(picture, wanted.width, wanted.height, 0, 0, 0);
  const bool keeps_index = wanted.colorType == 0 || wanted.colorType == 3;
  if (form.picture && form.picture.bits() <= 8 && !keeps_index)
    form.picture = PictureToTrueColorAlpha(form.picture);
  if (!form.picture) return form;
  form.header = form.picture.bits() <= 8 ? indexed_form(form.picture, wanted, palette_entries)
                                         : color_form(form.picture, wanted);
  return form;
}

}  // namespace vellum
