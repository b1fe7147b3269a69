// What changes from one picture of an animation to the next.
#pragma once

#include <optional>

#include "image/picture_operations.h"

namespace vellum {

/// Widens `rect`, which begins as {width, height, 0, 0}, by the pixels around the bytes in which row `y` of a
/// picture differs from the one before it: `before` and `after` are rows of `width` pixels of `bits` bits.
void add_changes(PictureRect& rect, std::uint32_t y, const std::uint8_t* before, const std::uint8_t* after,
                 std::uint32_t width, std::uint32_t bits);

/// Makes the pixels of `part`, which comes to (`left`, `top`) of `before` (both of 32 bits), transparent
/// where they are there already, and returns how many that are. Nothing, with the part as it is, where
/// another pixel isn't opaque, or memory is exhausted.
std::optional<std::size_t> leave_out_same(Picture& part, const Picture& before, std::int32_t left,
                                          std::int32_t top);

}  // namespace vellum
