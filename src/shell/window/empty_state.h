// What the work area shows while no document is open: how to open one, and the files that were open last.
#pragma once

#include <QLabel>
#include <QPushButton>
#include <QWidget>

#include "shell/window/recent_tiles.h"

namespace vellum {

class EmptyState : public QWidget {
  Q_OBJECT
 public:
  EmptyState(RecentFiles& recent, QWidget* parent);

  /// Shows that what is being dragged can be dropped here.
  void set_inviting(bool inviting);

 signals:
  void open_wanted();
  /// The number of the command that opens a recent file.
  void recent_wanted(int command);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  void lay_out();

  QWidget* card_;
  QLabel* heading_;
  RecentTiles* tiles_;
  bool inviting_ = false;
};

}  // namespace vellum
