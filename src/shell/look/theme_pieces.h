// Shapes in the colors of a theme, for what a theme doesn't draw itself: fields, boxes, tabs, bars.
#pragma once

#include <QProxyStyle>
#include <QStyleOption>

#include "shell/look/theme_look.h"

namespace vellum {

/// Of a theme with colors. False: nothing was drawn, the style below does it.
bool draw_theme_primitive(const Theme& theme, QStyle::PrimitiveElement element, const QStyleOption& option,
                          QPainter& painter, const QWidget* widget);
bool draw_theme_control(const Theme& theme, QStyle::ControlElement element, const QStyleOption& option,
                        QPainter& painter);
bool draw_theme_complex(const Theme& theme, const QProxyStyle& style, QStyle::ComplexControl control,
                        const QStyleOptionComplex& option, QPainter& painter, const QWidget* widget);

}  // namespace vellum
