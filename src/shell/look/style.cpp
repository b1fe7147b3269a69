#include "shell/look/style.h"

#include <QApplication>
#include <QFontMetrics>
#include <cmath>

namespace vellum::style {
namespace {

constexpr int kTallestListLine = 18;  // a row of 24 pixels less 4 above and the caret's bracket below

constexpr QRgb kFactInk = 0xFF4A6A8C;  // quieter than a label, and another color than the text

constexpr double kLeastOnHighlight = 2.0;  // what desktops themselves are content with

double linear(double channel) {
  return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& colour) {
  return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}

QFont sans(int points) {
  QFont font = QApplication::font();
  font.setFamilies({QStringLiteral("Arial"), QApplication::font().family()});
  font.setPointSize(points);
  return font;
}

}  // namespace

QFont list_font() {
  QFont font = sans(9);
  for (int pixels = kTallestListLine; QFontMetrics(font).height() > kTallestListLine; --pixels)
    font.setPixelSize(pixels);
  return font;
}

QFont heading_font() { return sans(14); }

double contrast(const QColor& a, const QColor& b) {
  const auto [dark, light] = std::minmax({luminance(a), luminance(b)});
  return (light + 0.05) / (dark + 0.05);
}

QColor between(const QColor& from, const QColor& to, double share) {
  const auto mix = [share](int a, int b) { return static_cast<int>(std::lround(a + (b - a) * share)); };
  return QColor(mix(from.red(), to.red()), mix(from.green(), to.green()), mix(from.blue(), to.blue()));
}

QColor readable_on(const QColor& wanted, const QColor& ground, double least) {
  const QColor away = contrast(Qt::black, ground) > contrast(Qt::white, ground) ? Qt::black : Qt::white;
  constexpr int kSteps = 20;
  for (int step = 0; step < kSteps; ++step) {
    const QColor colour = between(wanted, away, static_cast<double>(step) / kSteps);
    if (contrast(colour, ground) >= least) return colour;
  }
  return away;
}

RowColours row_colours(const QPalette& palette, bool selected) {
  if (!selected)
    return {Qt::white, Qt::black, readable_on(palette.color(QPalette::Disabled, QPalette::Text), Qt::white),
            readable_on(QColor::fromRgb(kFactInk), Qt::white)};
  const QColor ground = palette.color(QPalette::Active, QPalette::Highlight);
  const QColor label = contrast(Qt::white, ground) >= kLeastOnHighlight ? Qt::white : Qt::black;
  const QColor button = palette.color(QPalette::Active, QPalette::Button);
  // On dark desktops buttons are dark: beside a white label the text is a weaker white instead.
  const bool fits = contrast(button, ground) >= kLeastOnHighlight && luminance(button) > luminance(ground);
  return {ground, label, fits ? button : between(label, ground, 0.15), label};
}

QColor bracket_colour(const QPalette& palette) {
  const QColor highlight = palette.color(QPalette::Active, QPalette::Highlight);
  return highlight.red() > highlight.blue() ? Qt::blue : Qt::red;
}

QColor work_area_colour(const QPalette& palette) {
  const QColor window = palette.color(QPalette::Window);
  return between(window, Qt::black, window.lightness() > 127 ? 0.10 : 0.25);
}

}  // namespace vellum::style
