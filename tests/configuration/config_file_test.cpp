#include "configuration/config_file.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "configuration/profile.h"
#include "configuration/shell_settings.h"
#include "core/settings.h"
#include "support/corpus.h"
#include "support/settings_guard.h"

namespace vellum::testing {
namespace {

namespace fs = std::filesystem;

class ConfigFile : public ::testing::Test {
 protected:
  ConfigFile() { reset_settings(); }

  fs::path write(const std::string& name, const std::string& text) {
    std::ofstream(folder_ / name, std::ios::binary) << text;
    return folder_ / name;
  }
  std::string content(const std::string& name) {
    std::ostringstream text;
    text << std::ifstream(folder_ / name, std::ios::binary).rdbuf();
    return text.str();
  }

  SettingsGuard guard_;
  ScratchFolder folder_;
};

TEST_F(ConfigFile, ReadsLinesAsTheyCome) {
  const std::string filler(300, 'x');
  struct Case {
    std::string text;
    int compression;
    std::string comment = "This space for rent...";
  };
  const Case cases[] = {
      {"PngCompression = 3", 3},
      {"PngCompression=3\n", 3},
      {"PngCompression   =   3\r\n", 3},
      {"PngCompression 3", 3},
      {"PngCompression == 3", 3},
      {"PngCompression = = 3", 0},
      {"PngCompression\t=\t3", 0},
      {"PngCompression = 3\t4", 3},
      {"PngCompression = 3x", 3},
      {"PngCompression = x", 0},
      {"PngCompression", 0},
      {"PngComp = 3", 3},
      {"Png = 3", 3},
      {"pngcompression = 3", 9},
      {" PngCompression = 3", 9},
      {";PngCompression = 3", 9},
      {"= 5\n\nNoSuchKey = 3\n[PngCompression]\n", 9},
      {"\xEF\xBB\xBFPngCompression = 3", 3},
      {"[CONFIGSECTION]\nPngCompression = 3\nPngCompression = 4", 4},
      {"PngCompression = 4294967295", -1},
      {"PngCompression = -2", -2},
      {"PngCompression = +5", 5},
      {"PngCompression = 4294967299", 3},
      {"PngCompression = 0x10", 0},
      {std::string("PngCompression = 3\0004", 20), 3},
      {"ForRent =  two  words ", 9, "two  words "},
      {"ForRent = a = b", 9, "a = b"},
      {"ForRent =", 9, ""},
      {"ForRent = \xC3\xA9", 9, "\u00e9"},
      // 260 bytes are read at once; what is behind them is a line of its own.
      {"ForRent = " + filler, 9, filler.substr(0, 250)},
      {"ForRent = " + filler.substr(0, 250) + "PngCompression = 3", 3, filler.substr(0, 250)},
      {"ForRent = " + filler.substr(0, 250) + "\nPngCompression = 3", 3, filler.substr(0, 250)},
      {"WarnBadFileCRC = 0\nVersionMajor = 3", 9},
  };
  for (const Case& c : cases) {
    reset_settings();
    config_parse(c.text);
    EXPECT_EQ(settings::PngCompression, c.compression) << c.text;
    EXPECT_EQ(settings::ForRent, c.comment) << c.text;
    EXPECT_EQ(settings::AddInstructionsToNew, 1) << c.text;
    EXPECT_EQ(settings::WarnBadFileCRC, 1) << c.text;
  }
}

/// Another value than the default, told from every other row's.
SettingValue other_value(const SettingRow& row, std::size_t index) {
  const int number = static_cast<int>(index);
  if (row.text) return {0, "C:\\a = b;" + std::to_string(index) + " \u00e9\u00df"};
  return {index % 2 == 0 ? -number - 1'000'000 : number + 1'000'000, {}};
}

TEST_F(ConfigFile, EveryRowComesBack) {
  const auto rows = setting_table();
  for (std::size_t i = 0; i < rows.size(); ++i) set_setting_value(rows[i], other_value(rows[i], i));
  auto expected = all_setting_values();
  for (std::size_t i = 0; i < rows.size(); ++i)
    if (rows[i].flags & (kUnstored | kInformation)) expected[i] = default_value(rows[i]);
  ASSERT_TRUE(config_save(folder_ / "a.ini"));
  reset_settings();
  ASSERT_TRUE(config_load(folder_ / "a.ini"));
  const auto loaded = all_setting_values();
  for (std::size_t i = 0; i < rows.size(); ++i) EXPECT_EQ(loaded[i], expected[i]) << rows[i].name;
  EXPECT_FALSE(config_changed_since_load());
}

TEST_F(ConfigFile, IsWrittenInItsForm) {
  settings::ForRent = "one\ntwo\x7F";
  settings::StickyWindowLeft = -4;
  std::istringstream text(config_text(1'000'000'000));
  std::vector<std::string> lines;
  for (std::string line; std::getline(text, line);) lines.push_back(line);
  ASSERT_EQ(lines.size(), 6 + setting_table().size() - 1);
  EXPECT_EQ(lines[0], ";Vellumcraft configuration file");
  EXPECT_EQ(lines[1], ";Edit this at your own risk");
  EXPECT_EQ(lines[2], ";Vellumcraft.15a revision 1");
  EXPECT_THAT(lines[3], ::testing::MatchesRegex(";Last updated ... Sep +[0-9]+ ..:..:.. 2001"));
  EXPECT_EQ(lines[4], ";");
  EXPECT_EQ(lines[5], "[Vellumcraft]");
  EXPECT_EQ(lines[6], "AddInstructionsToNew = 1");
  for (const char* line : {"ForRent = one two\x7F", "StickyWindowLeft = 4294967292", "VersionLetter = 97",
                           "PaintbrushPath = ", "RecentFolder = "})
    EXPECT_THAT(lines, ::testing::Contains(line));
  EXPECT_THAT(lines, ::testing::Not(::testing::Contains(::testing::StartsWith("WarnBadFileCRC"))));
}

TEST_F(ConfigFile, TheEndOfALongTextIsNoSettingOfItsOwn) {
  settings::IdentificationFile = std::string(240, 'x') + " UndoLevels = 4";
  config_parse(config_text(0));
  EXPECT_EQ(settings::UndoLevels, 10);
  EXPECT_EQ(settings::IdentificationFile, std::string(239, 'x'));
}

TEST_F(ConfigFile, KeepsTwoBackupsAndDropsUnknownKeys) {
  write("b.ini", "PngCompression = 1\nNoSuchKey = 5\n");
  for (const int compression : {2, 3, 4}) {
    settings::PngCompression = compression;
    ASSERT_TRUE(config_save(folder_ / "b.ini"));
  }
  const auto holds = [&](const char* name, const char* line) {
    return content(name).find(line) != std::string::npos;
  };
  EXPECT_TRUE(holds("b.ini", "\nPngCompression = 4\n"));
  EXPECT_TRUE(holds("Backup of b.ini", "\nPngCompression = 3\n"));
  EXPECT_TRUE(holds("Backup of Backup of b.ini", "\nPngCompression = 2\n"));
  EXPECT_FALSE(holds("Backup of Backup of b.ini", "NoSuchKey"));
}

TEST_F(ConfigFile, KnowsWhetherItMustBeWritten) {
  EXPECT_FALSE(config_load(folder_ / "c.ini"));
  EXPECT_TRUE(config_changed_since_load());
  const fs::path file = write("c.ini", "PngCompression = 3\n");
  EXPECT_TRUE(config_load(file));
  EXPECT_FALSE(config_changed_since_load());
  std::string reason;
  ASSERT_TRUE(set_setting_for_run("PngCompression=5", reason));
  EXPECT_FALSE(config_changed_since_load());
  settings::UndoLevels = 12;
  EXPECT_TRUE(config_changed_since_load());
  ASSERT_TRUE(config_save(file));
  EXPECT_FALSE(config_changed_since_load());
  EXPECT_NE(content("c.ini").find("PngCompression = 3\n"), std::string::npos);
}

TEST_F(ConfigFile, WhatCannotBeWrittenHarmsNothing) {
  EXPECT_FALSE(config_save(write("file", "x") / "below" / "d.ini"));
  fs::create_directory(folder_ / "e.ini");
  EXPECT_FALSE(config_save(folder_ / "e.ini"));
  config_open(folder_ / "e.ini");
  settings::UndoLevels = 12;
  config_save_changes();
  EXPECT_TRUE(fs::is_directory(folder_ / "e.ini"));
}

TEST_F(ConfigFile, LiesWhereTheDesktopWantsIt) {
  const auto path_with = [](const char* home, const char* config) {
    setenv("HOME", home, 1);
    config ? setenv("XDG_CONFIG_HOME", config, 1) : unsetenv("XDG_CONFIG_HOME");
    return config_path("a.txt").string();
  };
  const auto kept = [](const char* name) {
    const char* value = std::getenv(name);
    return value ? std::optional<std::string>(value) : std::nullopt;
  };
  const auto home = kept("HOME"), config = kept("XDG_CONFIG_HOME");
  EXPECT_EQ(path_with("/home/x", "/conf"), "/conf/Tarnwick/a.txt");
  EXPECT_EQ(path_with("/home/x", nullptr), "/home/x/.config/Tarnwick/a.txt");
  EXPECT_EQ(path_with("/home/x", ""), "/home/x/.config/Tarnwick/a.txt");
  EXPECT_EQ(path_with("/home/x", "relative"), "/home/x/.config/Tarnwick/a.txt");
  home ? setenv("HOME", home->c_str(), 1) : unsetenv("HOME");
  config ? setenv("XDG_CONFIG_HOME", config->c_str(), 1) : unsetenv("XDG_CONFIG_HOME");
}

TEST_F(ConfigFile, AnEarlierVersionIsReadOnceAndLeftAlone) {
  write("Vellumcraft 9.ini", "PngCompression = 1");
  write("Vellumcraft 14.ini", "PngCompression = 2");
  write("Vellumcraft 16.ini", "PngCompression = 4");
  write("Vellumcraft 14b.ini", "PngCompression = 5");
  config_open(folder_ / "Vellumcraft 15.ini");
  EXPECT_EQ(settings::PngCompression, 2);
  settings::PngCompression = 6;
  config_save_changes();
  EXPECT_EQ(content("Vellumcraft 14.ini"), "PngCompression = 2");
  reset_settings();
  config_open(folder_ / "Vellumcraft 15.ini");
  EXPECT_EQ(settings::PngCompression, 6);
}

TEST_F(ConfigFile, SingleValuesAreFoundBySection) {
  config_open(write("f.ini",
                    "LogoDelay = 1\n[Vellumcraft]\r\nShowStartupWindow=0\r\n;LogoDelay = 2\n"
                    "ThemeCurrent = \"a b\" \n[ other ]\nLogoDelay = 9000x\n"));
  EXPECT_EQ(profile_int("CONFIGSECTION", "LogoDelay", 8000), 8000);
  EXPECT_EQ(profile_int("Vellumcraft", "LogoDelay", 8000), 8000);
  EXPECT_EQ(profile_int("Other", "logodelay", 8000), 9000);
  EXPECT_EQ(profile_int("Vellumcraft", "ShowStartupWindow", 1), 0);
  EXPECT_EQ(profile_int("Vellumcraft", "ThemeCurrent", 7), 0);
  EXPECT_EQ(profile_string("Vellumcraft", "ThemeCurrent", "x"), "a b");
  EXPECT_EQ(profile_string("Vellumcraft", "None", "x"), "x");
  ASSERT_TRUE(config_save(config_file()));
  EXPECT_EQ(profile_int("Vellumcraft", "ShowStartupWindow", 1), 0);
  EXPECT_EQ(profile_int("CONFIGSECTION", "LogoDelay", 8000), 8000);
}

}  // namespace
}  // namespace vellum::testing
