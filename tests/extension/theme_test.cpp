// Themes: which are listed, which can be used, and what those that come with the program promise.
#include "extension/theme.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>

#include "support/corpus.h"

namespace vellum {
namespace {

namespace fs = std::filesystem;

class ThemeTest : public ::testing::Test {
 protected:
  fs::path folder(int fault) const {
    return testing::program_folder().parent_path() / "faulty_themes" / std::to_string(fault);
  }
  static std::string file(int fault) { return "theme_Fault" + std::to_string(fault) + "_X64.so"; }
};

TEST_F(ThemeTest, AThemeIsListedAndUsedByWhatItHas) {
  const struct {
    int fault;
    bool listed, used;
    const char* reason;
  } cases[] = {{0, true, true, ""},
               {1, false, false, "it doesn't work with this program"},
               {2, false, false, "it lacks a function of themes"},
               {3, true, false, "it lacks a function that draws"}};
  for (const auto& c : cases) {
    const fs::path at = folder(c.fault);
    const ThemesFound found = find_themes({&at, 1});
    EXPECT_EQ(found.themes.size(), c.listed ? 1u : 0u) << c.fault;
    EXPECT_EQ(found.refused.size(), c.listed ? 0u : 1u) << c.fault;
    if (c.listed) {
      EXPECT_EQ(found.themes[0].name, "Fault" + std::to_string(c.fault));
      EXPECT_EQ(found.themes[0].incomplete.empty(), c.used);
    }
    std::string reason;
    EXPECT_EQ(load_theme(file(c.fault), {&at, 1}, reason).has_value(), c.used);
    EXPECT_EQ(reason, c.reason) << c.fault;
  }
  const fs::path at = folder(0);
  std::string reason;
  for (const std::string& name : {"../0/" + file(0), std::string("THEME_None_x64.so"),
                                  std::string("libc.so.6"), std::string(), std::string("THEME_x64.so")})
    EXPECT_FALSE(load_theme(name, {&at, 1}, reason)) << name;
  const testing::ScratchFolder open;
  fs::copy(folder(0) / file(0), open / file(0));
  fs::permissions(open / file(0), fs::perms::all);
  const fs::path open_path = open.path();
  EXPECT_FALSE(load_theme(file(0), {&open_path, 1}, reason));
  EXPECT_EQ(reason, "others can write to it");
}

TEST_F(ThemeTest, AThemeBeginsOnceAndEndsWithItsLastHolder) {
  const fs::path at = folder(0);
  std::string reason;
  const auto library = load_library(at / file(0), reason);
  const auto count = [&](const char* name) {
    return *static_cast<int*>(library_symbol(library.get(), name));
  };
  const int begun = count("theme_begun");
  auto theme = load_theme(file(0), {&at, 1}, reason);
  ASSERT_TRUE(theme);
  find_themes({&at, 1});
  EXPECT_EQ(count("theme_begun"), begun + 1);
  EXPECT_EQ(count("theme_ended"), begun);
  theme.reset();
  EXPECT_EQ(count("theme_ended"), begun + 1);
}

double luminance(std::uint32_t color) {
  double sum = 0;
  for (const auto& [shift, weight] : {std::pair(16, 0.2126), {8, 0.7152}, {0, 0.0722}}) {
    const double c = (color >> shift & 255) / 255.0;
    sum += weight * (c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4));
  }
  return sum;
}

TEST_F(ThemeTest, TheProgramsOwnThemesCanBeReadAndDrawAllOfTheirParts) {
  const fs::path at = testing::program_folder() / "theme";
  const ThemesFound found = find_themes({&at, 1});
  ASSERT_EQ(found.themes.size(), 3u);
  const struct {
    int text, ground;
    double least;
  } pairs[] = {{VELLUM_COLOR_TEXT, VELLUM_COLOR_WINDOW, 4.5},
               {VELLUM_COLOR_FIELD_TEXT, VELLUM_COLOR_FIELD, 4.5},
               {VELLUM_COLOR_FIELD_TEXT, VELLUM_COLOR_OTHER_FIELD, 4.5},
               {VELLUM_COLOR_BUTTON_TEXT, VELLUM_COLOR_BUTTON, 4.5},
               {VELLUM_COLOR_HIGHLIGHT_TEXT, VELLUM_COLOR_HIGHLIGHT, 4.5},
               {VELLUM_COLOR_LINK, VELLUM_COLOR_WINDOW, 4.5},
               {VELLUM_COLOR_LINK, VELLUM_COLOR_FIELD, 4.5},
               {VELLUM_COLOR_SECONDARY_TEXT, VELLUM_COLOR_WINDOW, 4.5},
               {VELLUM_COLOR_SECONDARY_TEXT, VELLUM_COLOR_FIELD, 4.5},
               {VELLUM_COLOR_TIP_TEXT, VELLUM_COLOR_TIP, 4.5},
               {VELLUM_COLOR_ACCENT_TEXT, VELLUM_COLOR_ACCENT, 4.5},
               {VELLUM_COLOR_ACCENT, VELLUM_COLOR_WINDOW, 2.5},
               {VELLUM_COLOR_DISABLED_TEXT, VELLUM_COLOR_WINDOW, 3}};
  for (const Theme& theme : found.themes) {
    ASSERT_TRUE(theme.incomplete.empty() && theme.colors) << theme.name;
    for (const auto& pair : pairs) {
      const auto [dark, light] =
          std::minmax({luminance(theme.color(pair.text)), luminance(theme.color(pair.ground))});
      EXPECT_GE((light + 0.05) / (dark + 0.05), pair.least)
          << theme.name << pair.text << " on " << pair.ground;
    }
    // Drawn in full at any scale, within its memory: the words behind stay.
    for (const double scale : {1.0, 1.5, 2.0}) {
      const auto width = static_cast<std::int32_t>(40 * scale),
                 height = static_cast<std::int32_t>(24 * scale);
      const auto size = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
      std::vector<std::uint32_t> words(size + 64, 0);
      std::fill(words.begin() + static_cast<std::ptrdiff_t>(size), words.end(), 0x12345678u);
      const VellumPixels pixels{sizeof pixels, words.data(), width, height, width * 4, scale};
      EXPECT_EQ(theme.calls.button(&pixels, VELLUM_STATE_FOCUSED, "text"), 1u);
      EXPECT_EQ(words[size / 2 + static_cast<std::size_t>(width) / 2] >> 24, 255u) << theme.name;
      EXPECT_EQ(words[0] >> 24 == 255, false) << "corners are round";
      EXPECT_EQ(theme.calls.tool(&pixels, 0, 101), 1u);
      EXPECT_EQ(theme.calls.toolbar(&pixels), 1u);
      EXPECT_EQ(theme.calls.bitmap(&pixels), 1u);
      EXPECT_EQ(words[0] >> 24, 255u);
      EXPECT_EQ(std::count(words.begin(), words.end(), 0x12345678u), 64);
    }
  }
}

}  // namespace
}  // namespace vellum
