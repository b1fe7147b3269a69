// Moving entries inside their list.
#pragma once

#include "base/host.h"
#include "core/model/document.h"

namespace vellum {

/// Moves the selected entries (the caret's where none is selected) up or down by one, an undo level first.
/// False, with the message given to the host and nothing changed, where one of them may not stand there.
bool move_rows(DocumentWindow& window, bool down, Host& host);

/// Moves the one entry to the position `to` (it is entry `to` then), by the same rules.
bool move_entry(DocumentWindow& window, std::size_t from, std::size_t to, Host& host);

struct MoveImages {
  std::size_t image = 1;  ///< counted from 1
  bool before = false;    ///< in front of that image; otherwise behind it
  bool copy = false;      ///< the selected images stay, and copies go there
};
/// Moves or copies the selected images, in their order, to another image; they are selected afterwards. An
/// undo level first. A target among those that move means its first neighbour that stays.
bool move_images(DocumentWindow& window, const MoveImages& request, Host& host);

/// Where the selected entries (the caret's where none is selected) go, whatever their tags: in front of the
/// present entry `position`, all of them one behind the other.
struct PutRows {
  std::size_t position = 0;
  bool copy = false;  ///< they stay, and copies go there
};
/// Whether they may stand there; costs a list.
bool may_put_rows(const DocumentWindow& window, const PutRows& request);
/// Puts them there, an undo level first; they, or the copies, are selected afterwards. False with the message
/// given to the host where they may not stand there, and without one where nothing would change.
bool put_rows(DocumentWindow& window, const PutRows& request, Host& host);

}  // namespace vellum
