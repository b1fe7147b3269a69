// Adding records and pictures to a document: what insert, paste, drop and merge have in common.
#pragma once

#include "core/edit/frame_layer.h"
#include "core/edit/insertion.h"
#include "core/edit/picture_fitting.h"

namespace vellum {

/// One operation that adds to a list.
struct Adding {
  Adding(DocumentWindow& to, std::size_t wanted, Host& listener,
         std::optional<PaletteChoice> choice = std::nullopt);
  ~Adding() { finish(); }
  Adding(const Adding&) = delete;
  Adding& operator=(const Adding&) = delete;

  /// Keeps a message for the end; each is shown once.
  void refuse(StringId message);
  /// Puts everything into the list, makes the closing calls when something was added or folded, and shows the
  /// messages. True when something changed. Further calls do nothing.
  bool finish();

  DocumentWindow& window;
  Host& host;
  Insertion insertion;
  PictureFitting fitting;
  bool folded = false;  ///< an entry of the list was changed
  std::vector<StringId> refusals;
  bool finished = false;
};

enum class Added { Done, Exists, NoPlace, NoMemory, Cancelled };

/// Keeps the message of an addition that failed; `refused` stands for those that have none of their own.
void refuse(Adding& adding, Added added, StringId refused);

/// A new image entry of this picture: fitted, at the origin, shown for `DefaultDelay`.
Added add_picture(Adding& adding, const Picture& picture);
/// An image record of a document (this one too): as it is where its kind and its picture fit, else as the
/// same frame in this kind.
Added add_frame(Adding& adding, const FrameSource& source, const ChunkRecord& record);

}  // namespace vellum
