// Selecting rows by mouse and keyboard: what a click or a key does to the entries of a list and to the caret.
#pragma once

#include <functional>

#include "core/model/document.h"

namespace vellum {

enum class SelectMode {
  Only,    ///< this row and no other
  Toggle,  ///< turn this row over, leave the others
  Extend,  ///< from the anchor to this row, and no other
  Move,    ///< the caret alone
};

/// Remembers where a range began. Steps cost as many rows as they change, not as many as there are.
class RowSelection {
 public:
  explicit RowSelection(DocumentWindow& window) : window_(window) {}

  /// Rows that ranges take in; without it all of them.
  std::function<bool(std::size_t)> shown;

  /// Moves the caret to `row` and selects by `mode`. `row` must exist.
  void apply(std::size_t row, SelectMode mode);
  /// Forgets the range, after the list has changed under it.
  void reset();

 private:
  /// Whether the rows between anchor and end are selected and nothing else, as far as the count can tell
  /// (other commands select too).
  bool range_holds() const;
  void clear();
  void select_range(std::size_t a, std::size_t b, bool selected);
  void only(std::size_t row);
  void extend(std::size_t row);

  DocumentWindow& window_;
  std::size_t anchor_ = 0;
  std::size_t end_ = 0;
  bool exact_ = false;  ///< the last step left exactly anchor to end selected
};

}  // namespace vellum
