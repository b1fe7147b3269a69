// Document: what the program knows of one open file beside its chunks; DocumentWindow: all that one window
// owns, with no widget in it.
#pragma once

#include <cstdint>
#include <deque>
#include <filesystem>
#include <string>
#include <vector>

#include "core/model/chunk_list.h"
#include "core/model/chunk_record.h"

namespace vellum {

/// Plain record, zeroed when the window is made.
struct Document {
  std::filesystem::path fileName;  ///< the file, and the title of the window
  int thumbScale = 0;              ///< index into the thumbnail scale table, 0 to 7
  DocumentKind kind = DocumentKind::None;
  std::int32_t DropInsertMark = -1;
  bool dirty = false;          ///< differs from its file
  std::int32_t caret = 0;      ///< the entry that receives inserts and pastes
  bool PartialRedraw = false;  ///< a save or an editor rewrote an entry
  bool undoAvailable = false;
  bool HasFileName = false;  ///< a file name has been chosen; without one Save behaves as Save as
  std::int32_t RightClickChunk = -1;
  std::int32_t TipChunk = -1;

  /// An animated PNG's default image that is no frame of the animation: a picture that walkers of the list
  /// never meet.
  ChunkHandle defaultImage;
  /// What reading and writing changed, left out or found missing, until someone has dismissed it.
  std::vector<std::string> notes;
  /// When the file was last written, as it was loaded or saved; to see that another program changed it.
  std::filesystem::file_time_type fileTime{};
};

/// A state of the list that Undo brings back. Entries share their records with the list: a level costs no
/// pixels.
struct UndoLevel {
  ChunkList list;
  bool dirty = false;
  std::int32_t caret = 0;
  ChunkHandle defaultImage;
  std::string name;  ///< of the change that it undoes ("delete 3 chunks"); of a level of Redo: does again
  /// At most the bytes that this level holds and the next newer state doesn't; see undo.cpp.
  std::uint64_t ownBytes = 0;
  std::vector<UndoLevel> redo = {};  ///< what could be done again when it was taken
};

/// What a document window owns. The desktop shows it, the command-line tool and the tests use it as it is.
struct DocumentWindow {
  Document document;
  ChunkList list;
  std::deque<UndoLevel> undoLevels;        ///< the oldest first; see undo.h
  std::vector<UndoLevel> redoLevels = {};  ///< what was undone, the last one last
};

/// Recomputes the header's dimensions from the frames, and the counts of frames that headers carry.
void document_extent(ChunkList& list, Document& document);

/// The size that rows and thumbnails refer to: the first IHDR, the MHDR, the WEBH. 0 x 0 without a header.
struct Extent {
  std::uint32_t width = 0, height = 0;
};
Extent document_size(const ChunkList& list, const Document& document);

/// Zeroes the document and empties the list.
void document_clear(DocumentWindow& window);

/// What a title shows: the path, or the default title with the kind's extension.
std::string document_title(const Document& document);

/// A copy of the window under the name "Duplicate_" + name: kind, scale, caret, selection, top row and
/// default image; clean, without a file name chosen and without undo levels. Entries share their records.
DocumentWindow duplicate_document(const DocumentWindow& window, std::string_view prefix);

}  // namespace vellum
