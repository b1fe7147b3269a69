// Which rows of a list have a text that is looked for.
#pragma once

#include <QString>
#include <vector>

#include "core/model/document.h"

namespace vellum {

/// Letters of any case are the same. A text that goes on from the one before is looked for among its rows.
class RowSearch {
 public:
  explicit RowSearch(const DocumentWindow& window) : window_(window) {}

  /// Looks through all rows; an empty text looks for nothing.
  void look_for(const QString& text);
  /// The same again, after the list has changed.
  void look_again();
  /// Some rows have another content.
  void look_at(std::size_t first, std::size_t count);

  const QString& text() const { return text_; }
  bool active() const { return !text_.isEmpty(); }
  bool found(std::size_t row) const { return row < found_.size() && found_[row]; }
  std::size_t count() const { return count_; }
  /// The found row behind `row`, or in front of it, beginning anew at the other end; kNoEntry for none.
  std::size_t next(std::size_t row, bool forwards) const;

 private:
  bool holds(std::size_t row) const;

  const DocumentWindow& window_;
  QString text_;
  std::vector<bool> found_;
  std::size_t count_ = 0;
};

}  // namespace vellum
