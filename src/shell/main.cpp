// vellumcraft: the desktop program.
#include <QScopeGuard>
#include <QScreen>
#include <QStyleHints>
#include <QTimer>
#include <clocale>
#include <cstdio>
#include <new>

#include "configuration/shell_settings.h"
#include "shell/forms/default_folders.h"
#include "shell/help/help_window.h"
#include "shell/look/icon.h"
#include "shell/look/language.h"
#include "shell/look/program_style.h"
#include "shell/look/text.h"
#include "shell/services/shared_recent.h"
#include "shell/widgets/screen_room.h"
#include "shell/window/commands.h"
#include "shell/window/file_watch.h"
#include "shell/window/guarded_application.h"
#include "shell/window/main_window.h"
#include "shell/window/recovery_dialog.h"
#include "shell/window/screenshot.h"
#include "shell/window/start_screens.h"
#include "shell/window/start_up.h"

namespace {

using namespace vellum;

int tell_no_desktop() {
  std::fprintf(stderr, "%s\n", string_text(StringId::NeedsDesktop).data());
  return 1;
}

/// Qt ends the program when no platform can be opened, and calls this first.
void tell_fatal(QtMsgType type, const QMessageLogContext&, const QString& text) {
  if (type == QtFatalMsg) {
    tell_no_desktop();
    std::fflush(nullptr);
    std::_Exit(1);
  }
  std::fprintf(stderr, "%s\n", qUtf8Printable(text));
}

/// Answers that need no desktop; empty when the program should start.
std::optional<int> answer_at_once(const StartOptions& options) {
  if (options.help || options.version || options.man) {
    const std::string text = options.help  ? usage_text()
                             : options.man ? man_text()
                                           : "vellumcraft " VELLUM_VERSION "\n";
    std::fputs(text.c_str(), stdout);
    return 0;
  }
  if (options.error.empty()) return std::nullopt;
  std::fprintf(stderr, "vellumcraft: %s\n", options.error.c_str());
  return 2;
}

/// Shows the window; once it is seen, what a crash left is offered, and then work begins.
void start(MainWindow& window, Recovery& recovery, const StartOptions& options,
           const std::string& themeFault) {
  show_main_window(window);
  // The sizes of docks are those in the window as it stands now.
  window.docks().arrange(window.screen()->availableGeometry().width());
  QTimer::singleShot(0, &window, [&window, &recovery, options, themeFault] {
    tell_theme_fault(window, themeFault);
    add_plugins(window);
    offer_recovery(recovery, window);
    if (options.file.empty())
      show_start_screens(window);
    else
      window.open_later(std::filesystem::absolute(options.file), options.view);
    for (const auto& file : options.more) window.open_later(std::filesystem::absolute(file), options.view);
  });
}

int run(const StartOptions& options, const std::string& themeFault) {
  MainWindow window;
  Recovery recovery(window);
  FileWatch watch(window);
  window.recent().share = [](const std::filesystem::path& file) {
    if (settings::RememberFileHistoryEnable != 0) share_recent_file(file);
  };
  // The session ends: what is not saved is offered at the next start, whatever comes of the questions now.
  QObject::connect(
      qApp, &QGuiApplication::commitDataRequest, &window,
      [&recovery] {
        recovery.keep_changed();
        recovery.wait();
      },
      Qt::DirectConnection);
  start(window, recovery, options, themeFault);
  return QApplication::exec();
}

std::span<const char* const> behind_name(int argc, char** argv) {
  return {argv + std::min(argc, 1), static_cast<std::size_t>(std::max(argc - 1, 0))};
}

}  // namespace

int main(int argc, char** argv) {
  use_language(wished_languages({}), catalog_folders());
  StartOptions options = parse_arguments(behind_name(argc, argv));
  if (options.man) use_language({}, {});
  if (options.help || options.version || options.man) return *answer_at_once(options);
  if (!desktop_named(behind_name(argc, argv))) return tell_no_desktop();

  const QtMessageHandler handler = qInstallMessageHandler(tell_fatal);
  GuardedApplication application(argc, argv);
  qInstallMessageHandler(handler);
  QApplication::setStyle(new ProgramStyle);
  application.installEventFilter(new ScreenRoom({}, &application));
  // Numbers in texts and files have a point whatever the desktop's language is.
  std::setlocale(LC_NUMERIC, "C");
  QApplication::setApplicationName(QStringLiteral("vellumcraft"));
  QApplication::setApplicationDisplayName(QStringLiteral("Vellumcraft"));
  QApplication::setApplicationVersion(QStringLiteral(VELLUM_VERSION));
  QApplication::setDesktopFileName(QStringLiteral("org.vellumcraft.Vellumcraft"));

  // Qt has taken its own options out.
  options = parse_arguments(behind_name(argc, argv));
  if (const auto status = answer_at_once(options)) return *status;
  if (!load_settings(options)) return 2;
  speak_language(settings::Language);
  fill_default_folders();
  register_icons();
  const std::string themeFault = start_theme(theme_folders());
  install_help();
  const auto end = qScopeGuard([] { put_theme_in_force(nullptr); });
  try {
    return options.screenshot.empty() ? run(options, themeFault) : run_for_screenshot(options, themeFault);
  } catch (const std::bad_alloc&) {
    std::fprintf(stderr, "%s\n", string_text(StringId::NoWindow).data());
    return 1;
  }
}
