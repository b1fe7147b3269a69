// The five filters of PNG rows (PNG standard, "Filtering"), both ways.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace vellum {

/// Bytes behind a row that the functions below may read (never write) past its end.
inline constexpr std::size_t kFilterSlack = 16;

/// Undoes filter `type` (0 to 4) of a row in place. `prior` is the row above, undone already (zeros for the
/// first row of a pass); `distance` the whole bytes of a pixel, 1, 2, 3, 4, 6 or 8. False for a type that
/// does not exist. Up to kFilterSlack bytes behind either row are read.
bool png_unfilter(std::uint8_t type, std::uint8_t* row, const std::uint8_t* prior, std::size_t bytes,
                  std::size_t distance);

/// The same for as many of `count` rows as go well together, each of them behind its filter byte; `prior` is
/// the row above the first one. Gives how many that were: 0 where the first one's type does not exist.
std::size_t png_unfilter_some(std::uint8_t* rows, std::size_t count, const std::uint8_t* prior,
                              std::size_t bytes, std::size_t distance);

/// Which filters a writer tries for a row.
struct PngFilterChoice {
  bool none_only = false;  ///< palettes and depths below 8: rows go out as they are
  bool horizontal = true;  ///< those that look to the left: not for images of width 1
  bool vertical = true;    ///< those that look up: not for images of height 1
  int fixed = -1;          ///< 0 to 4: this one in every row
};

/// Filters a row the way libpng does by default: of the filters None, Sub, Up, Average and Paeth the first
/// with the smallest sum of absolute (signed) bytes. `out` gets the filter byte and then `bytes` bytes;
/// `scratch` holds at least 2 * bytes. `prior` is the unfiltered row above, zeros for the first one of a
/// pass.
void png_filter_row(const PngFilterChoice& choice, const std::uint8_t* row, const std::uint8_t* prior,
                    std::size_t bytes, std::size_t distance, std::uint8_t* out, std::uint8_t* scratch);

}  // namespace vellum
