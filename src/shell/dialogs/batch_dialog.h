// The batch processor: a folder's documents, and one operation or export over those that are selected.
#pragma once

#include <QComboBox>
#include <QDialog>
#include <QFileSystemWatcher>
#include <QLabel>
#include <QPushButton>
#include <QSplitter>
#include <QTimer>

#include "batch/batch_process.h"
#include "shell/dialogs/folder_line.h"
#include "shell/services/folder_documents.h"
#include "shell/services/services.h"
#include "shell/services/thumbnails.h"
#include "shell/widgets/folder_tree.h"

class QMenu;
class QVBoxLayout;

namespace vellum {

class BatchDialog : public QDialog {
  Q_OBJECT
 public:
  explicit BatchDialog(Services& services, QWidget* parent = nullptr);

  /// What View does with a document.
  std::function<void(const DocumentWindow& window)> view;

  ThumbnailList& files() { return *files_; }
  const QString& folder() const { return folder_; }
  bool at_work() const { return listing_.at_work() || thumbnails_.at_work(); }
  void show_folder(const QString& folder);
  void choose(const BatchProcess& process);
  /// Asks what is to be done and where to, and does it over the selected files. Whether a run took place.
  bool run();
  /// `named`: the question says which file, where it is one.
  void delete_selected(bool named);
  void fill_menu(QMenu& menu);

 protected:
  void done(int result) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  void make_panes();
  void make_controls(QVBoxLayout& layout);
  void connect_parts();
  void refresh(bool all);
  void show_status();
  void view_file(const QString& path);
  const BatchProcess& process() const;
  std::optional<FieldValues> ask_values(const QString& sample);
  bool wants_deleting(const QStringList& paths, bool named);

  Services& services_;
  QString folder_;
  Thumbnails thumbnails_;
  FolderDocuments listing_;
  QFileSystemWatcher watcher_;
  QTimer refreshLater_;
  QComboBox *process_, *place_;
  QSplitter* panes_;
  FolderTree* folders_;
  FolderLine* line_;
  ThumbnailList* files_;
  QLabel* status_;
  QPushButton* start_;
};

}  // namespace vellum
