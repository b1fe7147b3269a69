// The picture files of a folder.
#pragma once

#include <QStringList>

namespace vellum {

/// Whether a name ends as those of a graphic format do.
bool is_picture_name(const QString& name);

/// Paths in the order of the graphic formats, and of each by name, numbers in names as numbers. Hidden files
/// are left out. Empty where the folder can't be read.
QStringList pictures_of_folder(const QString& folder);

/// "a2" is in front of "a10", without regard to case.
bool natural_less(const QString& a, const QString& b);

}  // namespace vellum
