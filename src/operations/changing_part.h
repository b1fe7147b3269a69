// The part of the canvas that an animation changes.
#pragma once

#include <optional>

#include "base/host.h"
#include "core/model/document.h"
#include "image/picture_operations.h"

namespace vellum {

/// The rectangle around all that differs from one canvas to the next; nothing where nothing does, a picture
/// is lost, or the user stopped it.
std::optional<PictureRect> changing_part(const DocumentWindow& window, Host& host);

}  // namespace vellum
