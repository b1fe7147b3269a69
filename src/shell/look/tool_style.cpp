#include "shell/look/tool_style.h"

#include <QPainter>
#include <QStyleOption>
#include <algorithm>

#include "configuration/shell_settings.h"
#include "shell/look/style.h"

namespace vellum {
namespace {

/// One way to draw a button: how round its corners are, and whether it has an edge.
struct ButtonLook {
  qreal radius;
  double edge;  ///< share of the text's color in its edge; 0: none
};

constexpr ButtonLook kLooks[] = {{0.5, 0.45}, {5, 0.22}, {9, 0}};
constexpr double kLit = 0.12, kPressed = 0.26;  // share of the accent in the ground

}  // namespace

ToolStyle::ToolStyle(QObject* parent) : ProgramStyle(theme_in_force()) { setParent(parent); }

void ToolStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                              const QWidget* widget) const {
  if (element != PE_PanelButtonTool) return ProgramStyle::drawPrimitive(element, option, painter, widget);
  const bool pressed = option->state & (State_Sunken | State_On);
  const bool focused = option->state & State_HasFocus;
  if (!pressed && !focused && settings::LiveButtons == 0) return;
  if (theme() && draw_theme_part(*theme(), ThemePart::Tool, *painter, option->rect, theme_state(*option), {},
                                 widget ? widget->property(kCommandProperty).toInt() : 0)
                     .drawn)
    return;
  const ButtonLook& look = kLooks[std::clamp(settings::SoftButtons, 0, 2)];
  const QColor window = option->palette.color(QPalette::Window);
  const QColor accent = QColor::fromRgb(style::kAccent);
  painter->save();
  painter->setRenderHint(QPainter::Antialiasing);
  const QColor edge = style::between(window, option->palette.color(QPalette::WindowText), look.edge);
  painter->setPen(focused ? QPen(accent, 1.5) : look.edge > 0 ? QPen(edge) : QPen(Qt::NoPen));
  painter->setBrush(style::between(window, accent, pressed ? kPressed : kLit));
  painter->drawRoundedRect(QRectF(option->rect).adjusted(1, 1, -1, -1), look.radius, look.radius);
  painter->restore();
}

}  // namespace vellum
