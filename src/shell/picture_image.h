// Pictures as Qt draws them.
#pragma once

#include <QImage>

#include "image/picture.h"

namespace vellum {

/// An image over the picture's own rows, bottom row first (so it stands on its head), without a copy; only
/// 4-bit pictures are unpacked. It must not outlive the picture. Null for a null picture.
QImage upside_down_image(const Picture& picture);

/// The picture scaled to `size` (in device pixels), upright. Whole enlargements keep hard edges.
QImage scaled_image(const Picture& picture, QSize size);

}  // namespace vellum
