// Generators on the desktop: the dialog takes a picture, plays what it will make, and makes a document of it.
#include "shell/dialogs/generator_dialog.h"

#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>

#include "core/settings.h"
#include "generators/settings.h"
#include "image/graphic_file.h"
#include "operations/frames.h"
#include "shell/forms/color_button.h"
#include "shell/widgets/color_dialog.h"
#include "shell_fixture.h"

namespace vellum::testing {
namespace {

using GeneratorDialogTest = DialogTest;

TEST_F(GeneratorDialogTest, SpinPlaysItsPictureAndMakesADocumentOfTheDefaultKind) {
  const auto file = folder_ / "turned.bmp";
  ASSERT_TRUE(GraphicFileWrite(file.string(), sample_picture(60, 40, 24)));
  answers_.pictures = {file};
  settings::SpinFile.clear();
  settings::DefaultAnimationType = 1;
  in_dialog<GeneratorDialog>(252, [&](GeneratorDialog& dialog) {
    EXPECT_EQ(dialog.findChild<QLabel*>("source")->text(), "[ No file selected ]");
    EXPECT_FALSE(dialog.preview().shown());
    for (QPushButton* button : dialog.findChildren<QPushButton*>())
      if (button->text() == "&Select") button->click();
    QTest::qWait(60);
    EXPECT_EQ(dialog.findChild<QLabel*>("source")->text(), "turned.bmp");
    const Picture first = dialog.preview().shown();
    ASSERT_TRUE(first);
    EXPECT_EQ(first.width(), first.height()) << "a square that holds all of them";
    when_dialog_opens<ColorDialog>([](ColorDialog& color) {
      EXPECT_EQ(color.findChild<QTabWidget*>()->count(), 3)
          << "mixed, of the picture's palette, of the picture";
    });
    qobject_cast<ColorButton*>(dialog.form().input("backColor"))->click();
    dialog.form().set_value("count", std::int64_t{5});
    for (auto* choice : dialog.findChildren<QRadioButton*>())
      if (choice->text() == "Counterclockwise") choice->click();
    dialog.follow();
    dialog.buttons().button(QDialogButtonBox::Ok)->click();
  });
  ASSERT_EQ(documents(), 1u);
  DocumentFrame& made = *main_.area().documents().front();
  EXPECT_EQ(made.document().kind, DocumentKind::MING);
  EXPECT_EQ(frame_entries(made.content()).size(), 5u);
  EXPECT_FALSE(made.document().HasFileName);
  EXPECT_EQ(settings::SpinCount, 5);
  EXPECT_EQ(settings::SpinDirection, 0);
  EXPECT_EQ(settings::SpinFile, file.string());
  // The next time the picture is there at once; without one OK asks for it.
  in_dialog<GeneratorDialog>(252, [&](GeneratorDialog& dialog) {
    EXPECT_EQ(dialog.inputs().pictures.size(), 1u);
    EXPECT_EQ(dialog.form().values().number("count"), 5);
  });
}

TEST_F(GeneratorDialogTest, WhatIsMadeFromNothingPlaysWhileOneTypesAndBecomesADocument) {
  const auto file = folder_ / "beach.bmp";
  ASSERT_TRUE(GraphicFileWrite(file.string(), sample_picture(60, 40, 24)));
  answers_.pictures = {file};
  settings::DefaultAnimationType = 1;
  const std::pair<int, DocumentKind> rows[] = {{250, DocumentKind::MING}, {257, DocumentKind::PING},
                                               {253, DocumentKind::MING}, {271, DocumentKind::MING},
                                               {272, DocumentKind::MING}, {273, DocumentKind::MING}};
  for (const auto& [command, kind] : rows) {
    SCOPED_TRACE(command);
    const std::size_t before = documents();
    in_dialog<GeneratorDialog>(command, [&](GeneratorDialog& dialog) {
      if (dialog.pictures()) dialog.pictures()->choose();
      QTest::qWait(60);
      EXPECT_TRUE(dialog.preview().shown());
      int tests = 0;
      dialog.test = [&](const FieldValues& values) {
        ++tests;
        EXPECT_TRUE(!values.find("seed") || values.number("seed") != 0) << "what the preview shows";
      };
      for (QPushButton* button : dialog.findChildren<QPushButton*>())
        if (button->text() == "&Test") button->click();
      EXPECT_EQ(tests, 1);
      dialog.buttons().button(QDialogButtonBox::Ok)->click();
    });
    ASSERT_EQ(documents(), before + 1);
    EXPECT_EQ(main_.area().documents().back()->document().kind, kind);
  }
  // The list and the values are there the next time; a type shows its own fields alone.
  in_dialog<GeneratorDialog>(273, [&](GeneratorDialog& dialog) {
    EXPECT_EQ(dialog.inputs().names, std::vector<std::string>{"beach"});
  });
  in_dialog<GeneratorDialog>(250, [&](GeneratorDialog& dialog) {
    Form& form = dialog.form();
    form.findChild<QTabWidget*>()->setCurrentIndex(1);
    const auto hidden = [&](const char* field) { return !form.input(field)->isVisibleTo(&form); };
    EXPECT_TRUE(hidden("frequency") && hidden("waveShadowColor") && !hidden("simpleCells"));
    form.set_value("type", std::int64_t{7});
    dialog.follow();
    EXPECT_TRUE(!hidden("frequency") && !hidden("waveShadowColor") && hidden("simpleCells"));
    form.set_value("text", std::string());
    dialog.buttons().button(QDialogButtonBox::Ok)->click();
    EXPECT_TRUE(dialog.isVisible()) << "without a text nothing is made";
    form.set_value("text", std::string("x"));
  });
}

}  // namespace
}  // namespace vellum::testing
