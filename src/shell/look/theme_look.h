// The theme in force, and the parts that it draws.
#pragma once

#include <QPainter>
#include <QPalette>
#include <memory>

#include "extension/theme.h"

class QStyleOption;

namespace vellum {

/// Null: the desktop's own look.
using ThemeInForce = std::shared_ptr<const Theme>;
ThemeInForce theme_in_force();

/// Gives all windows this look, at once; null: the desktop's own.
void put_theme_in_force(ThemeInForce theme);

/// Puts the look that `ThemeCurrent` names in force, for the start. Why that fails; empty where it doesn't.
/// The desktop's own look stays then.
std::string start_theme(std::span<const std::filesystem::path> folders);

/// A size of the layout, in device-independent pixels; `otherwise` where the theme names none.
int theme_metric(int number, int otherwise);

/// The colors of a theme that names them.
QPalette theme_palette(const Theme& theme);
QColor theme_color(const Theme& theme, int number);

enum class ThemePart { Button, SmallButton, Tool, Toolbar };

/// VELLUM_STATE_... of an option.
std::uint32_t theme_state(const QStyleOption& option);

struct DrawnPart {
  bool drawn = false;  ///< false: the theme doesn't draw it, or has failed
  bool text = false;   ///< the theme has drawn the text as well
};

DrawnPart draw_theme_part(const Theme& theme, ThemePart part, QPainter& painter, const QRect& rect,
                          std::uint32_t state, const QString& text = {}, int command = 0);

/// What the list of themes shows; null when it failed.
QImage theme_sample(const Theme& theme, QSize size, double scale);

}  // namespace vellum
