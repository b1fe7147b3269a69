#include "base/text.h"

#include "base/crc.h"
#include "base/host.h"
#include "base/string_table.h"

namespace vellum {
namespace {

TEST(Text, Grouping) {
  for (const auto& [number, text] : {std::pair<std::uint64_t, const char*>{0, "0"},
                                     {999, "999"},
                                     {1000, "1,000"},
                                     {16777216, "16,777,216"},
                                     {281474976710656, "281,474,976,710,656"}})
    EXPECT_EQ(grouped(number), text);
}

TEST(Text, CutsBetweenCharacters) {
  EXPECT_EQ(cut_utf8("a\u00e9b", 4), "a\u00e9b");
  EXPECT_EQ(cut_utf8("a\u00e9b", 3), "a\u00e9");
  EXPECT_EQ(cut_utf8("a\u00e9b", 2), "a");
  EXPECT_EQ(cut_utf8("\u20ac", 2), "");
}

TEST(Text, Latin1) { EXPECT_EQ(utf8_from_latin1("Z\xFCrich"), "Z\u00fcrich"); }

TEST(StringTable, ANumberThatIsMissingSaysSo) {
  EXPECT_EQ(string_text(3), "Error reading file");
  EXPECT_EQ(string_text(4), "String table error - this application may be damaged");
  EXPECT_EQ(string_text(-1), "String table error - this application may be damaged");
}

TEST(Crc, TheEndChunkOfThePngStandard) { EXPECT_EQ(chunk_crc(0x49454E44, {}), 0xAE426082u); }

TEST(Host, AWarningFollowsItsOptionAndAFaultIsToldOnce) {
  std::vector<Message> shown;
  Host host;
  host.message = [&](const Message& message) { shown.push_back(message); };
  int option = 1;
  host.warn(StringId::WrongCrc, option);
  option = 0;
  host.warn(StringId::WrongCrc, option);
  ASSERT_EQ(shown.size(), 1u);
  EXPECT_EQ(shown[0].option, &option);
  EXPECT_FALSE(host.fail({FaultKind::Damaged, 0x49444154, 2, 41, "the image data is damaged"}));
  EXPECT_EQ(host.take_fault(), "IDAT, entry 3, offset 41: the image data is damaged");
  EXPECT_EQ(host.take_fault(), "");
}

}  // namespace
}  // namespace vellum
