// What the commands do. Each is a row of the command table.
#pragma once

namespace vellum {

class MainWindow;
class DocumentFrame;

void open_command(MainWindow& main);
void save_command(MainWindow& main, DocumentFrame& frame);
void save_as_command(MainWindow& main, DocumentFrame& frame);
void close_command(MainWindow& main, DocumentFrame& frame);
/// With Shift held no window asks, and changes are lost.
void close_all_command(MainWindow& main);
void exit_command(MainWindow& main);

/// With Shift held, the image entries only.
void select_all_command(MainWindow& main, DocumentFrame& frame);
void select_none_command(MainWindow& main, DocumentFrame& frame);

void cascade_command(MainWindow& main);
void tile_command(MainWindow& main);
void arrange_icons_command(MainWindow& main);
void duplicate_command(MainWindow& main, DocumentFrame& frame);
/// Takes the thumbnail scale that the toolbar shows.
void scale_command(MainWindow& main, DocumentFrame& frame);

void properties_command(MainWindow& main, DocumentFrame& frame);
void manage_command(MainWindow& main, DocumentFrame& frame);
void image_strip_command(MainWindow& main, DocumentFrame& frame);

void about_command(MainWindow& main);

}  // namespace vellum
