// The commands: one row for each. Menus, toolbar, keys and enabled states are derived from these tables.
#pragma once

#include <span>

#include "core/document.h"

namespace vellum {

class MainWindow;
class DocumentFrame;

enum class Menu { None, File, New, Edit, InsertMng, InsertPng, InsertWebp, Window, Help };

/// What a command needs before it can run.
enum class Need { Nothing, Entries, Selection, Undo, Clipboard };

enum class ToolPlace { None, Button, DropDown };

struct CommandRow {
  int number;
  const char* label;  ///< with the marked letter; behind a tab the key that the menu names
  Menu menu;
  int menuGroup;  ///< a line parts groups of the same menu
  Need need;
  std::span<const DocumentKind> kinds;  ///< empty: every kind
  ToolPlace tool;
  int toolGroup;
  const char* icon;  ///< file in data/icons; null without one
  /// One of the two: on the program, with or without a document, or on the active document.
  void (*run)(MainWindow&);
  void (*run_on_document)(MainWindow&, DocumentFrame&);
};

std::span<const CommandRow> command_table();
/// Null for a number that no command has.
const CommandRow* find_command(int number);

/// A submenu stands where the first command of it stands in the table.
struct MenuRow {
  Menu menu;
  const char* label;
  Menu parent = Menu::None;    ///< None: in the menu bar
  int group = 0;               ///< in its parent
  const char* icon = nullptr;  ///< of the toolbar button, in the first group, that drops the menu down
};
std::span<const MenuRow> menu_table();

/// Keys apart from the labels: a label may name a key that isn't one.
struct KeyRow {
  const char* keys;
  int command;
};
std::span<const KeyRow> key_table();

/// What the enabled states depend on.
struct CommandState {
  bool document = false;  ///< a document is active
  DocumentKind kind = DocumentKind::None;
  std::size_t entries = 0, selected = 0;
  bool undo = false;   ///< the document has a level to go back to
  bool paste = false;  ///< the clipboard holds something that can be pasted
};

bool command_enabled(const CommandRow& row, const CommandState& state);

}  // namespace vellum
