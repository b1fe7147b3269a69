#include "shell/widgets/work_background.h"

#include <QDir>
#include <QStandardPaths>
#include <algorithm>
#include <array>

#include "configuration/shell_settings.h"
#include "core/files/first_picture.h"
#include "shell/look/picture_image.h"
#include "shell/look/style.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr int kPlain = 13, kPicture = 14;
constexpr double kDarker = 0.35, kLighter = 0.25, kLine = 0.14;

/// A gradient from corner to corner of the ground, in shares of its size, or lines and dots over it.
struct Pattern {
  QPointF from, to;
  Qt::BrushStyle lines = Qt::NoBrush;
};

constexpr std::array<Pattern, 12> kPatterns = {{{{0, 0}, {0, 1}},
                                                {{0, 1}, {0, 0}},
                                                {{0, 0}, {1, 0}},
                                                {{0, 0}, {1, 1}},
                                                {{}, {}, Qt::HorPattern},
                                                {{}, {}, Qt::VerPattern},
                                                {{}, {}, Qt::CrossPattern},
                                                {{}, {}, Qt::BDiagPattern},
                                                {{}, {}, Qt::FDiagPattern},
                                                {{}, {}, Qt::DiagCrossPattern},
                                                {{}, {}, Qt::Dense6Pattern},
                                                {{}, {}, Qt::Dense4Pattern}}};

constexpr FieldChoice kChoices[] = {
    {0, "Desktop color"},         {1, "Lighter above"}, {2, "Darker above"},  {3, "Lighter at the left"},
    {4, "Lighter in the corner"}, {5, "Lines across"},  {6, "Upright lines"}, {7, "Squares"},
    {8, "Rising lines"},          {9, "Falling lines"}, {10, "Diamonds"},     {11, "Dots"},
    {12, "Fine grain"},           {13, "Color"},        {14, "Image"}};

/// A color of the settings has red in its lowest byte.
QColor chosen_color() {
  const int value = settings::MDIClientColor;
  return QColor(value & 255, value >> 8 & 255, value >> 16 & 255);
}

QPointF place_in(const QRect& area, QPointF share) {
  return area.topLeft() + QPointF(share.x() * area.width(), share.y() * area.height());
}

void paint_pattern(QPainter& painter, const QRect& area, const Pattern& pattern) {
  const QColor color = chosen_color();
  if (pattern.lines != Qt::NoBrush) {
    painter.fillRect(area, color);
    const QColor contrary = color.lightness() > 127 ? Qt::black : Qt::white;
    return painter.fillRect(area, QBrush(style::between(color, contrary, kLine), pattern.lines));
  }
  QLinearGradient gradient(place_in(area, pattern.from), place_in(area, pattern.to));
  gradient.setColorAt(0, style::between(color, Qt::white, kLighter));
  gradient.setColorAt(1, style::between(color, Qt::black, kDarker));
  painter.fillRect(area, gradient);
}

QString picture_path() {
  if (!settings::MDIClientImage.empty()) return to_qt(settings::MDIClientImage);
  const QDir pictures(QStandardPaths::writableLocation(QStandardPaths::PicturesLocation));
  return pictures.filePath(QStringLiteral("Vellumcraft Background.bmp"));
}

}  // namespace

std::span<const FieldChoice> background_choices() { return kChoices; }

const QPixmap& WorkBackground::picture(QSize size) {
  const QString path = picture_path();
  if (path_ != path) {
    path_ = path;
    image_ = image_of_picture(first_picture(to_path(path)).picture);
    shown_ = {};
  }
  if (!image_.isNull() && shown_.size() != size) {
    const QImage scaled = image_.scaled(size, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation);
    const QRect all = scaled.rect();
    shown_ = QPixmap::fromImage(scaled.copy((all.width() - size.width()) / 2,
                                            (all.height() - size.height()) / 2, size.width(), size.height()));
  }
  return shown_;
}

void WorkBackground::paint(QPainter& painter, const QRect& area, const QPalette& palette) {
  const int choice = std::clamp(settings::MDIClientBackground, 0, kPicture);
  if (choice == 0) return painter.fillRect(area, style::work_area_colour(palette));
  if (choice < kPlain) return paint_pattern(painter, area, kPatterns[static_cast<std::size_t>(choice - 1)]);
  painter.fillRect(area, chosen_color());
  if (choice != kPicture) return;
  const double ratio = painter.device()->devicePixelRatioF();
  const QPixmap& shown = picture(area.size() * ratio);
  if (!shown.isNull()) painter.drawPixmap(area, shown);
}

}  // namespace vellum
