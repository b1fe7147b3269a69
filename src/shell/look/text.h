// Texts, paths and the string table as Qt takes them.
#pragma once

#include <QFile>
#include <QString>
#include <filesystem>

#include "base/string_table.h"
#include "base/translation.h"

namespace vellum {

inline QString to_qt(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}
/// A text of a row in the person's language.
inline QString shown(std::string_view text) { return to_qt(translated(text)); }
inline QString text_of(StringId id) { return to_qt(string_text(id)); }

inline QString path_text(const std::filesystem::path& path) { return QFile::decodeName(path.c_str()); }
inline std::filesystem::path to_path(const QString& name) { return QFile::encodeName(name).toStdString(); }

/// A file name in a menu, where "&" would mark a letter.
inline QString menu_text(QString name) { return name.replace(u'&', QStringLiteral("&&")); }

}  // namespace vellum
