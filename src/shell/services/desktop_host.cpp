#include "shell/services/desktop_host.h"

#include <QApplication>

#include "configuration/shell_settings.h"
#include "shell/look/text.h"
#include "shell/services/message_box.h"

namespace vellum {

Host DesktopHost::record() {
  Host host;
  host.message = [this](const Message& message) { show(message); };
  host.ask = [this](const Message& message, bool cancel) { return ask(message, cancel); };
  host.choose = [this](Choice& choice) {
    const LongOperation::Pause pause(operation_);
    return show_choice_box(box_parent(), choice);
  };
  host.status = [this](std::string_view text) { status_.set_caption(to_qt(text)); };
  host.progress_begin = [this](std::string_view caption) { begin(caption); };
  host.progress_step = [this](std::uint64_t done, std::uint64_t total) { step(done, total); };
  host.progress_end = [this] { end(); };
  host.stop_requested = [this] { return operation_.stop_requested(); };
  return host;
}

QWidget* DesktopHost::box_parent() const {
  QWidget* dialog = QApplication::activeModalWidget();
  return dialog ? dialog : &window_;
}

void DesktopHost::show(const Message& message) {
  const LongOperation::Pause pause(operation_);
  show_message_box(box_parent(), message, "warning", QMessageBox::Ok);
}

Answer DesktopHost::ask(const Message& message, bool cancel) {
  if (message.option && *message.option == 0) return Answer::Yes;
  const LongOperation::Pause pause(operation_);
  QMessageBox::StandardButtons buttons = QMessageBox::Yes | QMessageBox::No;
  if (cancel) buttons |= QMessageBox::Cancel;
  switch (show_message_box(box_parent(), message, "question", buttons)) {
    case QMessageBox::Yes:
      return Answer::Yes;
    case QMessageBox::Cancel:
      return Answer::Cancel;
    default:
      return Answer::No;
  }
}

void DesktopHost::begin(std::string_view caption) {
  operation_.begin();
  begun_.start();
  status_.set_caption(to_qt(caption));
}

void DesktopHost::step(std::uint64_t done, std::uint64_t total) {
  if (begun_.elapsed() >= std::clamp(settings::DialogDelay, 0, 10'000)) {
    status_.progress_begin();
    status_.progress_step(done, total);
  }
  operation_.pump();
}

void DesktopHost::end() {
  operation_.end();
  if (!operation_.running()) status_.progress_end();
}

}  // namespace vellum
