// The picture that the program starts with.
#pragma once

#include <QSplashScreen>
#include <functional>

namespace vellum {

class Splash : public QSplashScreen {
  Q_OBJECT
 public:
  /// Stands over the middle of `window`. Goes by itself after `milliseconds`, at a click or a key anywhere in
  /// the program, and as soon as anything else wants to be seen.
  Splash(QWidget& window, int milliseconds);
  ~Splash() override;

  /// Called once, when the picture is gone.
  std::function<void()> gone;

  bool eventFilter(QObject* object, QEvent* event) override;

 protected:
  void hideEvent(QHideEvent* event) override;
};

}  // namespace vellum
