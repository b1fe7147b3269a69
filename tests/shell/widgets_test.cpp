#include <QScrollBar>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>
#include <QWheelEvent>

#include "configuration/config_file.h"
#include "configuration/history.h"
#include "configuration/shell_settings.h"
#include "shell/widgets/color_dialog.h"
#include "shell/widgets/picture_view.h"
#include "shell_fixture.h"
#include "support/settings_guard.h"

namespace vellum::testing {
namespace {

std::vector<PaletteCell> cells(int count) {
  std::vector<PaletteCell> made;
  for (int i = 0; i < count; ++i) made.push_back({QColor(i, 255 - i, i / 2, i % 3 == 0 ? 128 : 255)});
  return made;
}

using Places = std::vector<std::size_t>;

class PaletteGridTest : public ::testing::Test {
 protected:
  PaletteGridTest() : grid_(many()) {
    grid_.set_cells(cells(40));
    grid_.show();
  }
  static PaletteGridForm many() {
    PaletteGridForm form;
    form.many = true;
    return form;
  }
  void click(int cell, Qt::KeyboardModifiers modifiers = {}) {
    QTest::mouseClick(&grid_, Qt::LeftButton, modifiers, grid_.cell_rect(cell).center());
  }
  void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) { QTest::keyClick(&grid_, key, modifiers); }

  PaletteGrid grid_;
};

TEST_F(PaletteGridTest, SelectsByMouse) {
  click(5);
  EXPECT_EQ(grid_.selected(), Places{5});
  click(7, Qt::ControlModifier);
  click(20, Qt::ControlModifier);
  EXPECT_EQ(grid_.selected(), (Places{5, 7, 20}));
  click(7, Qt::ControlModifier);
  EXPECT_EQ(grid_.selected(), (Places{5, 20}));
  click(4);
  click(6, Qt::ShiftModifier);
  EXPECT_EQ(grid_.selected(), (Places{4, 5, 6}));
  click(39);
  EXPECT_EQ(grid_.cell_at(grid_.cell_rect(40).center()), -1);
}

TEST_F(PaletteGridTest, MovesAndSelectsByKey) {
  click(0);
  key(Qt::Key_Down);
  EXPECT_EQ(grid_.current(), 16);
  key(Qt::Key_Down);
  key(Qt::Key_Down);
  EXPECT_EQ(grid_.current(), 32) << "no cell below";
  key(Qt::Key_End);
  EXPECT_EQ(grid_.current(), 39);
  key(Qt::Key_Right);
  EXPECT_EQ(grid_.current(), 39);
  key(Qt::Key_Left, Qt::ShiftModifier);
  EXPECT_EQ(grid_.selected(), (Places{38, 39}));
  key(Qt::Key_Home, Qt::ControlModifier);
  EXPECT_EQ(grid_.current(), 0);
  EXPECT_EQ(grid_.selected(), (Places{38, 39})) << "only the caret moved";
  key(Qt::Key_Space, Qt::ControlModifier);
  EXPECT_EQ(grid_.selected(), (Places{0, 38, 39}));
  key(Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(grid_.selected().size(), 40u);
  EXPECT_TRUE(grid_.accessibleDescription().startsWith("Color 0: 0, 255, 0, alpha 128"))
      << grid_.accessibleDescription().toStdString();
}

TEST_F(PaletteGridTest, DragsSwapAndDoubleClicksOpen) {
  QSignalSpy swaps(&grid_, &PaletteGrid::swap_wanted), opened(&grid_, &PaletteGrid::activated);
  QTest::mousePress(&grid_, Qt::LeftButton, {}, grid_.cell_rect(3).center());
  QMouseEvent move(QEvent::MouseMove, grid_.cell_rect(17).center(),
                   grid_.mapToGlobal(grid_.cell_rect(17).center()), Qt::NoButton, Qt::LeftButton,
                   Qt::NoModifier);
  QCoreApplication::sendEvent(&grid_, &move);
  QTest::mouseRelease(&grid_, Qt::LeftButton, {}, grid_.cell_rect(17).center());
  ASSERT_EQ(swaps.count(), 1);
  EXPECT_EQ(swaps[0], (QList<QVariant>{3, 17}));
  EXPECT_EQ(grid_.current(), 17);
  QTest::mouseDClick(&grid_, Qt::LeftButton, {}, grid_.cell_rect(9).center());
  key(Qt::Key_Return);
  ASSERT_EQ(opened.count(), 2);
  EXPECT_EQ(opened[0][0], 9);
}

TEST_F(PaletteGridTest, StaysInsideWhenCellsGo) {
  click(39);
  grid_.set_cells(cells(3));
  EXPECT_EQ(grid_.current(), 2);
  for (const std::size_t cell : grid_.selected()) EXPECT_LT(cell, 3u);
  grid_.set_cells({});
  EXPECT_EQ(grid_.current(), -1);
  key(Qt::Key_Right);
  grid_.grab();
}

class PictureViewTest : public ::testing::Test {
 protected:
  PictureViewTest() {
    view_.resize(400, 300);
    view_.show();
    QTest::qWait(1);
  }
  PictureView view_;
};

TEST_F(PictureViewTest, ZoomsInStepsWithinItsBounds) {
  view_.set_picture(sample_picture(40, 30, 24));
  EXPECT_EQ(view_.zoom(), 100) << "small pictures are not enlarged";
  for (int i = 0; i < 30; ++i) QTest::keyClick(&view_, Qt::Key_Plus);
  EXPECT_EQ(view_.zoom(), 3200);
  for (int i = 0; i < 30; ++i) QTest::keyClick(&view_, Qt::Key_Minus);
  EXPECT_EQ(view_.zoom(), 25);
  QTest::keyClick(&view_, Qt::Key_1);
  EXPECT_EQ(view_.zoom(), 100);
  view_.set_picture(sample_picture(900, 100, 8));
  EXPECT_EQ(view_.zoom(), 33) << "fitted";
}

TEST_F(PictureViewTest, TheWheelKeepsThePixelUnderThePointer) {
  view_.set_picture(sample_picture(400, 300, 24));
  view_.set_zoom(400);
  const QPointF place(250, 120);
  const QPoint before = view_.pixel_at(place);
  QWheelEvent wheel(place, view_.viewport()->mapToGlobal(place), {}, {0, 120}, Qt::NoButton,
                    Qt::ControlModifier, Qt::NoScrollPhase, false);
  QCoreApplication::sendEvent(view_.viewport(), &wheel);
  EXPECT_EQ(view_.zoom(), 600);
  const QPoint moved = view_.pixel_at(place) - before;
  EXPECT_LE(moved.manhattanLength(), 1);
}

TEST_F(PictureViewTest, ShowsEachPixelWhereItSaysItIs) {
  for (const std::uint32_t bits : {1u, 4u, 8u, 24u, 32u}) {
    view_.set_picture(sample_picture(9, 7, bits));
    for (const int zoom : {100, 400, 800}) {
      view_.set_zoom(zoom);
      const QImage image = view_.viewport()->grab().toImage();
      for (const QPoint pixel : {QPoint(0, 0), QPoint(8, 6), QPoint(3, 5)}) {
        const QPoint place =
            zoom == 100 ? view_.picture_rect().topLeft() + pixel
                        : view_.picture_rect().topLeft() + pixel * zoom / 100 + QPoint(zoom, zoom) / 200;
        EXPECT_EQ(view_.pixel_at(place), pixel);
        EXPECT_EQ(image.pixelColor(place).rgb(), view_.pixel_color(pixel).rgb())
            << bits << " bits at " << zoom;
      }
    }
  }
}

TEST_F(PictureViewTest, TellsPositionAndValue) {
  Picture indexed = PictureCreate(3, 2, nullptr, 8);
  Palette palette{};
  palette[15] = 255;
  palette[17] = 7;
  PictureSetPalette(indexed, palette);
  PicturePutPixel(indexed, 2, 1, 5);
  view_.set_picture(indexed);
  EXPECT_EQ(view_.pixel_text({2, 1}), "2, 1: index 5 (255, 0, 7)");
  Picture alpha = PictureCreateAlpha(2, 2);
  PicturePutPixel(alpha, 1, 0, make_colour(1, 2, 3, 4));
  view_.set_picture(alpha);
  EXPECT_EQ(view_.pixel_text({1, 0}), "1, 0: 1, 2, 3, alpha 4");
}

TEST_F(PictureViewTest, PicksByMouseAndByKey) {
  view_.set_picture(sample_picture(10, 10, 24));
  view_.set_picking(true);
  QSignalSpy picks(&view_, &PictureView::picked);
  QTest::mouseClick(view_.viewport(), Qt::LeftButton, {}, view_.picture_rect().topLeft() + QPoint(4, 6));
  QTest::mouseClick(view_.viewport(), Qt::LeftButton, {}, QPoint(1, 1));
  QTest::keyClick(&view_, Qt::Key_Right);
  QTest::keyClick(&view_, Qt::Key_Up);
  QTest::keyClick(&view_, Qt::Key_Space);
  ASSERT_EQ(picks.count(), 2);
  EXPECT_EQ(picks[0][0].toPoint(), QPoint(4, 6));
  EXPECT_EQ(picks[1][0].toPoint(), QPoint(5, 5));
}

class ColorDialogTest : public ::testing::Test {
 protected:
  ColorDialogTest() {
    const QByteArray folder = folder_.path().c_str();
    qputenv("XDG_CONFIG_HOME", folder);
  }
  static QSpinBox* field(ColorDialog& dialog, const char* name) {
    for (QSpinBox* box : dialog.findChildren<QSpinBox*>())
      if (box->accessibleName() == QLatin1String(name)) return box;
    return nullptr;
  }
  ScratchFolder folder_;
  SettingsGuard guard_;
};

TEST_F(ColorDialogTest, EveryFieldFollowsTheOthers) {
  ColorDialog dialog({.color = make_colour(255, 0, 0), .picture = {}, .palette = {}, .title = {}});
  field(dialog, "Hue")->setValue(120);
  EXPECT_EQ(dialog.color(), QColor(0, 255, 0));
  field(dialog, "Blue")->setValue(255);
  EXPECT_EQ(field(dialog, "Hue")->value(), 180);
  auto* hex = dialog.findChild<QLineEdit*>("hexadecimal");
  ASSERT_TRUE(hex);
  EXPECT_EQ(hex->text(), "00FFFF");
  hex->clear();
  QTest::keyClicks(hex, "#1020fF");
  EXPECT_EQ(dialog.color(), QColor(16, 32, 255));
  auto* plane = dialog.findChild<ColorPlane*>();
  plane->resize(300, 240);
  QTest::mouseClick(plane, Qt::LeftButton, {}, plane->square().topRight());
  EXPECT_EQ(dialog.color().value(), 255);
  EXPECT_EQ(dialog.color().hsvSaturation(), 255);
  QTest::mouseClick(plane, Qt::LeftButton, {}, plane->square().bottomLeft());
  EXPECT_EQ(dialog.color(), QColor(0, 0, 0));
  EXPECT_NEAR(field(dialog, "Hue")->value(), 236, 3) << "black keeps the hue that it was mixed from";
}

TEST_F(ColorDialogTest, RemembersWhatWasChosen) {
  settings::ForeColour = 0x010203;
  settings::BackColour = 0x040506;
  for (int i = 0; i < 20; ++i) {
    ColorDialog dialog({.color = make_colour(static_cast<std::uint32_t>(i), 0, 9),
                        .picture = {},
                        .palette = {},
                        .title = {}});
    dialog.accept();
  }
  EXPECT_EQ(settings::ForeColour, 0x090013);
  EXPECT_EQ(settings::BackColour, 0x090012);
  const auto recent = load_history(config_path("ColorHistory.txt"), HistoryKind::Colors);
  ASSERT_EQ(recent.size(), 16u);
  EXPECT_EQ(recent.front(), "#130009");
  ColorDialog dialog({.color = 0, .picture = {}, .palette = {}, .title = {}});
  dialog.reject();
  EXPECT_EQ(settings::ForeColour, 0x090013) << "a cancelled dialog remembers nothing";
}

TEST_F(ColorDialogTest, TakesColorsFromPaletteAndPicture) {
  PaletteColors colors;
  colors.count = 3;
  colors.palette = {1, 2, 3, 4, 5, 6, 7, 8, 9};
  ColorDialog dialog({.color = 0, .picture = sample_picture(20, 20, 24), .palette = colors, .title = {}});
  dialog.show();
  auto* pages = dialog.findChild<QTabWidget*>();
  ASSERT_EQ(pages->count(), 3);
  pages->setCurrentIndex(1);
  auto* swatches = pages->widget(1)->findChild<PaletteGrid*>();
  QTest::mouseClick(swatches, Qt::LeftButton, {}, swatches->cell_rect(1).center());
  EXPECT_EQ(dialog.color(), QColor(4, 5, 6));
  pages->setCurrentIndex(2);
  auto* view = pages->widget(2)->findChild<PictureView*>();
  QTest::qWait(1);
  QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->picture_rect().center());
  EXPECT_EQ(dialog.color(), view->pixel_color(view->pixel_at(view->picture_rect().center())));
}

}  // namespace
}  // namespace vellum::testing
