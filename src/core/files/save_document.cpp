#include "core/files/save_document.h"

#include <algorithm>

#include "base/file.h"
#include "base/text.h"
#include "base/translation.h"
#include "core/files/write_mng.h"
#include "core/files/write_png.h"
#include "core/files/write_webp.h"
#include "core/model/document_notes.h"
#include "core/model/kind_table.h"

namespace vellum {
namespace {

namespace fs = std::filesystem;

struct WriterRow {
  DocumentKind kind;
  WriteResult (*write)(DocumentWindow&, const Sink&, const SaveOptions&, Host&);
};

constexpr WriterRow kWriters[] = {
    {DocumentKind::PING, write_png},
    {DocumentKind::APNG, write_apng},
    {DocumentKind::MING, write_mng},
    {DocumentKind::WEBP, write_webp},
};

/// Copies what stands at the path to its sibling "Backup of ...". True when the save may go on.
bool make_backup(const fs::path& path, Host& host) {
  std::error_code error;
  if (!fs::exists(path, error)) return true;
  if (replace_by_copy(path, backup_path(path), error)) return true;
  const Message question{
      StringId::BackupError, {}, std::string(string_text(StringId::BackupError)), error.message(), nullptr};
  return !host.ask || host.ask(question, false) == Answer::Yes;
}

/// Every state that Undo can bring back is now another than the file's.
void mark_saved(DocumentWindow& window, const fs::path& path) {
  window.document.dirty = false;
  for (UndoLevel& level : window.undoLevels) level.dirty = true;
  for (UndoLevel& level : window.redoLevels) level.dirty = true;
  std::error_code error;
  window.document.fileTime = fs::last_write_time(path, error);
}

/// Into a file, which is not opened where nothing may be written.
WriteResult write_file(DocumentWindow& window, const fs::path& path, const SaveOptions& options, Host& host) {
  SafeFile file(path);
  if (!file.ok()) {
    host.fail({FaultKind::Misuse, 0, -1, -1, file.reason()});
    return WriteResult::Failed;
  }
  if (options.backup && !make_backup(path, host)) return WriteResult::Refused;
  const WriteResult result =
      write_document(window, written_kind(path, window.document.kind), file_sink(file), options, host);
  if (result == WriteResult::Done)
    for (const std::string& note : file.notes()) host.add_note(note);
  return result;
}

}  // namespace

DocumentKind written_kind(const fs::path& path, DocumentKind kind) {
  if (has_extension_of(path, DocumentKind::WEBP)) return DocumentKind::WEBP;
  return kind == DocumentKind::WEBP ? DocumentKind::None : kind;
}

bool frames_exceed_first(const DocumentWindow& window) {
  if (window.document.kind != DocumentKind::APNG) return false;
  Extent first{};
  const auto exceeds = [&first](std::uint32_t width, std::uint32_t height) {
    if (first.width == 0) first = {width, height};
    return width > first.width || height > first.height;
  };
  if (const Picture kept(window.document.defaultImage); kept) exceeds(kept.width(), kept.height());
  for (std::size_t i = 0; i < window.list.size(); ++i) {
    const ChunkRecord& record = window.list.record(i);
    if (is_image_entry(DocumentKind::APNG, record.tag) &&
        exceeds(record.frameControl.frameWidth, record.frameControl.frameHeight))
      return true;
  }
  return false;
}

WriteResult write_document(DocumentWindow& window, DocumentKind written, const Sink& sink,
                           const SaveOptions& options, Host& host) try {
  if (frames_exceed_first(window)) {
    host.show(StringId::FrameTooLarge, StringId::ErrorWritingFile);
    return WriteResult::Refused;
  }
  const auto row = std::ranges::find(kWriters, written, &WriterRow::kind);
  if (row != std::end(kWriters)) return row->write(window, sink, options, host);
  host.fail(
      {FaultKind::Misuse, 0, -1, -1, translated("documents of this kind can't be written under this name")});
  return WriteResult::Failed;
} catch (const std::bad_alloc&) {
  host.fail({FaultKind::Limit, 0, -1, -1, translated("memory is exhausted")});
  return WriteResult::Failed;
}

std::optional<fs::file_time_type> changed_on_disk(const Document& document) {
  if (!document.HasFileName || document.fileTime == fs::file_time_type{}) return std::nullopt;
  std::error_code error;
  const fs::file_time_type time = fs::last_write_time(document.fileName, error);
  if (error) return kFileGone;
  return time == document.fileTime ? std::nullopt : std::optional(time);
}

bool save_document(DocumentWindow& window, const fs::path& path, Host& host, const SaveOptions& options) {
  const KeptNotes kept(window.document, host);
  const WriteResult result = write_file(window, path, options, host);
  if (result == WriteResult::Failed)
    host.show(StringId::FileNotWritten, StringId::ErrorWritingFile, host.take_fault());
  if (result != WriteResult::Done) return false;
  mark_saved(window, path);
  return true;
}

}  // namespace vellum
