// What stands behind the document windows, as the user chose it.
#pragma once

#include <QPainter>
#include <QPalette>
#include <span>

#include "base/fields.h"

namespace vellum {

/// The choices of `MDIClientBackground`, in its order: the desktop's color, gradients and patterns in
/// `MDIClientColor`, that color by itself, and a picture.
std::span<const FieldChoice> background_choices();

class WorkBackground {
 public:
  /// Fills `area`, the whole of the ground, by the settings as they are now.
  void paint(QPainter& painter, const QRect& area, const QPalette& palette);

 private:
  const QPixmap& picture(QSize size);

  QString path_;   ///< of the picture that was read last, readable or not
  QImage image_;   ///< null where it could not be read
  QPixmap shown_;  ///< as it fills the area
};

}  // namespace vellum
