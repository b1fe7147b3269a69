// A copy of a changed document, from which it comes back after a crash: every entry bit by bit, also where no
// valid file of its kind could be written yet.
//
// "VRCV", version, kind, whether a file name was chosen (32 bits each); when the copy was made (seconds since
// 1970) and the time of the document's file (64 bits each); the file name and the default image, each behind
// a length of 64 bits; then the entries as core/edit/clipboard_block.h writes them. Numbers are
// little-endian.
#pragma once

#include <functional>
#include <optional>

#include "core/model/document.h"

namespace vellum {

/// What a copy tells without being read whole.
struct RecoveryNote {
  std::filesystem::path path;      ///< the copy
  std::filesystem::path fileName;  ///< of the document
  bool hasFileName = false;
  DocumentKind kind = DocumentKind::None;
  std::int64_t made = 0;  ///< seconds since 1970
  std::filesystem::file_time_type fileTime{};
};

/// Writes the copy in one step (base/file.h). False when it can't be written, when `stop` asks for an end, or
/// when the disk would be nearly full.
bool write_recovery_copy(const DocumentWindow& window, const std::filesystem::path& path, std::int64_t made,
                         const std::function<bool()>& stop = {});

/// Nothing where no copy lies.
std::optional<RecoveryNote> read_recovery_note(const std::filesystem::path& path);

/// Brings the document back: changed, under its old name. Anybody may have written the copy; false for one
/// that is damaged.
bool read_recovery_copy(const std::filesystem::path& path, DocumentWindow& window);

}  // namespace vellum
