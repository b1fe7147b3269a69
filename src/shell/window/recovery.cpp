#include "shell/window/recovery.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QElapsedTimer>
#include <algorithm>

#include "shell/look/text.h"

namespace vellum {
namespace {

// Milliseconds: behind an edit, when nothing else was done for so long; and where there is no such rest.
constexpr int kRest = 4'000, kInterval = 9'000;
/// A copy that took a while to write is made again after so many times that while, and after so long at most,
/// so that large documents don't keep the disk busy.
constexpr std::int64_t kRestFactor = 20, kMostRest = 9'000;

std::int64_t now() { return QDateTime::currentMSecsSinceEpoch(); }

void remove_file(const std::filesystem::path& path) {
  std::error_code error;
  std::filesystem::remove(path, error);
}

}  // namespace

Recovery::Recovery(MainWindow& window, std::filesystem::path store)
    : window_(window), store_(std::move(store)) {
  pool_.setMaxThreadCount(1);
  pool_.setThreadPriority(QThread::LowestPriority);
  timer_.setInterval(kInterval);
  connect(&timer_, &QTimer::timeout, this, &Recovery::keep_changed);
  rest_.setInterval(kRest);
  rest_.setSingleShot(true);
  connect(&rest_, &QTimer::timeout, this, &Recovery::keep_changed);
  connect(&window, &MainWindow::refreshed, this, [this] {
    drop_settled();
    rest_.start();
  });
  timer_.start();
}

Recovery::~Recovery() {
  stop_ = true;
  pool_.waitForDone();
  for (const Kept& kept : kept_) remove_copy(kept);
}

void Recovery::wait() {
  pool_.waitForDone();
  QCoreApplication::sendPostedEvents(this);
}

bool Recovery::make_folder() {
  if (!folder_)
    if (auto made = RecoveryFolder::create(store_)) folder_.emplace(std::move(*made));
  return folder_.has_value();
}

Recovery::Kept& Recovery::entry_of(DocumentFrame& frame) {
  const auto at = std::ranges::find(kept_, &frame, [](const Kept& kept) { return kept.frame.data(); });
  if (at != kept_.end()) return *at;
  connect(&frame, &QObject::destroyed, this, &Recovery::drop_settled, Qt::QueuedConnection);
  return kept_.emplace_back(Kept{&frame, ++lastNumber_, {}, false, 0});
}

void Recovery::keep_changed() {
  // In the middle of an operation a document may be half done.
  if (window_.services().busy()) return;
  drop_settled();
  for (DocumentFrame* frame : window_.area().documents())
    if (frame->document().dirty && make_folder()) keep(*frame, entry_of(*frame));
}

/// The thread gets a copy of the document, which shares its records.
void Recovery::keep(DocumentFrame& frame, Kept& kept) {
  if (kept.writing || now() < kept.notBefore || kept.mark.matches(frame.content())) return;
  DocumentWindow copy;
  copy.document = frame.document();
  copy.list = frame.entries();
  copy.undoLevels = frame.content().undoLevels;
  kept.mark = DocumentMark(frame.content());
  kept.writing = true;
  pool_.start([this, number = kept.number, path = folder_->copy_path(kept.number), copy = std::move(copy)] {
    QElapsedTimer timer;
    timer.start();
    const bool done = write_recovery_copy(copy, path, now() / 1000, [this] { return stop_.load(); });
    QMetaObject::invokeMethod(
        this, [this, number, done, took = timer.elapsed()] { written(number, done, took); },
        Qt::QueuedConnection);
  });
}

void Recovery::written(std::uint64_t number, bool done, std::int64_t milliseconds) {
  const auto at = std::ranges::find(kept_, number, &Kept::number);
  if (at == kept_.end()) return;
  at->writing = false;
  at->notBefore = now() + std::min(kRestFactor * milliseconds, kMostRest);
  if (!done) at->mark = {};
  drop_settled();
}

void Recovery::drop_settled() {
  for (auto kept = kept_.begin(); kept != kept_.end();) {
    const bool wanted = kept->frame && kept->frame->document().dirty;
    if (wanted || kept->writing) {
      ++kept;
      continue;
    }
    remove_copy(*kept);
    kept = kept_.erase(kept);
  }
}

void Recovery::remove_copy(const Kept& kept) {
  if (folder_) remove_file(folder_->copy_path(kept.number));
}

std::vector<RecoveryNote> Recovery::find() {
  for (RecoveryFolder& folder : RecoveryFolder::abandoned(store_)) found_.push_back(std::move(folder));
  std::vector<RecoveryNote> notes;
  for (const RecoveryFolder& folder : found_)
    for (const auto& path : folder.copies())
      if (const auto note = read_recovery_note(path)) notes.push_back(*note);
  std::ranges::stable_sort(notes, std::ranges::greater{}, &RecoveryNote::made);
  return notes;
}

bool Recovery::recover(const RecoveryNote& note) {
  DocumentWindow content;
  if (!read_recovery_copy(note.path, content)) return false;
  DocumentFrame* frame = window_.add_document(std::move(content));
  if (!frame) return false;
  frame->size_to_content();
  if (make_folder()) {
    Kept& kept = entry_of(*frame);
    std::error_code error;
    std::filesystem::rename(note.path, folder_->copy_path(kept.number), error);
    // Where it couldn't be moved it stays with what was found, until the next start asks again.
    if (!error) kept.mark = DocumentMark(frame->content());
  }
  window_.refresh();
  return true;
}

void Recovery::leave() { found_.clear(); }

}  // namespace vellum
