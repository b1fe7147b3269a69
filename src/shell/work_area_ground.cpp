#include "shell/work_area_ground.h"

#include <QDateTime>
#include <QFileInfo>
#include <QLinearGradient>
#include <QPixmap>
#include <QRadialGradient>

#include "configuration/shell_settings.h"
#include "image/graphic_file.h"
#include "shell/picture_image.h"
#include "shell/style.h"
#include "shell/text.h"

namespace vellum {
namespace {

enum Ground { kDesktop, kFirstShade, kFirstPattern = 7, kPlain = 13, kImage = 14 };

constexpr double kShade = 0.45;    // how much darker a shade ends
constexpr double kPattern = 0.16;  // how much darker a pattern is drawn

QColor plain_color() {
  const int color = settings::MDIClientColor;
  return QColor(color & 0xFF, color >> 8 & 0xFF, color >> 16 & 0xFF);
}

/// The points, as parts of the area, between which a shade goes.
constexpr struct {
  QPointF from, to;
} kShades[] = {{{0, 0}, {0, 1}}, {{0, 1}, {0, 0}}, {{0, 0}, {1, 0}}, {{1, 0}, {0, 0}}, {{0, 0}, {1, 1}}};

constexpr Qt::BrushStyle kPatterns[] = {Qt::Dense6Pattern, Qt::Dense4Pattern, Qt::HorPattern,
                                        Qt::VerPattern,    Qt::FDiagPattern,  Qt::DiagCrossPattern};

QPointF place(const QRect& area, QPointF part) {
  return {area.left() + part.x() * area.width(), area.top() + part.y() * area.height()};
}

void paint_shade(QPainter& painter, const QRect& area, int number) {
  const QColor light = plain_color(), dark = style::between(light, Qt::black, kShade);
  if (number < static_cast<int>(std::size(kShades))) {
    QLinearGradient gradient(place(area, kShades[number].from), place(area, kShades[number].to));
    gradient.setStops({{0, light}, {1, dark}});
    return painter.fillRect(area, gradient);
  }
  QRadialGradient gradient(area.center(), std::max(area.width(), area.height()) * 0.7);
  gradient.setStops({{0, light}, {1, dark}});
  painter.fillRect(area, gradient);
}

void paint_pattern(QPainter& painter, const QRect& area, int number) {
  painter.fillRect(area, plain_color());
  painter.fillRect(area, QBrush(style::between(plain_color(), Qt::black, kPattern), kPatterns[number]));
}

/// Read again when the name or the file's time changes.
const QPixmap& ground_image() {
  static QPixmap image;
  static std::pair<QString, QDateTime> read;
  const QFileInfo file(to_qt(settings::MDIClientImage));
  const std::pair now(file.filePath(), file.lastModified());
  if (now == read) return image;
  read = now;
  image = {};
  if (!file.isFile()) return image;
  if (const Picture picture = GraphicFileRead(file.filePath().toStdString()))
    image = QPixmap::fromImage(image_of_picture(picture));
  return image;
}

/// As large as covers the area, its middle in the middle.
void paint_image(QPainter& painter, const QRect& area) {
  painter.fillRect(area, plain_color());
  const QPixmap& image = ground_image();
  if (image.isNull()) return;
  QRect place(QPoint(), image.size().scaled(area.size(), Qt::KeepAspectRatioByExpanding));
  place.moveCenter(area.center());
  painter.setRenderHint(QPainter::SmoothPixmapTransform);
  painter.drawPixmap(place, image);
}

}  // namespace

void paint_ground(QPainter& painter, const QRect& area, const QPalette& palette) {
  const int ground = settings::MDIClientBackground;
  if (ground == kDesktop) return painter.fillRect(area, style::work_area_colour(palette));
  if (ground == kImage) return paint_image(painter, area);
  if (ground >= kFirstShade && ground < kFirstPattern)
    return paint_shade(painter, area, ground - kFirstShade);
  if (ground >= kFirstPattern && ground < kPlain) return paint_pattern(painter, area, ground - kFirstPattern);
  painter.fillRect(area, plain_color());
}

}  // namespace vellum
