// A canvas whose channels have 16 bits: many frames are laid on it, one over the other, and it does not
// drift.
#pragma once

#include "image/picture_operations.h"

namespace vellum {

/// A channel is 256 * `shown` + `rest`, which stands for the value (that number - 128) / 256: `shown` is the
/// canvas rounded to 8 bits, a picture as it stands, and `rest` holds what rounding took, 128 for nothing.
/// `shown` has 24 bits, or 32 with colors that are multiplied by their alpha. `rest` has the same size and
/// depth; it is null while no pixel has a rest.
struct FineCanvas {
  Picture shown, rest;
};

/// The pixels of `colour` (alpha in 32 bits is its upper byte, colors multiplied by it), clipped.
void fine_fill(FineCanvas& canvas, const PictureRect& rect, Colour colour);
/// The part in this rectangle, and the part put back there; clipped.
FineCanvas fine_crop(const FineCanvas& canvas, const PictureRect& rect);
bool fine_put(FineCanvas& canvas, const PictureRect& rect, const FineCanvas& part);

/// Lays a picture of 24 or 32 bits at the left and top of `rect`, which has its size, over what is there:
/// channels become (source * alpha + there * (255 - alpha)) / 255 to 2 / 256 of a level; opaque and clear
/// pixels are exact. False, with the canvas as it was, when memory is exhausted.
bool fine_lay(FineCanvas& canvas, const PictureRect& rect, const Picture& source);
/// The same over this color, in place of what is there. `once`: no rests are kept, as nothing is laid over
/// it.
bool fine_replace(FineCanvas& canvas, const PictureRect& rect, const Picture& source, Colour ground,
                  bool once = false);

/// 32 bits with straight alpha from a canvas of 32 bits; null when memory is exhausted.
Picture straight_picture(const FineCanvas& canvas);
/// The same in a picture that was made of this canvas before the part in `rect`, clipped, changed. False when
/// memory is exhausted.
bool straighten_part(Picture& picture, const FineCanvas& canvas, const PictureRect& rect);

}  // namespace vellum
