// The folders of the machine as a tree that shows the one which was chosen.
#pragma once

#include <QFileSystemModel>
#include <QTreeView>

namespace vellum {

class FolderTree : public QTreeView {
  Q_OBJECT
 public:
  explicit FolderTree(QWidget* parent = nullptr);
  ~FolderTree() override;

  /// Makes it the current one and brings it into view as soon as the folders around it are listed.
  void show_folder(const QString& folder);

 signals:
  /// Another folder became the current one.
  void folder_chosen(const QString& folder);

 private:
  void bring_into_view();

  QFileSystemModel model_;
  QString sought_;  ///< to be brought into view while folders are still being listed
};

}  // namespace vellum
