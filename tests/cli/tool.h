// The built command-line tool and a small animation for it to work on.
#pragma once

#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>

#include "support/corpus.h"
#include "support/documents.h"
#include "support/judge.h"
#include "support/libpng_oracle.h"

namespace vellum {

class ToolTest : public ::testing::Test {
 protected:
  // No test may see, or change, what the user has set.
  ToolTest() { setenv("XDG_CONFIG_HOME", folder_.path().c_str(), 1); }

  static testing::ToolResult vellum(std::vector<std::string> words) {
    words.insert(words.begin(), testing::program_folder() / "vellum");
    return testing::run_tool(words);
  }

  /// Frames of 4 x 3 pixels and 100 ms behind a text, the last of them 2 x 1 at (2, 1).
  std::filesystem::path animation(std::uint32_t frames, const std::string& last) {
    using testing::be32;
    std::vector<testing::ChunkText> chunks = {{"IHDR", testing::header_payload(4, 3, 8, 2)},
                                              {"acTL", be32(frames) + be32(0)},
                                              {"tEXt", std::string("T\xEFtle\0x", 7)},
                                              {"fcTL", testing::frame_control(0, 4, 3)},
                                              {"IDAT", testing::zero_image(4, 3, 8, 2)}};
    std::uint32_t sequence = 1;
    for (std::uint32_t i = 1; i < frames; ++i, sequence += 2) {
      const bool whole = i + 1 < frames;
      chunks.push_back({"fcTL", whole ? testing::frame_control(sequence, 4, 3) : last});
      chunks.push_back(
          {"fdAT", be32(sequence + 1) + testing::zero_image(whole ? 4 : 2, whole ? 3 : 1, 8, 2)});
    }
    chunks.push_back({"IEND", ""});
    const auto bytes = testing::png_file(chunks);
    const auto path = folder_ / "a.png";
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return path;
  }

  testing::ScratchFolder folder_;
};

}  // namespace vellum
