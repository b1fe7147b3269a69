// What the program wants of every style.
#pragma once

#include <QProxyStyle>

namespace vellum {

/// The desktop's style, without small pictures on the buttons of dialogs: words are enough there. Secondary
/// text can be read on every palette that a desktop sets.
class ProgramStyle : public QProxyStyle {
  Q_OBJECT
 public:
  int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                QStyleHintReturn* data) const override;
  using QProxyStyle::polish;
  void polish(QPalette& palette) override;
};

}  // namespace vellum
