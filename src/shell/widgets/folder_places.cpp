#include "shell/widgets/folder_places.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

namespace vellum {
namespace {

struct PlaceRow {
  QStandardPaths::StandardLocation location;
  const char* name;
};

/// Their numbers begin with 1, behind the computer, and are kept in settings: new ones go to the end.
constexpr PlaceRow kPlaces[] = {
    {QStandardPaths::HomeLocation, QT_TRANSLATE_NOOP("vellum::FolderPlace", "Home folder")},
    {QStandardPaths::DesktopLocation, QT_TRANSLATE_NOOP("vellum::FolderPlace", "Desktop folder")},
    {QStandardPaths::DocumentsLocation, QT_TRANSLATE_NOOP("vellum::FolderPlace", "Documents")},
    {QStandardPaths::PicturesLocation, QT_TRANSLATE_NOOP("vellum::FolderPlace", "Pictures")},
    {QStandardPaths::MoviesLocation, QT_TRANSLATE_NOOP("vellum::FolderPlace", "Videos")},
    {QStandardPaths::DownloadLocation, QT_TRANSLATE_NOOP("vellum::FolderPlace", "Downloads")},
};

QString place_name(const char* name) { return QCoreApplication::translate("vellum::FolderPlace", name); }

/// "\040" stands for a blank, as for all that would end a word of the line.
QString mounted_at(const QByteArray& word) {
  QByteArray path;
  for (qsizetype i = 0; i < word.size(); ++i) {
    bool octal = false;
    const int value = word[i] == '\\' ? word.mid(i + 1, 3).toInt(&octal, 8) : 0;
    path += octal ? static_cast<char>(value) : word[i];
    if (octal) i += 3;
  }
  return QFile::decodeName(path);
}

/// A part of a disk stands in the folder of its disk, which says what it is.
bool is_removable(const QString& device, const QString& devices) {
  const QString folder = QFileInfo(devices + u'/' + device).canonicalFilePath();
  if (folder.isEmpty()) return false;
  for (const QString& disk : {folder, QFileInfo(folder).path()}) {
    QFile file(disk + QStringLiteral("/removable"));
    if (file.open(QIODevice::ReadOnly)) return file.read(1) == "1";
  }
  return false;
}

}  // namespace

std::vector<FolderPlace> folder_places() {
  std::vector<FolderPlace> places = {
      {0, place_name(QT_TRANSLATE_NOOP("vellum::FolderPlace", "Computer")), QStringLiteral("/")}};
  int number = 0;
  for (const PlaceRow& row : kPlaces) {
    ++number;
    const QString path = QDir::cleanPath(QStandardPaths::writableLocation(row.location));
    // A person who has no such folder is given the home folder by some desktops.
    const bool fresh = std::ranges::find(places, path, &FolderPlace::path) == places.end();
    if (fresh && QFileInfo(path).isDir()) places.push_back({number, place_name(row.name), path});
  }
  return places;
}

QStringList removable_media(const QString& mounts, const QString& devices) {
  QFile file(mounts);
  if (!file.open(QIODevice::ReadOnly)) return {};
  QStringList found;
  for (const QByteArray& line : file.readAll().split('\n')) {
    const QList<QByteArray> words = line.split(' ');
    if (words.size() > 1 && words[0].startsWith("/dev/") &&
        is_removable(QString::fromUtf8(words[0].mid(5)), devices))
      found += mounted_at(words[1]);
  }
  return found;
}

}  // namespace vellum
