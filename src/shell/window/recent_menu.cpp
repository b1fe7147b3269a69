#include "shell/window/recent_menu.h"

#include <QProxyStyle>
#include <algorithm>

#include "configuration/shell_settings.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr int kLongestFolder = 40;  // characters

/// A menu whose icons are as large as thumbnails are wished.
class ThumbnailStyle : public QProxyStyle {
 public:
  explicit ThumbnailStyle(QObject* parent) { setParent(parent); }
  int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override {
    if (metric == PM_SmallIconSize && settings::RememberFileHistoryEnable != 0)
      return std::clamp(settings::RememberFileHistorySize, 16, 96);
    return QProxyStyle::pixelMetric(metric, option, widget);
  }
};

/// "&1 name", and the folder where other commands name their key.
QString entry_text(std::size_t index, const std::filesystem::path& path) {
  const QString digit = index < 9 ? QStringLiteral("&%1  ").arg(index + 1) : QString();
  QString folder = path_text(path.parent_path());
  if (folder.size() > kLongestFolder) folder = u'\u2026' + folder.right(kLongestFolder - 1);
  return digit + menu_text(path_text(path.filename())) + u'\t' + menu_text(folder);
}

void show_thumbnails(RecentFiles& recent, QMenu& menu) {
  if (settings::RememberFileHistoryEnable == 0) return;
  for (QAction* action : menu.actions()) {
    const std::string* path = recent.file_of(action->data().toInt());
    if (path) action->setIcon(recent.thumbnail(*path));
  }
}

void fill(RecentFiles& recent, QMenu& menu, const std::function<void(int)>& run) {
  menu.clear();
  int command = kFirstRecentFile;
  for (std::size_t i = 0; i < recent.files().size(); ++i, ++command) {
    const std::string& path = recent.files()[i].path;
    QAction* action = menu.addAction(entry_text(i, path));
    action->setData(command);
    action->setStatusTip(path_text(path));
    // Opening the file changes this menu, which is still at work now.
    QObject::connect(
        action, &QAction::triggered, &menu, [run, command] { run(command); }, Qt::QueuedConnection);
  }
}

}  // namespace

void show_in_menu(RecentFiles& recent, QMenu& menu, const std::function<void(int)>& run) {
  menu.setStyle(new ThumbnailStyle(&menu));
  fill(recent, menu, run);
  QObject::connect(&recent, &RecentFiles::changed, &menu, [&recent, &menu, run] { fill(recent, menu, run); });
  QObject::connect(&menu, &QMenu::aboutToShow, &recent, [&recent, &menu] { show_thumbnails(recent, menu); });
  QObject::connect(&recent, &RecentFiles::thumbnail_made, &menu, [&recent, &menu] {
    if (menu.isVisible()) show_thumbnails(recent, menu);
  });
}

}  // namespace vellum
