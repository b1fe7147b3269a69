// Plugins: the samples make animations of every kind, and those that do what they shouldn't harm nobody.
#include "extension/plugin.h"

#include <unistd.h>

#include "operations/frames.h"
#include "support/corpus.h"

namespace vellum {
namespace {

namespace fs = std::filesystem;

TEST(Plugins, TheSamplesMakeAnimationsOfEveryKind) {
  const fs::path folder = testing::program_folder() / "plugin";
  const PluginsFound found = find_plugins({&folder, 1}, true);
  ASSERT_EQ(found.plugins.size(), 2u) << (found.refused.empty() ? "" : found.refused.front());
  EXPECT_EQ(found.plugins[0].name, "Plasma");
  EXPECT_EQ(found.plugins[1].name, "Rings");
  for (const Plugin& plugin : found.plugins)
    for (const DocumentKind kind : {DocumentKind::APNG, DocumentKind::MING, DocumentKind::WEBP}) {
      Host host;
      const auto made = run_plugin(plugin, kind, nullptr, host);
      ASSERT_EQ(made.size(), 1u) << plugin.name;
      EXPECT_EQ(made[0].document.kind, kind);
      EXPECT_EQ(frame_entries(made[0]).size(), plugin.name == "Rings" ? 16u : 32u);
      EXPECT_TRUE(made[0].document.dirty);
      host.stop_requested = [] { return true; };
      EXPECT_TRUE(run_plugin(plugin, kind, nullptr, host).empty()) << "stopped";
    }
}

TEST(Plugins, FaultyOnesAreRefusedOrMakeWhatIsRight) {
  struct Case {
    int fault;
    const char* refused;  ///< part of the reason; empty: it is loaded
    std::size_t frames;   ///< of the document; 0: none
  };
  const Case cases[] = {{1, "doesn't work with this program", 0},
                        {2, "lacks a function", 0},
                        {3, "", 2},   // no end
                        {4, "", 0},   // no frames
                        {5, "", 0},   // a picture that is not as long as it says
                        {6, "", 0},   // a canvas without pixels
                        {7, "", 2},   // begins and ends twice
                        {8, "", 2},   // calls from another thread, and after its time
                        {9, "", 2}};  // a name without an end
  for (const Case& c : cases) {
    const testing::ScratchFolder folder;
    const std::string name = "QDXPL_fault" + std::to_string(c.fault) + "_x64.so";
    fs::copy_file(testing::program_folder().parent_path() / "faulty_plugins" / name, folder / name);
    const PluginsFound found = find_plugins({&folder.path(), 1}, true);
    ASSERT_EQ(found.refused.size(), *c.refused ? 1u : 0u) << c.fault;
    if (*c.refused) EXPECT_NE(found.refused[0].find(c.refused), std::string::npos) << found.refused[0];
    if (*c.refused) continue;
    ASSERT_EQ(found.plugins.size(), 1u);
    EXPECT_EQ(found.plugins[0].name, c.fault == 9 ? std::string(260, 'A') : "Fault");
    Host host;
    const auto made = run_plugin(found.plugins[0], DocumentKind::APNG, nullptr, host);
    ASSERT_EQ(made.size(), c.frames == 0 ? 0u : 1u) << c.fault;
    if (c.frames > 0) EXPECT_EQ(frame_entries(made[0]).size(), c.frames) << c.fault;
    if (c.fault == 8) usleep(60'000);  // its late call comes while the library is still there
  }
}

TEST(Plugins, OthersMayNotWriteToThem) {
  const testing::ScratchFolder folder;
  for (const char* name : {"QDXPL_fault3_x64.so", "QDXPL_other.so", "notes_x64.so"})
    fs::copy_file(testing::program_folder().parent_path() / "faulty_plugins/QDXPL_fault3_x64.so",
                  folder / name);
  fs::permissions(folder / "QDXPL_fault3_x64.so", fs::perms::others_write, fs::perm_options::add);
  EXPECT_EQ(find_plugins({&folder.path(), 1}, false).refused.size(), 1u) << "the file";
  fs::permissions(folder / "QDXPL_fault3_x64.so", fs::perms::others_write, fs::perm_options::remove);
  EXPECT_EQ(find_plugins({&folder.path(), 1}, false).plugins.size(), 1u) << "names without _x64 don't count";
  // The same name in another folder is passed over.
  const fs::path two[] = {folder.path(), testing::program_folder().parent_path() / "faulty_plugins"};
  for (const Plugin& plugin : find_plugins(two, false).plugins)
    if (plugin.path.filename() == "QDXPL_fault3_x64.so") {
      EXPECT_EQ(plugin.path.parent_path(), folder.path());
    }
  fs::permissions(folder.path(), fs::perms::group_write, fs::perm_options::add);
  EXPECT_TRUE(find_plugins({&folder.path(), 1}, false).plugins.empty()) << "the folder";
}

}  // namespace
}  // namespace vellum
