// What the commands do. Each is a row of the command table.
#pragma once

#include "core/model/document.h"

class QMenu;

namespace vellum {

class MainWindow;
class DocumentFrame;

/// Asks for the first parameters of the kind.
void new_document_command(MainWindow& main, DocumentKind kind);
template <DocumentKind Kind>
void new_command(MainWindow& main) {
  new_document_command(main, Kind);
}
void open_command(MainWindow& main);
void save_command(MainWindow& main, DocumentFrame& frame);
void save_as_command(MainWindow& main, DocumentFrame& frame);
void close_command(MainWindow& main, DocumentFrame& frame);
/// With Shift held no window asks, and changes are lost.
void close_all_command(MainWindow& main);
void exit_command(MainWindow& main);

void undo_command(MainWindow& main, DocumentFrame& frame);
void redo_command(MainWindow& main, DocumentFrame& frame);
void cut_command(MainWindow& main, DocumentFrame& frame);
void copy_command(MainWindow& main, DocumentFrame& frame);
void paste_command(MainWindow& main, DocumentFrame& frame);
void delete_command(MainWindow& main, DocumentFrame& frame);
/// Opens the editor of the caret's entry.
void edit_command(MainWindow& main, DocumentFrame& frame);
void move_up_command(MainWindow& main, DocumentFrame& frame);
void move_down_command(MainWindow& main, DocumentFrame& frame);
void dismiss_notes_command(MainWindow& main, DocumentFrame& frame);
/// The bar that looks for a text in the rows.
void find_text_command(MainWindow& main, DocumentFrame& frame);
void find_next_command(MainWindow& main, DocumentFrame& frame);
void find_backwards_command(MainWindow& main, DocumentFrame& frame);
/// With Shift held, the image entries only.
void select_all_command(MainWindow& main, DocumentFrame& frame);
void select_none_command(MainWindow& main, DocumentFrame& frame);

/// Inserts a chunk with its default content and opens its editor; Cancel there takes the chunk away again.
void insert_chunk_command(MainWindow& main, DocumentFrame& frame, ChunkTag tag);
template <ChunkTag Tag>
void insert_command(MainWindow& main, DocumentFrame& frame) {
  insert_chunk_command(main, frame, Tag);
}
/// Asks which of all chunks that the document takes.
void insert_other_command(MainWindow& main, DocumentFrame& frame);
/// Asks for pictures; each becomes an image behind the caret.
void insert_images_command(MainWindow& main, DocumentFrame& frame);
/// Puts what the document takes into a menu.
void fill_insert_menu(QMenu& menu, MainWindow& main, DocumentFrame& frame);
/// Drops the list of what the document takes down from the toolbar.
void insert_popup_command(MainWindow& main, DocumentFrame& frame);

void cascade_command(MainWindow& main);
void tile_command(MainWindow& main);
void arrange_icons_command(MainWindow& main);
/// Shows the dock that says what is wrong with the document, and looks.
void check_command(MainWindow& main, DocumentFrame& frame);
/// The documents in the order of their tabs, round and round.
void next_window_command(MainWindow& main);
void previous_window_command(MainWindow& main);
/// Gives the keyboard to the next dock, and behind the last one to the document.
void next_pane_command(MainWindow& main);
/// Opens the dock of this number, or closes it.
void toggle_dock(MainWindow& main, int number);
template <int Number>
void dock_command(MainWindow& main) {
  toggle_dock(main, Number);
}
void duplicate_command(MainWindow& main, DocumentFrame& frame);
/// Takes the thumbnail scale that the toolbar shows.
void scale_command(MainWindow& main, DocumentFrame& frame);

void properties_command(MainWindow& main, DocumentFrame& frame);
void manage_command(MainWindow& main, DocumentFrame& frame);
void supercompress_command(MainWindow& main, DocumentFrame& frame);
void image_strip_command(MainWindow& main, DocumentFrame& frame);
/// With Control held (Shift where a key asks for it), a copy whose frames are whole canvases.
void view_command(MainWindow& main, DocumentFrame& frame);

/// Writes the image of the row under the pointer as a file.
void export_image_command(MainWindow& main, DocumentFrame& frame);

/// The settings of the program; with Shift held, with the defaults put in.
void setup_command(MainWindow& main);
void combine_command(MainWindow& main);
/// Asks for a movie, whose frames become a document; or plays it.
void import_movie_command(MainWindow& main);
void preview_movie_command(MainWindow& main);
void print_command(MainWindow& main, DocumentFrame& frame);
void gallery_command(MainWindow& main);
void favorites_command(MainWindow& main);
void pin_command(MainWindow& main, DocumentFrame& frame);
void unpin_command(MainWindow& main, DocumentFrame& frame);

/// The guide's first page; with Shift held, the list of its pages.
void contents_command(MainWindow& main);
void about_command(MainWindow& main);
/// Opens a page of the maker in the browser; a command without a page says so.
void open_web_page(MainWindow& main, int number);
template <int Number>
void web_page_command(MainWindow& main) {
  open_web_page(main, Number);
}

/// Tells that there is nothing behind this command.
void not_implemented_command(MainWindow& main, DocumentFrame& frame);
void system_information_command(MainWindow& main);
void tip_command(MainWindow& main);
void welcome_command(MainWindow& main);

/// Asks what an operation of the table is to do, and does it.
void run_operation_command(MainWindow& main, DocumentFrame& frame, int number);
template <int Number>
void operation_command(MainWindow& main, DocumentFrame& frame) {
  run_operation_command(main, frame, Number);
}

/// Asks for a name and the values of an export, and writes the file.
void run_export_command(MainWindow& main, DocumentFrame& frame, int number);
template <int Number>
void export_command(MainWindow& main, DocumentFrame& frame) {
  run_export_command(main, frame, Number);
}
/// Asks for the values of a generator, whose animation becomes a document in a window of its own.
void run_generator_command(MainWindow& main, int number);
void transition_command(MainWindow& main);
template <int Number>
void generator_command(MainWindow& main) {
  run_generator_command(main, Number);
}
/// The animation wizard, whose animation becomes a document in a window of its own.
void wizard_command(MainWindow& main);
void batch_command(MainWindow& main);
/// Adds the plugins that are there to the end of the Create menu.
void add_plugins(MainWindow& main);
/// Asks for a file of an import, which becomes a document in a window of its own.
void run_import_command(MainWindow& main, int number);
template <int Number>
void import_command(MainWindow& main) {
  run_import_command(main, Number);
}

}  // namespace vellum
