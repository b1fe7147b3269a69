// The catalogs of the languages: they have all texts, and say in each what the program can put in.
#include <gtest/gtest.h>

#include <fstream>
#include <regex>

#include "support/corpus.h"
#include "support/judge.h"

namespace vellum::testing {
namespace {

namespace fs = std::filesystem;

/// What printf and Qt put in: of printf's in their order and type, of Qt's in any.
std::vector<std::string> placeholders(const std::string& text) {
  static const std::regex form(
      R"(%(?:[0-9]{1,2}|n|[-+0#]*[0-9*]*(?:\.[0-9*]+)?(?:ll|l|z)?[diouxXeEfgGcs%]))");
  std::vector<std::string> found;
  for (std::sregex_iterator at(text.begin(), text.end(), form), end; at != end; ++at)
    found.push_back(at->str());
  if (!found.empty() && found.front().size() > 1 && std::isdigit(found.front()[1]) != 0)
    std::ranges::sort(found);
  return found;
}

/// msgid, behind its context, and msgstr of each entry; lines of more than one are joined.
std::vector<std::pair<std::string, std::string>> entries(const fs::path& file) {
  std::vector<std::pair<std::string, std::string>> found;
  std::string context, *to = nullptr;
  std::ifstream lines(file);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("msgctxt ")) to = &context;
    if (line.starts_with("msgid ")) {
      to = &found.emplace_back().first;
      to->swap(context);
    }
    if (line.starts_with("msgstr ")) to = &found.back().second;
    const std::size_t quote = line.find('"');
    if (to && !line.starts_with('#') && quote != std::string::npos)
      *to += line.substr(quote + 1, line.rfind('"') - quote - 1);
  }
  return found;
}

TEST(Catalogs, HoldAllTextsOfTheSources) {
  const ToolResult result = run_tool({"python3", source_folder() / "scripts/catalog.py", "--check"});
  if (!result.there) GTEST_SKIP() << "Python is not installed";
  EXPECT_EQ(result.status, 0) << result.output;
}

TEST(Catalogs, AreWhole) {
  const fs::path folder = source_folder() / "data/translations";
  const auto wanted = entries(folder / "vellumcraft.pot");
  EXPECT_GT(wanted.size(), 3000u);
  int languages = 0;
  for (const auto& file : fs::directory_iterator(folder)) {
    if (file.path().extension() != ".po") continue;
    ++languages;
    const std::string code = file.path().stem();
    const ToolResult result = run_tool({"msgfmt", "--check", "-o", "/dev/null", file.path()});
    if (result.there) {
      EXPECT_EQ(result.status, 0) << result.output;
    }
    std::map<std::string, std::string> texts;
    for (const auto& [source, text] : entries(file.path())) texts[source] = text;
    for (const auto& [source, none] : wanted) {
      const std::string& text = texts[source];
      if (source.empty()) continue;
      EXPECT_FALSE(text.empty()) << code << " lacks " << source;
      EXPECT_EQ(placeholders(text), placeholders(source)) << code << ": " << source;
      EXPECT_EQ(text.ends_with(' '), source.ends_with(' ')) << code << ": a part of a sentence, " << source;
      EXPECT_EQ(text.find("\\t") == std::string::npos, source.find("\\t") == std::string::npos)
          << code << source;
    }
  }
  EXPECT_GE(languages, 1);
}

}  // namespace
}  // namespace vellum::testing
