// The dialogs that ask for a file to open or to save.
#pragma once

#include <QWidget>

#include "shell/services/services.h"

namespace vellum {

/// "All files", then one entry a format; each with small and capital letters.
QString open_filters();
/// The filter of a format: "GIF files (*.gif *.GIF)".
QString file_filter(std::string_view name, std::span<const std::string_view> extensions);

std::optional<std::filesystem::path> ask_for_open(QWidget* parent);
std::optional<std::filesystem::path> ask_for_save(QWidget* parent, const SaveChoice& choice);
/// A file beside documents; begins in the folder of the last import, or export, unless the name has one.
std::optional<std::filesystem::path> ask_for_file(QWidget* parent, const FileChoice& choice);

/// One entry a graphic-file module; "All pictures" in front for reading.
QString picture_filters(bool reading);
/// The number of the filter, of several parted by ";;", that takes a file of this name; 0 where none does.
int filter_of_name(const QString& filters, const std::filesystem::path& name);
/// Pictures to insert, in the order of their names; none when the user cancelled.
std::vector<std::filesystem::path> ask_for_pictures(QWidget* parent, bool several);

}  // namespace vellum
