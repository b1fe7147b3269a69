// Work whose parts wait for each other: items that follow each other at a distance, as rows do whose errors
// or filters need the row in front, what one side makes and the other uses, and what is made ahead.
#include <atomic>
#include <random>
#include <stdexcept>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "base/parallel.h"
#include "base/work_ahead.h"

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

TEST(Relay, WorkBehindItFindsWhatItNeedsAndLosesNothingMeanwhile) {
  // As rows that take turns in a ring: each item adds up a window of steps, which slides two steps on.
  constexpr std::size_t kWindow = 5, kSlide = 2, kSlots = 8;
  for (const std::size_t items : {1u, 2u, 40u, 1000u}) {
    const std::size_t steps = kSlide * (items - 1) + kWindow;
    std::vector<std::size_t> made(3), ring(kSlots), sums(items);
    std::atomic<std::size_t> wrong = 0;
    const RelayWork work{
        .items = items,
        .work =
            [&](std::size_t worker, std::size_t item) {
              wrong += worker >= parallel_width();
              for (std::size_t i = 0; i < kWindow; ++i) sums[item] += ring[(kSlide * item + i) % kSlots];
            },
        .needs = [&](std::size_t item) { return kSlide * item + kWindow; },
        .spares = [&](std::size_t step) { return step < kSlots ? 0 : (step - kSlots) / kSlide + 1; },
    };
    parallel_relay(
        steps, 2, [&](std::size_t step) { made[step % 3] = step; },
        [&](std::size_t step) { ring[step % kSlots] = made[step % 3] * made[step % 3]; }, work);
    EXPECT_EQ(wrong, 0u);
    for (std::size_t item = 0; item < items; ++item) {
      std::size_t sum = 0;
      for (std::size_t i = 0; i < kWindow; ++i) sum += (kSlide * item + i) * (kSlide * item + i);
      ASSERT_EQ(sums[item], sum) << item << " of " << items;
    }
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
  const RelayWork failing{.items = 50,
                          .work =
                              [](std::size_t, std::size_t item) {
                                if (item == 9) throw std::runtime_error("stopped");
                              },
                          .needs = [](std::size_t item) { return item; },
                          .spares = [](std::size_t) { return std::size_t{0}; }};
  EXPECT_THROW(parallel_relay(
                   100, 2, [](std::size_t) {}, [](std::size_t) {}, failing),
               std::runtime_error);
  std::atomic<int> used = 0;
  parallel_for(20, [&](std::size_t) {
    parallel_relay(
        50, 2, [](std::size_t) {}, [&](std::size_t) { ++used; });
  });
  EXPECT_EQ(used, 1000);
}

TEST(WorkAhead, WhatIsTakenIsMadeOnceAndNothingBeyondThatIsBegun) {
  constexpr std::size_t kCount = 60, kMostAhead = 4;
  std::minstd_rand random(5);
  for (int round = 0; round < 200; ++round) {
    // Plain values: one that is read while it is made races, which the thread sanitizer tells.
    std::vector<std::size_t> made(kCount);
    std::atomic<std::size_t> taken = 0, wrong = 0;
    WorkAhead work(kCount, [&](std::size_t item) {
      wrong += item > taken + kMostAhead;
      made[item] += item + 1;
      if (item % 7 == 6) throw item;
    });
    std::size_t reached = 0;  // behind what may have been made or was skipped
    const std::size_t end = random() % (kCount + 1);
    for (std::size_t item = 0; item < end; item += random() % 3 == 0 ? random() % 9 : 1) {
      taken = item;
      const bool is_new = item >= reached;
      std::size_t thrown = kCount;
      try {
        work.take(item, random() % (kMostAhead + 1));
      } catch (std::size_t by) {
        thrown = by;
      }
      if (parallel_width() > 1 && is_new) {
        EXPECT_EQ(made[item], item + 1);
        EXPECT_EQ(thrown, item % 7 == 6 ? item : kCount);
        reached = item + 1;
      }
    }
    EXPECT_EQ(wrong, 0u);
  }
}

}  // namespace
}  // namespace vellum
