// The viewers: their arithmetic as tables, and every button, key and mouse action with a clock of our own.
#include "shell/viewer/viewer_window.h"

#include <QApplication>
#include <QClipboard>
#include <QScreen>
#include <QScrollBar>
#include <QToolButton>

#include "configuration/shell_settings.h"
#include "image/graphic_file.h"
#include "image/picture_operations.h"
#include "playback/settings.h"
#include "shell/look/picture_image.h"
#include "shell/look/viewer_image.h"
#include "shell/viewer/view_document.h"
#include "shell/viewer/viewer_geometry.h"
#include "shell_fixture.h"
#include "support/documents.h"
#include "support/settings_guard.h"

namespace vellum::testing {
namespace {

TEST(ViewerGeometry, OpensAtItsSizeAndZoom) {
  struct Case {
    QSize canvas, frame, bar;
    bool strip;
    QSize screen;
    bool adjust;
    int zoom;
    QSize inside;
  };
  constexpr QSize kNone(0, 0);
  const Case cases[] = {
      {{200, 100}, kNone, kNone, false, {1000, 800}, true, 100, {200, 100}},
      {{20, 10}, kNone, kNone, false, {1000, 800}, true, 100, {96, 96}},
      {{200, 100}, {10, 30}, kNone, true, {1000, 800}, true, 100, {200, 116}},
      {{200, 100}, {10, 30}, {260, 34}, true, {1000, 800}, true, 100, {260, 150}},
      // 98 percent of 800 are 784: 784 * 100 / 1616 is 48
      {{400, 1600}, kNone, kNone, true, {1000, 800}, true, 48, {192, 784}},
      {{4000, 200}, kNone, kNone, false, {1000, 800}, true, 24, {960, 48}},
      {{980, 784}, kNone, kNone, false, {1000, 800}, true, 100, {980, 784}},
      {{981, 784}, kNone, kNone, false, {1000, 800}, true, 99, {971, 776}},
      {{980, 784}, kNone, kNone, true, {1000, 800}, true, 98, {960, 784}},
      {{4000, 3000}, kNone, kNone, false, {1000, 800}, false, 100, {980, 784}},
      {{1'000'000, 1'000'000}, kNone, kNone, false, {1000, 800}, true, 1, {1000, 800}},
      {{1, 1'000'000}, kNone, kNone, false, {1000, 800}, true, 1, {1, 800}},
  };
  for (const Case& c : cases) {
    const ViewerOpening opening =
        viewer_opening({c.canvas, {96, 96}, c.frame, c.bar, c.strip ? kStripHeight : 0, c.screen, c.adjust});
    EXPECT_EQ(opening.zoom, c.zoom) << "case " << &c - cases;
    EXPECT_EQ(opening.inside, c.inside)
        << "case " << &c - cases << ": " << opening.inside.width() << " x " << opening.inside.height();
  }
}

TEST(ViewerGeometry, LaysTheFrameOut) {
  EXPECT_EQ(frame_rect({40, 30}, {101, 90}, {}, false), QRect(30, 0, 40, 30));
  EXPECT_EQ(frame_rect({40, 30}, {100, 90}, {}, true), QRect(30, 30, 40, 30));
  EXPECT_EQ(frame_rect({400, 300}, {100, 90}, {7, 9}, true), QRect(-7, -9, 400, 300));
  EXPECT_EQ(zoomed_size({333, 1}, 50), QSize(166, 1));
  EXPECT_EQ(zoomed_size({1'000'000, 1'000'000}, kMostZoom), QSize(32'000'000, 32'000'000));
  EXPECT_EQ(fitting_zoom({100, 100}, {350, 290}), 200);
  EXPECT_EQ(fitting_zoom({100, 300}, {350, 290}), 96);
  EXPECT_EQ(fitting_zoom({1'000'000, 1}, {100, 100}), kLeastZoom);
  EXPECT_EQ(strip_ordinal(-5, 100, 10), 0u);
  EXPECT_EQ(strip_ordinal(10, 100, 10), 1u);
  EXPECT_EQ(strip_ordinal(500, 100, 10), 9u);
  EXPECT_EQ(strip_ordinal(5, 0, 10), 0u);
  EXPECT_EQ(strip_ordinal(99, 100, 100'000), 99'000u);
  EXPECT_EQ(strip_filled(0, 4, 100), 25);
  EXPECT_EQ(strip_filled(3, 4, 100), 100);
  EXPECT_EQ(strip_filled(0, 0, 100), 0);
}

TEST(ViewerImage, HasThePixelsOfThePicture) {
  for (const std::uint32_t bits : {1u, 4u, 8u, 24u, 32u}) {
    const Picture picture = sample_picture(19, 7, bits);
    QImage image;
    fill_image(image, picture, false);
    EXPECT_EQ(image.convertToFormat(QImage::Format_ARGB32),
              image_of_picture(picture).convertToFormat(QImage::Format_ARGB32))
        << bits;
  }
  // A pixel of black on white is white where all that it covers are.
  Picture picture = small_picture(4, 2, 1);
  for (std::uint32_t x = 0; x < 8; ++x) PicturePutPixel(picture, x % 4, x / 4, x != 5);
  const QImage image = black_on_white(picture, {2, 1});
  EXPECT_EQ(image.pixelIndex(0, 0), 0);
  EXPECT_EQ(image.pixelIndex(1, 0), 1);
}

/// Frames 0.. of 40 x 30, each of one color (its number in blue), an hour long: no beat comes by itself.
DocumentWindow colored_frames(std::size_t frames) {
  DocumentWindow window = animated_document(frames);
  window.document.fileName = "/somewhere/walk.png";
  for (std::size_t i = 0; i < window.list.size(); ++i) {
    ChunkRecord record;
    chunk_list_get(window.list, i, record);
    if (record.tag != tag::IDAT) continue;
    record.data = PictureCreateFilled(40, 30, make_colour(9, 9, static_cast<std::uint32_t>(i - 2))).handle();
    record.frameControl.delayNum = 36000;
    record.frameControl.delayDen = 10;
    chunk_list_put(window.list, i, record);
  }
  return window;
}

/// The beat that opening asks for, where it has not come yet.
void first_beat(ViewerWindow& viewer) {
  if (viewer.due() == 0u) viewer.beat();
}

class ViewerTest : public ::testing::Test {
 protected:
  ViewerWindow& open(const DocumentWindow& document) {
    viewer_ = std::make_unique<ViewerWindow>(document, services_, nullptr, [this] { return now_; });
    viewer_->show();
    EXPECT_TRUE(QTest::qWaitForWindowActive(viewer_.get()));
    first_beat(*viewer_);
    return *viewer_;
  }
  ViewerWindow& open_animation(std::size_t frames = 5) { return open(colored_frames(frames)); }
  /// The frame that is on the screen, by its color.
  int frame() { return qBlue(viewer_->canvas().image().pixel(3, 3)); }
  void finish_seeking() {
    for (int i = 0; i < 10'000 && viewer_->player().is_waiting(); ++i) viewer_->beat();
  }
  void key(Qt::Key key, Qt::KeyboardModifiers held = Qt::NoModifier) {
    QTest::keyClick(viewer_.get(), key, held);
    finish_seeking();
  }
  void click(const char* name) {
    auto* button = qobject_cast<QToolButton*>(viewer_->bar().widgetForAction(viewer_->command(name)));
    ASSERT_TRUE(button) << name;
    QTest::mouseClick(button, Qt::LeftButton);
  }
  std::string title() { return viewer_->windowTitle().toStdString(); }

  SettingsGuard guard_;
  Answers answers_;
  Services services_ = answers_.services();
  std::uint64_t now_ = 0;
  std::unique_ptr<ViewerWindow> viewer_;
};

TEST_F(ViewerTest, ButtonsDoWhatTheySay) {
  ViewerWindow& viewer = open_animation();
  const std::pair<const char*, const char*> tips[] = {{"play", "Play"},
                                                      {"close", "Close"},
                                                      {"pause", "Pause"},
                                                      {"rewind", "Rewind"},
                                                      {"step_forward", "Step forward"},
                                                      {"step_back", "Step back"}};
  for (const auto& [name, tip] : tips) {
    QWidget* button = viewer.bar().widgetForAction(viewer.command(name));
    ASSERT_TRUE(button) << name;
    EXPECT_EQ(button->toolTip().toStdString(), tip);
    EXPECT_EQ(button->accessibleName().toStdString(), tip);
  }
  EXPECT_EQ(frame(), 0);
  EXPECT_EQ(viewer.due(), 3'600'000u);
  EXPECT_FALSE(viewer.command("play")->isEnabled());
  EXPECT_TRUE(viewer.command("pause")->isEnabled());
  EXPECT_EQ(title(), "View walk.png [40 x 30]");
  EXPECT_EQ(viewer.strip().text().toStdString(), "1 of 5 frames - 0 ms");
  click("pause");
  EXPECT_EQ(title(), "Block 3");
  EXPECT_FALSE(viewer.due());
  EXPECT_TRUE(viewer.command("play")->isEnabled());
  EXPECT_FALSE(viewer.command("pause")->isEnabled());
  click("step_forward");
  click("step_forward");
  EXPECT_EQ(frame(), 2);
  EXPECT_EQ(viewer.strip().text().toStdString(), "3 of 5 frames - 7200000 ms");
  click("step_back");
  EXPECT_EQ(frame(), 1);
  click("play");
  viewer.beat();
  EXPECT_EQ(frame(), 2);
  click("rewind");
  EXPECT_EQ(frame(), 0);
  EXPECT_FALSE(viewer.due());
  click("step_back");
  EXPECT_EQ(frame(), 0) << "the first one stays";
  click("close");
  EXPECT_FALSE(viewer.isVisible());
  EXPECT_EQ(viewer.player().state(), PlayerState::Closed);
}

TEST_F(ViewerTest, EveryKeyActs) {
  ViewerWindow& viewer = open_animation(40);
  struct Case {
    Qt::Key key;
    int frame;
    bool playing;
  };
  const Case cases[] = {
      {Qt::Key_Escape, 0, false}, {Qt::Key_Right, 1, false},     {Qt::Key_Right, 2, false},
      {Qt::Key_Left, 1, false},   {Qt::Key_PageDown, 11, false}, {Qt::Key_PageUp, 1, false},
      {Qt::Key_PageUp, 0, false}, {Qt::Key_End, 39, false},      {Qt::Key_PageDown, 39, false},
      {Qt::Key_Home, 0, false},   {Qt::Key_Space, 0, true},      {Qt::Key_Space, 0, false},
      {Qt::Key_P, 0, true},       {Qt::Key_Escape, 0, false},    {Qt::Key_Return, 0, true},
  };
  for (const Case& c : cases) {
    key(c.key);
    EXPECT_EQ(frame(), c.frame) << "case " << &c - cases;
    EXPECT_EQ(viewer.player().state() == PlayerState::Playing, c.playing) << "case " << &c - cases;
  }
  EXPECT_TRUE(viewer.isVisible()) << "Escape pauses and does not close";
  key(Qt::Key_W, Qt::ControlModifier);
  EXPECT_FALSE(viewer.isVisible());
}

TEST_F(ViewerTest, SpeedKeysStopAtTheirEnds) {
  ViewerWindow& viewer = open_animation();
  for (int i = 0; i < 20; ++i) key(Qt::Key_Up, Qt::ControlModifier);
  EXPECT_EQ(viewer.player().speed(), 1600);
  viewer.beat();
  EXPECT_EQ(viewer.due(), 225'000u);
  for (int i = 0; i < 30; ++i) key(Qt::Key_BracketLeft);
  EXPECT_EQ(viewer.player().speed(), 10);
  viewer.beat();
  EXPECT_EQ(viewer.due(), 36'000'000u);
  key(Qt::Key_Backspace);
  EXPECT_EQ(viewer.player().speed(), 100);
}

TEST_F(ViewerTest, ZoomsByKeysWheelAndFullScreen) {
  ViewerWindow& viewer = open_animation();
  key(Qt::Key_Plus);
  EXPECT_EQ(viewer.canvas().zoom(), 150);
  EXPECT_EQ(title(), "View walk.png [40 x 30] - (resized to 150 %)");
  EXPECT_EQ(viewer.canvas().frame_place().size(), QSize(60, 45));
  key(Qt::Key_Minus);
  key(Qt::Key_Minus);
  EXPECT_EQ(viewer.canvas().zoom(), 67);
  key(Qt::Key_1);
  EXPECT_EQ(viewer.canvas().zoom(), 100);
  viewer.resize(500, 500);
  QTest::qWait(1);
  key(Qt::Key_F);
  EXPECT_EQ(viewer.canvas().zoom(), fitting_zoom({40, 30}, viewer.canvas().viewport()->size()));
  for (int i = 0; i < 40; ++i) key(Qt::Key_Plus);
  EXPECT_EQ(viewer.canvas().zoom(), 3200);
  EXPECT_GT(viewer.canvas().horizontalScrollBar()->maximum(), 0);
  key(Qt::Key_1);
  QWheelEvent wheel({20, 20}, viewer.mapToGlobal(QPointF(20, 20)), {}, {0, 120}, {}, {}, Qt::NoScrollPhase,
                    false);
  QApplication::sendEvent(viewer.canvas().viewport(), &wheel);
  EXPECT_EQ(viewer.canvas().zoom(), 150);
  key(Qt::Key_F11);
  EXPECT_TRUE(viewer.isFullScreen());
  EXPECT_FALSE(viewer.bar().isVisible()) << "until the pointer moves";
  EXPECT_EQ(viewer.canvas().grab().toImage().pixel(1, 1), 0xFF000000) << "black around it";
  QTest::mouseMove(viewer.canvas().viewport(), {50, 50});
  EXPECT_TRUE(viewer.bar().isVisible());
  // A desktop may give the window its size long after it was asked for.
  for (const QSize size : {QSize(700, 500), QSize(900, 640)}) {
    viewer.resize(size);
    EXPECT_EQ(viewer.canvas().zoom(), fitting_zoom({40, 30}, size));
  }
  key(Qt::Key_Escape);
  EXPECT_FALSE(viewer.isFullScreen());
  EXPECT_TRUE(viewer.player().can_pause()) << "it plays on";
  EXPECT_TRUE(QTest::qWaitFor([&] { return viewer.canvas().zoom() == 150; }, 5000)) << "the one before";
  key(Qt::Key_F11);
  QTest::mouseDClick(viewer.canvas().viewport(), Qt::LeftButton);
  EXPECT_FALSE(viewer.isFullScreen());
  EXPECT_EQ(viewer.canvas().zoom(), 150);
}

TEST_F(ViewerTest, TheRightButtonClosesAndTheStripSeeks) {
  for (const bool twice : {false, true}) {
    ViewerWindow& viewer = open_animation();
    QWidget* viewport = viewer.canvas().viewport();
    twice ? QTest::mouseDClick(viewport, Qt::RightButton) : QTest::mousePress(viewport, Qt::RightButton);
    EXPECT_FALSE(viewer.isVisible());
  }
  ViewerWindow& viewer = open_animation();
  ProgressStrip& strip = viewer.strip();
  EXPECT_EQ(strip.height(), 16);
  QTest::mousePress(&strip, Qt::LeftButton, {}, {strip.width() - 1, 4});
  finish_seeking();
  EXPECT_EQ(frame(), 4);
  EXPECT_EQ(strip.text().toStdString(), "5 of 5 frames - 14400000 ms");
  QMouseEvent move(QEvent::MouseMove, QPointF(strip.width() / 2, 4), strip.mapToGlobal(QPointF(1, 4)),
                   Qt::NoButton, Qt::LeftButton, {});
  QApplication::sendEvent(&strip, &move);
  finish_seeking();
  EXPECT_EQ(frame(), 2);
  EXPECT_EQ(viewer.player().state(), PlayerState::Paused);
}

TEST_F(ViewerTest, BackgroundsShowThroughAndCopiesKeepAlpha) {
  DocumentWindow document = animated_document(2);
  for (std::size_t i = 2; i < 4; ++i) {
    ChunkRecord record;
    chunk_list_get(document.list, i, record);
    Picture picture = PictureCreateAlpha(40, 30);
    PicturePutPixel(picture, 3, 3, 0x80000000 | make_colour(200, 100, 0));
    record.data = picture.handle();
    chunk_list_put(document.list, i, record);
  }
  ViewerWindow& viewer = open(document);
  const auto seen = [&](int x, int y) {
    return viewer.canvas().grab().toImage().pixel(viewer.canvas().frame_place().topLeft() + QPoint(x, y));
  };
  EXPECT_EQ(seen(20, 20), 0xFFFFFFFF);
  key(Qt::Key_B);
  EXPECT_EQ(viewer.player().ground().kind, Ground::Kind::Clear);
  EXPECT_EQ(viewer.player().state(), PlayerState::Playing) << "what plays goes on";
  EXPECT_NE(seen(0, 0), seen(8, 0)) << "checkers";
  QGuiApplication::clipboard()->clear();
  key(Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(qAlpha(QGuiApplication::clipboard()->image().pixel(3, 3)), 128);
  EXPECT_NEAR(qRed(QGuiApplication::clipboard()->image().pixel(3, 3)), 200, 2);
  const ScratchFolder folder;
  answers_.file = folder / "frame";
  key(Qt::Key_S, Qt::ControlModifier);
  const Picture saved = GraphicFileRead((folder / "frame.png").string());
  ASSERT_TRUE(saved);
  EXPECT_EQ(saved.bits(), 32u);
  answers_.file = folder / "no/folder.png";
  key(Qt::Key_S, Qt::ControlModifier);
  EXPECT_EQ(answers_.messages.size(), 1u);
  key(Qt::Key_B);
  EXPECT_EQ(seen(20, 20), 0xFF000000);
  key(Qt::Key_B);
  key(Qt::Key_B);
  EXPECT_EQ(viewer.player().ground(), Ground{});
}

TEST_F(ViewerTest, SettingsTakeBarAndStripAway) {
  settings::ViewModeToolbar = settings::ViewModeProgressBar = 0;
  ViewerWindow& viewer = open_animation();
  EXPECT_FALSE(viewer.bar().isVisible());
  EXPECT_FALSE(viewer.strip().isVisible());
  EXPECT_EQ(viewer.size(), QSize(96, 96));
  settings::ViewModeToolbar = settings::ViewModeProgressBar = 1;
  EXPECT_FALSE(open_animation(1).strip().isVisible()) << "one image has no progress";
}

TEST_F(ViewerTest, LargeCanvasesOpenSmallerOrScroll) {
  const QSize screen = QGuiApplication::primaryScreen()->availableGeometry().size();
  const DocumentWindow document = animated_document(2, static_cast<std::uint32_t>(screen.width() * 2), 50);
  ViewerWindow& smaller = open(document);
  EXPECT_EQ(smaller.canvas().zoom(), 49);
  EXPECT_TRUE(title().ends_with(" - (resized to 49 %)")) << title();
  settings::ViewWindowSizeAdjust = 0;
  ViewerWindow& scrolled = open(document);
  EXPECT_EQ(scrolled.canvas().zoom(), 100);
  EXPECT_GT(scrolled.canvas().horizontalScrollBar()->maximum(), 0);
  EXPECT_EQ(scrolled.width(), screen.width() * 98 / 100);
}

TEST_F(ViewerTest, StillsShowAtOnceOrPassByPass) {
  DocumentWindow still = still_document();
  still.document.fileName = "/somewhere/still.png";
  ViewerWindow& viewer = open(still);
  EXPECT_EQ(title(), "View still.png [40 x 30]");
  EXPECT_EQ(viewer.player().state(), PlayerState::Ended);
  EXPECT_FALSE(viewer.command("play")->isVisible());
  EXPECT_FALSE(viewer.strip().isVisible());
  key(Qt::Key_Space);
  EXPECT_EQ(viewer.player().state(), PlayerState::Ended);
  const QImage whole = viewer.canvas().image().copy();
  ChunkRecord header;
  chunk_list_get(still.list, 0, header);
  header.interlace = 1;
  chunk_list_put(still.list, 0, header);
  settings::DisplayInterlace = 1;
  settings::InterlaceDelay = 10000;
  ViewerWindow& passes = open(still);
  for (int pass = 1; pass < 7; ++pass, passes.beat()) {
    EXPECT_EQ(passes.due(), 10000u) << pass;
    EXPECT_NE(passes.canvas().image(), whole) << pass;
    EXPECT_EQ(passes.canvas().image().pixel(8, 8), whole.pixel(8, 8)) << pass;
  }
  EXPECT_EQ(passes.canvas().image(), whole);
  EXPECT_FALSE(passes.due());
}

TEST_F(ViewerTest, NothingOfABadAnimationKeepsItFromClosing) {
  const auto lost = [] {
    DocumentWindow window = colored_frames(3);
    for (std::size_t i = 2; i < 5; ++i) {
      ChunkRecord record;
      chunk_list_get(window.list, i, record);
      record.data = {};
      chunk_list_put(window.list, i, record);
    }
    return window;
  };
  const auto outside = [] {
    DocumentWindow window = colored_frames(3);
    for (std::size_t i = 2; i < 5; ++i) {
      ChunkRecord record;
      chunk_list_get(window.list, i, record);
      record.frameControl.xOffset = record.frameControl.yOffset = 0xFFFFFFF0;
      chunk_list_put(window.list, i, record);
    }
    return window;
  };
  DocumentWindow nothing;
  nothing.document.kind = DocumentKind::APNG;
  for (const DocumentWindow& document : {lost(), outside(), animated_document(0), nothing}) {
    ViewerWindow& viewer = open(document);
    for (const Qt::Key each : {Qt::Key_Right, Qt::Key_Left, Qt::Key_End, Qt::Key_Home, Qt::Key_B, Qt::Key_F,
                               Qt::Key_Plus, Qt::Key_PageUp, Qt::Key_F11, Qt::Key_Space})
      key(each);
    key(Qt::Key_C, Qt::ControlModifier);
    key(Qt::Key_S, Qt::ControlModifier);
    viewer.beat();
    key(Qt::Key_W, Qt::ControlModifier);
    EXPECT_FALSE(viewer.isVisible());
  }
}

class ViewCommandTest : public WindowTest {
 protected:
  /// Runs the command, and looks at the viewer that it opens before that is closed.
  template <class Look>
  void view(const Look& look) {
    bool looked = false;
    QTimer::singleShot(0, &main_, [&] {
      auto* viewer = main_.findChild<ViewerWindow*>();
      if (!viewer) return;
      looked = true;
      look(*viewer);
      viewer->reject();
    });
    main_.run(56);
    EXPECT_TRUE(looked);
    EXPECT_FALSE(main_.findChild<ViewerWindow*>());
  }
  SettingsGuard guard_;
};

TEST_F(ViewCommandTest, ShowsTheDocumentOrAWholeCopyOfIt) {
  DocumentFrame& frame = add(colored_frames(3));
  view([](ViewerWindow& viewer) {
    EXPECT_TRUE(viewer.isModal());
    EXPECT_EQ(viewer.windowTitle(), QStringLiteral("View walk.png [40 x 30]"));
  });
  answers_.control = true;
  view([](ViewerWindow& viewer) {
    EXPECT_EQ(viewer.windowTitle(), QStringLiteral("View Temporary_walk.png [40 x 30]"));
    first_beat(viewer);
    EXPECT_EQ(qBlue(viewer.canvas().image().pixel(0, 0)), 0);
  });
  EXPECT_EQ(documents(), 1u) << "the copy is gone";
  EXPECT_FALSE(frame.document().dirty);
  QTimer::singleShot(20, &main_, [this] {
    auto* viewer = main_.findChild<ViewerWindow*>();
    ASSERT_TRUE(viewer);
    EXPECT_FALSE(viewer->windowTitle().contains(QStringLiteral("Temporary")))
        << "the key holds Control itself";
    viewer->reject();
  });
  main_.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&main_));
  QTest::keyClick(&main_, Qt::Key_W, Qt::ControlModifier);
}

TEST_F(ViewCommandTest, AClickOutsideClosesWhereThatIsWanted) {
  add(colored_frames(3));
  settings::ClickOutsideAnimToClose = 1;
  bool closed = false;
  QTimer::singleShot(0, &main_, [&] {
    auto* viewer = main_.findChild<ViewerWindow*>();
    ASSERT_TRUE(viewer);
    QTest::keyClick(&main_, Qt::Key_A, Qt::ControlModifier);
    QTest::mouseClick(viewer->canvas().viewport(), Qt::LeftButton);
    EXPECT_TRUE(viewer->isVisible());
    QTest::mouseClick(main_.area().viewport(), Qt::LeftButton);
    closed = !viewer->isVisible();
    viewer->reject();
  });
  main_.run(56);
  EXPECT_TRUE(closed);
  EXPECT_TRUE(selected_rows(main_.area().active()->entries()).empty()) << "keys reach the viewer alone";
}

}  // namespace
}  // namespace vellum::testing
