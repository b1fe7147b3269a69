// Items that follow each other at a distance, as rows do whose errors or filters need the row in front.
#include <atomic>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include "base/parallel.h"

namespace vellum {
namespace {

TEST(Wavefront, AStepSeesWhatTheItemInFrontDid) {
  for (const std::size_t steps : {1u, 2u, 3u, 40u}) {
    constexpr std::size_t kItems = 500;
    // Plain values: a step that begins too early reads a zero, or races, which the thread sanitizer tells.
    std::vector<std::vector<std::size_t>> sums(kItems, std::vector<std::size_t>(steps));
    std::atomic<std::size_t> wrong = 0;
    parallel_wavefront(kItems, steps, [&](std::size_t worker, std::size_t item, std::size_t step) {
      wrong += worker >= parallel_width() || (step > 0 && sums[item][step - 1] == 0);
      const std::size_t next = std::min(step + 1, steps - 1);
      sums[item][step] = item == 0 ? 1 : sums[item - 1][next] + 1;
    });
    EXPECT_EQ(wrong, 0u);
    for (std::size_t item = 0; item < kItems; ++item)
      for (std::size_t step = 0; step < steps; ++step) ASSERT_EQ(sums[item][step], item + 1) << step;
  }
}

TEST(Wavefront, AnExceptionEndsAllWorkers) {
  EXPECT_THROW(parallel_wavefront(1000, 50,
                                  [](std::size_t, std::size_t item, std::size_t step) {
                                    if (item == 7 && step == 9) throw std::runtime_error("stopped");
                                  }),
               std::runtime_error);
}

TEST(Wavefront, NothingToDoIsNothingDone) {
  bool called = false;
  const auto note = [&](std::size_t, std::size_t, std::size_t) { called = true; };
  parallel_wavefront(0, 5, note);
  parallel_wavefront(5, 0, note);
  EXPECT_FALSE(called);
}

}  // namespace
}  // namespace vellum
