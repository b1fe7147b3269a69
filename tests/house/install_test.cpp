// What an installation puts where, judged by the programs that a desktop uses.
#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <set>

#include "support/corpus.h"
#include "support/judge.h"

namespace vellum::testing {
namespace {

namespace fs = std::filesystem;

std::string content_of(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

class Installed : public ::testing::Test {
 protected:
  void SetUp() override {
    const ToolResult result = run_tool(
        {"cmake", "--install", program_folder().parent_path().string(), "--prefix", folder_.path().string()});
    ASSERT_TRUE(result.there && result.status == 0) << result.output;
    desktop_ = fs::exists(folder_ / "bin/vellumcraft");
  }
  fs::path share(const std::string& name) const { return folder_ / ("share/" + name); }
  /// A judge that isn't installed has no objection.
  static void judge(std::vector<std::string> command, const fs::path& file) {
    command.push_back(file.string());
    const ToolResult result = run_tool(command);
    if (!result.there) return;
    EXPECT_EQ(result.status, 0) << command[0] << ": " << result.output;
  }

  ScratchFolder folder_;
  bool desktop_ = false;
};

TEST_F(Installed, DesktopFilesAreValid) {
  if (!desktop_) GTEST_SKIP() << "the desktop program is not built";
  judge({"desktop-file-validate"}, share("applications/vellumcraft.desktop"));
  judge({"xmllint", "--noout"}, share("mime/packages/vellumcraft.xml"));
  judge({"appstreamcli", "validate", "--no-net"}, share("metainfo/vellumcraft.metainfo.xml"));
  // Every type that the entry names is one that the metainfo names too.
  const std::string entry = content_of(share("applications/vellumcraft.desktop"));
  const std::string metainfo = content_of(share("metainfo/vellumcraft.metainfo.xml"));
  for (const char* type : {"image/png", "image/apng", "video/x-mng", "image/webp"}) {
    EXPECT_NE(entry.find(std::string(type) + ';'), std::string::npos) << type;
    EXPECT_NE(metainfo.find('>' + std::string(type) + '<'), std::string::npos) << type;
  }
}

TEST_F(Installed, FileTypesAreKnownToTheDatabase) {
  if (!desktop_) GTEST_SKIP() << "the desktop program is not built";
  if (!run_tool({"update-mime-database", share("mime").string()}).there)
    GTEST_SKIP() << "update-mime-database is not there";
  const std::string globs = content_of(share("mime/globs2"));
  EXPECT_NE(globs.find(":image/apng:*.apng"), std::string::npos) << globs;
  EXPECT_NE(globs.find(":video/x-mng:*.mng"), std::string::npos) << globs;
}

TEST_F(Installed, IconsHaveTheirSizes) {
  if (!desktop_) GTEST_SKIP() << "the desktop program is not built";
  judge({"xmllint", "--noout"}, share("icons/hicolor/scalable/apps/vellumcraft.svg"));
  judge({"xmllint", "--noout"}, share("icons/hicolor/symbolic/apps/vellumcraft-symbolic.svg"));
  std::set<int> sizes;
  for (const auto& item : fs::recursive_directory_iterator(share("icons"))) {
    if (item.path().extension() != ".png") continue;
    const std::string bytes = content_of(item.path());
    ASSERT_GT(bytes.size(), 24u);
    const auto number = [&bytes](std::size_t at) {
      return static_cast<unsigned char>(bytes[at + 2]) << 8 | static_cast<unsigned char>(bytes[at + 3]);
    };
    const std::string name = std::to_string(number(16)) + 'x' + std::to_string(number(20));
    EXPECT_EQ(item.path().parent_path().parent_path().filename(), name);
    sizes.insert(number(16));
  }
  if (run_tool({"rsvg-convert", "--version"}).there) {
    EXPECT_TRUE(sizes.contains(16) && sizes.contains(48) && sizes.contains(512));
  }
}

TEST_F(Installed, ManualPagesTellWhatTheHelpTells) {
  static const std::regex option(R"(--[a-z][a-z-]*)");
  for (const std::string program : {"vellum", "vellumcraft"}) {
    if (program == "vellumcraft" && !desktop_) continue;
    const fs::path page = share("man/man1/" + program + ".1");
    const ToolResult shown = run_tool({"man", "--warnings", "-l", page.string()});
    if (shown.there) {
      EXPECT_EQ(shown.status, 0);
      EXPECT_EQ(shown.output.find("warning:"), std::string::npos) << shown.output;
    }
    const std::string text = std::regex_replace(content_of(page), std::regex(R"(\\-)"), "-");
    std::string help = run_tool({(folder_ / ("bin/" + program)).string(), "--help"}).output;
    ASSERT_NE(help.find("--version"), std::string::npos) << help;
    if (program == "vellum")
      for (const char* command : {"convert", "edit", "manage"})
        help += run_tool({(folder_ / "bin/vellum").string(), command, "--help"}).output;
    for (auto at = std::sregex_iterator(help.begin(), help.end(), option); at != std::sregex_iterator(); ++at)
      EXPECT_NE(text.find(at->str()), std::string::npos) << program << " has " << at->str();
  }
}

TEST_F(Installed, TheToolReadsTheSampleAndTheGuideIsThere) {
  const ToolResult listed = run_tool(
      {(folder_ / "bin/vellum").string(), "list", share("vellumcraft/samples/welcome.png").string()});
  EXPECT_EQ(listed.status, 0) << listed.output;
  EXPECT_TRUE(fs::exists(share("doc/vellumcraft/copyright")));
  if (desktop_) {
    EXPECT_TRUE(fs::exists(share("vellumcraft/docs/guide/index.md")));
  }
}

}  // namespace
}  // namespace vellum::testing
