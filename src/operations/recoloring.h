// What operations share that give colors other values.
#pragma once

#include <array>
#include <functional>

#include "base/host.h"
#include "operations/frames.h"

namespace vellum {

/// Bits of `OperationNeed`: all frames of an animated PNG have one palette, so some of them alone can't get
/// other colors in it.
unsigned needs_of_recoloring(const DocumentWindow& window, const FrameList& frames);

/// What each value of a channel becomes.
using Curve = std::array<std::uint8_t, 256>;

/// A picture of 24 or 32 bits whose blue, green, red and alpha follow a curve each; null stays. Null when
/// memory is exhausted.
Picture with_curves(const Picture& picture, const std::array<const Curve*, 4>& curves);

/// An indexed picture whose pixels mean other colors: `change` gets each entry's blue, green and red.
Picture with_changed_colors(const Picture& picture, const std::function<void(std::uint8_t* color)>& change);

/// Makes pixels of one color that are transparent have alpha: they would no longer have that color, or others
/// would get it. False when that fails.
bool free_color_key(DocumentWindow& draft, Host& host);

}  // namespace vellum
