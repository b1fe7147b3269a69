#include "shell/window/guarded_application.h"

#include <QMessageBox>
#include <QTimer>
#include <new>

#include "shell/look/text.h"

namespace vellum {

bool GuardedApplication::notify(QObject* receiver, QEvent* event) try {
  return QApplication::notify(receiver, event);
} catch (const std::bad_alloc&) {
  if (!telling_) {
    telling_ = true;
    QTimer::singleShot(0, this, [this] { tell_exhausted(); });
  }
  return false;
}

void GuardedApplication::tell_exhausted() {
  QMessageBox::warning(activeWindow(), to_qt(string_text(StringId::MemoryError)),
                       to_qt(string_text(StringId::AllocationError)));
  telling_ = false;
}

}  // namespace vellum
