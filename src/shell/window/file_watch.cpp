#include "shell/window/file_watch.h"

#include "core/files/save_document.h"
#include "core/model/document_notes.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr int kSettle = 400;  // milliseconds

QStringList files_of(const std::vector<DocumentFrame*>& frames) {
  QStringList files;
  for (DocumentFrame* frame : frames)
    if (frame->document().HasFileName) files << path_text(frame->document().fileName);
  files.sort();
  files.removeDuplicates();
  return files;
}

}  // namespace

FileWatch::FileWatch(MainWindow& window) : window_(window) {
  settle_.setSingleShot(true);
  settle_.setInterval(kSettle);
  connect(&window, &MainWindow::refreshed, this, &FileWatch::follow);
  connect(&watcher_, &QFileSystemWatcher::fileChanged, &settle_, qOverload<>(&QTimer::start));
  connect(&settle_, &QTimer::timeout, this, &FileWatch::look);
}

void FileWatch::follow() {
  const QStringList wanted = files_of(window_.area().documents());
  QStringList watched = watcher_.files();
  for (const QString& file : watched)
    if (!wanted.contains(file)) watcher_.removePath(file);
  for (const QString& file : wanted)
    if (!watched.contains(file) && std::filesystem::exists(to_path(file))) watcher_.addPath(file);
}

void FileWatch::look() {
  bool any = false;
  for (DocumentFrame* frame : window_.area().documents()) {
    Document& document = frame->document();
    const auto changed = changed_on_disk(document);
    if (!changed) continue;
    const auto [known, added] = told_.try_emplace(document.fileName.string(), *changed);
    if (!added && known->second == *changed) continue;
    known->second = *changed;
    any = true;
    const QString note = *changed == kFileGone
                             ? tr("The file is not in its folder any more. Saving writes it again.")
                             : tr("Another program has changed the file. You are asked before saving puts "
                                  "this document in its place.");
    add_note(document, note.toStdString());
  }
  follow();  // a file that was replaced is watched no more
  if (any) window_.refresh();
}

}  // namespace vellum
