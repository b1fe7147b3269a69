// Work whose parts wait for each other: items that follow each other at a distance, as rows do whose errors
// or filters need the row in front, and what one side makes and the other uses.
#include <atomic>
#include <stdexcept>
#include <tuple>
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

TEST(Relay, EachStepIsUsedInOrderAndMakingIsNotTooFarAhead) {
  for (const std::size_t ahead : {1u, 2u, 5u})
    for (const std::size_t steps : {0u, 1u, 7u, 300u}) {
      // Plain values again.
      std::vector<std::size_t> ring(ahead + 1);
      std::size_t made = 0, used = 0, wrong = 0;
      parallel_relay(
          steps, ahead,
          [&](std::size_t step) {
            wrong += step != made++;
            ring[step % ring.size()] = step * step;
          },
          [&](std::size_t step) {
            wrong += step != used++ || ring[step % ring.size()] != step * step;
            // The one in front of it is still there.
            if (step > 0) wrong += ring[(step - 1) % ring.size()] != (step - 1) * (step - 1);
          });
      EXPECT_EQ(std::tuple(made, used, wrong), std::tuple(steps, steps, std::size_t{0}));
    }
}

TEST(Relay, AnExceptionOfEitherSideEndsBothAndOnesInsideOthersComeToTheirEnd) {
  for (const bool making : {false, true}) {
    const auto fail = [](std::size_t step) {
      if (step == 9) throw std::runtime_error("stopped");
    };
    const auto good = [](std::size_t) {};
    EXPECT_THROW(making ? parallel_relay(100, 2, fail, good) : parallel_relay(100, 2, good, fail),
                 std::runtime_error);
  }
  std::atomic<int> used = 0;
  parallel_for(20, [&](std::size_t) {
    parallel_relay(
        50, 2, [](std::size_t) {}, [&](std::size_t) { ++used; });
  });
  EXPECT_EQ(used, 1000);
}

}  // namespace
}  // namespace vellum
