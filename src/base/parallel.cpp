#include "base/parallel.h"

#include <tbb/info.h>
#include <tbb/parallel_for.h>
#include <tbb/partitioner.h>
#include <tbb/task_arena.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace vellum {

std::size_t parallel_width() {
  // Respects the affinity of the process (taskset, containers).
  return static_cast<std::size_t>(tbb::info::default_concurrency());
}

void parallel_for(std::size_t count, const std::function<void(std::size_t)>& work) {
  if (count < 2 || parallel_width() < 2) {
    for (std::size_t i = 0; i < count; ++i) work(i);
    return;
  }
  // One item at a time: items are whole frames or large parts, and differ in cost. Who waits for the last of
  // them begins nothing else: a frame inside another one would hold the memory of both.
  tbb::this_task_arena::isolate([&] {
    tbb::parallel_for(
        tbb::blocked_range<std::size_t>(0, count, 1),
        [&work](const tbb::blocked_range<std::size_t>& range) {
          for (std::size_t i = range.begin(); i != range.end(); ++i) work(i);
        },
        tbb::simple_partitioner());
  });
}

void parallel_jobs(std::size_t count, std::size_t jobs, const std::function<void(std::size_t)>& work) {
  if (jobs == 0) jobs = parallel_width();
  jobs = std::min(jobs, count);
  std::atomic<std::size_t> next = 0;
  std::exception_ptr failure;
  std::mutex failing;
  const auto take_all = [&] {
    try {
      for (std::size_t i; (i = next.fetch_add(1)) < count;) work(i);
    } catch (...) {
      next = count;
      const std::lock_guard lock(failing);
      if (!failure) failure = std::current_exception();
    }
  };
  if (jobs < 2) {
    take_all();
  } else {
    std::vector<std::jthread> threads;
    for (std::size_t i = 0; i < jobs; ++i)
      threads.emplace_back([&take_all] { tbb::task_arena(1).execute(take_all); });
  }
  if (failure) std::rethrow_exception(failure);
}

namespace {

constexpr std::size_t kCacheLine = 64;

/// Who does what of a wavefront. Items are claimed in order, so the one in front of a claimed item is always
/// in the hands of a worker that runs, however many run.
class Wavefront {
 public:
  Wavefront(std::size_t items, std::size_t steps, std::size_t workers)
      : items_(items), steps_(steps), slots_(workers + 1) {}

  /// Nothing when all are claimed.
  bool claim(std::size_t& item) { return (item = next_.fetch_add(1)) < items_ && !stopped_; }
  /// Waits until a step may begin; false when another worker has failed.
  bool wait(std::size_t item, std::size_t step) const {
    if (item == 0) return true;
    const std::size_t wanted = (item - 1) * steps_ + std::min(step + 2, steps_);
    for (int tries = 0; done_of(item - 1).load(std::memory_order_acquire) < wanted; ++tries) {
      if (stopped_) return false;
      if (tries > kBusyTries) std::this_thread::yield();
    }
    return true;
  }
  void done(std::size_t item, std::size_t step) {
    slots_[item % slots_.size()].done.store(item * steps_ + step + 1, std::memory_order_release);
  }
  void stop() { stopped_ = true; }

 private:
  static constexpr int kBusyTries = 500;  // some microseconds

  /// Steps of all items up to the last one that used the slot. An item ends behind the one in front of it, so
  /// those under way are neighbours and have slots of their own.
  struct alignas(kCacheLine) Slot {
    std::atomic<std::size_t> done{0};
  };
  const std::atomic<std::size_t>& done_of(std::size_t item) const {
    return slots_[item % slots_.size()].done;
  }

  std::size_t items_, steps_;
  std::vector<Slot> slots_;
  std::atomic<std::size_t> next_{0};
  std::atomic<bool> stopped_{false};
};

}  // namespace

void parallel_wavefront(std::size_t items, std::size_t steps,
                        const std::function<void(std::size_t, std::size_t, std::size_t)>& work) {
  const std::size_t workers = std::min({parallel_width(), items, steps});
  Wavefront front(items, steps, workers);
  const auto run = [&](std::size_t worker) {
    for (std::size_t item = 0; front.claim(item);)
      for (std::size_t step = 0; step < steps; ++step) {
        if (!front.wait(item, step)) return;
        work(worker, item, step);
        front.done(item, step);
      }
  };
  parallel_for(workers, [&](std::size_t worker) {
    try {
      run(worker);
    } catch (...) {
      front.stop();
      throw;
    }
  });
}

namespace {

/// How far both sides of a relay are, and the work behind it.
class Relay {
 public:
  using Work = std::function<void(std::size_t)>;
  Relay(std::size_t steps, std::size_t ahead, const Work& make, const Work& use, const RelayWork& behind)
      : steps_(steps),
        ahead_(ahead),
        make_{make},
        use_{use},
        behind_(behind),
        doing_(parallel_width(), kNothing) {}

  /// Does what can be done until all has begun; while another one runs it, both do.
  void run(std::size_t worker) {
    std::unique_lock guard(lock_);
    while (!stopped_ && (use_.done < steps_ || next_ < behind_.items)) {
      if (!make_.busy && make_.done < steps_ && make_.done - use_.done < ahead_)
        do_step(make_, guard);
      else if (!use_.busy && use_.done < make_.done && has_room(use_.done))
        do_step(use_, guard);
      else if (next_ < behind_.items && behind_.needs(next_) <= use_.done)
        do_item(worker, guard);
      else
        changed_.wait(guard);  // for another one: alone there is always something to do
    }
  }

 private:
  static constexpr std::size_t kNothing = ~std::size_t{0};
  struct Side {
    const Work& work;
    std::size_t done = 0;
    bool busy = false;
  };

  /// Whether the items that a step is not to be used before are done.
  bool has_room(std::size_t step) const {
    if (behind_.items == 0) return true;
    return std::min(next_, *std::ranges::min_element(doing_)) >=
           std::min(behind_.spares(step), behind_.items);
  }

  void do_step(Side& side, std::unique_lock<std::mutex>& guard) {
    side.busy = true;
    run_unlocked(guard, [&, step = side.done] { side.work(step); });
    side.busy = false;
    ++side.done;
    changed_.notify_all();
  }

  void do_item(std::size_t worker, std::unique_lock<std::mutex>& guard) {
    const std::size_t item = doing_[worker] = next_++;
    run_unlocked(guard, [&] { behind_.work(worker, item); });
    doing_[worker] = kNothing;
    changed_.notify_all();
  }

  template <class Call>
  void run_unlocked(std::unique_lock<std::mutex>& guard, const Call& call) {
    guard.unlock();
    try {
      call();
    } catch (...) {
      guard.lock();
      stopped_ = true;
      changed_.notify_all();
      throw;
    }
    guard.lock();
  }

  std::size_t steps_, ahead_;
  Side make_, use_;
  const RelayWork& behind_;
  std::vector<std::size_t> doing_;  ///< the item of each worker
  std::size_t next_ = 0;
  bool stopped_ = false;
  std::mutex lock_;
  std::condition_variable changed_;
};

}  // namespace

void parallel_relay(std::size_t steps, std::size_t ahead, const std::function<void(std::size_t)>& make,
                    const std::function<void(std::size_t)>& use, const RelayWork& behind) {
  Relay relay(steps, ahead, make, use, behind);
  parallel_for(behind.items == 0 ? 2 : parallel_width(), [&](std::size_t worker) { relay.run(worker); });
}

void parallel_relay(std::size_t steps, std::size_t ahead, const std::function<void(std::size_t)>& make,
                    const std::function<void(std::size_t)>& use) {
  parallel_relay(steps, ahead, make, use, {});
}

}  // namespace vellum
