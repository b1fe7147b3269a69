// Small pictures of many files, made by workers while the lists that show them are used.
#pragma once

#include <QCache>
#include <QObject>
#include <QSet>
#include <QThreadPool>
#include <deque>
#include <functional>
#include <memory>

#include "shell/widgets/thumbnail_list.h"

namespace vellum {

class Thumbnails : public QObject {
  Q_OBJECT
 public:
  /// Makes what is known of a file; on any thread.
  using Maker = std::function<FileLook(const QString& path)>;
  /// Pictures of at most `side` pixels.
  explicit Thumbnails(int side, QObject* parent = nullptr);
  /// Waits for the pictures that are being made.
  ~Thumbnails() override;

  /// What is known now. What isn't is made: the file that was asked for last comes first, and of those that
  /// wait only the last thousands are remembered.
  FileLook look(const QString& path);
  /// The same without asking for what isn't known.
  FileLook peek(const QString& path) const;
  /// Makes others from now on; all are made anew.
  void set_maker(Maker maker);
  /// Files that were written since are looked at anew, and with `all` every file.
  void forget_changed(bool all = false);
  /// Whether some are still to be made.
  bool at_work() const { return running_ > 0 || !wanted_.empty(); }

 signals:
  void made(const QString& path);

 private:
  struct Made {
    FileLook look;
    qint64 time = 0;  ///< when the file was written, ms
  };

  void begin_some();
  void take(const QString& path, const Made& made, const std::shared_ptr<const Maker>& maker);

  std::shared_ptr<const Maker> maker_;
  QCache<QString, Made> looks_;
  std::deque<QString> wanted_;
  QSet<QString> asked_;  ///< waiting or being made
  int running_ = 0;
  QThreadPool pool_;
};

}  // namespace vellum
