// Where documents are looked for: a tree of folders, their files with small pictures that workers make, and
// the documents that are open.
#pragma once

#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QSplitter>
#include <QTabWidget>
#include <QTimer>

#include "shell/services/folder_documents.h"
#include "shell/services/services.h"
#include "shell/services/thumbnails.h"
#include "shell/widgets/folder_tree.h"

class QDialogButtonBox;

namespace vellum {

struct BrowseRequest {
  QString title;
  QString button = {};        ///< what the button that takes them says; empty: "Open"
  bool several = false;       ///< more than one may be chosen
  bool openDocuments = true;  ///< documents that are lent at the moment (`LentDocuments`) are offered too
  QString now = {};           ///< a file whose folder is shown at first; empty: the folder of the last time
};

/// Paths, or names of lent documents, in the order in which they are shown; none when the user cancelled.
QStringList browse_documents(const BrowseRequest& request, QWidget* parent);

/// What is known of a file, or of a lent document by its name.
FileLook look_of_document(Thumbnails& thumbnails, const QString& path);

/// The dialog of `browse_documents`.
class DocumentBrowser : public QDialog {
  Q_OBJECT
 public:
  DocumentBrowser(const BrowseRequest& request, QWidget* parent);

  QStringList chosen() const;
  ThumbnailList& files() { return *files_; }
  ThumbnailList& documents() { return *documents_; }
  QTabWidget& pages() { return *pages_; }
  const QString& folder() const { return folder_; }
  void show_folder(const QString& folder);
  /// Whether the folder is still being listed, or files looked at.
  bool at_work() const { return listing_.at_work() || thumbnails_.at_work(); }

 protected:
  void done(int result) override;

 private:
  QWidget* make_files();
  QWidget* make_flags();
  void make_documents();
  void connect_parts();
  void set_flag(int bit, bool on);
  void list_anew();
  /// Shows those of the listed files that are wanted, as far as is known.
  void show_files();
  void show_status();

  BrowseRequest request_;
  QString folder_;
  QStringList listed_;
  Thumbnails thumbnails_;
  FolderDocuments listing_;
  QTimer filterLater_;
  QTabWidget* pages_;
  QSplitter* panes_;
  FolderTree* folders_;
  QLineEdit *path_, *find_;
  ThumbnailList *files_, *documents_;
  QLabel* status_;
  QDialogButtonBox* buttons_;
};

}  // namespace vellum
