#include "base/memory_budget.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "base/chunk_handle.h"
#include "base/settings.h"

namespace vellum {
namespace {

constexpr std::size_t kBlock = 300'000;

ChunkHandle block_of(std::uint8_t value) {
  ChunkHandle block = ChunkHandle::create(kBlock);
  std::fill_n(block.edit(), kBlock, value);
  return block;
}

class ValueSource : public BlockSource {
 public:
  explicit ValueSource(std::uint8_t value) : value_(value) {}
  ChunkHandle make() const override {
    ++made;
    return block_of(value_);
  }
  std::size_t held_bytes() const override { return 1; }
  mutable std::atomic<int> made = 0;

 private:
  std::uint8_t value_;
};

std::vector<ChunkHandle> kept_blocks(int count) {
  std::vector<ChunkHandle> blocks;
  for (int i = 0; i < count; ++i) {
    const auto value = static_cast<std::uint8_t>(i);
    blocks.push_back(ChunkHandle::kept(block_of(value), 4, std::make_shared<ValueSource>(value)));
  }
  return blocks;
}

int times_made(const ChunkHandle& block) {
  return std::dynamic_pointer_cast<const ValueSource>(block.source())->made;
}

TEST(MemoryBudget, WhatIsTooMuchGoesAndComesBackAsItWas) {
  settings::PictureMemoryMegabytes = 1;
  const std::uint64_t before = resident_bytes();
  {
    auto blocks = kept_blocks(10);
    EXPECT_LE(resident_bytes(), memory_budget());
    for (int i = 0; i < 10; ++i) {
      const auto at = static_cast<std::size_t>(i);
      EXPECT_EQ(blocks[at].head()[3], i) << "the beginning stays";
      const BlockPin pin(blocks[at]);
      EXPECT_EQ(blocks[at].data()[kBlock - 1], i);
    }
    EXPECT_EQ(times_made(blocks[0]), 1);
    // Who is pinned stays where he is, whatever others need.
    const BlockPin pin(blocks[5]);
    const std::uint8_t* there = blocks[5].data();
    for (const ChunkHandle& block : blocks) {
      const BlockPin own(block);
      block.data();
    }
    EXPECT_EQ(blocks[5].data(), there);
    // What is written is a block of its own.
    ChunkHandle written = blocks[2];
    written.edit()[0] = 99;
    EXPECT_FALSE(written.shares_with(blocks[2]));
    EXPECT_EQ(written.source(), nullptr);
    EXPECT_EQ(blocks[2].head()[0], 2);
    EXPECT_EQ(written.data()[1], 2);
  }
  EXPECT_EQ(resident_bytes(), before) << "gone with their handles";
  settings::PictureMemoryMegabytes = 0;
}

TEST(MemoryBudget, ManyThreadsReadWhatOthersLetGo) {
  settings::PictureMemoryMegabytes = 1;
  const auto blocks = kept_blocks(12);
  std::atomic<int> wrong = 0;
  std::vector<std::thread> threads;
  for (unsigned t = 0; t < 4; ++t)
    threads.emplace_back([&, t] {
      for (unsigned i = 0; i < 300; ++i) {
        const std::size_t at = (i * (t + 1) + t) % blocks.size();
        const BlockPin pin(blocks[at]);
        const BlockPin again = pin;
        if (blocks[at].data()[i * 900] != at) ++wrong;
      }
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
  settings::PictureMemoryMegabytes = 0;
}

}  // namespace
}  // namespace vellum
