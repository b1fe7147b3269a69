// The menu of a row.
#pragma once

#include <QMenu>

namespace vellum {

class MainWindow;
class DocumentFrame;

/// The commands for the entry `row` of the list, those that exist, with the labels and states that they have
/// in the main menu. The caller shows it; it goes when it is closed.
QMenu* make_context_menu(MainWindow& main, DocumentFrame& frame, std::size_t row);

}  // namespace vellum
