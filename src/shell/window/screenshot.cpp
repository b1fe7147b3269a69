#include "shell/window/screenshot.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QEventLoop>
#include <QTimer>
#include <cstdio>

#include "shell/look/text.h"
#include "shell/window/main_window.h"
#include "shell/window/start_screens.h"

namespace vellum {
namespace {

constexpr int kSettledMs = 600;  // previews and thumbnails of a window that has just opened

/// The window that lies over the main one.
QWidget* other_window(const QWidget& main) {
  if (QWidget* modal = QApplication::activeModalWidget()) return modal;
  for (QWidget* window : QApplication::topLevelWidgets())
    if (window != &main && window->isVisible()) return window;
  return nullptr;
}

/// The button that says this, without the mark of its letter and the dots behind it; of several one that is
/// seen, else one on a page that is not in front.
QAbstractButton* button_of(const QWidget& window, const std::string& text) {
  QAbstractButton* hidden = nullptr;
  for (auto* button : window.findChildren<QAbstractButton*>()) {
    QString said = button->text().remove(QLatin1Char('&'));
    if (said.endsWith(QLatin1String("..."))) said.chop(3);
    if (said != QString::fromStdString(text)) continue;
    if (button->isVisible()) return button;
    if (!hidden) hidden = button;
  }
  return hidden;
}

/// The window of a command, which is then closed, or the one that a button of it opens; of a command that
/// opens none, the main window.
QPixmap picture_of_command(MainWindow& main, const StartOptions& options) {
  QPixmap picture;
  const auto take = [&] {
    QWidget* window = other_window(main);
    if (!window) return;
    picture = window->grab();
    auto* dialog = qobject_cast<QDialog*>(window);
    dialog ? dialog->reject() : static_cast<void>(window->close());
  };
  const auto press_and_take = [&] {
    QWidget* window = options.press.empty() ? nullptr : other_window(main);
    QAbstractButton* button = window ? button_of(*window, options.press) : nullptr;
    if (!button) return take();
    QTimer opened;
    opened.setSingleShot(true);
    opened.callOnTimeout(take);
    opened.start(kSettledMs);
    button->click();  // until the window that it opens is closed
    if (picture.isNull()) return take();
    if (auto* dialog = qobject_cast<QDialog*>(window)) dialog->reject();
  };
  QTimer::singleShot(kSettledMs, &main, press_and_take);
  main.run(options.show);
  if (picture.isNull()) take();
  if (!picture.isNull()) return picture;
  QEventLoop settled;
  QTimer::singleShot(kSettledMs, &settled, &QEventLoop::quit);
  settled.exec();
  return main.grab();
}

void settle(MainWindow& window) {
  // Layouts that the file has changed, and thumbnails.
  do QCoreApplication::processEvents();
  while (window.recent().at_work());
}

QPixmap picture_for(MainWindow& window, const StartOptions& options) {
  if (!options.file.empty() && !window.open(options.file)) return {};
  if (DocumentFrame* frame = window.area().active(); frame && options.row > 0) {
    frame->entries().select_all(false);
    if (options.row <= frame->entries().size()) {
      frame->content().document.caret = static_cast<std::int32_t>(options.row - 1);
      frame->entries().select(options.row - 1, true);
      frame->show_caret();
    }
    window.refresh();
  }
  settle(window);
  return options.show > 0 ? picture_of_command(window, options) : window.grab();
}

}  // namespace

int run_for_screenshot(const StartOptions& options, const std::string& themeFault) {
  MainWindow window;
  window.services().host.message = [](const Message& message) {
    std::fprintf(stderr, "vellumcraft: %s %s\n", message.text.c_str(), message.more.c_str());
  };
  window.services().host.ask = nullptr;
  tell_theme_fault(window, themeFault);
  window.resize(options.wide, options.deep);
  window.show();
  window.docks().arrange(options.wide);
  QTimer::singleShot(0, &window, [&window, &options] {
    const QPixmap picture = picture_for(window, options);
    const bool written = !picture.isNull() && picture.save(path_text(options.screenshot), "PNG");
    if (!written) std::fprintf(stderr, "vellumcraft: the picture can't be written\n");
    QCoreApplication::exit(written ? 0 : 1);
  });
  return QApplication::exec();
}

}  // namespace vellum
