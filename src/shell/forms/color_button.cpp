#include "shell/forms/color_button.h"

#include <QColorDialog>
#include <QEvent>
#include <QPainter>

#include "base/fields.h"
#include "image/palette_from_pictures.h"
#include "shell/look/text.h"
#include "shell/widgets/color_dialog.h"

namespace vellum {
namespace {

constexpr QSize kSwatch(48, 16);
constexpr int kSquare = 4;  // of the checkered ground behind a translucent color

QColor qt_of(Colour color, bool alpha) {
  return QColor(red_of(color), green_of(color), blue_of(color), alpha ? alpha_of(color) : 255);
}

/// The program's own dialog knows no alpha; the desktop's takes its place then.
std::optional<Colour> ask_user(QWidget* parent, const Picture& picture, Colour color, bool alpha) {
  if (!alpha)
    return ask_for_color(parent, {.color = color,
                                  .picture = picture,
                                  .palette = picture ? palette_of_picture(picture) : PaletteColors(),
                                  .title = {}});
  const QColor chosen =
      QColorDialog::getColor(qt_of(color, alpha), parent, {}, QColorDialog::ShowAlphaChannel);
  if (!chosen.isValid()) return std::nullopt;
  const auto part = [](int value) { return static_cast<std::uint32_t>(value); };
  return make_colour(part(chosen.red()), part(chosen.green()), part(chosen.blue()), part(chosen.alpha()));
}

QPixmap swatch(const QColor& color, const QColor& edge, qreal ratio) {
  QPixmap pixmap(kSwatch * ratio);
  pixmap.setDevicePixelRatio(ratio);
  pixmap.fill(Qt::white);
  QPainter painter(&pixmap);
  for (int y = 0; y < kSwatch.height(); y += kSquare)
    for (int x = y % (2 * kSquare); x < kSwatch.width(); x += 2 * kSquare)
      painter.fillRect(x, y, kSquare, kSquare, Qt::lightGray);
  painter.fillRect(QRect(QPoint(), kSwatch), color);
  painter.setPen(edge);
  painter.drawRect(0, 0, kSwatch.width() - 1, kSwatch.height() - 1);
  return pixmap;
}

}  // namespace

ColorButton::ColorButton(bool alpha, QWidget* parent) : QPushButton(parent), alpha_(alpha) {
  setIconSize(kSwatch);
  setAutoDefault(false);
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  connect(this, &QPushButton::clicked, this, &ColorButton::choose);
  show_color();
}

void ColorButton::set_color(Colour color) {
  color_ = color;
  show_color();
}

void ColorButton::set_picture(const Picture& picture) { picture_ = picture; }

void ColorButton::changeEvent(QEvent* event) {
  QPushButton::changeEvent(event);
  if (event->type() == QEvent::PaletteChange) show_color();
}

void ColorButton::choose() {
  const auto chosen =
      chooseColor ? chooseColor(this, color_, alpha_) : ask_user(this, picture_, color_, alpha_);
  if (!chosen) return;
  set_color(*chosen);
  emit this->chosen();
}

void ColorButton::show_color() {
  const Field field{.type = FieldType::Color, .most = alpha_ ? 0xFFFFFFFF : 0xFFFFFF};
  setText(to_qt(field_value_text(field, std::int64_t{color_})));
  setIcon(swatch(qt_of(color_, alpha_), palette().color(QPalette::WindowText), devicePixelRatioF()));
}

}  // namespace vellum
