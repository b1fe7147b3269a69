// Dialogs on small screens.
#pragma once

#include <QDialog>

namespace vellum {

/// Watches an application: a dialog that is shown is no larger than what its screen has free. One whose
/// content needs more scrolls, and its row of buttons stays below.
class ScreenRoom : public QObject {
  Q_OBJECT
 public:
  /// `most` is the size that dialogs get; empty: what the screen of each has free, less a window's frame.
  explicit ScreenRoom(QSize most = {}, QObject* parent = nullptr) : QObject(parent), most_(most) {}

  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QSize room_of(const QWidget& window) const;

  QSize most_;
};

}  // namespace vellum
