#include "batch/batch_run.h"

#include <algorithm>
#include <chrono>
#include <mutex>
#include <new>

#include "base/parallel.h"
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

/// One file on its way.
class FileAtWork {
 public:
  FileAtWork(const BatchRun& run, BatchRow& row, const std::atomic<bool>& stop)
      : run_(run), row_(row), stop_(stop) {
    host_.stop_requested = [&stop] { return stop.load(); };
    host_.message = [this](const Message& message) {
      if (message.option || !row_.reason.empty()) return;  // a warning, or what followed from the first
      row_.reason = message.more.empty() ? message.text : message.text + " (" + message.more + ")";
    };
  }

  void work() {
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
      row_.reason = "the thumbnail can't be written";
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
      row_.reason = is_animation(window.document.kind) ? "the operation does not take files of this kind"
                                                       : "not an animation";
      return BatchResult::BadRead;
    }
    if (!run_.work.apply(window, host_)) return failed();
    if (!make_folder() || !save(window)) return BatchResult::BadWrite;
    if (run_.thumbnails)
      if (const auto entries = frame_entries(window); !entries.empty())
        shown_ = frame_layer_of(frame_source_of(window), window.list.record(entries.front())).picture;
    return BatchResult::Ok;
  }

  BatchResult do_picture(const Picture& picture) {
    if (!picture) return BatchResult::BadRead;
    shown_ = run_.work.applyToPicture(picture, host_);
    if (!shown_) return failed();
    const bool written = make_folder() && GraphicFileWrite(row_.target.string(), shown_);
    return written ? BatchResult::Ok : BatchResult::BadWrite;
  }

  bool save(DocumentWindow& window) {
    return run_.work.save ? run_.work.save(window, row_.source, row_.target, host_)
                          : save_document(window, row_.target, host_);
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
  Host host_;
  Picture shown_;
};

void work_on(const BatchRun& run, BatchRow& row, const std::atomic<bool>& stop) {
  const auto begin = std::chrono::steady_clock::now();
  try {
    FileAtWork(run, row, stop).work();
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
      : rows_(rows), done_(rows.size()), told_(told) {}

  void done(std::size_t row) {
    const std::lock_guard lock(mutex_);
    done_[row] = true;
    for (; next_ < rows_.size() && done_[next_]; ++next_)
      if (told_) told_(rows_[next_]);
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
  std::vector<bool> done_;
  const std::function<void(const BatchRow&)>& told_;
  std::mutex mutex_;
  std::size_t next_ = 0;
};

/// The rows, and which of them are settled.
std::vector<BatchRow> settled_rows(const BatchRun& run, std::span<const BatchFile> files,
                                   std::vector<bool>& settled) {
  BatchTargets targets(run.naming);
  std::vector<BatchRow> rows;
  rows.reserve(files.size());
  for (const BatchFile& file : files) {
    BatchTarget target = targets.settle(file);
    settled.push_back(target.settled.has_value());
    rows.push_back({.source = file.source,
                    .target = std::move(target.path),
                    .result = target.settled.value_or(BatchResult::Ok),
                    .reason = std::move(target.reason)});
  }
  return rows;
}

}  // namespace

std::vector<BatchRow> plan_batch(const BatchRun& run, std::span<const BatchFile> files) {
  std::vector<bool> settled;
  return settled_rows(run, files, settled);
}

std::vector<BatchRow> run_batch(const BatchRun& run, std::span<const BatchFile> files,
                                const std::atomic<bool>& stop,
                                const std::function<void(const BatchRow&)>& told) {
  std::vector<bool> settled;
  std::vector<BatchRow> rows = settled_rows(run, files, settled);
  Telling telling(rows, told);
  parallel_jobs(rows.size(), run.jobs, [&](std::size_t i) {
    if (stop) return;
    if (!settled[i]) work_on(run, rows[i], stop);
    telling.done(i);
  });
  if (telling.finish()) {
    rows.push_back({.source = {}, .target = {}, .result = BatchResult::Aborted, .reason = {}});
    if (told) told(rows.back());
  }
  return rows;
}

}  // namespace vellum
