// What users can choose of the look.
#include <QStyleOptionToolButton>

#include "configuration/shell_settings.h"
#include "image/graphic_file.h"
#include "shell/look/program_style.h"
#include "shell/look/style.h"
#include "shell/look/tool_style.h"
#include "shell/widgets/work_background.h"
#include "shell_fixture.h"
#include "support/settings_guard.h"

namespace vellum::testing {
namespace {

class LookTest : public ::testing::Test {
 protected:
  QImage ground(WorkBackground& background, QSize size = {64, 48}) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::magenta);
    QPainter painter(&image);
    background.paint(painter, image.rect(), QPalette(QColor(220, 220, 220)));
    return image;
  }
  QImage button(QStyle::State state) {
    QImage image(32, 32, QImage::Format_RGB32);
    image.fill(Qt::white);
    QStyleOptionToolButton option;
    option.rect = image.rect();
    option.state = state;
    QPainter painter(&image);
    ToolStyle(nullptr).drawPrimitive(QStyle::PE_PanelButtonTool, &option, &painter, nullptr);
    return image;
  }

  SettingsGuard guard_;
  ScratchFolder folder_;
};

TEST_F(LookTest, EachGroundIsAnotherAndFillsTheArea) {
  settings::MDIClientColor = 0x4080C0;  // blue, green, red
  WorkBackground background;
  std::vector<QImage> seen;
  for (int choice = 0; choice < static_cast<int>(background_choices().size()) - 1; ++choice) {
    settings::MDIClientBackground = choice;
    const QImage image = ground(background);
    for (const QImage& other : seen)
      EXPECT_NE(image, other) << background_choices()[static_cast<std::size_t>(choice)].name;
    for (const QPoint corner : {QPoint(0, 0), QPoint(63, 47)})
      EXPECT_NE(image.pixelColor(corner), QColor(Qt::magenta)) << choice;
    seen.push_back(image);
  }
  EXPECT_EQ(seen.size(), 14u);
  EXPECT_EQ(seen[13].pixelColor(30, 30), QColor(0xC0, 0x80, 0x40));
  for (const int beyond : {-5, 99}) {
    settings::MDIClientBackground = beyond;
    settings::MDIClientImage = "/no such picture.bmp";
    EXPECT_EQ(ground(background), seen[beyond < 0 ? 0 : 13]) << "an image that is missing leaves the color";
  }
}

TEST_F(LookTest, APictureCoversTheAreaInItsOwnShape) {
  settings::MDIClientBackground = 14;
  settings::MDIClientImage = (folder_ / "ground.bmp").string();
  Picture picture = PictureCreate(20, 10, nullptr, 24);
  for (std::uint32_t y = 0; y < 10; ++y)
    for (std::uint32_t x = 0; x < 20; ++x)
      PicturePutPixel(picture, x, y, make_colour(x < 10 ? 255 : 0, 0, x < 10 ? 0 : 255, 255));
  ASSERT_TRUE(GraphicFileWrite(settings::MDIClientImage, picture));
  WorkBackground background;
  for (const QSize size : {QSize(100, 100), QSize(200, 40), QSize(60, 90)}) {
    const QImage image = ground(background, size);
    EXPECT_EQ(image.pixelColor(2, size.height() - 1), QColor(255, 0, 0)) << size.width();
    EXPECT_EQ(image.pixelColor(size.width() - 3, 0), QColor(0, 0, 255)) << size.width();
  }
}

TEST_F(LookTest, ButtonsLightUpAsWished) {
  QImage plain(32, 32, QImage::Format_RGB32);
  plain.fill(Qt::white);
  const QStyle::State hovered = QStyle::State_Enabled | QStyle::State_MouseOver | QStyle::State_Raised;
  settings::LiveButtons = 0;
  EXPECT_EQ(button(hovered), plain);
  EXPECT_NE(button(hovered | QStyle::State_Sunken), plain);
  EXPECT_NE(button(hovered | QStyle::State_HasFocus), plain) << "the keyboard's place is always seen";
  settings::LiveButtons = 1;
  std::vector<QImage> looks;
  for (const int soft : {0, 1, 2}) {
    settings::SoftButtons = soft;
    looks.push_back(button(hovered));
    EXPECT_NE(looks.back(), plain);
  }
  EXPECT_NE(looks[0], looks[1]);
  EXPECT_NE(looks[1], looks[2]);
}

TEST_F(LookTest, ControlsOnBlackHaveAnOutline) {
  ProgramStyle program(nullptr);
  QStyleOptionButton option;
  option.rect = QRect(0, 0, 16, 16);
  option.palette = QPalette(Qt::black, Qt::black);
  option.palette.setColor(QPalette::WindowText, Qt::white);
  option.state = QStyle::State_Enabled | QStyle::State_Off;
  for (const auto element :
       {QStyle::PE_IndicatorCheckBox, QStyle::PE_IndicatorRadioButton, QStyle::PE_PanelButtonCommand}) {
    QImage image(16, 16, QImage::Format_RGB32);
    image.fill(Qt::black);
    QPainter painter(&image);
    program.drawPrimitive(element, &option, &painter, nullptr);
    EXPECT_GE(style::contrast(image.pixelColor(8, 0), Qt::black), 3) << element;
  }
  QPalette dark(Qt::black, Qt::black);
  dark.setColor(QPalette::Disabled, QPalette::ButtonText, QColor(5, 5, 5));
  program.polish(dark);
  EXPECT_GE(style::contrast(dark.color(QPalette::Disabled, QPalette::ButtonText), Qt::black), 2);
}

}  // namespace
}  // namespace vellum::testing
