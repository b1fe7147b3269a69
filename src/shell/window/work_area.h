// The area of the document windows; without any it shows the empty state.
#pragma once

#include <QMdiArea>

#include "shell/list/document_frame.h"
#include "shell/widgets/work_background.h"
#include "shell/window/empty_state.h"

namespace vellum {

class WorkArea : public QMdiArea {
  Q_OBJECT
 public:
  explicit WorkArea(RecentFiles& recent, QWidget* parent = nullptr);

  EmptyState& empty_state() { return *empty_; }
  /// The document windows in the order in which they were made.
  std::vector<DocumentFrame*> documents() const;
  /// The one that commands act on; null without documents.
  DocumentFrame* active() const;
  /// Adds the window, shows and activates it. A new window stands beside the last one where there is room.
  void add(DocumentFrame* frame);

 protected:
  void paintEvent(QPaintEvent* event) override;
  bool viewportEvent(QEvent* event) override;

 private:
  QPoint next_place(QSize size) const;
  void update_empty_state();

  EmptyState* empty_;
  WorkBackground background_;
};

}  // namespace vellum
