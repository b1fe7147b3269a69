#include "shell/window/start_screens.h"

#include <QCheckBox>
#include <QClipboard>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QTextEdit>
#include <QTimer>
#include <QWizard>
#include <fstream>

#include "batch/settings.h"
#include "configuration/config_file.h"
#include "configuration/shell_settings.h"
#include "core/settings.h"
#include "exchange/settings.h"
#include "shell/dialogs/system_information.h"
#include "shell/forms/default_folders.h"
#include "shell/help/help_window.h"
#include "shell/look/text.h"
#include "shell/start/splash.h"
#include "shell/start/tips.h"
#include "shell/start/welcome_choices.h"
#include "shell_fixture.h"
#include "support/settings_guard.h"

namespace vellum::testing {
namespace {

class StartScreens : public WindowTest {
 protected:
  StartScreens() {
    const std::string file = (folder_ / "start.ini").string();
    std::ofstream(file) << ini_;
    config_open(file);
    settings::ShowWelcomeWizard = 0;
    settings::ShowTipOfTheDay = 0;
  }
  ~StartScreens() override { config_open(folder_ / "none.ini"); }

  template <typename Widget>
  static Widget* shown(const char* name = "") {
    for (QWidget* widget : QApplication::topLevelWidgets())
      if (auto* found = qobject_cast<Widget*>(widget);
          found && found->isVisible() && (!*name || found->objectName() == QLatin1String(name)))
        return found;
    return nullptr;
  }
  static void close_all() {
    for (QWidget* widget : QApplication::topLevelWidgets())
      if (widget->isVisible() && !qobject_cast<MainWindow*>(widget)) widget->close();
    QTest::qWait(5);
  }
  const SettingsGuard guard_;
  const char* ini_ = "[Vellumcraft]\nLogoDelay = 1\n[CONFIGSECTION]\nLogoDelay = 60\n";
};

TEST_F(StartScreens, TheSplashGoesWithTimeAKeyAClickOrAnythingElse) {
  const std::function<void()> enders[] = {
      [] { QTest::qWait(150); },
      [this] { QTest::keyClick(&main_, Qt::Key_Shift); },
      [this] { QTest::mouseClick(main_.area().viewport(), Qt::LeftButton); },
      [this] { add(still_document()); },
  };
  for (const auto& end : enders) {
    settings::ShowStartupWindow = 1;
    show_start_screens(main_);
    EXPECT_TRUE(shown<Splash>()) << "case " << &end - enders;
    end();
    settle();
    EXPECT_FALSE(shown<Splash>()) << "case " << &end - enders;
  }
  show_start_screens(main_);
  EXPECT_FALSE(shown<Splash>()) << "a document is open";
}

TEST_F(StartScreens, TheWizardComesOnceAndATipOnceADay) {
  settings::ShowStartupWindow = 0;
  settings::ShowTipOfTheDay = 1;
  settings::ShowWelcomeWizard = 1;
  const auto start = [this] {
    show_start_screens(main_);
    QTest::qWait(20);
  };
  start();
  EXPECT_TRUE(shown<QWizard>());
  EXPECT_FALSE(shown<QDialog>("TipOfTheDay"));
  close_all();
  start();
  EXPECT_FALSE(shown<QWizard>());
  EXPECT_TRUE(shown<QDialog>("TipOfTheDay"));
  close_all();
  start();
  EXPECT_FALSE(shown<QDialog>("TipOfTheDay")) << "shown today";
  settings::LastTipDate = 20200229;
  answers_.busy = true;
  start();
  EXPECT_FALSE(shown<QDialog>("TipOfTheDay")) << "an operation runs";
  answers_.busy = false;
  settings::ShowTipOfTheDay = 0;
  start();
  EXPECT_FALSE(shown<QDialog>("TipOfTheDay"));
}

TEST(Tips, AreManyAndComeInTurnFromAnyNumber) {
  const SettingsGuard guard;
  EXPECT_GE(tips().size(), 30u);
  const std::set<QString> different(tips().begin(), tips().end());
  EXPECT_EQ(different.size(), tips().size());
  const int count = static_cast<int>(tips().size());
  for (const auto& [from, next] :
       {std::pair(0, 1), {count - 1, 0}, {-7, 1}, {count + 3, 4}, {2147483647, 2147483647 % count + 1}}) {
    settings::TipOfTheDay = from;
    EXPECT_EQ(take_tip(), tips()[static_cast<std::size_t>(next == 0 ? count - 1 : next - 1)]) << from;
    EXPECT_EQ(settings::TipOfTheDay, next % count) << from;
  }
}

TEST_F(StartScreens, ATipCanBeFollowedByTheNextAndSwitchedOff) {
  settings::ShowTipOfTheDay = 1;
  main_.run(136);
  QDialog* dialog = shown<QDialog>("TipOfTheDay");
  ASSERT_TRUE(dialog);
  const QString first = dialog->findChild<QTextEdit*>()->toPlainText();
  for (QPushButton* button : dialog->findChildren<QPushButton*>())
    if (button->text() == QStringLiteral("&Next tip")) button->click();
  EXPECT_NE(dialog->findChild<QTextEdit*>()->toPlainText(), first);
  EXPECT_EQ(settings::TipOfTheDay, 2);
  dialog->findChild<QCheckBox*>()->setChecked(false);
  EXPECT_EQ(settings::ShowTipOfTheDay, 0);
  close_all();
}

TEST_F(StartScreens, TheWizardStoresAtItsEndAndNothingBefore) {
  settings::ShowWelcomeWizard = 1;
  const auto choose = [](QWizard& wizard, const char* text) {
    for (QRadioButton* button : wizard.findChildren<QRadioButton*>())
      if (button->text() == QLatin1String(text)) return button->click();
    FAIL() << text;
  };
  for (const bool finish : {false, true}) {
    main_.run(2907);
    QWizard* wizard = shown<QWizard>();
    ASSERT_TRUE(wizard);
    EXPECT_EQ(settings::ShowWelcomeWizard, 0);
    choose(*wizard, "Look into files and repair them");
    wizard->next();
    choose(*wizard, "WebP");
    wizard->next();
    wizard->next();
    finish ? wizard->accept() : wizard->reject();
    settle();
    EXPECT_EQ(settings::DefaultAnimationType, finish ? 2 : 1);
    EXPECT_EQ(settings::DefaultViewMode, finish ? 0 : 5);
    EXPECT_EQ(settings::CreateBackups, finish ? 1 : 0);
  }
}

TEST(Welcome, ChoicesComeBack) {
  const SettingsGuard guard;
  for (const Work work : {Work::Chunks, Work::Animations, Work::Both}) {
    WelcomeChoices choices = stored_choices();
    choices.work = work;
    suit_work(choices);
    store_choices(choices);
    EXPECT_EQ(stored_choices().work, work);
  }
}

TEST_F(StartScreens, SystemInformationGoesToTheClipboard) {
  QTimer::singleShot(0, qApp, [] {
    auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    ASSERT_TRUE(dialog);
    for (QPushButton* button : dialog->findChildren<QPushButton*>())
      if (button->text() == QStringLiteral("C&opy")) button->click();
    dialog->reject();
  });
  main_.run(903);
  EXPECT_TRUE(QGuiApplication::clipboard()->text().contains(QStringLiteral("libdeflate: ")));
}

TEST_F(StartScreens, ContentsOpenTheGuideAndAskFirstWhereThatIsWanted) {
  settings::WarnShowManual = 1;
  answers_.answers = {Answer::No};
  main_.run(52);
  EXPECT_EQ(answers_.questions.size(), 1u);
  EXPECT_FALSE(shown<HelpWindow>());
  settings::WarnShowManual = 0;
  for (const bool shift : {false, true}) {
    answers_.shift = shift;
    main_.run(52);
    ASSERT_TRUE(shown<HelpWindow>());
    EXPECT_EQ(shown<HelpWindow>()->view().page(), QLatin1String(shift ? kGuideIndex : kGuideStart));
  }
  EXPECT_EQ(answers_.questions.size(), 1u);
  close_all();
}

TEST(DefaultFolders, AreFilledInOnlyWhereNothingStandsAndMadeOnFirstUse) {
  const SettingsGuard guard;
  const ScratchFolder home;
  const std::string old_home = qgetenv("HOME").toStdString();
  qputenv("HOME", (home / "").string().c_str());
  settings::OpenPath = "/somewhere";
  fill_default_folders();
  EXPECT_EQ(settings::OpenPath, "/somewhere");
  EXPECT_TRUE(settings::OpenImportPath.ends_with("/My Vellumcraft 15 Documents/"));
  EXPECT_TRUE(settings::SaveMovieSoundPath.ends_with("/My Vellumcraft 15 Documents/default.wav"));
  EXPECT_TRUE(settings::MDIClientImage.ends_with("/Vellumcraft Background.bmp"));
  EXPECT_FALSE(std::filesystem::exists(settings::OpenImportPath));
  const QString made = usable_folder(settings::OpenImportPath);
  EXPECT_TRUE(std::filesystem::is_directory(settings::OpenImportPath));
  EXPECT_EQ(made.toStdString(), settings::OpenImportPath);
  EXPECT_TRUE(std::filesystem::is_directory(usable_folder("/no/such/folder").toStdString()));
  // A home that nobody can write to, not even the superuser.
  qputenv("HOME", "/proc");
  settings::OpenPath.clear();
  fill_default_folders();
  EXPECT_TRUE(std::filesystem::is_directory(usable_folder(settings::OpenPath).toStdString()));
  qputenv("HOME", old_home.c_str());
}

}  // namespace
}  // namespace vellum::testing
