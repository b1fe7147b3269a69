// The pane of a file dialog that shows the file which is chosen.
#pragma once

#include <QFileDialog>

namespace vellum {

/// Puts a preview beside the dialog's list, while `ShowFileOpenPreview` is on. The dialog is then the
/// program's own and not the desktop's.
void add_file_preview(QFileDialog& dialog);

/// "Width: ...", "Depth: ...", "Colors: ...", "Alpha:  ..." of a picture file; empty for other files.
QString picture_file_text(const QString& name);

}  // namespace vellum
