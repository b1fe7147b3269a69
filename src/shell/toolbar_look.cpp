#include "shell/toolbar_look.h"

#include <QToolBar>
#include <QToolButton>
#include <algorithm>

#include "configuration/shell_settings.h"
#include "shell/style.h"

namespace vellum {
namespace {

enum Look { kClassic, kSoft, kFlat };

struct Shades {
  QColor edge, live, pressed;
};

Shades shades_of(const QPalette& palette) {
  const QColor window = palette.color(QPalette::Window), text = palette.color(QPalette::WindowText);
  return {style::between(window, text, 0.28), style::between(window, QColor::fromRgb(style::kAccent), 0.18),
          style::between(window, QColor::fromRgb(style::kAccent), 0.34)};
}

/// Classic buttons have an edge each, soft ones round corners and an edge under the pointer, flat ones none.
QString sheet_of(Look look, bool live, const QPalette& palette) {
  const Shades shades = shades_of(palette);
  const QString clear = QStringLiteral("transparent");
  const QString edge = look == kClassic ? shades.edge.name() : clear;
  const QString live_edge = live && look != kFlat ? shades.edge.name() : edge;
  return QStringLiteral(
             "QToolButton { border: 1px solid %1; border-radius: %2px; padding: 3px; background: "
             "transparent; }"
             "QToolButton:hover:enabled { border-color: %3; background: %4; }"
             "QToolButton:pressed:enabled { background: %5; }"
             "QToolButton[popupMode=\"2\"] { padding-right: 12px; }")
      .arg(edge)
      .arg(look == kSoft      ? 5
           : look == kClassic ? 2
                              : 0)
      .arg(live_edge, live ? shades.live.name() : clear, shades.pressed.name());
}

}  // namespace

void apply_toolbar_look(QMainWindow& window) {
  const Look look = static_cast<Look>(std::clamp(settings::SoftButtons, int{kClassic}, int{kFlat}));
  const QString sheet = sheet_of(look, settings::LiveButtons != 0, window.palette());
  for (QToolBar* bar : window.findChildren<QToolBar*>(QString(), Qt::FindDirectChildrenOnly))
    if (bar->styleSheet() != sheet) bar->setStyleSheet(sheet);
}

}  // namespace vellum
