// The files that were opened or saved last, and their thumbnails. The File menu and the empty state show
// them.
#pragma once

#include <QHash>
#include <QIcon>
#include <QObject>
#include <QTimer>
#include <deque>

#include "configuration/history.h"

namespace vellum {

/// Numbers of the commands that open them: this one and the ones behind it.
inline constexpr int kFirstRecentFile = 3000;

class RecentFiles : public QObject {
  Q_OBJECT
 public:
  /// The list lies beside the configuration file of this run; without one it lasts as long as the program.
  explicit RecentFiles(QObject* parent = nullptr);

  const std::vector<RecentFile>& files() const { return files_; }
  /// The path behind a command's number; null for every other number.
  const std::string* file_of(int command) const;

  /// Both take what other running programs have written meanwhile along.
  void remember(const std::filesystem::path& path);
  void forget(const std::filesystem::path& path);
  /// What else is told of files that are remembered; nobody where nothing is set.
  std::function<void(const std::filesystem::path&)> share;

  /// After the number of files that are remembered has changed.
  void reload();

  /// A stand-in until the picture is made, which begins now, when the program is idle.
  QIcon thumbnail(const std::string& path);
  /// Whether pictures are still to be made.
  bool at_work() const { return !wanted_.empty(); }

 signals:
  void changed();
  void thumbnail_made(const QString& path);

 private:
  void change(const std::function<void(std::vector<RecentFile>&)>& how);
  void make_next();

  std::filesystem::path store_;
  std::vector<RecentFile> files_;
  QHash<QString, QIcon> thumbnails_;
  std::deque<std::string> wanted_;
  QTimer idle_;
};

}  // namespace vellum
