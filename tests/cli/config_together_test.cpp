// Programs that write the configuration at the same time lose nothing of each other.
#include <gtest/gtest.h>

#include <thread>

#include "cli/tool.h"

namespace vellum {
namespace {

class ConfigTogether : public ToolTest {};

TEST_F(ConfigTogether, EveryChangeIsThere) {
  const std::vector<std::string> keys = {"UndoLevels",        "PngCompression", "DefaultDelay",
                                         "CreateBackups",     "GIFOptimize",    "WEBPLossless",
                                         "WEBPQualityFactor", "AutoUpdateTime"};
  for (const char* value : {"1", "0", "1"}) {
    std::vector<std::thread> programs;
    for (const std::string& key : keys)
      programs.emplace_back([&] { EXPECT_EQ(vellum({"config", "set", key, value}).status, 0); });
    for (std::thread& program : programs) program.join();
    for (const std::string& key : keys)
      EXPECT_EQ(vellum({"config", "get", key}).output, std::string(value) + "\n") << key;
  }
}

}  // namespace
}  // namespace vellum
