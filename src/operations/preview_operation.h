// What an operation makes of one frame, for previews.
#pragma once

#include "operations/operation.h"

namespace vellum {

/// The picture that the operation makes of an animation with this one frame, in true color; null where it
/// refuses the values.
Picture preview_operation(const Operation& operation, const Picture& picture, const FieldValues& values);

}  // namespace vellum
