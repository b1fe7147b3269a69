#include "shell/services/folder_documents.h"

#include <QDir>
#include <QFile>
#include <algorithm>
#include <string_view>

#include "base/byte_order.h"
#include "core/model/kind_table.h"
#include "exchange/importer.h"
#include "shell/look/text.h"
#include "shell/services/folder_pictures.h"

namespace vellum {
namespace {

constexpr qsizetype kMostFiles = 50'000;
constexpr qint64 kMostForeignBytes = qint64{16} << 20;

/// An animated PNG tells so in front of its pixels.
bool is_animated_png(QFile& file) {
  for (file.seek(8);;) {
    const QByteArray head = file.read(8);
    if (head.size() < 8) return false;
    const auto type = std::string_view(head.constData() + 4, 4);
    if (type == "acTL") return true;
    if (type == "IDAT" ||
        !file.seek(file.pos() + read_be32(reinterpret_cast<const std::uint8_t*>(head.constData())) + 4))
      return false;
  }
}

void add_folder(const QString& folder, bool subfolders, const std::atomic<bool>& wanted, QStringList& paths) {
  const QDir dir(folder);
  QStringList names = dir.entryList(QDir::Files);
  std::ranges::sort(names, natural_less);
  for (const QString& name : names)
    if (paths.size() < kMostFiles && is_document_name(name)) paths << dir.filePath(name);
  if (!subfolders) return;
  QStringList folders = dir.entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::NoSymLinks);
  std::ranges::sort(folders, natural_less);
  for (const QString& name : folders)
    if (wanted && paths.size() < kMostFiles) add_folder(dir.filePath(name), true, wanted, paths);
}

bool begins_as(const QByteArray& head, DocumentKind kind) {
  const KindRow& row = kind_row(kind);
  const std::string_view view(head.constData(), static_cast<std::size_t>(head.size()));
  return view.size() >= row.signatureAt + row.signature.size() &&
         view.substr(row.signatureAt).starts_with(row.signature);
}

}  // namespace

bool is_document_name(const QString& name) {
  const std::filesystem::path path = to_path(name);
  if (name.startsWith(u'.')) return false;
  if (has_document_extension(path) || is_picture_name(name)) return true;
  const QString lower = name.toLower();
  return std::ranges::any_of(importer_table(), [&](const Importer* importer) {
    return std::ranges::any_of(importer->extensions,
                               [&](std::string_view extension) { return lower.endsWith(to_qt(extension)); });
  });
}

bool is_animation_file(const std::filesystem::path& path) {
  QFile file(path_text(path));
  if (!file.open(QIODevice::ReadOnly)) return false;
  const QByteArray head = file.peek(32);
  if (begins_as(head, DocumentKind::MING)) return true;
  if (begins_as(head, DocumentKind::PING)) return is_animated_png(file);
  if (begins_as(head, DocumentKind::WEBP))
    return head.size() > 20 && head.mid(12, 4) == "VP8X" && (head[20] & 2) != 0;
  const QByteArray bytes = file.read(kMostForeignBytes);
  const std::span view(reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                       static_cast<std::size_t>(bytes.size()));
  const Importer* importer = importer_of(view);
  // Of what is no picture, files that begin as RIFF hold animated pointers.
  return importer && (importer->isAnimation ? importer->isAnimation(view) : head.startsWith("RIFF"));
}

QSize size_of_mng(const std::filesystem::path& path) {
  QFile file(path_text(path));
  if (!file.open(QIODevice::ReadOnly)) return {};
  const QByteArray head = file.read(24);
  if (head.size() < 24 || !begins_as(head, DocumentKind::MING)) return {};
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(head.constData());
  return {static_cast<int>(read_be32(bytes + 16)), static_cast<int>(read_be32(bytes + 20))};
}

FolderDocuments::~FolderDocuments() {
  *working_ = false;
  pool_.clear();
  pool_.waitForDone();
}

void FolderDocuments::list(const QString& folder, bool subfolders) {
  *working_ = false;
  pool_.clear();
  working_ = std::make_shared<std::atomic<bool>>(true);
  pool_.start([this, folder, subfolders, working = working_] {
    QStringList paths;
    add_folder(folder, subfolders, *working, paths);
    QMetaObject::invokeMethod(
        this,
        [this, paths, working] {
          if (working->exchange(false)) emit listed(paths);
        },
        Qt::QueuedConnection);
  });
}

}  // namespace vellum
