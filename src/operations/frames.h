// Frames of an animation by their number: which entries they are, and lists of them as people write them.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "core/model/document.h"

namespace vellum {

/// Frames by their place among the image entries, from 0, in order and each once.
using FrameList = std::vector<std::size_t>;

/// The image entries of a document, in order: element i is the entry of frame i.
std::vector<std::size_t> frame_entries(const DocumentWindow& window);

FrameList all_frames(std::size_t count);
/// The frames whose entries are selected.
FrameList selected_frames(const DocumentWindow& window);

/// Whether what the first frame alone draws beside the others is seen as long as the animation plays.
bool first_frame_stays(const DocumentWindow& window);

/// "1,3-5", counted from 1, among `count` frames. Nothing for another text, and for a frame that isn't there.
std::optional<FrameList> parse_frame_list(std::string_view text, std::size_t count);

/// Every nth of `count` frames: the nth, the 2nth and so on.
FrameList every_nth(std::size_t count, std::size_t n);
/// The frames that are not in the list.
FrameList inverted(const FrameList& frames, std::size_t count);

}  // namespace vellum
