#include "shell/list/row_geometry.h"

#include <algorithm>

namespace vellum {

RowGeometry::RowGeometry(const ChunkList& list) {
  tops_.reserve(list.size() + 1);
  for (std::size_t i = 0; i < list.size(); ++i) tops_.push_back(tops_.back() + list.entry(i).height);
}

std::size_t RowGeometry::nearest_row(std::int64_t y) const {
  if (rows() == 0) return kNoEntry;
  const auto behind = std::upper_bound(tops_.begin() + 1, tops_.end() - 1, y);
  return static_cast<std::size_t>(behind - tops_.begin()) - 1;
}

}  // namespace vellum
