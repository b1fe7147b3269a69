// The panel that says what is wrong with a document: a line for each finding, which leads to its row in the
// list, and Repair for what can be mended without a choice.
#pragma once

#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QTreeWidget>

#include "core/check/check_document.h"
#include "shell/docks/dock_panel.h"

namespace vellum {

/// Looks when it is asked to; what was found is old where entries have changed since.
class CheckPanel : public DockPanel {
  Q_OBJECT
 public:
  explicit CheckPanel(DockContext& context);

  void show_document(DocumentFrame* frame) override;
  void follow() override;

  void check();
  /// Mends what can be mended without a choice, as one undo level, and checks again.
  void repair();

 private:
  void show_findings();
  void go_to(const QTreeWidgetItem* item);
  void say(const QString& text);

  Services& services_;
  QPointer<DocumentFrame> frame_;
  std::optional<DocumentCheck> found_;
  std::vector<const ChunkRecord*> checked_;  ///< the records that were there then, for comparing only
  QLabel* summary_;
  QTreeWidget* lines_;
  QPushButton *check_, *repair_;
};

}  // namespace vellum
