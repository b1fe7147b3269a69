// All images of a document in another size.
#pragma once

#include "base/fields.h"
#include "base/host.h"
#include "core/model/document.h"
#include "image/resample_filter.h"

namespace vellum {

struct ResizeAnimation {
  std::uint32_t width = 0, height = 0;  ///< of the canvas, in pixels
  ResampleFilter filter = ResampleFilter::Automatic;
  double blur = 1;           ///< stretches the filter: above 1 blurs, below 1 sharpens
  bool keepPalette = false;  ///< indexed images stay what they are: each pixel takes the nearest color
};

/// A side scaled by per cent: rounded, at least 1 pixel.
std::uint32_t scaled_side(std::uint32_t side, double percent);
/// The other side of a canvas whose `side` becomes `scaled` and whose proportions stay.
std::uint32_t proportional_side(std::uint32_t scaled, std::uint32_t side, std::uint32_t other);

/// What the fields of the operation ask for of a document.
ResizeAnimation resize_of(const FieldValues& values, const DocumentWindow& window);

/// Whether filtering would make colors that the document's palette lacks. Greys stay grey without it.
bool resizing_needs_true_color(const DocumentWindow& window, const ResizeAnimation& resize);

/// Scales the canvas and the edges of every frame, so that neighbours still meet; delays, disposal and
/// blending stay. A frame that shows its own pixels is that part of the resized canvas; one that the canvas
/// shines through is resized alone. Indexed images that are filtered become true color (grey, where all of
/// them are), with alpha where the document has transparency, unless their palette is kept. Clips of an MNG
/// go along. Makes the closing calls and takes no undo level. False, with the document as it was, when it has
/// no image, a picture is lost, the size is beyond the limits, memory is exhausted or the user stopped it.
bool resize_animation(DocumentWindow& window, const ResizeAnimation& resize, Host& host);

}  // namespace vellum
