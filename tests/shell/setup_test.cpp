#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTabWidget>
#include <QTimer>

#include "base/text.h"
#include "configuration/settings.h"
#include "configuration/shell_settings.h"
#include "core/settings.h"
#include "exchange/settings.h"
#include "extension/settings.h"
#include "shell/forms/number_edit.h"
#include "shell/setup/setup_dialog.h"
#include "shell/setup/setup_fields.h"
#include "shell/setup/theme_dialog.h"
#include "shell/setup/video_encoders.h"
#include "shell_fixture.h"
#include "support/settings_guard.h"

namespace vellum::testing {
namespace {

template <typename Widget>
Widget& input(SetupDialog& dialog, const char* key) {
  auto* widget = dialog.findChild<Widget*>(QLatin1String(key));
  EXPECT_TRUE(widget) << key;
  return *widget;
}

void type(SetupDialog& dialog, const char* key, const char* text) {
  auto& number = input<NumberEdit>(dialog, key);
  number.findChild<QLineEdit*>()->setText(QLatin1String(text));
}

TEST(Setup, EveryFieldHasItsSettingAndItsRangeHoldsTheDefaults) {
  std::set<std::string_view> keys;
  for (const SetupPageRow& page : setup_pages())
    for (const SettingField& row : page.fields) {
      const SettingRow* setting = find_setting(row.field.name);
      ASSERT_TRUE(setting) << row.field.name;
      EXPECT_TRUE(keys.insert(row.field.name).second) << row.field.name << " twice";
      EXPECT_EQ(setting->text != nullptr, row.field.type == FieldType::Text) << row.field.name;
      if (setting->text) continue;
      const std::int64_t shipped = default_value(*setting).number,
                         page_value = row.pageDefault.value_or(shipped);
      for (const std::int64_t value : {shipped, page_value})
        EXPECT_EQ(std::get<std::int64_t>(clamped(row.field, value)), value) << row.field.name;
    }
}

TEST(Setup, OkStoresEveryPageAndCancelNone) {
  const SettingsGuard guard;
  for (const bool ok : {false, true}) {
    SetupDialog dialog;
    input<QCheckBox>(dialog, "CreateBackups").setChecked(true);
    type(dialog, "UndoLevels", "21");
    input<QComboBox>(dialog, "SoftButtons").setCurrentIndex(2);
    dialog.findChild<QTabWidget*>()->setCurrentIndex(2);
    ok ? dialog.accept() : dialog.reject();
    EXPECT_EQ(settings::CreateBackups, ok);
    EXPECT_EQ(settings::UndoLevels, ok ? 21 : 10);
    EXPECT_EQ(settings::SoftButtons, ok ? 2 : 1);
    EXPECT_FALSE(dialog.needs_restart());
    EXPECT_EQ(settings::SetupPageIndex, 2) << "the page comes back either way";
  }
}

TEST(Setup, AValueOutOfItsRangeStaysUntilItsFieldIsChanged) {
  const SettingsGuard guard;
  settings::PngCompression = 0;
  settings::UndoLevels = 1000;
  settings::SetupPageIndex = 77;
  settings::DefaultViewMode = -5;
  settings::SoftButtons = 40;
  settings::CreateBackups = 5;
  {
    SetupDialog dialog;
    EXPECT_EQ(std::get<std::int64_t>(input<NumberEdit>(dialog, "PngCompression").value()), 1);
    EXPECT_EQ(std::get<std::int64_t>(input<NumberEdit>(dialog, "UndoLevels").value()), 32);
    dialog.accept();
  }
  EXPECT_EQ(settings::PngCompression, 0);
  EXPECT_EQ(settings::UndoLevels, 1000);
  EXPECT_EQ(settings::DefaultViewMode, -5);
  EXPECT_EQ(settings::SoftButtons, 40);
  EXPECT_EQ(settings::CreateBackups, 5);
  const struct {
    const char* typed;
    int stored;
  } cases[] = {{"7", 7}, {"99", 9}, {"-3", 1}, {"nonsense", 1}};
  for (const auto& [typed, stored] : cases) {
    SetupDialog dialog;
    type(dialog, "PngCompression", typed);
    dialog.accept();
    EXPECT_EQ(settings::PngCompression, stored) << typed;
  }
}

TEST(Setup, DefaultsAreThePagesOwn) {
  const SettingsGuard guard;
  settings::WEBPQualityFactor = 5;
  settings::HistoryMaximumCount = 50;
  settings::MDIClientColor = 0x123456;
  const struct {
    const char* key;
    int value, page_value;
  } cases[] = {{"InterlaceDelay", 4, 5},
               {"HistoryMaximumCount", 50, 20},
               {"EditListMaximum", 10, 16},
               {"MaximumPreviewDimension", 800, 1024},
               {"AVIQualityFactor", 8500, 6500},
               {"WEBPQualityFactor", 5, 75},
               {"MDIClientColor", 0x123456, 0x808080}};
  for (const auto& c : cases) EXPECT_EQ(*find_setting(c.key)->number, c.value) << c.key;
  {
    SetupDialog dialog;
    dialog.findChild<QTabWidget*>()->setCurrentIndex(1);
    for (QPushButton* button : dialog.findChildren<QPushButton*>())
      if (button->text() == QStringLiteral("&Defaults")) button->click();
    dialog.accept();
    EXPECT_EQ(settings::HistoryMaximumCount, 20);
    EXPECT_EQ(settings::WEBPQualityFactor, 5) << "another page";
  }
  SetupDialog dialog;
  dialog.set_all_defaults();
  dialog.accept();
  EXPECT_TRUE(dialog.needs_restart() || settings::MaximumPreviewDimension == 1024);
  for (const auto& c : cases) EXPECT_EQ(*find_setting(c.key)->number, c.page_value) << c.key;
}

TEST(Setup, BelowEachOtherItsFieldsFitANarrowScreen) {
  constexpr int kNarrow = 800 * 2 / 3 - 80;  // 800 pixels at scale 1.5, less the edges of the dialog
  for (const SetupPageRow& row : setup_pages()) {
    EXPECT_LE(SettingPage(row.fields, 1).minimumSizeHint().width(), kNarrow) << row.name;
    if (row.columns > 1) {
      EXPECT_GT(SettingPage(row.fields, row.columns).minimumSizeHint().width(), kNarrow) << row.name;
    }
  }
}

class SetupCommand : public WindowTest {
 protected:
  /// Does something to the dialog that opens, and closes it.
  void with_dialog(std::function<void(SetupDialog&)> act) {
    QTimer::singleShot(0, qApp, [act] {
      auto* dialog = qobject_cast<SetupDialog*>(QApplication::activeModalWidget());
      ASSERT_TRUE(dialog);
      act(*dialog);
      dialog->accept();
    });
    main_.run(54);
    settle();
  }
  SettingsGuard guard_;
};

TEST_F(SetupCommand, SettingsWithAStarCloseTheProgramUnlessAWindowRefuses) {
  for (int page = 0; page < 3; ++page) {
    settings::SetupPageIndex = page;
    with_dialog([](SetupDialog&) {});
  }
  EXPECT_TRUE(answers_.messages.empty());
  DocumentFrame& frame = add(still_document());
  frame.document().dirty = true;
  answers_.answers = {Answer::Cancel};
  with_dialog([](SetupDialog& dialog) {
    type(dialog, "RememberFileHistoryCount", "3");
    input<QCheckBox>(dialog, "RememberFileHistoryEnable").setChecked(false);
  });
  ASSERT_EQ(answers_.messages.size(), 1u);
  EXPECT_EQ(answers_.messages.front().id, StringId::SetupRestart);
  EXPECT_EQ(answers_.questions.size(), 1u);
  EXPECT_TRUE(main_.isVisible()) << "the window refused";
  frame.document().dirty = false;
  with_dialog([](SetupDialog& dialog) { type(dialog, "MaximumPreviewDimension", "900"); });
  EXPECT_FALSE(main_.isVisible());
}

TEST_F(SetupCommand, ShiftOpensItWithTheDefaultsAndTheWindowFollowsAtOnce) {
  settings::PngCompression = 2;
  settings::EditListMaximum = 16, settings::MaximumPreviewDimension = 1024;
  answers_.shift = true;
  with_dialog(
      [](SetupDialog& dialog) { input<QComboBox>(dialog, "MDIClientBackground").setCurrentIndex(1); });
  EXPECT_EQ(settings::PngCompression, 9);
  EXPECT_TRUE(answers_.messages.empty());
  const QImage shown = main_.area().viewport()->grab().toImage();
  EXPECT_LT(qGray(shown.pixel(2, shown.height() - 2)), qGray(shown.pixel(2, 2))) << "shaded downward";
}

TEST(PaintSearchBox, KeepsAProgramThatItDoesNotFindAndStoresWhatWasChosen) {
  const SettingsGuard guard;
  const PaintChoice own{"mypaint", "/opt/bin/mypaint", false};
  const auto answer = [](bool first) {
    QTimer::singleShot(0, qApp, [first] {
      auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      ASSERT_TRUE(dialog);
      if (first) dialog->findChild<QListWidget*>()->setCurrentRow(0);
      dialog->accept();
    });
  };
  answer(false);
  EXPECT_EQ(ask_for_paint_program(nullptr, own), own);
  store_paint_choice(own);
  EXPECT_EQ(settings::UseWindowsPaintbrush, 0);
  EXPECT_EQ(stored_paint_choice(), own);
  answer(true);
  const auto desktop = ask_for_paint_program(nullptr, own);
  ASSERT_TRUE(desktop);
  store_paint_choice(*desktop);
  EXPECT_EQ(settings::UseWindowsPaintbrush, 1);
  EXPECT_EQ(settings::PaintbrushPath, "");
}

TEST(Setup, AThemeIsSeenAtOnceKeptByOkAndTakenBackByCancel) {
  const SettingsGuard guard;
  settings::ThemeCurrent = kDefaultTheme;
  const std::filesystem::path faulty = program_folder().parent_path() / "faulty_themes";
  const std::vector<std::filesystem::path> folders = {program_folder() / "theme", faulty / "0", faulty / "3"};
  std::vector<StringId> told;
  Host host;
  host.message = [&told](const Message& message) { told.push_back(message.id); };
  const auto window = [] { return QApplication::palette().color(QPalette::Window); };
  const QColor own = window();
  const auto choose = [&](const char* file, bool ok) {
    ThemeDialog dialog(folders, host);
    dialog.choose(file);
    const QColor seen = window();
    const bool can = dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->isEnabled();
    dialog.done(ok && can ? QDialog::Accepted : QDialog::Rejected);
    return seen;
  };
  EXPECT_LT(choose("THEME_Dark_x64.so", false).lightness(), 60);
  EXPECT_EQ(window(), own);
  EXPECT_EQ(choose("theme_Fault3_X64.so", true), own) << "it can be listed and not used";
  EXPECT_EQ(settings::ThemeCurrent, kDefaultTheme);
  const QColor light = choose("THEME_Light_x64.so", true);
  EXPECT_EQ(window(), light);
  EXPECT_EQ(settings::ThemeCurrent, "THEME_Light_x64.so");
  EXPECT_EQ(theme_metric(VELLUM_METRIC_TOOLBAR_HEIGHT, 7), 42);
  EXPECT_TRUE(told.empty());
  EXPECT_EQ(choose("theme_Fault0_X64.so", true), light) << "it waits for the next start";
  EXPECT_EQ(told, std::vector{StringId::ThemeRestart});
  EXPECT_EQ(start_theme(folders), "");
  EXPECT_EQ(theme_metric(VELLUM_METRIC_TOOLBAR_HEIGHT, 7), 256);
  EXPECT_EQ(theme_metric(VELLUM_METRIC_GAP, 7), 7);
  QImage drawn(20, 20, QImage::Format_RGB32);
  QPainter painter(&drawn);
  const auto draw = [&](ThemePart part, const char* text) {
    const DrawnPart made = draw_theme_part(*theme_in_force(), part, painter, drawn.rect(), 0, text, 101);
    return std::pair(made.drawn, made.text);
  };
  EXPECT_EQ(draw(ThemePart::Button, "drawn"), std::pair(true, true));
  EXPECT_EQ(draw(ThemePart::Button, "failed"), std::pair(false, false));
  EXPECT_EQ(draw(ThemePart::Tool, ""), std::pair(true, false));
  settings::ThemeCurrent = "THEME_Gone_x64.so";
  EXPECT_NE(start_theme(folders), "");
  choose(kDefaultTheme, true);
  EXPECT_EQ(window(), own);
  EXPECT_FALSE(theme_in_force());
}

}  // namespace
}  // namespace vellum::testing
