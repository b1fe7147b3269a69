// The commands: one row for each. Menus, toolbar, keys and enabled states are derived from these tables.
#pragma once

#include <span>

#include "core/model/document.h"

namespace vellum {

class MainWindow;
class DocumentFrame;

enum class Menu {
  None,
  File,
  New,
  Recent,
  Edit,
  InsertMng,
  InsertPng,
  InsertWebp,
  Animation,
  Create,
  Convert,
  Window,
  View,
  Help
};

/// What a command needs before it can run.
enum class Need { Nothing, Entries, Selection, Undo, Redo, Notes };

/// What a command does: to the program, with or without a document, or to the active document. A command
/// without a function is shown and can't be chosen.
struct CommandFunction {
  void (*on_program)(MainWindow&) = nullptr;
  void (*on_document)(MainWindow&, DocumentFrame&) = nullptr;

  constexpr CommandFunction() = default;
  constexpr CommandFunction(void (*function)(MainWindow&)) : on_program(function) {}
  constexpr CommandFunction(void (*function)(MainWindow&, DocumentFrame&)) : on_document(function) {}
  constexpr explicit operator bool() const { return on_program || on_document; }
};

struct CommandRow {
  int number;
  const char* label;  ///< with the marked letter; behind a tab the key that the menu names
  Menu menu;
  int menuGroup;  ///< a line parts groups of the same menu
  Need need;
  std::span<const DocumentKind> kinds;  ///< empty: every kind
  const char* icon;                     ///< file in data/icons; null without one
  CommandFunction run;
};

std::span<const CommandRow> command_table();
/// Null for a number that no command has.
const CommandRow* find_command(int number);

/// A submenu stands where the first command of it stands in the table.
struct MenuRow {
  Menu menu;
  const char* label;
  Menu parent = Menu::None;  ///< None: in the menu bar
  int group = 0;             ///< in its parent
  const char* icon =
      nullptr;     ///< of the submenu; one that holds commands is in the toolbar's first group too
  int behind = 0;  ///< a submenu without commands of its own stands behind this one
};
std::span<const MenuRow> menu_table();

/// The command of the thumbnail scale, which is a list in the toolbar and not a button.
inline constexpr int kScaleCommand = 701;

/// The toolbar from left to right; a line parts groups.
struct ToolRow {
  int group;
  int command;
};
std::span<const ToolRow> tool_table();

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
  bool redo = false;   ///< and one to go forward to
  bool notes = false;  ///< it has notes
};

bool command_enabled(const CommandRow& row, const CommandState& state);

}  // namespace vellum
