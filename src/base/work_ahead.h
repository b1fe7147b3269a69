// WorkAhead: items that are made on other cores while one thread uses those in front of them.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>

namespace vellum {

/// Who uses items one after another waits for none but the one it needs, and makes others meanwhile; making
/// goes on while that thread does something else. All calls come from one thread. On one core nothing is made
/// at all: an item may be made by who uses it as well.
class WorkAhead {
 public:
  /// `make(item)` is called at most once for an item below `count`, side by side; it touches nothing that who
  /// uses the items may change meanwhile.
  WorkAhead(std::size_t count, std::function<void(std::size_t)> make);
  /// Waits for what is under way; what has not begun never does.
  ~WorkAhead();
  WorkAhead(const WorkAhead&) = delete;
  WorkAhead& operator=(const WorkAhead&) = delete;

  /// Returns when `item`, below the count, is made, and has those up to `ahead` behind it made meanwhile.
  /// Items in front of it that nobody has begun are not made any more. What `make` threw for an item is
  /// thrown here, when that item is taken for the first time.
  void take(std::size_t item, std::size_t ahead);

 private:
  class Line;
  std::unique_ptr<Line> line_;
};

}  // namespace vellum
