#include "shell/look/program_style.h"

#include <QPalette>

#include "shell/look/style.h"

namespace vellum {

int ProgramStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                            QStyleHintReturn* data) const {
  if (hint == SH_DialogButtonBox_ButtonsHaveIcons) return 0;
  return QProxyStyle::styleHint(hint, option, widget, data);
}

void ProgramStyle::polish(QPalette& palette) {
  QProxyStyle::polish(palette);
  for (const auto group : {QPalette::Active, QPalette::Inactive}) {
    QColor text = palette.color(group, QPalette::PlaceholderText);
    for (const auto role : {QPalette::Window, QPalette::Base}) {
      const QColor ground = palette.color(group, role);
      const double share = text.alphaF();
      text.setAlpha(255);
      text = style::readable_on(style::between(ground, text, share), ground);
    }
    palette.setColor(group, QPalette::PlaceholderText, text);
  }
}

}  // namespace vellum
