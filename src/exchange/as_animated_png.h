// A document of any kind as an animated PNG, which browsers show: what pages carry.
#pragma once

#include "base/file.h"
#include "base/host.h"
#include "core/model/document.h"

namespace vellum {

/// A still stays one. The sink is finished. False with the reason told or kept in the host, or when the user
/// stopped it.
bool write_as_animated_png(const DocumentWindow& window, const Sink& sink, Host& host);

}  // namespace vellum
