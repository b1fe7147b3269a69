// The ways in which a frame can make a canvas of what lies there.
#pragma once

#include <vector>

#include "image/picture_operations.h"
#include "operations/pixel_form.h"

namespace vellum {

/// A frame as it may be written.
struct Way {
  Picture picture = {};  ///< null when memory is exhausted
  PictureRect rect{};
  bool over = false;
  bool clears = false;   ///< all of the canvas in front of it (MNG)
  std::size_t cost = 0;  ///< as estimated_bytes; 0: nobody has asked
};

/// How many bytes the picture will take, more or less: of a larger one some bands are packed. Never 0.
std::size_t estimated_bytes(const PixelForm& form, const Picture& picture);

/// Canvases are pictures of 32 bits and one size, whose clear pixels are 0. At least one pixel.
PictureRect changed_rect(const Picture& ground, const Picture& canvas);
/// What is not clear in a part of a canvas; empty where all is.
PictureRect filled_rect(const Picture& canvas, const PictureRect& part);
std::size_t rect_area(const PictureRect& rect);
/// Whether a part of the canvas, or all of it, is opaque.
bool is_opaque_part(const Picture& canvas, const PictureRect& rect);

/// A part of a canvas as a picture of the form. Pixels that are the same on the `ground`, where one is given,
/// are clear.
Picture part_of(const Picture& canvas, const PictureRect& rect, const PixelForm& form, const Picture* ground);

/// What the format lets a frame do.
enum class WayRule {
  Replaces,  ///< lie over what is there or take its place
  LiesOver,  ///< lie over it; over a clear canvas, or opaque, it takes its place
};
/// The ways to make the canvas of this ground, which is all `clear` or isn't. Maybe none.
std::vector<Way> ways_on(const Picture& ground, bool clear, const Picture& canvas, const PixelForm& form,
                         WayRule rule);

}  // namespace vellum
