// The small window that tells more of the row under the pointer.
#pragma once

#include <QBasicTimer>
#include <QLabel>

#include "core/model/document.h"

namespace vellum {

/// At most one of a list; shown once the pointer has rested for `FileTipDelay`, while `FileTipShow` is on.
class RowTip : public QLabel {
  Q_OBJECT
 public:
  /// Stays inside `area`, which outlives it, as the document does.
  RowTip(QWidget& area, DocumentWindow& window);

  /// The pointer is over a row, at a place of the area. Another row than before begins anew.
  void hover(std::size_t row, QPoint place);
  /// No row, or something happened that ends a tip.
  void dismiss();

 protected:
  void timerEvent(QTimerEvent* event) override;

 private:
  void show_text();

  QWidget& area_;
  DocumentWindow& window_;
  QBasicTimer timer_;
  QPoint place_;
};

}  // namespace vellum
