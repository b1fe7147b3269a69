#include "base/chunk_handle.h"

#include "base/copy_on_write.h"

namespace vellum {
namespace {

TEST(ChunkHandle, ACopySharesUntilOneIsWritten) {
  ChunkHandle a = ChunkHandle::create(100);
  ChunkHandle b = a;
  ASSERT_TRUE(a.shares_with(b));
  b.edit()[3] = 7;
  EXPECT_FALSE(a.shares_with(b));
  EXPECT_EQ(a.data()[3], 0);
  EXPECT_EQ(b.data()[3], 7);
  const std::uint8_t* own = b.data();
  b.edit()[4] = 8;
  EXPECT_EQ(b.data(), own) << "a block of its own is written in place";
}

TEST(ChunkHandle, HoldsASpareZeroBehindAPayload) {
  const std::uint8_t bytes[] = {1, 2, 3};
  const ChunkHandle handle = ChunkHandle::copy_of(bytes);
  ASSERT_EQ(handle.size(), 4u);
  EXPECT_EQ(handle.data()[2], 3);
  EXPECT_EQ(handle.data()[3], 0);
}

TEST(ChunkHandle, ExhaustedMemoryGivesNull) {
  EXPECT_FALSE(ChunkHandle::create_for_overwrite(std::size_t{1} << 62));
  EXPECT_TRUE(ChunkHandle::create(0)) << "an empty block is a block";
}

TEST(ChunkHandle, LargeBlocksLieApartAndOutliveTheirNeighbors) {
  std::vector<ChunkHandle> blocks;
  for (std::size_t i = 0; i < 200; ++i) {
    blocks.push_back(ChunkHandle::create((std::size_t{600} << 10) + 7 * i));
    ASSERT_TRUE(blocks.back());
    EXPECT_EQ(blocks.back().data()[blocks.back().size() - 1], 0) << "memory that was used before";
    std::memset(blocks.back().edit(), static_cast<int>(i), blocks.back().size());
    if (i % 3 == 0) blocks[i / 2].reset();
  }
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    if (!blocks[i]) continue;
    EXPECT_EQ(blocks[i].data()[0], static_cast<std::uint8_t>(i));
    EXPECT_EQ(blocks[i].data()[blocks[i].size() - 1], static_cast<std::uint8_t>(i));
  }
}

TEST(CopyOnWrite, ReadsAsZeroAndDetaches) {
  CopyOnWrite<std::array<int, 4>> a;
  EXPECT_EQ((*a)[2], 0);
  a.edit()[2] = 5;
  CopyOnWrite<std::array<int, 4>> b = a;
  b.edit()[2] = 6;
  EXPECT_EQ((*a)[2], 5);
  EXPECT_EQ((*b)[2], 6);
}

}  // namespace
}  // namespace vellum
