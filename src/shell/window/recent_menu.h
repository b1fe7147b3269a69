// The files of the File menu.
#pragma once

#include <QMenu>
#include <functional>

#include "shell/services/recent_files.h"

namespace vellum {

/// Keeps the menu showing the recent files, each with the command that opens it, newest first. Their
/// thumbnails are made when the menu first opens.
void show_in_menu(RecentFiles& recent, QMenu& menu, const std::function<void(int command)>& run);

}  // namespace vellum
