// What an operation makes of one frame, for previews.
#pragma once

#include "operations/operation.h"

namespace vellum {

/// The picture that the operation makes of a frame of the document, in true color; null where it refuses the
/// values.
Picture preview_operation(const Operation& operation, const Picture& picture, const FieldValues& values,
                          const DocumentWindow& document);

}  // namespace vellum
