#include "shell/list/row_search.h"

#include <algorithm>

#include "core/chunks/chunk_facts.h"
#include "shell/look/text.h"

namespace vellum {

bool RowSearch::holds(std::size_t row) const {
  return to_qt(searched_text(window_, row)).contains(text_, Qt::CaseInsensitive);
}

void RowSearch::look_for(const QString& text) {
  const bool narrows =
      active() && found_.size() == window_.list.size() && text.startsWith(text_, Qt::CaseInsensitive);
  text_ = text;
  if (!narrows) return look_again();
  for (std::size_t i = 0; i < found_.size(); ++i)
    if (found_[i] && !holds(i)) found_[i] = false;
  count_ = static_cast<std::size_t>(std::ranges::count(found_, true));
}

void RowSearch::look_again() {
  found_.assign(active() ? window_.list.size() : 0, false);
  for (std::size_t i = 0; i < found_.size(); ++i) found_[i] = holds(i);
  count_ = static_cast<std::size_t>(std::ranges::count(found_, true));
}

void RowSearch::look_at(std::size_t first, std::size_t count) {
  if (!active()) return;
  if (found_.size() != window_.list.size()) return look_again();
  for (std::size_t i = first; i < std::min(first + count, found_.size()); ++i) {
    const bool holds_it = holds(i);
    count_ += static_cast<std::size_t>(holds_it) - static_cast<std::size_t>(found_[i]);
    found_[i] = holds_it;
  }
}

std::size_t RowSearch::next(std::size_t row, bool forwards) const {
  const std::size_t rows = found_.size();
  for (std::size_t step = 1; step <= rows; ++step) {
    const std::size_t at = (forwards ? row + step : row + rows - step) % rows;
    if (found_[at]) return at;
  }
  return kNoEntry;
}

}  // namespace vellum
