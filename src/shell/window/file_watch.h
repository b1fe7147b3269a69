// Watches the files of the open documents: when another program writes or removes one, its document says so.
#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QTimer>
#include <map>

#include "shell/window/main_window.h"

namespace vellum {

class FileWatch : public QObject {
  Q_OBJECT
 public:
  explicit FileWatch(MainWindow& window);

 private:
  /// Watches what is open now.
  void follow();
  /// Notes what became of the files, once for each state of one.
  void look();

  MainWindow& window_;
  QFileSystemWatcher watcher_;
  QTimer settle_;  ///< a file is often written in several steps
  std::map<std::string, std::filesystem::file_time_type> told_;
};

}  // namespace vellum
