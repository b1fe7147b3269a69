// Which chunk to insert: any that the document takes, or one by its name.
#pragma once

#include <QWidget>
#include <optional>

#include "core/model/document.h"
#include "shell/services/services.h"

namespace vellum {

/// Nothing when the user cancelled.
std::optional<ChunkTag> ask_for_chunk(QWidget* parent, const DocumentWindow& window, Services& services);

}  // namespace vellum
