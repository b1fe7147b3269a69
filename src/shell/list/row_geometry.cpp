#include "shell/list/row_geometry.h"

#include <algorithm>

namespace vellum {

RowGeometry::RowGeometry(const ChunkList& list, const std::vector<bool>& shown) {
  tops_.reserve(list.size() + 1);
  const auto height_of = [&](std::size_t i) { return shown.empty() || shown[i] ? list.entry(i).height : 0; };
  for (std::size_t i = 0; i < list.size(); ++i) tops_.push_back(tops_.back() + height_of(i));
}

std::size_t RowGeometry::nearest_row(std::int64_t y) const {
  if (height() == 0) return kNoEntry;
  y = std::clamp<std::int64_t>(y, 0, height() - 1);
  const auto behind = std::upper_bound(tops_.begin() + 1, tops_.end() - 1, y);
  return static_cast<std::size_t>(behind - tops_.begin()) - 1;
}

}  // namespace vellum
