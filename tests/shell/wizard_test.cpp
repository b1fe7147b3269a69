// The window of the animation wizard: folders, lists, what a person does with them, and what comes of it.
#include <QDir>
#include <QMenu>
#include <QMimeData>
#include <QSplitter>

#include "configuration/shell_settings.h"
#include "core/settings.h"
#include "generators/settings.h"
#include "image/graphic_file.h"
#include "operations/frames.h"
#include "shell/dialogs/wizard_dialog.h"
#include "shell/dialogs/wizard_preview.h"
#include "shell/look/text.h"
#include "shell/services/folder_pictures.h"
#include "shell/viewer/viewer_window.h"
#include "shell_fixture.h"

namespace vellum::testing {
namespace {

class WizardTest : public DialogTest {
 protected:
  void SetUp() override {
    DialogTest::SetUp();
    settings::NewAnimationWizardWelcome = 0;
    settings::DefaultAnimationType = 1;
    for (const char* name : {"a2.png", "a10.PNG", "b.bmp", ".hidden.png", "c.gif"})
      EXPECT_TRUE(GraphicFileWrite((folder_ / name).string(), sample_picture(60, 40, 8)));
    QFile(path_text(folder_ / "notes.txt")).open(QIODevice::WriteOnly);
    settings::NewAnimationWizardPath = (folder_.path() / "").string();
  }
  static QStringList names(const ThumbnailList& list) {
    QStringList names;
    for (const QString& path : list.paths()) names << QFileInfo(path).fileName();
    return names;
  }
  static QStringList texts(const QMenu& menu) {
    QStringList texts;
    for (const QAction* action : menu.actions()) texts << action->text();
    return texts;
  }
  static QStringList chosen_menu(WizardDialog& dialog, int row) {
    QMenu menu;
    dialog.fill_chosen_menu(menu, row);
    return texts(menu);
  }
  static void choose(ThumbnailList& list, std::initializer_list<int> rows) {
    list.clearSelection();
    for (const int row : rows)
      list.selectionModel()->select(list.model()->index(row, 0), QItemSelectionModel::Select);
  }
  static QPushButton* button(WizardDialog& dialog, const char* text) {
    for (QPushButton* button : dialog.findChildren<QPushButton*>())
      if (button->text() == text) return button;
    return nullptr;
  }
};

TEST_F(WizardTest, FilesAreAddedMovedCopiedAndRemovedAndTheButtonsFollow) {
  in_dialog<WizardDialog>(59, [&](WizardDialog& dialog) {
    ThumbnailList &available = dialog.available(), &chosen = dialog.chosen();
    EXPECT_EQ(names(available), QStringList({"b.bmp", "c.gif", "a2.png", "a10.PNG"}));
    EXPECT_EQ(dialog.status(), path_text(folder_.path()) +
                                   "       4 available (0 selected)       0 in animation (0 selected)");
    QPushButton *add = button(dialog, "A&dd"), *build = button(dialog, "&Build");
    EXPECT_TRUE(!add->isEnabled() && !build->isEnabled());
    choose(available, {1});
    add->click();
    EXPECT_FALSE(build->isEnabled()) << "one picture is no animation";
    EXPECT_EQ(chosen_menu(dialog, 0).count("T&est"), 0);
    choose(available, {0, 2, 3});
    add->click();
    EXPECT_TRUE(build->isEnabled());
    EXPECT_EQ(names(chosen), QStringList({"c.gif", "b.bmp", "a2.png", "a10.PNG"}));
    EXPECT_TRUE(dialog.status().endsWith("4 available (3 selected)       4 in animation (3 selected)"));
    EXPECT_EQ(chosen_menu(dialog, 1),
              QStringList({"Select &all", "Select &none", "&Remove from animation", "&Copy", "&Move",
                           "&Preview", "&Thumbnails", "T&est", "", "&Build"}));
    const auto letters = [&] {
      QString all;
      for (const QString& name : names(chosen)) all += name;
      return all;
    };
    for (const auto& [move, to, expected] : {std::tuple(true, 0, "acbd"),
                                             {true, 1, "acbd"},
                                             {true, 2, "bacd"},
                                             {true, 3, "bacd"},
                                             {true, 4, "bdac"},
                                             {false, 0, "acabcd"},
                                             {false, 2, "abaccd"},
                                             {false, 4, "abcdac"}}) {
      chosen.set_paths({"/a", "/b", "/c", "/d"});
      choose(chosen, {0, 2});
      move ? chosen.move_selected(to) : chosen.copy_selected(to);
      EXPECT_EQ(letters(), expected) << move << " to " << to;
      EXPECT_EQ(chosen.selected_rows().size(), 2u);
    }
    QTest::keyClick(&chosen, Qt::Key_Delete);
    EXPECT_EQ(letters(), "abcd");
    choose(chosen, {1});
    QTest::keyClick(&chosen, Qt::Key_Up, Qt::ControlModifier);
    EXPECT_EQ(letters(), "bacd");
    QTest::keyClick(&chosen, Qt::Key_Down, Qt::ControlModifier);
    EXPECT_EQ(letters(), "abcd");
    // From elsewhere pictures alone come in.
    QMimeData dropped;
    dropped.setUrls(
        {QUrl::fromLocalFile("/x.jpg"), QUrl::fromLocalFile("/x.txt"), QUrl::fromLocalFile("/y.WEBP")});
    QDragEnterEvent enter(QPoint(5, 2), Qt::CopyAction, &dropped, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(chosen.viewport(), &enter);
    QDropEvent drop(QPointF(5, 2), Qt::CopyAction, &dropped, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(chosen.viewport(), &drop);
    EXPECT_EQ(letters(), "x.jpgy.WEBPabcd");
  });
}

TEST_F(WizardTest, BuildMakesAnUnsavedDocumentAndTestPlaysOneAndStays) {
  settings::NewAnimationWizardDelay = 70;
  in_dialog<WizardDialog>(59, [&](WizardDialog& dialog) {
    dialog.available().selectAll();
    dialog.add_selected();
    QTest::qWait(300);
    expect_presentable(dialog);
    bool viewed = false;
    QTimer::singleShot(0, qApp, [&] {
      auto* viewer = qobject_cast<ViewerWindow*>(QApplication::activeModalWidget());
      viewed = viewer != nullptr;
      if (viewer) viewer->close();
    });
    dialog.run_test();
    EXPECT_TRUE(viewed);
    EXPECT_TRUE(dialog.isVisible());
    dialog.accept();
    EXPECT_FALSE(dialog.isVisible());
  });
  ASSERT_EQ(documents(), 1u);
  DocumentFrame& made = *main_.area().documents().front();
  EXPECT_EQ(made.document().kind, DocumentKind::MING);
  EXPECT_TRUE(made.document().dirty && !made.document().HasFileName);
  EXPECT_TRUE(made.document().fileName.filename().string().starts_with("AnimationWizard"));
  EXPECT_EQ(frame_entries(made.content()).size(), 4u);
}

TEST_F(WizardTest, SettingsFollowAtOnceAndShiftOpensWithOtherValues) {
  settings::AllowAdvancedPalettes = 1;
  settings::NewAnimationWizardPaletteOption = 5;
  const auto choices = [&](int kind, int advanced) {
    settings::DefaultAnimationType = kind;
    settings::AllowAdvancedPalettes = advanced;
    std::pair<int, int> found;
    in_dialog<WizardDialog>(59, [&](WizardDialog& dialog) {
      auto* palette = dialog.findChild<QComboBox*>();
      found = {palette->count(), palette->currentIndex()};
    });
    return found;
  };
  EXPECT_EQ(choices(1, 1), std::pair(7, 5));
  EXPECT_EQ(choices(0, 0), std::pair(4, 3));
  EXPECT_EQ(choices(2, 1), std::pair(2, 1));
  EXPECT_EQ(settings::NewAnimationWizardPaletteOption, 5) << "only a choice changes it";
  settings::DefaultAnimationType = 1;
  in_dialog<WizardDialog>(59, [&](WizardDialog& dialog) {
    dialog.findChild<QSpinBox*>()->setValue(1234);
    for (QCheckBox* box : dialog.findChildren<QCheckBox*>()) box->setChecked(false);
    QMenu menu;
    dialog.fill_available_menu(menu);
    for (QAction* action : menu.actions())
      if (action->text() == "&Thumbnails") action->trigger();
    EXPECT_FALSE(dialog.available().form().thumbnails);
    dialog.resize(780, 500);
  });
  EXPECT_EQ(settings::NewAnimationWizardDelay, 1234);
  EXPECT_EQ(settings::NewAnimationWizardLoop + settings::WizardPreserveTransparency +
                settings::NewAnimationWizardFileThumbnails,
            0);
  EXPECT_EQ(settings::NewAnimationWizardDialogWide, 780);
  answers_.shift = answers_.control = true;
  in_dialog<WizardDialog>(59, [&](WizardDialog&) {});
  EXPECT_EQ(settings::NewAnimationWizardDelay, 10);
  EXPECT_EQ(settings::NewAnimationWizardLoop, 1);
  EXPECT_EQ(settings::WizardPreserveTransparency, 0);
  EXPECT_EQ(settings::NewAnimationWizardFileThumbnails, 1);
}

TEST_F(WizardTest, ListsFollowTheFolderAndThumbnailsComeByThemselves) {
  in_dialog<WizardDialog>(59, [&](WizardDialog& dialog) {
    choose(dialog.available(), {1});
    ASSERT_TRUE(GraphicFileWrite((folder_ / "a.png").string(), sample_picture(30, 30, 24)));
    QTRY_COMPARE(dialog.available().paths().size(), 5);
    EXPECT_EQ(dialog.available().selected_paths(), QStringList(path_text(folder_ / "c.gif")))
        << "what was selected stays";
  });
  Thumbnails thumbnails(48);
  const QString picture = path_text(folder_ / "b.bmp"), none = path_text(folder_ / "notes.txt");
  EXPECT_FALSE(thumbnails.look(picture).known);
  thumbnails.look(none);
  QTRY_VERIFY(!thumbnails.at_work());
  EXPECT_EQ(thumbnails.look(picture).size, QSize(60, 40));
  EXPECT_EQ(thumbnails.look(picture).detail, "        (60 x 40) 256 colors");
  EXPECT_EQ(thumbnails.look(picture).image.width(), 48);
  EXPECT_TRUE(thumbnails.look(none).known && thumbnails.look(none).image.isNull());
}

TEST_F(WizardTest, ThePreviewFitsByWholePerCentAndTellsThePicture) {
  // (480 - 6) * 100 / 1000 = 47 %; (480 - 26) * 100 / 100 = 454 %.
  EXPECT_EQ(preview_place({1000, 300}, {480, 480}, false), QRect(5, 169, 470, 141));
  EXPECT_EQ(preview_place({100, 100}, {480, 480}, false).size(), QSize(454, 454));
  EXPECT_EQ(preview_place({100, 50}, {480, 480}, true), QRect(190, 215, 100, 50));
  WizardPreview preview(path_text(folder_ / "b.bmp"));
  EXPECT_EQ(preview.text(), "Wait...");
  preview.show();
  QTRY_VERIFY(preview.loaded());
  EXPECT_EQ(preview.text(), "WIDTH: 60 DEPTH: 40 COLOURS: 256");
  QTest::mouseClick(&preview, Qt::LeftButton);
  EXPECT_TRUE(preview.actual());
  QTest::mouseClick(&preview, Qt::RightButton);
  EXPECT_FALSE(preview.isVisible());
  WizardPreview broken(path_text(folder_ / "notes.txt"));
  QTRY_VERIFY(broken.text().startsWith("Error reading file"));
}

}  // namespace
}  // namespace vellum::testing
