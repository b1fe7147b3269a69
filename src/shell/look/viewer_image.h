// Shown frames as images that are painted fast.
#pragma once

#include <QImage>

#include "image/picture.h"

namespace vellum {

/// Puts the picture into `image`, upright, in a format that is painted without a conversion; the memory of an
/// image of that size and format is used again. 32-bit pictures have their colors multiplied by alpha
/// already where `multiplied` says so. Null for a null picture.
void fill_image(QImage& image, const Picture& picture, bool multiplied);

/// A 1-bit picture made smaller as black on white: a pixel of the result is set where all that it covers are.
/// Upright.
QImage black_on_white(const Picture& picture, QSize size);

}  // namespace vellum
