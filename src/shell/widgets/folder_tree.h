// The folders of the machine as a tree that shows the one which was chosen.
#pragma once

#include <QAbstractFileIconProvider>
#include <QFileSystemModel>
#include <QSortFilterProxyModel>
#include <QTimer>
#include <QTreeView>
#include <memory>

namespace vellum {

/// The folders of a tree that begins at a folder and leaves some out.
class ShownFolders : public QSortFilterProxyModel {
  Q_OBJECT
 public:
  explicit ShownFolders(QObject* parent);
  ~ShownFolders() override;

  void show(const QString& first, const QStringList& left_out);
  const QString& first() const { return first_; }
  QModelIndex index_of(const QString& folder) const;
  QString path_of(const QModelIndex& index) const;

  /// Clean paths: the same, or below.
  static bool is_within(const QString& path, const QString& folder);

 protected:
  bool filterAcceptsRow(int row, const QModelIndex& parent) const override;

 private:
  std::unique_ptr<QAbstractFileIconProvider> icons_;  ///< null: those of the desktop
  QFileSystemModel model_;
  QString first_ = QStringLiteral("/");
  QStringList leftOut_;
};

class FolderTree : public QTreeView {
  Q_OBJECT
 public:
  explicit FolderTree(QWidget* parent = nullptr);
  ~FolderTree() override;

  /// Makes it the current one and brings it into view as soon as the folders around it are listed. A tree
  /// that begins at another place begins at the root of the computer then.
  void show_folder(const QString& folder);
  /// The folder at which the tree begins; "/" at first, and where the current folder lies elsewhere.
  void begin_at(const QString& folder);
  const QString& first() const { return shown_->first(); }
  /// Whether media that can be taken out are among the folders; at first as IncludeFloppyDisks says.
  void show_removable(bool shown);

 signals:
  /// Another folder became the current one.
  void folder_chosen(const QString& folder);

 private:
  void bring_into_view();
  void show_from(const QString& first);

  ShownFolders* shown_;
  QStringList removable_;  ///< that are left out
  QString folder_;         ///< the current one
  QTimer soon_;
  QString sought_;  ///< to be brought into view while folders are still being listed
};

}  // namespace vellum
