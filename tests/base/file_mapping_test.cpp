#include <gtest/gtest.h>

#include <fstream>

#include "base/file.h"
#include "support/corpus.h"

namespace vellum {
namespace {

constexpr std::size_t kBytes = 50'000;

FileContent mapped(const std::filesystem::path& path) {
  std::ofstream(path, std::ios::binary) << std::string(kBytes, 'x');
  std::string reason;
  auto content = map_file(path, reason, kBytes, 1);
  EXPECT_TRUE(content) << reason;
  return *content;
}

TEST(FileMapping, SurvivesWhatOthersDoToTheFile) {
  const testing::ScratchFolder folder;
  const auto path = folder / "file";
  {
    const FileContent content = mapped(path);
    std::filesystem::remove(path);
    EXPECT_EQ(content.data()[kBytes - 1], 'x') << "removed";
    EXPECT_TRUE(content.intact());
  }
  {
    const FileContent content = mapped(path);
    std::ofstream(path, std::ios::binary | std::ios::in) << "other";
    EXPECT_FALSE(content.intact()) << "written to";
  }
  {
    const FileContent content = mapped(path), other = mapped(folder / "other");
    std::filesystem::resize_file(path, 5000);
    EXPECT_EQ(content.data()[0], 'x');
    EXPECT_EQ(content.data()[kBytes - 1], 0) << "cut";
    EXPECT_FALSE(content.intact());
    EXPECT_EQ(other.data()[kBytes - 1], 'x');
    EXPECT_TRUE(other.intact());
  }
}

}  // namespace
}  // namespace vellum
