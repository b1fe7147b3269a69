#include "shell/services/folder_pictures.h"

#include <QDir>
#include <QDirIterator>
#include <vector>

#include "image/graphic_file.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

/// The digits of a name from a place on, without zeros in front.
QStringView number_at(const QString& name, qsizetype& at) {
  while (at < name.size() && name[at] == u'0') ++at;
  const qsizetype begin = at;
  while (at < name.size() && name[at].isDigit()) ++at;
  return QStringView(name).mid(begin, at - begin);
}

}  // namespace

bool is_picture_name(const QString& name) {
  return GraphicFileType(to_path(name).string()) != kNoGraphicFile;
}

bool natural_less(const QString& a, const QString& b) {
  qsizetype i = 0, j = 0;
  while (i < a.size() && j < b.size()) {
    if (a[i].isDigit() && b[j].isDigit()) {
      const QStringView one = number_at(a, i), other = number_at(b, j);
      if (one.size() != other.size()) return one.size() < other.size();
      if (one != other) return one < other;
      continue;
    }
    const QChar one = a[i++].toCaseFolded(), other = b[j++].toCaseFolded();
    if (one != other) return one < other;
  }
  if (i < a.size() || j < b.size()) return j < b.size();
  return a < b;
}

QStringList pictures_of_folder(const QString& folder) {
  std::vector<QStringList> formats(graphic_file_modules().size());
  for (QDirIterator files(folder, QDir::Files); files.hasNext();) {
    files.next();
    const QString name = files.fileName();
    const std::size_t row = name.startsWith(u'.') ? kNoGraphicFile : GraphicFileType(to_path(name).string());
    if (row < formats.size()) formats[row] << name;
  }
  QStringList paths;
  for (QStringList& names : formats) {
    std::ranges::sort(names, natural_less);
    for (const QString& name : names) paths << QDir(folder).filePath(name);
  }
  return paths;
}

}  // namespace vellum
