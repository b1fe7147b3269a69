#include "shell/list/row_selection.h"

#include <algorithm>

namespace vellum {

void RowSelection::apply(std::size_t row, SelectMode mode) {
  window_.document.caret = static_cast<std::int32_t>(row);
  switch (mode) {
    case SelectMode::Only:
      return only(row);
    case SelectMode::Toggle:
      window_.list.select(row, !window_.list.entry(row).selected);
      anchor_ = end_ = row;
      exact_ = false;
      return;
    case SelectMode::Extend:
      return extend(row);
    case SelectMode::Move:
      return;
  }
}

void RowSelection::reset() {
  anchor_ = end_ = static_cast<std::size_t>(std::max(window_.document.caret, 0));
  exact_ = false;
}

bool RowSelection::range_holds() const {
  const auto [low, high] = std::minmax(anchor_, end_);
  return exact_ && high < window_.list.size() && window_.list.selected_count() == high - low + 1;
}

void RowSelection::clear() {
  ChunkList& list = window_.list;
  if (range_holds()) select_range(anchor_, end_, false);
  // Where another hand selected rows, they are looked for until the last one is found.
  for (std::size_t i = 0; list.selected_count() > 0 && i < list.size(); ++i) list.select(i, false);
}

void RowSelection::select_range(std::size_t a, std::size_t b, bool selected) {
  for (std::size_t i = std::min(a, b); i <= std::max(a, b); ++i)
    window_.list.select(i, selected && (!shown || shown(i)));
}

void RowSelection::only(std::size_t row) {
  if (window_.list.selected_count() != 1 || !window_.list.entry(row).selected) clear();
  window_.list.select(row, true);
  anchor_ = end_ = row;
  exact_ = true;
}

void RowSelection::extend(std::size_t row) {
  if (anchor_ >= window_.list.size()) anchor_ = row;
  if (!range_holds()) {
    clear();
    select_range(anchor_, row, true);
  } else if (row != end_) {
    const auto [low, high] = std::minmax(anchor_, row);
    for (std::size_t i = std::min(end_, row); i <= std::max(end_, row); ++i)
      window_.list.select(i, low <= i && i <= high && (!shown || shown(i)));
  }
  end_ = row;
  exact_ = true;
}

}  // namespace vellum
