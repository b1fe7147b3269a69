// What the program wants of every style.
#pragma once

#include <QProxyStyle>

#include "shell/look/theme_look.h"

namespace vellum {

/// The desktop's style, without small pictures on the buttons of dialogs: words are enough there. Secondary
/// text can be read on every palette that a desktop sets. The cross on a tab is drawn with lines, as quiet as
/// the tab. With a theme its colors, sizes and parts, and plain shapes in its colors for what it doesn't
/// draw.
class ProgramStyle : public QProxyStyle {
  Q_OBJECT
 public:
  explicit ProgramStyle(ThemeInForce theme = {});

  int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                QStyleHintReturn* data) const override;
  using QProxyStyle::polish;
  void polish(QPalette& palette) override;
  void polish(QWidget* widget) override;
  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
  void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                   const QWidget* widget) const override;
  void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                          const QWidget* widget) const override;
  QRect subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl part,
                       const QWidget* widget) const override;
  int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override;
  QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                         const QWidget* widget) const override;

 protected:
  const Theme* theme() const { return theme_.get(); }

 private:
  ThemeInForce theme_;
  mutable bool hasText_ = false;  ///< the theme has drawn the text of the button at hand
};

}  // namespace vellum
