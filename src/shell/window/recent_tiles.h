// The recent files as tiles, for the empty state.
#pragma once

#include <QListWidget>

#include "shell/services/recent_files.h"

namespace vellum {

class RecentTiles : public QListWidget {
  Q_OBJECT
 public:
  RecentTiles(RecentFiles& recent, QWidget* parent);

  /// Of all tiles in a width, in pixels.
  int height_for(int width) const;

 signals:
  /// A click on a tile, or Enter: the number of the command that opens it.
  void chosen(int command);

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  void choose(const QListWidgetItem* item);
  void fill();
  void show_thumbnails();

  RecentFiles& recent_;
};

}  // namespace vellum
