// The frame pipeline: pictures of many frames changed side by side, some at a time.
#pragma once

#include <functional>

#include "base/host.h"
#include "core/model/frame_values.h"
#include "operations/frames.h"

namespace vellum {

/// One image while it is changed. What a change leaves in it goes back into the document.
struct FrameWork {
  std::size_t frame = 0;  ///< its number, from 0; `kDefaultImageWork` for the default image that is no frame
  ChunkRecord record;     ///< shares its blocks with the entry
  Picture picture;        ///< its own picture
  FrameOffset offset;
};

inline constexpr std::size_t kDefaultImageWork = static_cast<std::size_t>(-1);

/// Changes one image, on any thread; false when it can't.
using ChangePicture = std::function<bool(FrameWork& work)>;

/// Applies the change to these frames (and, where they are all, to the default image), and puts each back
/// with all fields that follow from picture and offset. The caller makes the closing calls. False, with the
/// reason kept in the host, when a picture is lost, a change failed, or the user stopped it; the draft is
/// then of no use.
bool change_pictures(DocumentWindow& draft, const FrameList& frames, std::string_view caption, Host& host,
                     const ChangePicture& change);

/// Makes header, PLTE and tRNS of a still or animated PNG say what its indexed pictures hold now. Nothing
/// happens for other kinds and for true color.
void follow_palettes(DocumentWindow& draft);

/// Whether the list names every frame of the document.
bool names_all(const FrameList& frames, const DocumentWindow& window);

}  // namespace vellum
