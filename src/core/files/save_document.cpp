#include "core/files/save_document.h"

#include <algorithm>

#include "base/file.h"
#include "base/text.h"
#include "core/files/write_mng.h"
#include "core/files/write_png.h"
#include "core/files/write_webp.h"
#include "core/settings.h"

namespace vellum {
namespace {

namespace fs = std::filesystem;

struct WriterRow {
  DocumentKind kind;
  WriteResult (*write)(DocumentWindow&, const fs::path&, int compression, Host&);
};

constexpr WriterRow kWriters[] = {
    {DocumentKind::PING, write_png},
    {DocumentKind::APNG, write_apng},
    {DocumentKind::MING, write_mng},
};

/// Copies what stands at the path to its sibling "Backup of ...". True when the save may go on.
bool make_backup(const fs::path& path, Host& host) {
  std::error_code error;
  if (settings::CreateBackups == 0 || !fs::exists(path, error)) return true;
  if (replace_by_copy(path, backup_path(path), error)) return true;
  const Message question{
      StringId::BackupError, {}, std::string(string_text(StringId::BackupError)), error.message(), nullptr};
  return !host.ask || host.ask(question, false) == Answer::Yes;
}

/// Every state that Undo can bring back is now another than the file's.
void mark_saved(DocumentWindow& window, const fs::path& path) {
  window.document.dirty = false;
  for (UndoLevel& level : window.undoLevels) level.dirty = true;
  std::error_code error;
  window.document.fileTime = fs::last_write_time(path, error);
}

WriteResult write(DocumentWindow& window, const fs::path& path, Host& host) {
  if (equal_ignoring_case(path.extension().native(), ".webp"))
    return write_webp(window, path, std::clamp(settings::WEBPQualityFactor, 0, 100), host);
  const auto row = std::ranges::find(kWriters, window.document.kind, &WriterRow::kind);
  if (row == std::end(kWriters)) {
    host.fail({FaultKind::Misuse, 0, -1, -1, "documents of this kind can't be written under this name"});
    return WriteResult::Failed;
  }
  return row->write(window, path, std::clamp(settings::PngCompression, 0, 9), host);
}

}  // namespace

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

bool save_document(DocumentWindow& window, const fs::path& path, Host& host) {
  if (frames_exceed_first(window)) {
    host.show(StringId::FrameTooLarge, StringId::ErrorWritingFile);
    return false;
  }
  if (!make_backup(path, host)) return false;
  WriteResult result = WriteResult::Failed;
  try {
    result = write(window, path, host);
  } catch (const std::bad_alloc&) {
    host.fail({FaultKind::Limit, 0, -1, -1, "memory is exhausted"});
  }
  if (result == WriteResult::Failed)
    host.show(StringId::FileNotWritten, StringId::ErrorWritingFile, host.take_fault());
  if (result != WriteResult::Done) return false;
  mark_saved(window, path);
  return true;
}

}  // namespace vellum
