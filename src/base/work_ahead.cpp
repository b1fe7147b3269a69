#include "base/work_ahead.h"

#include <tbb/task_group.h>

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include "base/parallel.h"

namespace vellum {

/// Items in their order: made or skipped, in the hands of somebody, or to come.
class WorkAhead::Line {
 public:
  Line(std::size_t count, std::function<void(std::size_t)> make)
      : count_(count), make_(std::move(make)), mostHelpers_(parallel_width() - 1) {}

  ~Line() {
    {
      const std::lock_guard guard(lock_);
      end_ = 0;
    }
    helpers_.wait();
  }

  void take(std::size_t item, std::size_t ahead) {
    if (mostHelpers_ == 0) return;
    std::unique_lock guard(lock_);
    next_ = std::max(next_, item);
    end_ = std::min(item + ahead + 1, count_);
    call_helpers(item);
    while (next_ <= item || is_doing(item)) {
      if (next_ < end_)
        make_next(guard);
      else
        changed_.wait(guard);
    }
    if (const auto failure = failures_.extract(item)) std::rethrow_exception(failure.mapped());
  }

 private:
  /// For those behind an item that the caller is about to make or has.
  void call_helpers(std::size_t item) {
    const std::size_t first = std::max(next_, item + 1);
    for (; helping_ < mostHelpers_ && first + helping_ < end_; ++helping_) helpers_.run([this] { help(); });
  }

  void help() {
    std::unique_lock guard(lock_);
    while (next_ < end_) make_next(guard);
    --helping_;
  }

  bool is_doing(std::size_t item) const { return std::ranges::find(doing_, item) != doing_.end(); }

  void make_next(std::unique_lock<std::mutex>& guard) {
    const std::size_t item = next_++;
    doing_.push_back(item);
    guard.unlock();
    std::exception_ptr failure;
    try {
      make_(item);
    } catch (...) {
      failure = std::current_exception();
    }
    guard.lock();
    std::erase(doing_, item);
    if (failure) failures_[item] = failure;
    changed_.notify_all();
  }

  const std::size_t count_;
  const std::function<void(std::size_t)> make_;
  const std::size_t mostHelpers_;
  std::mutex lock_;
  std::condition_variable changed_;
  std::size_t next_ = 0, end_ = 0;  ///< the first that nobody has begun, and behind the last that may be
  std::vector<std::size_t> doing_;
  std::size_t helping_ = 0;
  std::map<std::size_t, std::exception_ptr> failures_;  ///< of items that nobody has taken since
  tbb::task_group helpers_;                             ///< goes first: what runs in it uses the rest
};

WorkAhead::WorkAhead(std::size_t count, std::function<void(std::size_t)> make)
    : line_(std::make_unique<Line>(count, std::move(make))) {}

WorkAhead::~WorkAhead() = default;

void WorkAhead::take(std::size_t item, std::size_t ahead) { line_->take(item, ahead); }

}  // namespace vellum
