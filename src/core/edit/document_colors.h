// The header of a still or animated PNG, and the chunks whose meaning it rules, made to fit pictures.
#pragma once

#include <vector>

#include "core/model/document.h"

namespace vellum {

/// Makes the picture's size and form that of a PNG header: size, depth 1, 4 or 8, color type; for an indexed
/// picture the PLTE, which is replaced or made where it has other colors. tRNS, bKGD, hIST and sBIT that mean
/// something else then are removed. The caret stays on its entry.
void header_take_picture(DocumentWindow& window, const Picture& picture);

/// The header of a still picture gets the picture's size alone.
void header_take_size(DocumentWindow& window, const Picture& picture);

/// What the pictures of a document hold now.
struct DocumentColors {
  std::uint8_t colorType = 6;  ///< of the PNG standard
  std::uint8_t bitDepth = 8;
  Palette palette{};  ///< of color type 3
  std::uint32_t colors = 0;
  std::vector<std::uint8_t> transparency = {};  ///< payload of tRNS; empty: there is none
};

/// Makes IHDR, PLTE and tRNS say so. The bKGD keeps its color, or the nearest to it; hIST and sBIT go where
/// they would mean something else. The caret stays on its entry.
void put_document_colors(DocumentWindow& window, const DocumentColors& colors);

/// Makes bKGD, BACK or the WebP header say this background, 0x00BBGGRR. A palette gives the nearest that it
/// has.
void put_document_background(DocumentWindow& window, Colour color);

}  // namespace vellum
