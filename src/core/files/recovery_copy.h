// A copy of a changed document, from which it comes back after a crash: every entry bit by bit, also where no
// valid file of its kind could be written yet, and the states that Undo goes back to.
//
// "VRCV", version, kind, whether a file name was chosen (32 bits each); when the copy was made (seconds since
// 1970) and the time of the document's file (64 bits each); the file name and the default image, each behind
// a length of 64 bits; the number of states, of which the first is the present one and the others are undo
// levels, the oldest first (32 bits), and each of them: whether it differs from the file and its caret (32
// bits each), its name and its default image (0 as long as it is the present one's: all ones) behind lengths
// of 64 bits, the number of its entries (64 bits), and for each of them which record it is (31 bits) and
// whether it is selected; then all records as core/edit/clipboard_block.h writes them. Numbers are
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

/// Writes the copy in one step (base/file.h), without undo levels where these would be too much. False when
/// it can't be written, when `stop` asks for an end, or when the disk would be nearly full.
bool write_recovery_copy(const DocumentWindow& window, const std::filesystem::path& path, std::int64_t made,
                         const std::function<bool()>& stop = {});

/// Nothing where no copy lies.
std::optional<RecoveryNote> read_recovery_note(const std::filesystem::path& path);

/// Brings the document back: changed, under its old name, with its undo levels. Anybody may have written the
/// copy; false for one that is damaged.
bool read_recovery_copy(const std::filesystem::path& path, DocumentWindow& window);

}  // namespace vellum
