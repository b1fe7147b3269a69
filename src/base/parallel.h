// Work on all cores inside one call: the only place of the program where threads are.
#pragma once

#include <cstddef>
#include <functional>

namespace vellum {

/// Calls `work(i)` for every i below `count`, on as many cores as the process may use, and returns when all
/// calls have. Calls are independent: they touch nothing shared but what they read. Runs in line when there
/// is one call or one core. An exception of a call is thrown again here.
void parallel_for(std::size_t count, const std::function<void(std::size_t)>& work);

/// How many calls of `parallel_for` can run at the same time.
std::size_t parallel_width();

}  // namespace vellum
