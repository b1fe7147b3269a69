// The folders that files are looked for in before the user has chosen any.
#pragma once

#include <QString>
#include <string>

namespace vellum {

/// Fills in the paths that the configuration left empty. Nothing is made on the disk.
void fill_default_folders();

/// The folder, made now if it is the program's own folder of documents; where it isn't there the one for
/// documents, else the home folder.
QString usable_folder(const std::string& folder);

}  // namespace vellum
