#include "shell/services/file_thumbnail.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QFileInfo>
#include <QImageReader>
#include <QStandardPaths>
#include <QUrl>

#include "configuration/shell_settings.h"
#include "core/files/first_picture.h"
#include "image/graphic_file.h"
#include "shell/look/picture_image.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr std::uint64_t kMostPixels = 12'000'000;
constexpr qint64 kMostBytes = qint64{16} << 20;

/// The thumbnail that a file manager has left, by the Thumbnail Managing Standard: named after the MD5 sum of
/// the file's address, and good while it tells the file's own time.
QImage shared_thumbnail(const QFileInfo& file) {
  if (settings::UseWindowsThumbnailCache == 0) return {};
  const QByteArray address = QUrl::fromLocalFile(file.absoluteFilePath()).toEncoded();
  const QString name =
      QString::fromLatin1(QCryptographicHash::hash(address, QCryptographicHash::Md5).toHex());
  const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
  const QString time = QString::number(file.lastModified().toSecsSinceEpoch());
  for (const char* size : {"large", "normal"}) {
    QImageReader reader(QStringLiteral("%1/thumbnails/%2/%3.png").arg(folder, QLatin1String(size), name),
                        "png");
    if (reader.text(QStringLiteral("Thumb::MTime")) == time) return reader.read();
  }
  return {};
}

}  // namespace

QImage file_thumbnail(const std::filesystem::path& path, int size) {
  const QFileInfo file(path_text(path));
  const QSize room(size, size);
  if (const QImage shared = shared_thumbnail(file); !shared.isNull())
    return shared.scaled(room.boundedTo(shared.size()), Qt::KeepAspectRatio, Qt::SmoothTransformation);
  if (!file.isFile() || file.size() > kMostBytes) return {};
  const Picture picture = first_picture(path, static_cast<std::uint32_t>(size), kMostPixels).picture;
  if (!picture) return {};
  const QSize own(static_cast<int>(picture.width()), static_cast<int>(picture.height()));
  const bool fits = own.boundedTo(room) == own;
  return scaled_image(picture, fits ? own : own.scaled(room, Qt::KeepAspectRatio).expandedTo({1, 1}));
}

}  // namespace vellum
