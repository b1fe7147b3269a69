#include "shell/widgets/folder_tree.h"

#include <QHeaderView>
#include <QScrollBar>

#include "configuration/shell_settings.h"
#include "shell/look/icon.h"
#include "shell/widgets/folder_places.h"

namespace vellum {
namespace {

/// The program's own folder for all of them.
class OwnIcons : public QAbstractFileIconProvider {
 public:
  QIcon icon(IconType) const override { return folder_; }
  QIcon icon(const QFileInfo&) const override { return folder_; }

 private:
  QIcon folder_ = program_icon("folder");
};

}  // namespace

ShownFolders::ShownFolders(QObject* parent) : QSortFilterProxyModel(parent) {
  if (settings::AlternateFolderGraphics != 0) {
    icons_ = std::make_unique<OwnIcons>();
    model_.setIconProvider(icons_.get());
  }
  model_.setRootPath(QStringLiteral("/"));
  model_.setOption(QFileSystemModel::DontUseCustomDirectoryIcons);
  model_.setFilter(QDir::Dirs | QDir::Drives | QDir::NoDotAndDotDot);
  setSourceModel(&model_);
}

/// The base outlives the model.
ShownFolders::~ShownFolders() { setSourceModel(nullptr); }

void ShownFolders::show(const QString& first, const QStringList& left_out) {
  if (first == first_ && left_out == leftOut_) return;
  first_ = first;
  leftOut_ = left_out;
  invalidateFilter();
}

QModelIndex ShownFolders::index_of(const QString& folder) const {
  return mapFromSource(model_.index(folder));
}

QString ShownFolders::path_of(const QModelIndex& index) const { return model_.filePath(mapToSource(index)); }

bool ShownFolders::is_within(const QString& path, const QString& folder) {
  return path == folder || path.startsWith(folder.endsWith(u'/') ? folder : folder + u'/');
}

bool ShownFolders::filterAcceptsRow(int row, const QModelIndex& parent) const {
  const QString path = model_.filePath(model_.index(row, 0, parent));
  return (is_within(path, first_) || is_within(first_, path)) && !leftOut_.contains(path);
}

FolderTree::FolderTree(QWidget* parent) : QTreeView(parent), shown_(new ShownFolders(this)) {
  setModel(shown_);
  setHeaderHidden(true);
  for (int column = 1; column < shown_->columnCount(); ++column) hideColumn(column);
  header()->setStretchLastSection(false);
  header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
  connect(selectionModel(), &QItemSelectionModel::currentChanged, this, [this](const QModelIndex& index) {
    if (!index.isValid()) return;
    folder_ = shown_->path_of(index);
    emit folder_chosen(folder_);
  });
  // The model lists folders and sorts them when it has time, and each list moves the others.
  soon_.setSingleShot(true);
  soon_.setInterval(0);
  connect(&soon_, &QTimer::timeout, this, &FolderTree::bring_into_view);
  const auto moved = [this] {
    if (!sought_.isEmpty()) soon_.start();
  };
  connect(shown_, &QAbstractItemModel::rowsInserted, this, moved);
  connect(shown_, &QAbstractItemModel::layoutChanged, this, moved);
  connect(verticalScrollBar(), &QScrollBar::sliderPressed, this, [this] { sought_.clear(); });
  connect(this, &QTreeView::clicked, this, [this] { sought_.clear(); });
  show_removable(settings::IncludeFloppyDisks != 0);
}

/// The model goes behind what hears of it.
FolderTree::~FolderTree() {
  disconnect(selectionModel(), nullptr, this, nullptr);
  disconnect(shown_, nullptr, this, nullptr);
  setModel(nullptr);
}

void FolderTree::show_removable(bool shown) {
  removable_ = shown ? QStringList() : removable_media();
  show_from(first());
}

void FolderTree::begin_at(const QString& folder) {
  show_from(folder);
  bring_into_view();
}

/// The current folder is shown, wherever it is.
void FolderTree::show_from(const QString& first) {
  QStringList left_out;
  for (const QString& medium : removable_)
    if (!ShownFolders::is_within(folder_, medium)) left_out += medium;
  const QSignalBlocker quiet(selectionModel());
  shown_->show(folder_.isEmpty() || ShownFolders::is_within(folder_, first) ? first : QStringLiteral("/"),
               left_out);
  setRootIndex(shown_->index_of(shown_->first()).parent());
}

void FolderTree::show_folder(const QString& folder) {
  if (currentIndex().isValid() && folder == folder_) return;
  folder_ = sought_ = folder;
  show_from(first());
  setCurrentIndex(shown_->index_of(folder));
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
