// A picture that an operation works on as if it were an animation of one frame.
#pragma once

#include "operations/operation.h"

namespace vellum {

/// The picture that the operation's function makes of a picture, in true color. Null where the operation
/// refuses the values, or fails with the reason in the host. `values` is asked for those that fit the made-up
/// document, which has this name.
Picture operate_on_picture(const Operation& operation, const Picture& picture,
                           const std::function<std::optional<FieldValues>(const DocumentWindow&)>& values,
                           Host& host, const std::filesystem::path& name = {});

}  // namespace vellum
