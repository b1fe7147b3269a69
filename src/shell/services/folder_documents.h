// The files of a folder that can be opened as documents, found while the window that shows them is used.
#pragma once

#include <QObject>
#include <QSize>
#include <QStringList>
#include <QThreadPool>
#include <atomic>
#include <filesystem>
#include <memory>

namespace vellum {

/// Whether a name ends as those of documents do, of pictures, or of files that become documents.
bool is_document_name(const QString& name);

/// Whether a file holds an animation, as far as its beginning tells; an MNG always does.
bool is_animation_file(const std::filesystem::path& file);

/// The canvas of an MNG, as its header tells it; empty for other files.
QSize size_of_mng(const std::filesystem::path& file);

/// Lists folders on a thread of its own; a folder that is asked for later takes the place of one that isn't
/// listed yet.
class FolderDocuments : public QObject {
  Q_OBJECT
 public:
  explicit FolderDocuments(QObject* parent = nullptr) : QObject(parent) { pool_.setMaxThreadCount(1); }
  ~FolderDocuments() override;

  /// The files come by `listed`, by name, those of folders below (with `subfolders`) behind those of the
  /// folder; hidden ones and what links to folders are left out, and what is behind the first 50,000.
  void list(const QString& folder, bool subfolders);
  bool at_work() const { return *working_; }

 signals:
  void listed(const QStringList& paths);

 private:
  QThreadPool pool_;
  std::shared_ptr<std::atomic<bool>> working_ = std::make_shared<std::atomic<bool>>(false);
};

}  // namespace vellum
