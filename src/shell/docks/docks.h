// The docks of the main window: opens and closes them, remembers how they stand, and tells those that are
// seen of the active document.
#pragma once

#include <QDockWidget>
#include <QMainWindow>
#include <QPointer>

#include "shell/docks/dock_table.h"

namespace vellum {

class Docks : public QObject {
  Q_OBJECT
 public:
  /// All of them are closed at first.
  Docks(QMainWindow& window, DockContext context);
  ~Docks() override;

  /// Arranges the docks as they were left on a screen of such a width; as they come where they never were:
  /// on a large screen some are open, on a small one none is.
  void arrange(int screen_width);
  /// Keeps the arrangement in its setting, for a window that was arranged.
  void remember() const;

  /// Opens and shows the dock of a command, or closes it where it is seen.
  void toggle(int command);
  /// Opens it and brings it to the front; with `focus` it gets the keyboard too.
  void show(int command, bool focus);
  bool is_seen(int command) const;
  /// Gives the keyboard to the next dock that is seen; behind the last one (and without any) to `list`.
  void focus_next(QWidget* list);

  /// The document that commands act on; null without one. Cheap where nothing is new.
  void set_document(DocumentFrame* frame);
  /// The guide's topic of the dock that has the keyboard; empty where none has.
  QString topic() const;
  /// Lets all panels take what is typed.
  void settle();

  /// Null while the dock was never seen.
  DockPanel* panel(int command) const;
  QDockWidget* dock(int command) const;
  /// How often a panel was told of anything, since the program began.
  std::uint64_t told() const { return told_; }

 signals:
  /// A dock was opened or closed, or another one lies in front.
  void changed();

 private:
  struct Open {
    const DockRow* row;
    QDockWidget* dock;
    DockPanel* panel = nullptr;
    bool seen = false;
    DocumentFrame* shown = nullptr;
  };

  void add(const DockRow& row);
  void make(Open& open);
  void see(Open& open, bool seen);
  void show_in(Open& open, DocumentFrame* frame);
  void arrange_as_they_come(int screen_width);
  void follow_later();
  void follow();
  const Open* find(int command) const;
  Open* find(int command);
  const Open* focused() const;

  QMainWindow& window_;
  DockContext context_;
  std::vector<Open> docks_;
  QPointer<DocumentFrame> frame_;
  bool pending_ = false;       ///< panels are to be told soon
  std::optional<bool> small_;  ///< the screen that the arrangement belongs to, once there is one
  std::uint64_t told_ = 0;
};

}  // namespace vellum
