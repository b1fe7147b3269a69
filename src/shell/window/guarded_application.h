// The program's application object: memory that is exhausted ends an event, and not the program.
#pragma once

#include <QApplication>

namespace vellum {

class GuardedApplication : public QApplication {
 public:
  using QApplication::QApplication;
  /// An event whose work found no memory, as painting a picture that had to be unpacked again, is over; that
  /// is told once the program is back in its loop.
  bool notify(QObject* receiver, QEvent* event) override;

 private:
  void tell_exhausted();
  bool telling_ = false;
};

}  // namespace vellum
