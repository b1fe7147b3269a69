// Whether two documents show the same, canvas for canvas.
#pragma once

#include <optional>

#include "base/host.h"
#include "operations/source_canvases.h"

namespace vellum {

/// Plays both, which have as many frames, on no ground, an MNG a second round with what the first one left.
/// Whether all canvases and times are the same. False too when a picture is lost or the user stopped it.
bool is_same_animation(SourceCanvases& before, const DocumentWindow& after, Host& host);

/// Gives frames of `after` their records of `before` until both show the same. How many; nothing when that
/// can't be, as above.
std::optional<std::size_t> restore_differing_frames(SourceCanvases& before, DocumentWindow& after,
                                                    Host& host);

}  // namespace vellum
