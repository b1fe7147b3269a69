#include "shell/file_dialogs.h"

#include <QFileDialog>
#include <QStandardPaths>

#include "configuration/shell_settings.h"
#include "image/graphic_file.h"
#include "shell/saving.h"
#include "shell/text.h"

namespace vellum {
namespace {

struct Format {
  const char* name;
  const char* extension;
  std::span<const DocumentKind> kinds;  ///< which documents are saved as such files
};

constexpr DocumentKind kPngKinds[] = {DocumentKind::PING, DocumentKind::APNG};
constexpr DocumentKind kMngKinds[] = {DocumentKind::MING};
constexpr DocumentKind kWebpKinds[] = {DocumentKind::WEBP};

constexpr Format kFormats[] = {
    {"PNG", "png", kPngKinds}, {"MNG", "mng", kMngKinds}, {"WebP", "webp", kWebpKinds}};

QString patterns(const Format& format) {
  const QString extension = QString::fromLatin1(format.extension);
  return QStringLiteral("*.%1 *.%2").arg(extension, extension.toUpper());
}

QString filter_of(const Format& format) {
  return QStringLiteral("%1 (%2)").arg(QString::fromLatin1(format.name), patterns(format));
}

QString folder_or_documents(const std::string& folder) {
  if (!folder.empty()) return to_qt(folder);
  return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
}

QString start_folder() { return folder_or_documents(settings::OpenPath); }

std::filesystem::path remember_folder(const QString& name) {
  std::filesystem::path path = to_path(name);
  settings::OpenPath = path.parent_path().string();
  return path;
}

QString save_filter(DocumentKind kind) {
  for (const Format& format : kFormats)
    if (std::ranges::find(format.kinds, kind) != format.kinds.end()) return filter_of(format);
  return {};
}

}  // namespace

QString open_filters() {
  QStringList all, single;
  for (const Format& format : kFormats) {
    all << patterns(format);
    single << filter_of(format);
  }
  single.prepend(QObject::tr("All formats (%1)").arg(all.join(u' ')));
  return single.join(QStringLiteral(";;"));
}

std::optional<std::filesystem::path> ask_for_open(QWidget* parent) {
  const QString name =
      QFileDialog::getOpenFileName(parent, QObject::tr("Open"), start_folder(), open_filters());
  if (name.isEmpty()) return std::nullopt;
  return remember_folder(name);
}

std::optional<std::filesystem::path> ask_for_save(QWidget* parent, const SaveChoice& choice) {
  const QString filter = save_filter(choice.kind);
  QString offered = path_text(choice.name);
  if (!choice.name.is_absolute()) offered = start_folder() + u'/' + offered;
  for (;;) {
    const QString name = QFileDialog::getSaveFileName(parent, QObject::tr("Save as"), offered, filter);
    if (name.isEmpty()) return std::nullopt;
    const auto path = to_path(name);
    const auto forced = with_kind_extension(path, choice.kind);
    std::error_code error;
    if (forced == path || !std::filesystem::exists(forced, error)) return remember_folder(path_text(forced));
    // The dialog has asked about another name than the one that would be written over.
    offered = path_text(forced);
  }
}

std::optional<std::filesystem::path> ask_for_output(QWidget* parent, const FileChoice& choice) {
  const QString folder = folder_or_documents(settings::OpenExportPath);
  const QString name = QFileDialog::getSaveFileName(parent, choice.title,
                                                    folder + u'/' + path_text(choice.name), choice.filter);
  if (name.isEmpty()) return std::nullopt;
  settings::OpenExportPath = to_path(name).parent_path().string();
  return to_path(name);
}

std::optional<std::filesystem::path> ask_for_input(QWidget* parent, const FileChoice& choice) {
  const QString folder = folder_or_documents(settings::OpenImportPath);
  const QString name = QFileDialog::getOpenFileName(parent, choice.title, folder, choice.filter);
  if (name.isEmpty()) return std::nullopt;
  settings::OpenImportPath = to_path(name).parent_path().string();
  return to_path(name);
}

QString picture_filters(bool all) {
  QStringList patterns, rows;
  for (const GraphicFileModule& module : graphic_file_modules()) {
    const QString pattern = QStringLiteral("*.") + to_qt(module.extension);
    patterns << pattern;
    rows << QStringLiteral("%1 (%2)").arg(to_qt(module.name), pattern);
    if (module.extension == "png") rows.move(rows.size() - 1, 0);
  }
  if (all) rows.prepend(QObject::tr("All formats (%1)").arg(patterns.join(u' ')));
  return rows.join(QStringLiteral(";;"));
}

}  // namespace vellum
