// What is shown at the start when a crash left copies of documents.
#pragma once

#include <QDialog>

#include "shell/window/recovery.h"

class QTreeWidget;

namespace vellum {

class RecoveryDialog : public QDialog {
  Q_OBJECT
 public:
  RecoveryDialog(Recovery& recovery, const std::vector<RecoveryNote>& notes, Host& host, QWidget* parent);

 private:
  void fill(const std::vector<RecoveryNote>& notes);
  std::vector<RecoveryNote> selected() const;
  void recover_selected();
  void delete_selected();
  /// Takes the row of the copy away; the dialog ends with the last one.
  void take(const RecoveryNote& note);

  Recovery& recovery_;
  Host& host_;
  std::vector<RecoveryNote> notes_;
  QTreeWidget* rows_;
};

/// Shows what was found and waits for an answer; nothing where nothing was found.
void offer_recovery(Recovery& recovery, MainWindow& window);

}  // namespace vellum
