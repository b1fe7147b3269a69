// Host for the desktop: messages and questions as boxes, progress in the status line.
#pragma once

#include <QElapsedTimer>
#include <QPointer>
#include <QWidget>

#include "base/host.h"
#include "shell/services/long_operation.h"
#include "shell/services/status_line.h"

namespace vellum {

class DesktopHost {
 public:
  /// Boxes belong to `window`, or to the dialog that is open over it.
  DesktopHost(QWidget& window, StatusLine& status) : window_(window), status_(status) {}

  /// The record that the rest of the program talks to. Must not outlive this object.
  Host record();
  /// While an operation runs no command may start.
  bool busy() const { return operation_.running(); }

 private:
  QWidget* box_parent() const;
  void show(const Message& message);
  Answer ask(const Message& message, bool cancel);
  void begin(std::string_view caption);
  void step(std::uint64_t done, std::uint64_t total);
  void end();

  QWidget& window_;
  StatusLine& status_;
  LongOperation operation_;
  QElapsedTimer begun_;
};

}  // namespace vellum
