// Work on all cores inside one call. What outlives a call stands in base/work_ahead.
#pragma once

#include <cstddef>
#include <functional>

namespace vellum {

/// Calls `work(i)` for every i below `count`, on as many cores as the process may use, and returns when all
/// calls have. Calls are independent: they touch nothing shared but what they read. Runs in line when there
/// is one call or one core. An exception of a call is thrown again here.
void parallel_for(std::size_t count, const std::function<void(std::size_t)>& work);

/// The same in the order of i on `jobs` threads at most (0: one a core), for calls that are long and hold
/// much memory: no more than `jobs` have begun and not ended. With several of them what a call itself does
/// side by side stays on its own thread. An exception of a call ends the others and is thrown again here.
void parallel_jobs(std::size_t count, std::size_t jobs, const std::function<void(std::size_t)>& work);

/// Items of which each follows the one before it at a distance: `work(worker, item, step)` for every item and
/// each of its steps in order, where step s begins when the item in front has done step s + 1 (or all). A
/// worker, numbered below parallel_width(), does one item after the other. Steps should take some
/// microseconds at least. An exception of a call ends the others and is thrown again here.
void parallel_wavefront(std::size_t items, std::size_t steps,
                        const std::function<void(std::size_t, std::size_t, std::size_t)>& work);

/// What one makes and another uses: `make(step)` and `use(step)` for every step, each in order and one at a
/// time, on two cores where there are two. Making is at most `ahead` (1 or more) steps in front of using, and
/// waits for no particular core: who has nothing to wait for does what comes next. An exception of a call
/// ends all and is thrown again here.
void parallel_relay(std::size_t steps, std::size_t ahead, const std::function<void(std::size_t)>& make,
                    const std::function<void(std::size_t)>& use);

/// Work that begins while a relay goes on: `work(worker, item)` for every item, begun in their order, side by
/// side.
struct RelayWork {
  std::size_t items = 0;
  std::function<void(std::size_t worker, std::size_t item)> work;
  /// Steps that have been used before an item begins; never fewer than for the item in front of it.
  std::function<std::size_t(std::size_t item)> needs;
  /// Items in front of this one are done before a step is used. None of those needs the step itself.
  std::function<std::size_t(std::size_t step)> spares;
};
/// The same on all cores, with workers numbered below parallel_width(). Done when all items are.
void parallel_relay(std::size_t steps, std::size_t ahead, const std::function<void(std::size_t)>& make,
                    const std::function<void(std::size_t)>& use, const RelayWork& behind);

/// How many calls of `parallel_for` can run at the same time.
std::size_t parallel_width();

}  // namespace vellum
