#include "shell/widgets/thumbnail_list.h"

#include <QApplication>
#include <QDrag>
#include <QDropEvent>
#include <QFileInfo>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <QUrl>

#include "base/text.h"
#include "shell/look/icon.h"
#include "shell/look/style.h"
#include "shell/look/text.h"

namespace vellum {

class ThumbnailModel : public QAbstractListModel {
 public:
  using QAbstractListModel::QAbstractListModel;

  const QStringList& paths() const { return paths_; }
  int rowCount(const QModelIndex& parent = {}) const override {
    return parent.isValid() ? 0 : static_cast<int>(paths_.size());
  }
  QVariant data(const QModelIndex& index, int role) const override {
    if (role == Qt::DisplayRole) return QFileInfo(paths_[index.row()]).fileName();
    if (role == Qt::ToolTipRole) return paths_[index.row()].toHtmlEscaped();
    return {};
  }
  Qt::ItemFlags flags(const QModelIndex& index) const override {
    return QAbstractListModel::flags(index) | Qt::ItemIsDragEnabled;
  }
  Qt::DropActions supportedDropActions() const override { return Qt::CopyAction | Qt::MoveAction; }
  QStringList mimeTypes() const override { return {QStringLiteral("text/uri-list")}; }
  QMimeData* mimeData(const QModelIndexList& indexes) const override {
    QList<QUrl> urls;
    for (const QModelIndex& index : indexes) urls << QUrl::fromLocalFile(paths_[index.row()]);
    auto* data = new QMimeData;
    data->setUrls(urls);
    return data;
  }

  void replace(const QStringList& paths) {
    beginResetModel();
    paths_ = paths;
    endResetModel();
  }
  void insert(int row, const QStringList& paths) {
    if (paths.isEmpty()) return;
    beginInsertRows({}, row, row + static_cast<int>(paths.size()) - 1);
    QStringList joined = paths_.mid(0, row) + paths + paths_.mid(row);
    paths_.swap(joined);
    endInsertRows();
  }
  /// Thousands at once, so that it is one change.
  void remove(const std::vector<int>& rows) {
    QStringList rest;
    std::size_t next = 0;
    for (int i = 0; i < paths_.size(); ++i)
      if (next < rows.size() && rows[next] == i)
        ++next;
      else
        rest << paths_[i];
    replace(rest);
  }

 private:
  QStringList paths_;
};

namespace {

/// Pictures are never enlarged.
QRect fitted(QSize image, const QRect& room, bool exact) {
  QSize size = exact ? image.scaled(room.size(), Qt::KeepAspectRatio) : room.size();
  if (exact) size = size.boundedTo(image).expandedTo({1, 1});
  QRect place(QPoint(), size);
  place.moveCenter(room.center());
  return place;
}

class ThumbnailDelegate : public QStyledItemDelegate {
 public:
  ThumbnailDelegate(ThumbnailList& list, ThumbnailList::Looks looks)
      : QStyledItemDelegate(&list), list_(list), looks_(std::move(looks)), none_(program_icon("sheet")) {}

  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const override {
    const int line = option.fontMetrics.height() + style::kGap / 2;
    return {100, list_.form().thumbnails ? std::max(list_.form().height, line) : line};
  }

  void paint(QPainter* painter, const QStyleOptionViewItem& given, const QModelIndex& index) const override {
    QStyleOptionViewItem option = given;
    initStyleOption(&option, index);
    option.text.clear();
    QApplication::style()->drawControl(QStyle::CE_ItemViewItem, &option, painter, option.widget);
    const FileLook look = looks_(list_.paths()[index.row()]);
    QRect rest = option.rect.adjusted(2, 1, -4, -1);
    if (list_.form().thumbnails) {
      paint_picture(painter, look, QRect(rest.topLeft(), QSize(rest.height(), rest.height())));
      rest.setLeft(rest.left() + rest.height() + 4);
    }
    const bool selected = (option.state & QStyle::State_Selected) != 0;
    painter->setPen(option.palette.color(selected ? QPalette::HighlightedText : QPalette::Text));
    paint_text(painter, option, rest, index.row(), look);
  }

 private:
  void paint_picture(QPainter* painter, const FileLook& look, const QRect& room) const {
    if (look.image.isNull()) {
      const QRect place = room.marginsRemoved(
          QMargins(room.width() / 4, room.height() / 4, room.width() / 4, room.height() / 4));
      return none_.paint(painter, place, Qt::AlignCenter, look.known ? QIcon::Normal : QIcon::Disabled);
    }
    painter->setRenderHint(QPainter::SmoothPixmapTransform);
    painter->drawImage(fitted(look.image.size(), room, list_.form().exact), look.image);
  }

  void paint_text(QPainter* painter, const QStyleOptionViewItem& option, const QRect& room, int row,
                  const FileLook& look) const {
    const QString name = QFileInfo(list_.paths()[row]).fileName();
    QString line =
        to_qt(format_text(string_text(StringId::WizardRow).data(), row + 1, name.toUtf8().constData()));
    const QFontMetrics& metrics = option.fontMetrics;
    const bool details = list_.form().details && !look.detail.isEmpty();
    const bool two = details && room.height() >= 2 * metrics.height();
    if (details && !two) line += look.detail;
    const auto draw = [&](const QRect& place, const QString& text) {
      painter->drawText(place, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine,
                        metrics.elidedText(text, Qt::ElideRight, place.width()));
    };
    if (!two) return draw(room, line);
    const int top = room.top() + (room.height() - 2 * metrics.height()) / 2;
    draw({room.left(), top, room.width(), metrics.height()}, line);
    draw({room.left(), top + metrics.height(), room.width(), metrics.height()}, look.detail);
  }

  ThumbnailList& list_;
  ThumbnailList::Looks looks_;
  QIcon none_;
};

QStringList files_of(const QMimeData& data) {
  QStringList files;
  for (const QUrl& url : data.urls())
    if (url.isLocalFile()) files << url.toLocalFile();
  return files;
}

}  // namespace

ThumbnailList::ThumbnailList(Looks looks, QWidget* parent)
    : QListView(parent), model_(new ThumbnailModel(this)) {
  setModel(model_);
  setItemDelegate(new ThumbnailDelegate(*this, std::move(looks)));
  setSelectionMode(ExtendedSelection);
  setUniformItemSizes(true);
  setVerticalScrollMode(ScrollPerPixel);
  setDragDropMode(DragOnly);
  connect(this, &QListView::doubleClicked, this,
          [this](const QModelIndex& index) { emit opened(paths()[index.row()]); });
}

void ThumbnailList::set_form(const ThumbnailListForm& form) {
  form_ = form;
  setSpacing(form.tight || !form.thumbnails ? 0 : 2);
  scheduleDelayedItemsLayout();
}

void ThumbnailList::set_takes_files(bool takes) {
  setDragDropMode(takes ? DragDrop : DragOnly);
  setAcceptDrops(takes);
}

const QStringList& ThumbnailList::paths() const { return model_->paths(); }

void ThumbnailList::set_paths(const QStringList& paths) {
  const QStringList before = selected_paths();
  const QSet<QString> kept(before.begin(), before.end());
  const int place = verticalScrollBar()->value();
  model_->replace(paths);
  QItemSelection selection;
  for (int i = 0; !kept.isEmpty() && i < paths.size(); ++i)
    if (kept.contains(paths[i])) selection.select(model_->index(i), model_->index(i));
  selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
  executeDelayedItemsLayout();
  verticalScrollBar()->setValue(place);
  emit selection_changed();
}

std::vector<int> ThumbnailList::selected_rows() const {
  std::vector<int> rows;
  for (const QModelIndex& index : selectionModel()->selectedIndexes()) rows.push_back(index.row());
  std::ranges::sort(rows);
  return rows;
}

QStringList ThumbnailList::selected_paths() const {
  QStringList selected;
  for (const int row : selected_rows()) selected << paths()[row];
  return selected;
}

void ThumbnailList::select_rows(int first, int count) {
  const QItemSelection rows(model_->index(first), model_->index(first + count - 1));
  setCurrentIndex(model_->index(first));
  selectionModel()->select(rows, QItemSelectionModel::ClearAndSelect);
}

void ThumbnailList::insert_paths(int row, const QStringList& added) {
  if (added.isEmpty()) return;
  model_->insert(row, added);
  select_rows(row, static_cast<int>(added.size()));
  scrollTo(model_->index(row + static_cast<int>(added.size()) - 1));
  emit edited();
}

void ThumbnailList::remove_selected() {
  const auto rows = selected_rows();
  if (rows.empty()) return;
  model_->remove(rows);
  if (!paths().isEmpty()) select_rows(std::min(rows.front(), static_cast<int>(paths().size()) - 1), 1);
  emit selection_changed();
  emit edited();
}

void ThumbnailList::copy_selected(int row) { insert_paths(row, selected_paths()); }

void ThumbnailList::move_selected(int row) {
  const auto rows = selected_rows();
  const QStringList moved = selected_paths();
  if (rows.empty()) return;
  const auto in_front = static_cast<int>(std::ranges::lower_bound(rows, row) - rows.begin());
  model_->remove(rows);
  insert_paths(row - in_front, moved);
}

int ThumbnailList::row_at(QPoint place) const {
  const QModelIndex index = indexAt(place);
  if (!index.isValid()) return static_cast<int>(paths().size());
  return index.row() + (place.y() > visualRect(index).center().y() ? 1 : 0);
}

void ThumbnailList::startDrag(Qt::DropActions) {
  const QModelIndexList rows = selectionModel()->selectedIndexes();
  if (rows.isEmpty()) return;
  auto* drag = new QDrag(this);
  drag->setMimeData(model_->mimeData(rows));
  drag->exec(Qt::CopyAction | Qt::MoveAction, Qt::CopyAction);
}

void ThumbnailList::dragEnterEvent(QDragEnterEvent* event) {
  if (event->mimeData()->hasUrls()) event->acceptProposedAction();
}

void ThumbnailList::dragMoveEvent(QDragMoveEvent* event) {
  QListView::dragMoveEvent(event);  // scrolls near the edges
  if (!event->mimeData()->hasUrls()) return event->ignore();
  event->acceptProposedAction();
  dropRow_ = row_at(event->position().toPoint());
  viewport()->update();
}

void ThumbnailList::dragLeaveEvent(QDragLeaveEvent* event) {
  QListView::dragLeaveEvent(event);
  dropRow_ = -1;
  viewport()->update();
}

void ThumbnailList::dropEvent(QDropEvent* event) {
  const int row = row_at(event->position().toPoint());
  dropRow_ = -1;
  setState(NoState);
  viewport()->update();
  if (event->source() != this)
    emit files_dropped(row, files_of(*event->mimeData()));
  else if (event->modifiers() & Qt::ControlModifier)
    copy_selected(row);
  else
    move_selected(row);
  event->setDropAction(Qt::CopyAction);
  event->accept();
}

void ThumbnailList::keyPressEvent(QKeyEvent* event) {
  const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (enter && currentIndex().isValid()) {
    emit opened(paths()[currentIndex().row()]);
    return event->accept();
  }
  if (!acceptDrops() || !edit_by_key(*event)) QListView::keyPressEvent(event);
}

bool ThumbnailList::edit_by_key(const QKeyEvent& event) {
  const auto rows = selected_rows();
  if (rows.empty()) return false;
  if (event.matches(QKeySequence::Delete)) {
    remove_selected();
    return true;
  }
  const bool up = event.key() == Qt::Key_Up, down = event.key() == Qt::Key_Down;
  if (!(up || down) || event.modifiers() != Qt::ControlModifier) return false;
  const int to = up ? rows.front() - 1 : rows.back() + 2;
  if (to >= 0 && to <= static_cast<int>(paths().size())) move_selected(to);
  return true;
}

void ThumbnailList::paintEvent(QPaintEvent* event) {
  QListView::paintEvent(event);
  if (paths().isEmpty() && !hint_.isEmpty()) {
    QPainter painter(viewport());
    const QColor ground = palette().color(QPalette::Base);
    painter.setPen(style::readable_on(palette().color(QPalette::PlaceholderText), ground));
    painter.drawText(viewport()->rect().adjusted(style::kWideGap, 0, -style::kWideGap, 0),
                     Qt::AlignCenter | Qt::TextWordWrap, hint_);
  }
  if (dropRow_ < 0) return;
  const int count = static_cast<int>(paths().size());
  int y = 1;
  if (count > 0)
    y = dropRow_ < count ? visualRect(model_->index(dropRow_)).top()
                         : visualRect(model_->index(count - 1)).bottom();
  QPainter painter(viewport());
  painter.fillRect(0, y - 1, viewport()->width(), 3, QColor(style::kAccent));
}

void ThumbnailList::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) {
  QListView::selectionChanged(selected, deselected);
  emit selection_changed();
}

}  // namespace vellum
