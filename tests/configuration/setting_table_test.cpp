#include "configuration/setting_table.h"

#include <gmock/gmock.h>

#include <fstream>
#include <iterator>
#include <set>

#include "support/corpus.h"
#include "support/settings_guard.h"

namespace vellum::testing {
namespace {

std::vector<std::string_view> names(std::span<const SettingRow> rows) {
  std::vector<std::string_view> found;
  for (const SettingRow& row : rows) found.push_back(row.name);
  return found;
}

/// The keys of the configuration file in their order, as files hold them; one stands there twice.
std::vector<std::string> listed_keys() {
  std::ifstream file(testing::source_folder() / "tests/configuration/setting_names.txt");
  return {std::istream_iterator<std::string>(file), {}};
}

TEST(SettingTable, HoldsTheKeysInTheirOrder) {
  const auto rows = setting_table();
  const auto keys = listed_keys();
  ASSERT_GE(keys.size(), 663u);
  ASSERT_GE(rows.size(), keys.size());
  EXPECT_THAT(names(rows.first(keys.size())), ::testing::ElementsAreArray(keys));
}

TEST(SettingTable, NoNameBeginsAnEarlierOne) {
  const auto rows = setting_table();
  for (std::size_t late = 0; late < rows.size(); ++late)
    for (std::size_t early = 0; early < late; ++early) {
      EXPECT_FALSE(rows[early].name != rows[late].name && rows[early].name.starts_with(rows[late].name))
          << rows[late].name << " would be taken for " << rows[early].name;
    }
}

TEST(SettingTable, EachRowHasAVariableOfItsOwnAndFlagsThatReadIt) {
  std::set<const void*> variables;
  int repeated = 0;
  for (const SettingRow& row : setting_table()) {
    EXPECT_NE(row.number == nullptr, row.text == nullptr) << row.name;
    EXPECT_EQ(row.text != nullptr, (row.flags & kText) != 0) << row.name;
    EXPECT_EQ(row.number != nullptr, (row.flags & (kFlag | kNumber)) != 0) << row.name;
    const void* variable = row.text ? static_cast<const void*>(row.text) : row.number;
    if (is_repeated(row)) {
      EXPECT_EQ(row.name, "NewAnimationWizardExactThumbnails");
      EXPECT_TRUE(variables.contains(variable));
      ++repeated;
    } else {
      EXPECT_TRUE(variables.insert(variable).second) << row.name << " has another row's variable";
    }
  }
  EXPECT_EQ(repeated, 1);
}

TEST(SettingTable, AKeyMeansTheFirstRowThatBeginsWithIt) {
  const auto rows = setting_table();
  const auto by_walking = [&](std::string_view key) -> const SettingRow* {
    for (const SettingRow& row : rows)
      if ((row.flags & (kUnstored | kInformation)) == 0 && row.name.substr(0, key.size()) == key) return &row;
    return nullptr;
  };
  for (const SettingRow& row : rows)
    for (std::size_t length = 1; length <= row.name.size(); ++length) {
      const std::string_view key = row.name.substr(0, length);
      ASSERT_EQ(find_setting_by_prefix(key), by_walking(key)) << key;
    }
  EXPECT_EQ(find_setting_by_prefix("Banner")->name, "BannerEmbossedAntialias");
  EXPECT_EQ(find_setting_by_prefix("ImportFilterIndex")->name, "ImportFilterIndex");
  for (const char* none : {"WarnBadFileCRC", "Version", "PngCompressions", "pngcompression", "[", "~"})
    EXPECT_EQ(find_setting_by_prefix(none), nullptr) << none;
}

TEST(SettingValues, TakeWhatPeopleWriteAndRefuseTheRest) {
  struct Case {
    const char* text;
    std::optional<int> number;
  };
  const Case cases[] = {
      {"3", 3},    {"-10", -10},       {"4294967286", -10}, {"2147483647", 2147483647},
      {"", {}},    {"x", {}},          {"3x", {}},          {"0x10", {}},
      {"3.5", {}}, {"4294967296", {}}, {"-2147483649", {}}, {"99999999999999999999", {}},
  };
  const SettingRow& row = *find_setting("ColorBalRed");
  for (const Case& c : cases) {
    std::string reason;
    const auto value = parse_setting(row, c.text, reason);
    EXPECT_EQ(value.has_value(), c.number.has_value()) << c.text;
    EXPECT_EQ(reason.empty(), c.number.has_value()) << c.text;
    if (value && c.number) {
      EXPECT_EQ(value->number, *c.number);
    }
  }
}

TEST(SettingValues, OfOneRunStayOutOfTheFile) {
  const SettingsGuard guard;
  const SettingRow& row = *find_setting("PngCompression");
  const auto stored = [&] { return stored_value(row).number; };
  std::string reason;
  change_setting(row, {4, {}});
  EXPECT_TRUE(set_setting_for_run(" PngCompression = 2 ", reason)) << reason;
  EXPECT_TRUE(set_setting_for_run("PngCompression=1", reason)) << reason;
  EXPECT_EQ(*row.number, 1);
  EXPECT_EQ(stored(), 4);
  *row.number = 7;  // changed in the program, as by a dialog
  EXPECT_EQ(stored(), 7);
  *row.number = 1;
  change_setting(row, {1, {}});
  EXPECT_EQ(stored(), 1);
  EXPECT_TRUE(set_setting_for_run("ForRent=" + std::string(259, 'x') + "\u00e9", reason));
  EXPECT_EQ(setting_value(*find_setting("ForRent")).text, std::string(259, 'x'));
  EXPECT_FALSE(set_setting_for_run("PngCompression", reason));
  EXPECT_FALSE(set_setting_for_run("PngCompressio=1", reason));
}

}  // namespace
}  // namespace vellum::testing
