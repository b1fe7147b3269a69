// How the buttons of the toolbar look: calm until the pointer is on them, and as soft as the user wants them.
#pragma once

#include <QProxyStyle>

namespace vellum {

/// Draws the ground of tool buttons by `SoftButtons` and `LiveButtons`, everything else as the desktop does.
class ToolStyle : public QProxyStyle {
  Q_OBJECT
 public:
  explicit ToolStyle(QObject* parent);

  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
};

}  // namespace vellum
