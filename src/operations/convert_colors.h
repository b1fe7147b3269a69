// All images of a document in another color type.
#pragma once

#include "base/fields.h"
#include "base/host.h"
#include "core/model/document.h"
#include "image/palette_from_pictures.h"
#include "image/png_header.h"

namespace vellum {

struct ColorConversion {
  std::uint8_t colorType = 6;  ///< of the PNG standard: 0, 2, 3, 4 or 6
  std::uint8_t bitDepth = 0;   ///< of types 0 and 3, and the header of a still PNG; 0: the least that will do
  PaletteColors palette{};     ///< of type 3; without colors one is computed from all images
  std::uint32_t most = 256;    ///< colors of a palette that is computed
  PaletteMethod method{};      ///< of that
  bool dither = false;
  int threshold = 0;     ///< with two colors: grey from here on (1 to 255) is white; 0: the nearest color
  int alphaLevel = 255;  ///< type 6: alpha of images that have no transparency
};

/// Two colors, black and white. Dithering finds a threshold of its own.
ColorConversion black_and_white(int threshold, bool dither);

/// The values of the row "palette" for these colors; the others are those of the settings.
FieldValues palette_values(std::span<const Field> fields, const PaletteColors& colors);

/// Converts every image, and IHDR, PLTE, tRNS and bKGD with them. What a form can't hold of transparency is
/// composed over the document's background, an animation as whole canvases; a palette keeps one entry for it
/// (alpha below 128). WebP holds all of it as 24 or 32 bits. Makes the closing calls and takes no undo level.
/// False, with the document as it was, when it has no image, a picture is lost, memory is exhausted or the
/// user stopped it.
bool convert_colors(DocumentWindow& window, const ColorConversion& conversion, Host& host);

/// One picture in true color so converted, as a preview shows it: over the background, 0x00BBGGRR, or with
/// what a palette can keep of its transparency. A palette must be given.
Picture convert_picture(const Picture& picture, const ColorConversion& conversion, Colour background);

/// What an edited IHDR says.
ColorConversion header_conversion(const PngHeader& wanted);
bool convert_to_header(DocumentWindow& window, const PngHeader& wanted, Host& host);

}  // namespace vellum
