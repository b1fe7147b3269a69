#include "shell/window/recent_tiles.h"

#include <QKeyEvent>

#include "configuration/shell_settings.h"
#include "shell/look/icon.h"
#include "shell/look/style.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr QSize kTile(120, 108), kThumbnail(96, 72);
constexpr int kCommandRole = Qt::UserRole;

}  // namespace

RecentTiles::RecentTiles(RecentFiles& recent, QWidget* parent) : QListWidget(parent), recent_(recent) {
  setAccessibleName(tr("Recent files"));
  setViewMode(IconMode);
  setMovement(Static);
  setResizeMode(Adjust);
  setUniformItemSizes(true);
  setGridSize(kTile);
  setIconSize(kThumbnail);
  setTextElideMode(Qt::ElideMiddle);
  setWordWrap(false);
  setFrameShape(NoFrame);
  setDragEnabled(false);
  setMouseTracking(true);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  viewport()->setAutoFillBackground(false);
  fill();
  connect(this, &QListWidget::itemClicked, this, &RecentTiles::choose);
  connect(&recent_, &RecentFiles::changed, this, &RecentTiles::fill);
  connect(&recent_, &RecentFiles::thumbnail_made, this, &RecentTiles::show_thumbnails);
}

int RecentTiles::height_for(int width) const {
  const int across = std::max(width / kTile.width(), 1);
  return (count() + across - 1) / across * kTile.height();
}

/// Opening the file changes this list, which is still at work now.
void RecentTiles::choose(const QListWidgetItem* item) {
  const int command = item->data(kCommandRole).toInt();
  QTimer::singleShot(0, this, [this, command] { emit chosen(command); });
}

void RecentTiles::keyPressEvent(QKeyEvent* event) {
  const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (!enter || !currentItem()) return QListWidget::keyPressEvent(event);
  choose(currentItem());
}

void RecentTiles::showEvent(QShowEvent* event) {
  QListWidget::showEvent(event);
  show_thumbnails();
}

void RecentTiles::fill() {
  clear();
  int command = kFirstRecentFile;
  for (const RecentFile& file : recent_.files()) {
    const std::filesystem::path path(file.path);
    auto* item = new QListWidgetItem(path_text(path.filename()), this);
    item->setData(kCommandRole, command++);
    item->setToolTip(path_text(path));
    item->setTextAlignment(Qt::AlignHCenter);
    item->setIcon(program_icon("sheet"));
  }
  setHidden(count() == 0);
  if (isVisible()) show_thumbnails();
}

void RecentTiles::show_thumbnails() {
  if (settings::RememberFileHistoryEnable == 0) return;
  for (int i = 0; i < count(); ++i)
    if (const std::string* path = recent_.file_of(item(i)->data(kCommandRole).toInt()))
      item(i)->setIcon(recent_.thumbnail(*path));
}

}  // namespace vellum
