// Where the rows of a chunk list stand: heights summed once, so that a row is found in a few steps among
// 100,000.
#pragma once

#include <cstdint>
#include <vector>

#include "core/model/chunk_list.h"

namespace vellum {

/// Distances from the top of row 0, in device-independent pixels.
class RowGeometry {
 public:
  RowGeometry() = default;
  /// Rows that aren't `shown` have no height; where it is empty all are.
  explicit RowGeometry(const ChunkList& list, const std::vector<bool>& shown = {});

  std::size_t rows() const { return tops_.size() - 1; }
  std::int64_t height() const { return tops_.back(); }
  std::int64_t top(std::size_t row) const { return tops_[row]; }
  int height(std::size_t row) const { return static_cast<int>(tops_[row + 1] - tops_[row]); }
  /// The row at `y`; the nearest one for a place above or below all of them; kNoEntry without rows that have
  /// a height.
  std::size_t nearest_row(std::int64_t y) const;
  /// The same, but kNoEntry where there is no row.
  std::size_t row_at(std::int64_t y) const { return y < 0 || y >= height() ? kNoEntry : nearest_row(y); }

 private:
  std::vector<std::int64_t> tops_ = {0};
};

}  // namespace vellum
