// What changes from one picture of an animation to the next.
#pragma once

#include <optional>

#include "image/picture.h"

namespace vellum {

/// Makes the pixels of `part`, which comes to (`left`, `top`) of `before` (both of 32 bits), transparent
/// where they are there already, and returns how many that are. Nothing, with the part as it is, where
/// another pixel isn't opaque, or memory is exhausted.
std::optional<std::size_t> leave_out_same(Picture& part, const Picture& before, std::uint32_t left,
                                          std::uint32_t top);

}  // namespace vellum
