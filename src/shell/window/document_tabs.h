// A tab for each document, along the top while they fill the area: name, a mark where it was changed, a
// cross.
#pragma once

#include <QTabBar>

#include "shell/window/work_area.h"

namespace vellum {

class DocumentTabs : public QTabBar {
  Q_OBJECT
 public:
  explicit DocumentTabs(WorkArea& area, QWidget* parent = nullptr);

  /// Tabs, names and marks as the documents are now. They are seen while several documents fill the area.
  void refresh();
  /// The documents in the order of their tabs, which the user can move.
  std::vector<DocumentFrame*> documents() const;
  /// To the next document (1) or the one before (-1), round and round.
  void step(int direction);

 protected:
  void mouseReleaseEvent(QMouseEvent* event) override;

 private:
  DocumentFrame* frame_of(int tab) const;

  WorkArea& area_;
  bool refreshing_ = false;
};

}  // namespace vellum
