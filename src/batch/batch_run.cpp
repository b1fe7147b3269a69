#include "batch/batch_run.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <new>
#include <unordered_map>

#include "base/parallel.h"
#include "base/translation.h"
#include "batch/settings.h"
#include "batch/thumbnail_file.h"
#include "core/edit/frame_layer.h"
#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "core/model/kind_table.h"
#include "image/graphic_file.h"

namespace fs = std::filesystem;

namespace vellum {
namespace {

std::uint64_t size_of(const fs::path& path) {
  std::error_code error;
  const auto size = fs::file_size(path, error);
  return error ? 0 : size;
}

/// Targets at which something stands, and what a person says of them.
class Contest {
 public:
  Contest(const BatchRun& run, BatchTargets& targets) : run_(run), targets_(targets) {}

  bool cancelled() const { return cancelled_; }
  /// The row gets the target that is written; the result where none is.
  std::optional<BatchResult> settle(BatchRow& row, const Picture& result) {
    const std::lock_guard lock(mutex_);
    if (cancelled_) return BatchResult::Cancelled;
    if (!targets_.taken(row.target)) return take(row, row.target);
    for (std::string fault = row.reason;;) {
      const OverwriteChoice choice = answer_for(row, result, fault);
      switch (choice.answer) {
        case OverwriteAnswer::Skip:
          return BatchResult::Skipped;
        case OverwriteAnswer::Cancel:
          cancelled_ = true;
          return BatchResult::Cancelled;
        case OverwriteAnswer::NewName:
          return take(row, choice.name);
        case OverwriteAnswer::Overwrite:
          return take(row, row.target);
        case OverwriteAnswer::KeepBoth:
          if (const fs::path free = targets_.unique(row.target); !free.empty()) return take(row, free);
          break;
      }
      fault = string_text(StringId::NoUniqueName);
      rest_.reset();  // it can't be kept to
      if (!run_.ask) return take(row, {});
    }
  }

 private:
  OverwriteChoice answer_for(const BatchRow& row, const Picture& result, const std::string& fault) {
    if (rest_) return *rest_;
    const OverwriteChoice choice = run_.ask ? run_.ask(row.target, result, fault) : OverwriteChoice();
    if (choice.rest) rest_ = choice;
    return choice;
  }

  std::optional<BatchResult> take(BatchRow& row, const fs::path& path) {
    if (path.empty()) {
      row.reason = string_text(StringId::NoUniqueName);
      return BatchResult::BadWrite;
    }
    row.target = path;
    targets_.take(path);
    return std::nullopt;
  }

  const BatchRun& run_;
  BatchTargets& targets_;
  std::optional<OverwriteChoice> rest_;
  std::atomic<bool> cancelled_ = false;
  std::mutex mutex_;
};

/// One file on its way.
class FileAtWork {
 public:
  /// `contest`: where a person is asked about its target; else null.
  FileAtWork(const BatchRun& run, BatchRow& row, const std::atomic<bool>& stop, Contest* contest)
      : run_(run), row_(row), stop_(stop), contest_(contest) {
    host_.stop_requested = [&stop] { return stop.load(); };
    host_.message = [this](const Message& message) {
      if (message.option || !row_.reason.empty()) return;  // a warning, or what followed from the first
      row_.reason = message.more.empty() ? message.text : message.text + " (" + message.more + ")";
    };
  }

  void work() {
    if (row_.source.empty()) {
      row_.result = BatchResult::ObjectError;
      return;
    }
    row_.bytesIn = size_of(row_.source);
    row_.result = is_picture()
                      ? do_picture(told_reading(row_.source, read_graphic_file(row_.source.string()), host_))
                      : do_document();
    if (row_.result != BatchResult::Ok) return;
    row_.reason.clear();
    row_.bytesOut = size_of(row_.target);
    if (run_.thumbnails &&
        !write_thumbnail(
            thumbnail_path(row_.target, run_.hiddenThumbnails),
            make_thumbnail(shown_, static_cast<Colour>(settings::BatchProcessorMatt) & 0xFFFFFF)))
      row_.reason = translated("the thumbnail can't be written");
  }

 private:
  /// By its name; a PNG or WebP is looked into as a document first.
  bool is_picture() const {
    return run_.stills && run_.work.applyToPicture && !has_document_extension(row_.source) &&
           GraphicFileType(row_.source.string()) != kNoGraphicFile;
  }

  BatchResult do_document() {
    DocumentWindow window;
    if (!open_document(window, row_.source, host_)) return BatchResult::BadRead;
    if (std::ranges::find(run_.work.kinds, window.document.kind) == run_.work.kinds.end()) {
      if (run_.stills && run_.work.applyToPicture && window.document.HasFileName)
        return do_picture(told_reading(row_.source, read_graphic_file(row_.source.string()), host_));
      row_.reason = is_animation(window.document.kind)
                        ? translated("the operation does not take files of this kind")
                        : translated("not an animation");
      return BatchResult::BadRead;
    }
    if (!run_.work.apply(window, host_)) return failed();
    if (run_.thumbnails || contest_)
      if (const auto entries = frame_entries(window); !entries.empty())
        shown_ = frame_layer_of(frame_source_of(window), window.list.record(entries.front())).picture;
    if (const auto settled = settle()) return *settled;
    return make_folder() && save(window) ? BatchResult::Ok : not_written();
  }

  BatchResult do_picture(const Picture& picture) {
    if (!picture) return BatchResult::BadRead;
    shown_ = run_.work.applyToPicture(picture, host_);
    if (!shown_) return failed();
    if (const auto settled = settle()) return *settled;
    const bool written = make_folder() && GraphicFileWrite(row_.target.string(), shown_);
    return written ? BatchResult::Ok : not_written();
  }

  bool save(DocumentWindow& window) {
    return run_.work.save ? run_.work.save(window, row_.source, row_.target, host_)
                          : save_document(window, row_.target, host_);
  }

  std::optional<BatchResult> settle() { return contest_ ? contest_->settle(row_, shown_) : std::nullopt; }

  BatchResult not_written() const {
    return stop_ && row_.reason.empty() ? BatchResult::Cancelled : BatchResult::BadWrite;
  }

  BatchResult failed() const { return stop_ ? BatchResult::Cancelled : BatchResult::ObjectError; }

  bool make_folder() {
    std::error_code error;
    fs::create_directories(row_.target.parent_path(), error);
    if (error) row_.reason = error.message();
    return !error;
  }

  const BatchRun& run_;
  BatchRow& row_;
  const std::atomic<bool>& stop_;
  Contest* contest_;
  Host host_;
  Picture shown_;
};

void work_on(const BatchRun& run, BatchRow& row, const std::atomic<bool>& stop, Contest* contest) {
  const auto begin = std::chrono::steady_clock::now();
  try {
    FileAtWork(run, row, stop, contest).work();
  } catch (const std::bad_alloc&) {
    row.result = BatchResult::BlockAccessError;
    row.reason = string_text(StringId::MemoryError);
  }
  row.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

/// Rows that are done, told in their order.
class Telling {
 public:
  Telling(std::vector<BatchRow>& rows, const std::function<void(const BatchRow&)>& told)
      : rows_(rows), done_(rows.size()), left_(rows.size()), told_(told) {}

  void done(std::size_t row) {
    const std::lock_guard lock(mutex_);
    done_[row] = true;
    for (; next_ < rows_.size() && done_[next_]; ++next_)
      if (told_) told_(rows_[next_]);
  }
  /// Nothing more comes of a row, done or not.
  void leave(std::size_t row) {
    const std::lock_guard lock(mutex_);
    left_[row] = true;
    changed_.notify_all();
  }
  /// Returns when that holds of all of them.
  void wait_for(const std::vector<std::size_t>& rows) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock,
                  [&] { return std::ranges::all_of(rows, [&](std::size_t row) { return left_[row]; }); });
  }
  /// Tells the rest after a stop, and leaves the rows out that were never begun. Whether there are such.
  bool finish() {
    std::vector<BatchRow> kept(rows_.begin(), rows_.begin() + static_cast<std::ptrdiff_t>(next_));
    for (std::size_t i = next_; i < rows_.size(); ++i) {
      if (!done_[i]) continue;
      if (told_) told_(rows_[i]);
      kept.push_back(rows_[i]);
    }
    const bool missing = kept.size() < rows_.size();
    rows_ = std::move(kept);
    return missing;
  }

 private:
  std::vector<BatchRow>& rows_;
  std::vector<bool> done_, left_;
  const std::function<void(const BatchRow&)>& told_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::size_t next_ = 0;
};

/// Which rows wait for some in front of them: those that write what these write or read, or read what these
/// write. Folders are told apart by where they are and not by how they were named.
class Waiting {
 public:
  explicit Waiting(const std::vector<BatchRow>& rows) {
    Rows writes, reads;
    for (std::size_t i = 0; i < rows.size(); ++i) {
      const std::size_t source = place(rows[i].source), target = place(rows[i].target);
      wait(i, writes, target);
      wait(i, writes, source);
      wait(i, reads, target);
      wait(i, reads, source);  // so that who waits for the last reader waits for all
      writes[target] = reads[source] = i;
    }
  }

  const std::vector<std::size_t>& of(std::size_t row) const {
    static const std::vector<std::size_t> none;
    const auto at = fronts_.find(row);
    return at == fronts_.end() ? none : at->second;
  }

 private:
  using Rows = std::unordered_map<std::size_t, std::size_t>;

  void wait(std::size_t row, const Rows& others, std::size_t path) {
    if (const auto at = others.find(path); at != others.end()) fronts_[row].push_back(at->second);
  }

  /// A number for a path: two that have the same one by chance only wait for each other.
  std::size_t place(const fs::path& path) {
    const auto [folder, fresh] = folders_.try_emplace(path.parent_path().native());
    std::error_code error;
    if (fresh) folder->second = fs::weakly_canonical(fs::absolute(path.parent_path(), error), error).native();
    return std::hash<std::string>()(folder->second + '/' + path.filename().native());
  }

  std::unordered_map<std::string, std::string> folders_;
  std::unordered_map<std::size_t, std::vector<std::size_t>> fronts_;
};

enum class Fate { Open, Settled, Contested };

/// The rows, and what is known of them before they are read.
std::vector<BatchRow> settled_rows(BatchTargets& targets, std::span<const BatchFile> files,
                                   std::vector<Fate>& fates) {
  std::vector<BatchRow> rows;
  rows.reserve(count_ours(files));
  for (const BatchFile& file : files) {
    if (!file.ours) {
      targets.take(targets.named(file));
      continue;
    }
    BatchTarget target = targets.settle(file);
    fates.push_back(target.settled ? Fate::Settled : target.contested ? Fate::Contested : Fate::Open);
    rows.push_back({.source = file.source,
                    .target = std::move(target.path),
                    .result = target.settled.value_or(BatchResult::Ok),
                    .reason = std::move(target.reason)});
  }
  return rows;
}

}  // namespace

std::vector<BatchRow> plan_batch(const BatchRun& run, std::span<const BatchFile> files) {
  std::vector<Fate> fates;
  BatchTargets targets(run.naming);
  return settled_rows(targets, files, fates);
}

std::vector<BatchRow> run_batch(const BatchRun& run, std::span<const BatchFile> files,
                                const std::atomic<bool>& stop,
                                const std::function<void(const BatchRow&)>& told) {
  std::vector<Fate> fates;
  BatchTargets targets(run.naming, static_cast<bool>(run.ask));
  std::vector<BatchRow> rows = settled_rows(targets, files, fates);
  Contest contest(run, targets);
  Telling telling(rows, told);
  const Waiting waiting(rows);
  parallel_jobs(rows.size(), run.jobs, [&](std::size_t i) {
    const std::shared_ptr<void> leaving(nullptr, [&, i](void*) { telling.leave(i); });
    telling.wait_for(waiting.of(i));
    if (stop || contest.cancelled()) return;
    if (fates[i] != Fate::Settled)
      work_on(run, rows[i], stop, fates[i] == Fate::Contested ? &contest : nullptr);
    telling.done(i);
  });
  if (telling.finish()) {
    rows.push_back({.source = {}, .target = {}, .result = BatchResult::Aborted, .reason = {}});
    if (told) told(rows.back());
  }
  return rows;
}

}  // namespace vellum
