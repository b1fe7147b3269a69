// The commands: one row for each. Menus, toolbar, keys and enabled states are derived from these tables.
#pragma once

#include <span>

#include "core/document.h"

namespace vellum {

class MainWindow;
class DocumentFrame;

enum class Menu { None, File, Edit, Window, Help };

/// What a command needs before it can run.
enum class Need { Nothing, Entries, Selection };

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

struct MenuRow {
  Menu menu;
  const char* label;
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
};

bool command_enabled(const CommandRow& row, const CommandState& state);

}  // namespace vellum
