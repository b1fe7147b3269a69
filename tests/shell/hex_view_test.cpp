#include "shell/widgets/hex_view.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QScrollBar>
#include <QTest>

#include "shell/widgets/hex_panel.h"
#include "support/corpus.h"

namespace vellum::testing {
namespace {

std::vector<std::uint8_t> bytes_of(std::string_view text) { return {text.begin(), text.end()}; }

std::string shown(const HexView& view) { return hex_text(view.bytes()); }

class HexViewTest : public ::testing::Test {
 protected:
  void SetUp() override {
    view_.resize(700, 300);
    view_.show();
    view_.set_bytes({0x10, 0x20, 0x30, 0x40});
  }
  void keys(const char* text) { QTest::keyClicks(&view_, QLatin1String(text)); }
  void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) { QTest::keyClick(&view_, key, modifiers); }

  HexView view_;
};

TEST(HexText, GoesBothWays) {
  EXPECT_EQ(hex_text(std::vector<std::uint8_t>{0, 255, 16}), "00 FF 10");
  EXPECT_EQ(parse_hex("00 fF\n10"), (std::vector<std::uint8_t>{0, 255, 16}));
  EXPECT_EQ(parse_hex("00ff10"), (std::vector<std::uint8_t>{0, 255, 16}));
  EXPECT_EQ(parse_hex(""), std::vector<std::uint8_t>());
  for (const char* bad : {"0", "0 0", "0g", "00 1", "0x00"}) EXPECT_FALSE(parse_hex(bad)) << bad;
}

TEST(HexBuffer, EveryStepIsUndoneAndDoneAgain) {
  HexBuffer buffer(bytes_of("0123456789"));
  std::vector<std::string> states;
  const auto state = [&] { return hex_text(buffer.bytes()); };
  const struct {
    std::size_t at, removed;
    const char* inserted;
  } steps[] = {{0, 0, "ab"}, {5, 3, ""}, {2, 2, "xyz"}, {99, 5, "end"}, {0, 99, "all"}};
  for (const auto& s : steps) {
    states.push_back(state());
    ASSERT_TRUE(buffer.replace(s.at, s.removed, bytes_of(s.inserted)));
  }
  states.push_back(state());
  for (std::size_t i = states.size() - 1; i-- > 0;) {
    ASSERT_TRUE(buffer.undo());
    EXPECT_EQ(state(), states[i]);
  }
  EXPECT_FALSE(buffer.undo());
  for (std::size_t i = 1; i < states.size(); ++i) {
    ASSERT_TRUE(buffer.redo());
    EXPECT_EQ(state(), states[i]);
  }
  EXPECT_FALSE(buffer.redo());
}

TEST(HexBuffer, HoldsItsLimitAndFindsAroundTheEnd) {
  HexBuffer buffer(bytes_of("abcabc"), 8);
  EXPECT_FALSE(buffer.replace(0, 0, bytes_of("123")));
  EXPECT_FALSE(buffer.can_undo());
  EXPECT_TRUE(buffer.replace(0, 1, bytes_of("123")));
  EXPECT_EQ(buffer.find(bytes_of("bc"), 0), 3u);
  EXPECT_EQ(buffer.find(bytes_of("bc"), 4), 6u);
  EXPECT_EQ(buffer.find(bytes_of("bc"), 7), 3u);
  EXPECT_FALSE(buffer.find(bytes_of("x"), 0));
  EXPECT_FALSE(buffer.find({}, 0));
}

TEST_F(HexViewTest, TypedDigitsChangeBytesOrInsertThem) {
  keys("aB");
  EXPECT_EQ(shown(view_), "AB 20 30 40");
  EXPECT_EQ(view_.caret(), 1u);
  keys("7");
  EXPECT_EQ(shown(view_), "AB 70 30 40");
  keys("zq");
  EXPECT_EQ(shown(view_), "AB 70 30 40") << "no digits";
  key(Qt::Key_End, Qt::ControlModifier);
  keys("99");
  EXPECT_EQ(shown(view_), "AB 70 30 40 99") << "behind the end it grows";
  key(Qt::Key_Insert);
  EXPECT_TRUE(view_.inserting());
  key(Qt::Key_Home, Qt::ControlModifier);
  keys("0102");
  EXPECT_EQ(shown(view_), "01 02 AB 70 30 40 99");
  key(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(shown(view_), "01 AB 70 30 40 99") << "both digits of a byte are one step";
  key(Qt::Key_Y, Qt::ControlModifier);
  EXPECT_EQ(shown(view_), "01 02 AB 70 30 40 99");
}

TEST_F(HexViewTest, LettersAreTypedAmongTheCharacters) {
  key(Qt::Key_F6);
  keys("Az");
  EXPECT_EQ(shown(view_), "41 7A 30 40");
  key(Qt::Key_Backspace);
  EXPECT_EQ(shown(view_), "41 30 40");
  key(Qt::Key_Delete);
  EXPECT_EQ(shown(view_), "41 40");
}

TEST_F(HexViewTest, SelectionIsCopiedReplacedAndPasted) {
  key(Qt::Key_Right, Qt::ShiftModifier);
  key(Qt::Key_Right, Qt::ShiftModifier);
  EXPECT_EQ(view_.selection_size(), 2u);
  key(Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(QGuiApplication::clipboard()->text(), "10 20");
  keys("5");
  EXPECT_EQ(shown(view_), "50 30 40");
  key(Qt::Key_End, Qt::ControlModifier);
  key(Qt::Key_V, Qt::ControlModifier);
  EXPECT_EQ(shown(view_), "50 30 40 10 20");
  key(Qt::Key_A, Qt::ControlModifier);
  key(Qt::Key_Delete);
  EXPECT_TRUE(view_.bytes().empty());
  key(Qt::Key_Delete);
  key(Qt::Key_Backspace);
  key(Qt::Key_Up);
  EXPECT_EQ(view_.caret(), 0u);
}

TEST_F(HexViewTest, ReadOnlyBytesStay) {
  view_.set_read_only(true);
  keys("ff");
  key(Qt::Key_Delete);
  key(Qt::Key_V, Qt::ControlModifier);
  key(Qt::Key_Insert);
  EXPECT_EQ(shown(view_), "10 20 30 40");
  EXPECT_FALSE(view_.inserting());
  key(Qt::Key_Right);
  EXPECT_EQ(view_.caret(), 1u);
}

TEST_F(HexViewTest, DrawsOnlyWhatIsSeenOfManyBytes) {
  view_.set_bytes(std::vector<std::uint8_t>(std::size_t{100} << 20, 0x55));
  view_.grab();
  const auto before = view_.rows_painted();
  view_.go_to(std::size_t{64} << 20);
  view_.grab();
  EXPECT_LT(view_.rows_painted() - before, 100u);
  EXPECT_GT(view_.verticalScrollBar()->value(), 4'000'000);
  keys("77");
  EXPECT_EQ(view_.bytes()[std::size_t{64} << 20], 0x77);
}

TEST_F(HexViewTest, AClickPutsTheCaretOnItsByte) {
  view_.set_bytes(std::vector<std::uint8_t>(64, 1));
  view_.grab();
  const int letter = view_.fontMetrics().horizontalAdvance('0'), row = view_.fontMetrics().height() + 2;
  // Eight pixels, six digits and two blanks in front of the bytes; two digits and a blank for each.
  const QPoint second(8 + 8 * letter + 3 * letter + letter / 2, row + row / 2);
  QTest::mouseClick(view_.viewport(), Qt::LeftButton, {}, second);
  EXPECT_EQ(view_.caret(), 17u);
  QTest::mouseClick(view_.viewport(), Qt::LeftButton, Qt::ShiftModifier, second + QPoint(3 * letter, row));
  EXPECT_EQ(view_.selection_begin(), 17u);
  EXPECT_EQ(view_.selection_size(), 17u);
}

TEST(HexPanel, FindsNumbersAndTextAndGoesToOffsets) {
  HexPanel panel;
  panel.resize(800, 400);
  panel.show();
  panel.view().set_bytes(bytes_of("one two one"));
  const auto fields = panel.findChildren<QLineEdit*>();
  ASSERT_EQ(fields.size(), 2);
  fields[0]->setText("6f 6e");
  panel.find_next();
  EXPECT_EQ(panel.view().selection_begin(), 0u);
  panel.find_next();
  EXPECT_EQ(panel.view().selection_begin(), 8u);
  panel.findChild<QComboBox*>()->setCurrentIndex(1);
  fields[0]->setText("two");
  fields[0]->setFocus();
  QTest::keyClick(fields[0], Qt::Key_Return);
  EXPECT_EQ(panel.view().selection_begin(), 4u);
  EXPECT_EQ(panel.view().selection_size(), 3u);
  for (const auto& [text, offset] :
       {std::pair{"0x0A", 10u}, {"3", 3u}, {"11", 11u}, {"12", 11u}, {"-1", 11u}, {"z", 11u}}) {
    fields[1]->setText(text);
    panel.go_to_field();
    EXPECT_EQ(panel.view().caret(), offset) << text;
  }
}

}  // namespace
}  // namespace vellum::testing
