#include "shell/widgets/folder_tree.h"

#include <QHeaderView>
#include <QScrollBar>
#include <QTimer>

namespace vellum {

FolderTree::FolderTree(QWidget* parent) : QTreeView(parent) {
  model_.setRootPath(QStringLiteral("/"));
  model_.setOption(QFileSystemModel::DontUseCustomDirectoryIcons);
  model_.setFilter(QDir::Dirs | QDir::Drives | QDir::NoDotAndDotDot);
  setModel(&model_);
  setHeaderHidden(true);
  for (int column = 1; column < model_.columnCount(); ++column) hideColumn(column);
  header()->setStretchLastSection(false);
  header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
  connect(selectionModel(), &QItemSelectionModel::currentChanged, this,
          [this](const QModelIndex& index) { emit folder_chosen(model_.filePath(index)); });
  // The model lists folders when it has time, and each list moves the others.
  connect(&model_, &QFileSystemModel::directoryLoaded, this, [this](const QString& loaded) {
    if (!sought_.isEmpty() && (sought_ + u'/').startsWith(loaded))
      QTimer::singleShot(0, this, &FolderTree::bring_into_view);
  });
  connect(verticalScrollBar(), &QScrollBar::sliderPressed, this, [this] { sought_.clear(); });
  connect(this, &QTreeView::clicked, this, [this] { sought_.clear(); });
}

/// The view outlives its model.
FolderTree::~FolderTree() {
  disconnect(selectionModel(), nullptr, this, nullptr);
  setModel(nullptr);
}

void FolderTree::show_folder(const QString& folder) {
  const QModelIndex index = model_.index(folder);
  if (currentIndex() == index) return;
  sought_ = folder;
  setCurrentIndex(index);
  bring_into_view();
}

void FolderTree::bring_into_view() {
  const QModelIndex index = currentIndex();
  scrollTo(index, QAbstractItemView::PositionAtCenter);
  // Names begin at the left edge, with the arrow of the folder around them.
  QScrollBar* across = horizontalScrollBar();
  across->setValue(across->value() + visualRect(index).left() - 2 * indentation());
}

}  // namespace vellum
