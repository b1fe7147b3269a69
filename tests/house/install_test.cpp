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

class Installed : public ::testing::Test {
 protected:
  void SetUp() override {
    const ToolResult result = run_tool(
        {"cmake", "--install", program_folder().parent_path().string(), "--prefix", folder_.path().string()});
    ASSERT_TRUE(result.there && result.status == 0) << result.output;
    desktop_ = fs::exists(folder_ / "bin/vellumcraft");
  }
  fs::path share(const std::string& name) const { return folder_ / ("share/" + name); }
  /// What a judge says; one that isn't installed leaves the test skipped in the end, and is named.
  ToolResult judged(std::vector<std::string> command) {
    const ToolResult result = run_tool(command);
    if (!result.there) missing_ += " " + command[0];
    if (result.there) EXPECT_EQ(result.status, 0) << command[0] << ": " << result.output;
    return result;
  }
  void TearDown() override {
    if (!missing_.empty() && !HasFailure()) GTEST_SKIP() << "not installed:" << missing_;
  }

  std::string help_of(const std::string& command) {
    return judged({folder_ / "bin/vellum", command, "--help"}).output;
  }

  ScratchFolder folder_;
  bool desktop_ = false;
  std::string missing_;
};

TEST_F(Installed, DesktopFilesAreValid) {
  if (!desktop_) GTEST_SKIP() << "the desktop program is not built";
  judged({"desktop-file-validate", share("applications/org.vellumcraft.Vellumcraft.desktop")});
  judged({"xmllint", "--noout", share("mime/packages/vellumcraft.xml")});
  judged({"appstreamcli", "validate", "--pedantic", "--no-net",
          share("metainfo/org.vellumcraft.Vellumcraft.metainfo.xml")});
  // Every type that the entry names is one that the metainfo names too.
  const std::string entry = file_text(share("applications/org.vellumcraft.Vellumcraft.desktop"));
  const std::string metainfo = file_text(share("metainfo/org.vellumcraft.Vellumcraft.metainfo.xml"));
  for (const char* type : {"image/png", "image/apng", "video/x-mng", "image/webp"}) {
    EXPECT_NE(entry.find(std::string(type) + ';'), std::string::npos) << type;
    EXPECT_NE(metainfo.find('>' + std::string(type) + '<'), std::string::npos) << type;
  }
}

TEST_F(Installed, FileTypesAreKnownToTheDatabase) {
  if (!desktop_) GTEST_SKIP() << "the desktop program is not built";
  if (!judged({"update-mime-database", share("mime")}).there) return;
  const std::string globs = file_text(share("mime/globs2"));
  EXPECT_NE(globs.find(":image/apng:*.apng"), std::string::npos) << globs;
  EXPECT_NE(globs.find(":video/x-mng:*.mng"), std::string::npos) << globs;
}

TEST_F(Installed, IconsHaveTheirSizes) {
  if (!desktop_) GTEST_SKIP() << "the desktop program is not built";
  judged({"xmllint", "--noout", share("icons/hicolor/scalable/apps/vellumcraft.svg")});
  judged({"xmllint", "--noout", share("icons/hicolor/symbolic/apps/vellumcraft-symbolic.svg")});
  std::set<int> sizes;
  for (const auto& item : fs::recursive_directory_iterator(share("icons"))) {
    if (item.path().extension() != ".png") continue;
    const std::string bytes = file_text(item.path());
    ASSERT_GT(bytes.size(), 24u);
    const auto number = [&bytes](std::size_t at) {
      return static_cast<unsigned char>(bytes[at + 2]) << 8 | static_cast<unsigned char>(bytes[at + 3]);
    };
    const std::string name = std::to_string(number(16)) + 'x' + std::to_string(number(20));
    EXPECT_EQ(item.path().parent_path().parent_path().filename(), name);
    sizes.insert(number(16));
  }
  if (judged({"rsvg-convert", "--version"}).there) {
    EXPECT_TRUE(sizes.contains(16) && sizes.contains(48) && sizes.contains(512));
  }
}

TEST_F(Installed, ManualPagesTellWhatTheHelpTells) {
  static const std::regex option(R"(--[a-z][a-z-]*)");
  for (const std::string program : {"vellum", "vellumcraft"}) {
    if (program == "vellumcraft" && !desktop_) continue;
    const fs::path page = share("man/man1/" + program + ".1");
    const ToolResult shown = judged({"man", "--warnings", "-l", page});
    EXPECT_EQ(shown.output.find("warning:"), std::string::npos) << shown.output;
    judged({"mandoc", "-Tlint", page});
    const std::string text = std::regex_replace(file_text(page), std::regex(R"(\\-)"), "-");
    std::string help = run_tool({(folder_ / ("bin/" + program)).string(), "--help"}).output;
    ASSERT_NE(help.find("--version"), std::string::npos) << help;
    if (program == "vellum")
      for (const char* command : {"convert", "edit", "manage"}) help += help_of(command);
    for (auto at = std::sregex_iterator(help.begin(), help.end(), option); at != std::sregex_iterator(); ++at)
      EXPECT_NE(text.find(at->str()), std::string::npos) << program << " has " << at->str();
  }
}

/// "--kind" and its like, each once.
std::set<std::string> options_in(const std::string& text) {
  static const std::regex option(R"((^|[\s,])(--[a-z][a-z-]*))");
  std::set<std::string> found;
  for (auto at = std::sregex_iterator(text.begin(), text.end(), option); at != std::sregex_iterator(); ++at)
    found.insert((*at)[2]);
  return found;
}

TEST_F(Installed, ShellsOfferTheOptionsThatTheHelpTells) {
  for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME"})
    setenv(name, folder_.path().c_str(), 1);
  setenv("TERM", "dumb", 1);
  const std::set<std::string> everywhere = options_in(help_of(""));
  const std::string bash =
      R"(. "$1"; shift; COMP_WORDS=("$@") COMP_CWORD=2; _vellum; printf '%s\n' "${COMPREPLY[@]}")";
  const std::string fish =
      "source " + share("fish/vendor_completions.d/vellum.fish").string() + "; complete -C ";
  for (const std::string command : {"edit", "frames", "crop", "resize"}) {
    SCOPED_TRACE(command);
    std::set<std::string> wanted = options_in(help_of(command));
    wanted.insert(everywhere.begin(), everywhere.end());
    const std::string line = "vellum " + command + " --";
    const ToolResult offers[] = {
        judged({"bash", "--norc", "-c", bash, "bash", share("bash-completion/completions/vellum"), "vellum",
                command, "--"}),
        judged({"timeout", "60", "zsh", "-f", source_folder() / "tests/house/complete.zsh",
                share("zsh/site-functions"), line, *wanted.rbegin()}),
        judged({"fish", "--no-config", "-c", fish + "'" + line + "'"})};
    for (const ToolResult& offer : offers)
      if (offer.there) EXPECT_EQ(options_in(offer.output), wanted) << offer.output;
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
