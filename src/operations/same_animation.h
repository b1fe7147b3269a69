// Whether two documents show the same, canvas for canvas.
#pragma once

#include <functional>
#include <optional>

#include "base/host.h"
#include "core/model/document.h"

namespace vellum {

/// Plays both, which have as many frames, on no ground, an MNG a second round with what the first one left.
/// Whether all canvases and times are the same. False too when a picture is lost or the user stopped it.
bool is_same_animation(const DocumentWindow& before, const DocumentWindow& after, Host& host);

/// Whether a document that plays in the order of its list shows these canvases, of 32 bits with straight
/// alpha, which are asked for in order. False too as above.
bool shows_canvases(const DocumentWindow& window, const std::function<Picture(std::size_t frame)>& canvas,
                    Host& host);

/// Gives frames of `after` their records of `before` until both show the same. How many; nothing when that
/// can't be, as above.
std::optional<std::size_t> restore_differing_frames(const DocumentWindow& before, DocumentWindow& after,
                                                    Host& host);

}  // namespace vellum
