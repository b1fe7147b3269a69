// The two rules that hold the house up: Qt appears in src/shell/ alone, and no include runs up the table of
// wings.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <regex>

#include "support/corpus.h"

namespace {

namespace fs = std::filesystem;

/// The wings from the ground up, as ARCHITECTURE.md has them: a wing includes itself and what stands before
/// it.
const std::vector<std::string> kWings = {"base",       "image",         "core",     "playback",
                                         "operations", "generators",    "exchange", "batch",
                                         "extension",  "configuration", "cli",      "shell"};

/// The rooms of the two large wings, from the ground up; files beside the rooms belong to none.
const std::map<std::string, std::vector<std::string>> kRooms = {
    {"core", {"model", "chunks", "edit", "build", "files", "check"}},
    {"shell",
     {"look", "widgets", "forms", "list", "services", "help", "editors", "dialogs", "viewer", "docks",
      "setup", "start", "window"}}};

struct Include {
  fs::path file;
  std::string name;
};

std::vector<Include> includes_of(const fs::path& folder) {
  static const std::regex line_form(R"(^\s*#\s*include\s*[<"]([^>"]+)[>"])");
  std::vector<Include> found;
  for (const auto& item : fs::recursive_directory_iterator(folder)) {
    const auto extension = item.path().extension();
    if (extension != ".h" && extension != ".cpp") continue;
    std::ifstream file(item.path());
    std::smatch match;
    for (std::string line; std::getline(file, line);)
      if (std::regex_search(line, match, line_form)) found.push_back({item.path(), match[1]});
  }
  return found;
}

TEST(Wings, EveryFolderOfTheSourceIsAWing) {
  for (const auto& item : fs::directory_iterator(vellum::testing::source_folder() / "src"))
    if (item.is_directory()) {
      EXPECT_NE(std::ranges::find(kWings, item.path().filename().string()), kWings.end()) << item.path();
    }
}

TEST(Wings, NoIncludeRunsUpTheTable) {
  std::size_t seen = 0;
  for (std::size_t wing = 0; wing < kWings.size(); ++wing) {
    const fs::path folder = vellum::testing::source_folder() / "src" / kWings[wing];
    if (!fs::exists(folder)) continue;
    for (const Include& include : includes_of(folder)) {
      const std::string head = include.name.substr(0, include.name.find('/'));
      const auto at = std::ranges::find(kWings, head);
      if (at == kWings.end() || include.name.find('/') == std::string::npos) continue;
      ++seen;
      EXPECT_LE(static_cast<std::size_t>(at - kWings.begin()), wing)
          << include.file << " includes " << include.name;
      // The two programs stand side by side: neither includes the other.
      EXPECT_FALSE(kWings[wing] == "shell" && head == "cli") << include.file << " includes " << include.name;
    }
  }
  EXPECT_GT(seen, 10u) << "the includes were not found";
}

TEST(Wings, NoIncludeRunsUpTheRooms) {
  for (const auto& [wing, rooms] : kRooms) {
    const fs::path folder = vellum::testing::source_folder() / "src" / wing;
    for (const auto& item : fs::directory_iterator(folder))
      if (item.is_directory())
        EXPECT_NE(std::ranges::find(rooms, item.path().filename().string()), rooms.end()) << item.path();
    for (std::size_t room = 0; room < rooms.size(); ++room) {
      std::size_t seen = 0;
      for (const Include& include : includes_of(folder / rooms[room])) {
        if (!include.name.starts_with(wing + "/")) continue;
        const std::string rest = include.name.substr(wing.size() + 1);
        const auto at = std::ranges::find(rooms, rest.substr(0, rest.find('/')));
        if (at == rooms.end()) continue;
        ++seen;
        EXPECT_LE(static_cast<std::size_t>(at - rooms.begin()), room)
            << include.file << " includes " << include.name;
      }
      EXPECT_GT(seen, 0u) << wing << "/" << rooms[room] << ": the includes were not found";
    }
  }
}

TEST(Wings, QtAppearsInTheShellAlone) {
  const std::regex qt(R"(^(Q[A-Z]|Qt[A-Z]|q[a-z]+\.h$))");
  bool in_shell = false;
  for (const Include& include : includes_of(vellum::testing::source_folder() / "src")) {
    if (!std::regex_search(include.name, qt)) continue;
    const bool shell = include.file.string().find("/src/shell/") != std::string::npos;
    in_shell = in_shell || shell;
    EXPECT_TRUE(shell) << include.file << " includes " << include.name;
  }
  EXPECT_TRUE(in_shell) << "the pattern finds no Qt header at all";
}

}  // namespace
