// Rows whose filter is Average or Paeth and whose pixels have three or four bytes: four of them are undone at
// once.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vellum {

inline constexpr std::size_t kWaveRows = 4;

/// Whether rows of so many bytes can be undone so on this processor.
bool can_undo_in_waves(std::size_t bytes, std::size_t distance);

/// Undoes Average or Paeth (3 or 4) in four rows in place, of which the first one lies at `rows` and each
/// next one `bytes` + 1 behind it. `prior` is the row above, undone already. `distance`: 3 or 4. Reads up to
/// kFilterSlack bytes behind the last row and behind `prior`.
void undo_in_waves(std::uint8_t type, std::uint8_t* rows, const std::uint8_t* prior, std::size_t bytes,
                   std::size_t distance);

/// Undoes one of them in the bytes [from, to) of one row, of which those in front are undone already.
void png_undo_part(std::uint8_t type, std::uint8_t* row, const std::uint8_t* prior, std::size_t from,
                   std::size_t to, std::size_t distance);

}  // namespace vellum
