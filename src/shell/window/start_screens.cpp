#include "shell/window/start_screens.h"

#include <QApplication>
#include <QPointer>
#include <QTimer>
#include <algorithm>

#include "configuration/profile.h"
#include "configuration/shell_settings.h"
#include "shell/start/splash.h"
#include "shell/start/tips.h"
#include "shell/start/welcome_wizard.h"

namespace vellum {
namespace {

constexpr int kUsualSplash = 8000, kLongestSplash = 60000;  // milliseconds

/// Asked for in a section that the program doesn't write: only a file edited by hand changes it.
int splash_time() {
  return std::clamp(profile_int("CONFIGSECTION", "LogoDelay", kUsualSplash), 0, kLongestSplash);
}

bool something_is_in_front(MainWindow& window) {
  return QApplication::activeModalWidget() || window.services().busy() || !window.area().documents().empty();
}

void show_what_follows(MainWindow& window) {
  if (!window.isVisible() || something_is_in_front(window)) return;
  if (settings::ShowWelcomeWizard != 0) return welcome(window);
  if (tip_is_due(QDate::currentDate())) show_tips(&window);
}

}  // namespace

void welcome(MainWindow& window) {
  show_welcome_wizard(&window, [&window](int command) {
    // Behind the wizard's end, so that a dialog isn't opened out of it.
    QTimer::singleShot(0, &window, [&window, command] { window.run(command); });
  });
}

void show_start_screens(MainWindow& window) {
  const QPointer<MainWindow> main(&window);
  const auto follow = [main] {
    if (main) show_what_follows(*main);
  };
  const int time = settings::ShowStartupWindow != 0 ? splash_time() : 0;
  if (time == 0 || something_is_in_front(window)) {
    QTimer::singleShot(0, &window, follow);
    return;
  }
  auto* splash = new Splash(window, time);
  splash->gone = follow;
  splash->show();
}

void tell_theme_fault(MainWindow& window, const std::string& fault) {
  if (!fault.empty()) window.services().host.show(StringId::ThemeFailed, {}, fault);
}

}  // namespace vellum
