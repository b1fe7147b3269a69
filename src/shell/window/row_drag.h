// Rows that are dragged inside a list, to another window and to another program; files dropped on a list.
#pragma once

#include <QMimeData>
#include <QPixmap>
#include <filesystem>

namespace vellum {

class MainWindow;
class DocumentFrame;

/// What the drag of the selected rows carries: where they come from, and for other programs their block and
/// the images among them as PNG files, which are made when they are asked for: their own pictures, or the
/// canvases that they show.
QMimeData* dragged_rows(DocumentFrame& frame, bool canvases = false);
/// The first image of the selection, or the text of its first row, with the number of rows beside it; null
/// without a selection.
QPixmap drag_pixmap(DocumentFrame& frame);
/// Drags the selected rows until they are dropped or Escape is pressed.
void drag_rows(DocumentFrame& frame, bool canvases);
/// Whether it is the rows of this window that are dragged.
bool is_drag_of(const DocumentFrame& frame, const QMimeData& data);
/// Moves or copies the selected rows inside their list, as soon as the drag is over.
void put_rows_later(MainWindow& main, DocumentFrame& frame, std::size_t position, bool copy);

/// Whether the list of this window takes what is dragged: rows, chunks of another program, and on an
/// animation files.
bool may_drop_on(DocumentFrame& frame, const QMimeData& data);
/// Copies it behind `row`, as soon as the drag is over.
void drop_on(MainWindow& main, DocumentFrame& frame, const QMimeData& data, std::size_t row);

/// The files of this machine that are dragged; rows are none.
std::vector<std::filesystem::path> dragged_files(const QMimeData& data);

}  // namespace vellum
