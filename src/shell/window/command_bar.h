// Menu bar, toolbar and keys of the main window, made from the command table.
#pragma once

#include <QAction>
#include <QComboBox>
#include <QMainWindow>
#include <QToolBar>
#include <map>

#include "shell/window/command_table.h"

namespace vellum {

class CommandBar : public QObject {
  Q_OBJECT
 public:
  /// Fills the window's menu bar, adds its toolbar and binds the keys.
  explicit CommandBar(QMainWindow& window);

  /// The action of a command; null for a number without one.
  QAction* action(int number) const;
  QMenu* menu(Menu menu) const { return menus_.at(menu); }

  void enable(const CommandState& state);
  /// Draws the toolbar anew after its settings have changed.
  void refresh_look();
  void show_scale(int index);
  /// Names what Undo and Redo would do; empty for nothing.
  void show_undo(std::string_view undo, std::string_view redo);
  int scale() const { return scale_->currentIndex(); }
  /// Whether the command that runs was chosen by its key, which may hold Control itself.
  bool by_key() const { return byKey_; }
  /// The toolbar button of a command; null without one, or while there is no room for it.
  QWidget* tool_button(int number) const;

 signals:
  /// Menu, toolbar or key: the number of a command.
  void triggered(int number);

 protected:
  /// Menus tell why a command can't be chosen.
  bool eventFilter(QObject* menu, QEvent* event) override;

 private:
  void add_action(const CommandRow& row);
  void fill_menus(QMainWindow& window);
  void fill_toolbar(QMainWindow& window);
  void dress_bar();
  void add_to_menu(Menu menu, int group, QAction* action);
  QMenu* add_menu(const MenuRow& row, QMainWindow& window);
  void add_run_time_menus(int behind);
  void add_menu_tools();
  void add_tool(int command);
  void add_scale(int command);
  void bind_keys(QMainWindow& window);

  std::map<int, QAction*> actions_;
  std::map<Menu, QMenu*> menus_;
  std::map<Menu, int> lastGroup_;  ///< of the commands that a menu has so far
  QToolBar* bar_ = nullptr;
  QStyle* look_ = nullptr;
  QComboBox* scale_ = nullptr;
  bool byKey_ = false;
};

/// A label without its marked letter and its key: "Save as...".
QString plain_label(const char* label);

}  // namespace vellum
