// The dialogs that ask for a file to open or to save.
#pragma once

#include <QWidget>

#include "shell/services.h"

namespace vellum {

/// "All files", then one entry a format; each with small and capital letters.
QString open_filters();

std::optional<std::filesystem::path> ask_for_open(QWidget* parent);
std::optional<std::filesystem::path> ask_for_save(QWidget* parent, const SaveChoice& choice);

/// The same for files beside documents; the folders are those of exports and imports.
std::optional<std::filesystem::path> ask_for_output(QWidget* parent, const FileChoice& choice);
std::optional<std::filesystem::path> ask_for_input(QWidget* parent, const FileChoice& choice);
/// The graphic files that the program knows, as filters; with one for all of them in front on request.
QString picture_filters(bool all);

}  // namespace vellum
