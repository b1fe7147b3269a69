// Outside programs that judge what we write.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace vellum::testing {

struct ToolResult {
  bool there = false;  ///< the program is installed
  int status = -1;     ///< its exit status
  std::string output;  ///< standard output and standard error together
};

/// Runs a program (no shell in between) and waits for it.
ToolResult run_tool(const std::vector<std::string>& command);

}  // namespace vellum::testing
