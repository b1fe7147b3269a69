// Keeps copies of changed documents aside while the program runs, and brings back those that a crash left.
#pragma once

#include <QPointer>
#include <QThreadPool>
#include <QTimer>
#include <atomic>
#include <deque>

#include "core/files/recovery_copy.h"
#include "core/files/recovery_folder.h"
#include "core/model/document_mark.h"
#include "shell/window/main_window.h"

namespace vellum {

class Recovery : public QObject {
  Q_OBJECT
 public:
  explicit Recovery(MainWindow& window, std::filesystem::path store = recovery_store());
  /// Documents that are still open are given up.
  ~Recovery() override;

  /// Copies every changed document that is not as its copy is. Returns at once: a thread does the writing,
  /// and what can't be written is tried again the next time.
  void keep_changed();
  /// Until nothing is being written.
  void wait();

  /// Copies of programs that ended without removing them, the newest first. They belong to this program from
  /// now on.
  std::vector<RecoveryNote> find();
  /// Opens the document of a copy that was found; the copy stays until the document is saved or closed. False
  /// when it can't be read.
  bool recover(const RecoveryNote& note);
  /// Leaves what was found and not recovered to the next start.
  void leave();

 private:
  struct Kept {
    QPointer<DocumentFrame> frame;
    std::uint64_t number = 0;
    DocumentMark mark;
    bool writing = false;
    std::int64_t notBefore = 0;  ///< milliseconds since 1970
  };
  Kept& entry_of(DocumentFrame& frame);
  void keep(DocumentFrame& frame, Kept& kept);
  void written(std::uint64_t number, bool done, std::int64_t milliseconds);
  /// Removes the copies of documents that were saved or closed.
  void drop_settled();
  void remove_copy(const Kept& kept);
  bool make_folder();

  MainWindow& window_;
  std::filesystem::path store_;
  std::optional<RecoveryFolder> folder_;
  std::vector<RecoveryFolder> found_;
  std::deque<Kept> kept_;
  std::uint64_t lastNumber_ = 0;
  QTimer timer_, rest_;
  std::atomic<bool> stop_ = false;
  QThreadPool pool_;  ///< one thread; its end is waited for before anything else goes
};

}  // namespace vellum
