// How the bytes begin that the target of operations reads: kind, row, frames, a byte for each field.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vellum::fuzz {

inline constexpr std::size_t kRowsHead = 3 + 16;    ///< the file begins here
inline constexpr std::uint8_t kAllFrames = 255;     ///< another number: that frame alone
inline constexpr std::uint8_t kInitialValue = 255;  ///< another number: a value made of it

}  // namespace vellum::fuzz
