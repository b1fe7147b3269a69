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

/// The picture as an image of its own, upright.
QImage image_of_picture(const Picture& picture);

/// An image of another program as a picture: 1 or 8 bits with its color table; 32 bits where some pixel is
/// not opaque; otherwise 24. Null for a null image and beyond the limits of pictures.
Picture picture_of_image(const QImage& image);

}  // namespace vellum
