// What can be done to folders in a tree of them.
#pragma once

#include <QMenu>

#include "shell/services/services.h"

namespace vellum {

/// Adds "New folder", "Rename folder" and "Remove folder" for this folder. `changed` is called with the
/// folder that is to be shown afterwards.
void add_folder_actions(QMenu& menu, const QString& folder, Services& services, QWidget* parent,
                        const std::function<void(const QString& folder)>& changed);

}  // namespace vellum
