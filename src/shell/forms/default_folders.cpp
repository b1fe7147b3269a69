#include "shell/forms/default_folders.h"

#include <QDir>
#include <QStandardPaths>

#include "batch/settings.h"
#include "configuration/shell_settings.h"
#include "exchange/settings.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

enum class Place { Documents, Pictures };

const struct {
  std::string* variable;
  Place place;
  const char* name;
} kPaths[] = {
    {&settings::OpenPath, Place::Documents, ""},
    {&settings::OpenImportPath, Place::Documents, ""},
    {&settings::OpenExportPath, Place::Documents, ""},
    {&settings::BatchProcessorDestPath, Place::Documents, ""},
    {&settings::WebGalleryPageDestinationPath, Place::Documents, ""},
    {&settings::SaveMovieSoundPath, Place::Documents, "default.wav"},
    {&settings::WebGalleryPageHeaderPath, Place::Documents, "MyHeader.html"},
    {&settings::WebGalleryPageFooterPath, Place::Documents, "MyFooter.html"},
    {&settings::DocumentBrowserPath, Place::Pictures, ""},
    {&settings::MDIClientImage, Place::Pictures, "Vellumcraft Background.bmp"},
};

QString folder_of(Place place) {
  if (place == Place::Pictures)
    return QStandardPaths::writableLocation(QStandardPaths::PicturesLocation) + u'/';
  return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) +
         QStringLiteral("/My Vellumcraft 15 Documents/");
}

}  // namespace

void fill_default_folders() {
  for (const auto& path : kPaths)
    if (path.variable->empty())
      *path.variable = (folder_of(path.place) + QLatin1String(path.name)).toStdString();
}

QString usable_folder(const std::string& folder) {
  const QString wanted = to_qt(folder), own = folder_of(Place::Documents);
  if (QDir::cleanPath(wanted) == QDir::cleanPath(own)) QDir().mkpath(own);
  const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
  for (const QString& name : {wanted, documents})
    if (!name.isEmpty() && QDir(name).exists()) return name;
  return QDir::homePath();
}

}  // namespace vellum
