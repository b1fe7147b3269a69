#include "shell/widgets/checkers.h"

#include <QGuiApplication>
#include <QPalette>

namespace vellum {

void paint_checkers(QPainter& painter, const QRect& area, int side, std::optional<bool> wanted) {
  const bool dark = wanted.value_or(QGuiApplication::palette().color(QPalette::Window).lightness() < 128);
  const QColor even(dark ? 0x50 : 0xFF, dark ? 0x50 : 0xFF, dark ? 0x50 : 0xFF);
  const QColor odd(dark ? 0x38 : 0xD0, dark ? 0x38 : 0xD0, dark ? 0x38 : 0xD0);
  QPixmap tile(2 * side, 2 * side);
  tile.fill(even);
  QPainter squares(&tile);
  squares.fillRect(side, 0, side, side, odd);
  squares.fillRect(0, side, side, side, odd);
  squares.end();
  painter.drawTiledPixmap(area, tile);
}

}  // namespace vellum
