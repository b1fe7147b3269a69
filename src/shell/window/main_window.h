// The main window: routes commands, owns the document windows' work area, and keeps title, menus and status
// line true to the active document.
#pragma once

#include <QMainWindow>

#include "shell/docks/docks.h"
#include "shell/services/desktop_host.h"
#include "shell/services/services.h"
#include "shell/window/command_bar.h"
#include "shell/window/document_tabs.h"
#include "shell/window/work_area.h"

namespace vellum {

class MainWindow : public QMainWindow {
  Q_OBJECT
 public:
  MainWindow();
  ~MainWindow() override;

  /// Answered by boxes and dialogs until someone puts other answers in.
  Services& services() { return services_; }
  CommandBar& commands() { return commands_; }
  WorkArea& area() { return area_; }
  DocumentTabs& tabs() { return tabs_; }
  ThumbnailCache& thumbnails() { return thumbnails_; }
  RecentFiles& recent() { return recent_; }
  Docks& docks() { return docks_; }

  /// Runs the command with this number if it may run now.
  void run(int number);
  /// Opens the file in a window of its own. False, after the user was told, when it can't be read.
  bool open(const std::filesystem::path& path);
  /// The same, as soon as the program is idle; `view`: and shows it in its viewer.
  void open_later(const std::filesystem::path& path, bool view = false);
  /// Shows a document in a window of its own; null, after the user was told, when there is no memory for one.
  DocumentFrame* add_document(DocumentWindow content);

  CommandState state() const;
  /// Shows what settings have changed: toolbar, ground, menus, titles.
  void settings_changed();
  /// What the right button offers on the title of a dock.
  QMenu* createPopupMenu() override;
  /// Works out titles, enabled states and the status line from the active document.
  void refresh();

 signals:
  /// Behind every `refresh`: a document may have been changed, saved or closed.
  void refreshed();

 protected:
  void changeEvent(QEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dragLeaveEvent(QDragLeaveEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  void connect_parts();
  void connect_list(DocumentFrame& frame);
  void run_recent(const std::filesystem::path& path);
  void refresh_later();
  void refresh_status(const CommandState& state, DocumentFrame* frame);
  void show_undo_names(DocumentFrame* frame);
  void take_note(std::string_view text);
  void refresh_title(DocumentFrame* frame);
  bool may_close(DocumentFrame& frame);
  void fill_window_list();
  void name_docks();
  void check_docks();

  ThumbnailCache thumbnails_;
  RecentFiles recent_;
  WorkArea& area_;
  DocumentTabs& tabs_;
  StatusLine& status_;
  CommandBar& commands_;
  DesktopHost desktop_;
  Services services_;
  Docks& docks_;
  QString title_;
  bool refreshPending_ = false;
};

}  // namespace vellum
