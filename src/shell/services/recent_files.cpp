#include "shell/services/recent_files.h"

#include <QPainter>

#include "configuration/config_file.h"
#include "shell/look/icon.h"
#include "shell/look/text.h"
#include "shell/services/file_thumbnail.h"

namespace vellum {
namespace {

// Device pixels: twice as many as are usually shown. All have one shape, so that rows and tiles that show
// them stand in line.
constexpr QSize kThumbnail(192, 144);

QIcon framed(const QImage& image) {
  QPixmap ground(kThumbnail);
  ground.fill(Qt::transparent);
  const QSize fitting = image.size().scaled(kThumbnail, Qt::KeepAspectRatio).expandedTo({1, 1});
  const QSize size = fitting.boundedTo(image.size() * 2);
  QRect place(QPoint(), size);
  place.moveCenter(ground.rect().center());
  QPainter painter(&ground);
  painter.setRenderHint(QPainter::SmoothPixmapTransform);
  painter.drawImage(place, image);
  return QIcon(ground);
}

std::filesystem::path history_file() {
  return config_file().empty() ? std::filesystem::path() : config_file().parent_path() / kFileHistoryName;
}

}  // namespace

RecentFiles::RecentFiles(QObject* parent) : QObject(parent), store_(history_file()) {
  if (!store_.empty()) files_ = load_file_history(store_);
  connect(&idle_, &QTimer::timeout, this, &RecentFiles::make_next);
}

const std::string* RecentFiles::file_of(int command) const {
  const auto index = static_cast<std::size_t>(command - kFirstRecentFile);
  return command >= kFirstRecentFile && index < files_.size() ? &files_[index].path : nullptr;
}

void RecentFiles::change(const std::function<void(std::vector<RecentFile>&)>& how) {
  if (store_.empty())
    how(files_);
  else
    files_ = change_file_history(store_, how);
  emit changed();
}

void RecentFiles::remember(const std::filesystem::path& path) {
  thumbnails_.remove(path_text(path));
  change([&](std::vector<RecentFile>& files) { remember_file(files, {path.string(), -1}); });
  if (share) share(path);
}

void RecentFiles::forget(const std::filesystem::path& path) {
  change([&](std::vector<RecentFile>& files) { forget_file(files, path.string()); });
}

void RecentFiles::reload() {
  change([](std::vector<RecentFile>&) {});
}

QIcon RecentFiles::thumbnail(const std::string& path) {
  const auto made = thumbnails_.constFind(path_text(path));
  if (made != thumbnails_.constEnd()) return *made;
  wanted_.push_back(path);
  idle_.start();
  const QIcon stand_in = program_icon("sheet");
  thumbnails_.insert(path_text(path), stand_in);
  return stand_in;
}

/// One at a time, so that the program stays quick while they are made.
void RecentFiles::make_next() {
  if (wanted_.empty()) return idle_.stop();
  const std::string path = std::move(wanted_.front());
  wanted_.pop_front();
  const QImage image = file_thumbnail(path, kThumbnail.width());
  if (image.isNull()) return;
  thumbnails_.insert(path_text(path), framed(image));
  emit thumbnail_made(path_text(path));
}

}  // namespace vellum
