#include "base/parallel.h"

#include <tbb/info.h>
#include <tbb/parallel_for.h>
#include <tbb/partitioner.h>

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
  // One item at a time: items are whole frames or large parts, and differ in cost.
  tbb::parallel_for(
      tbb::blocked_range<std::size_t>(0, count, 1),
      [&work](const tbb::blocked_range<std::size_t>& range) {
        for (std::size_t i = range.begin(); i != range.end(); ++i) work(i);
      },
      tbb::simple_partitioner());
}

}  // namespace vellum
