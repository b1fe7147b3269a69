// Which language is taken, and that no catalog, however damaged, is taken for more than it is.
#include "base/translation.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

#include "support/corpus.h"

namespace vellum::testing {
namespace {

/// A compiled catalog by the format's description: a head of seven words, two tables of lengths and places,
/// texts.
std::string catalog_of(const std::vector<std::pair<std::string, std::string>>& sorted) {
  std::string head, tables, texts;
  const auto word = [](std::string& to, std::size_t value) {
    for (int i = 0; i < 4; ++i) to += static_cast<char>(value >> (8 * i) & 0xFF);
  };
  const std::size_t rows = sorted.size();
  for (const std::size_t value : {std::size_t{0x950412DE}, std::size_t{0}, rows, std::size_t{28},
                                  28 + 8 * rows, std::size_t{0}, 28 + 16 * rows})
    word(head, value);
  for (const bool source : {true, false})
    for (const auto& [key, text] : sorted) {
      const std::string& written = source ? key : text;
      word(tables, written.size());
      word(tables, 28 + 16 * rows + texts.size());
      texts += written + '\0';
    }
  return head + tables + texts;
}

class Translation : public ::testing::Test {
 protected:
  ~Translation() override { use_language({}, {}); }
  void write(const std::string& code, const std::string& bytes) {
    const auto folder = folder_ / code / "LC_MESSAGES";
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "vellumcraft.mo", std::ios::binary) << bytes;
  }
  void take(const std::vector<std::string>& wished) {
    const std::filesystem::path folders[] = {folder_.path()};
    use_language(wished, folders);
  }
  const std::string small_ =
      catalog_of({{"", "X-Language-Name: Klein\n"}, {"Open", "Auf"}, {"a", "b"}, {"for ever", "endlos"}});
  ScratchFolder folder_;
};

TEST_F(Translation, GivesTheTextOfTheFirstLanguageThatIsThere) {
  write("de", small_);
  EXPECT_EQ(translated("Open"), std::string_view("Open"));
  take({"fr", "de", "en"});
  EXPECT_EQ(language_in_use(), "de");
  const char* const open = translated("Open");
  EXPECT_STREQ(open, "Auf");
  EXPECT_EQ(translated(std::string_view("nothing has this")), "nothing has this");
  EXPECT_EQ(translated(""), std::string_view()) << "the head of a catalog is no translation";
  EXPECT_FALSE(is_translated(""));
  EXPECT_EQ(inside_sentence("For ever"), "endlos");
  EXPECT_EQ(inside_sentence("Open"), "Auf");
  take({"en", "de"});
  EXPECT_EQ(language_in_use(), "en");
  EXPECT_EQ(inside_sentence("Open"), "open");
  EXPECT_STREQ(open, "Auf") << "what somebody holds stays";
  const std::filesystem::path folders[] = {folder_.path()};
  const auto found = languages(folders);
  ASSERT_EQ(found.size(), 2u);
  EXPECT_EQ(found[1].code + found[1].name, "deKlein");
}

TEST_F(Translation, ADamagedCatalogIsRefusedOrHarmless) {
  for (std::size_t at = 0; at < small_.size(); ++at) {
    write("de", small_.substr(0, at));
    take({"de"});
    EXPECT_EQ(language_in_use(), "en") << at;
    for (const char wrong : {'\0', '\x7F', '\xFF'}) {
      std::string bytes = small_;
      bytes[at] = wrong;
      write("de", bytes);
      take({"de"});
      for (const char* text : {"Open", "a", "for ever", "zzz"}) EXPECT_NE(translated(text), nullptr);
    }
  }
}

TEST(WishedLanguages, AreThoseOfTheSystem) {
  using Codes = std::vector<std::string>;
  const struct {
    const char *wanted, *language, *all, *messages, *lang;
    Codes codes;
  } rows[] = {{"", "", "", "", "de_AT.UTF-8@euro", {"de_AT", "de"}},
              {"", "", "", "de_DE", "fr_FR", {"de_DE", "de"}},
              {"", "", "pl", "de_DE", "fr_FR", {"pl"}},
              {"", "fr:de_CH", "", "", "en_US.UTF-8", {"fr", "de_CH", "de", "en_US", "en"}},
              {"", "de", "C", "de_DE", "de_DE", {}},
              {"", "de", "C.UTF-8", "", "", {}},
              {"", "de", "", "", "", {}},
              {"", "../../etc", "", "", "de", {"de"}},
              {"de", "fr", "C", "", "", {"de"}}};
  for (const auto& row : rows) {
    setenv("LANGUAGE", row.language, 1);
    setenv("LC_ALL", row.all, 1);
    setenv("LC_MESSAGES", row.messages, 1);
    setenv("LANG", row.lang, 1);
    EXPECT_EQ(wished_languages(row.wanted), row.codes) << row.wanted << row.language << row.lang;
  }
}

}  // namespace
}  // namespace vellum::testing
