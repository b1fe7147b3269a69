#include "shell/help/guide.h"

#include <QDir>
#include <QLabel>
#include <QListWidget>
#include <QRegularExpression>
#include <QTextBlock>
#include <QTimer>
#include <QToolButton>

#include "core/chunks/chunk_field_sets.h"
#include "core/model/tags.h"
#include "shell/forms/form_dialog.h"
#include "shell/help/help_window.h"
#include "shell/help/page_style.h"
#include "shell/look/style.h"
#include "shell/setup/setup_fields.h"
#include "shell_fixture.h"
#include "support/settings_guard.h"

namespace vellum::testing {
namespace {

QString guide_folder() { return QString::fromStdString((source_folder() / "docs/guide").string()); }

QStringList links_of(const QString& text, bool pictures) {
  static const QRegularExpression link(QStringLiteral("(!?)\\[[^\\]]*\\]\\(([^)]+)\\)"));
  QStringList found;
  for (auto at = link.globalMatch(text); at.hasNext();)
    if (const auto match = at.next(); match.captured(1).isEmpty() != pictures) found << match.captured(2);
  return found;
}

TEST(Guide, EveryLinkAndPictureLeadsSomewhereAndEveryPageIsListed) {
  const QDir folder(guide_folder());
  QStringList listed;
  for (const GuideEntry& entry : parse_contents(guide_text(guide_folder(), QLatin1String(kGuideIndex))))
    if (!entry.page.isEmpty()) listed << entry.page;
  for (const QString& page : folder.entryList({QStringLiteral("*.md")})) {
    const QString text = guide_text(guide_folder(), page);
    EXPECT_TRUE(text.startsWith(u'#')) << page.toStdString();
    EXPECT_TRUE(page == QLatin1String(kGuideIndex) || listed.count(page) == 1) << page.toStdString();
    for (const bool pictures : {false, true})
      for (const QString& link : links_of(text, pictures))
        EXPECT_TRUE(folder.exists(link)) << page.toStdString() << " leads to " << link.toStdString();
  }
}

TEST(Guide, EveryDialogAndEveryEditorHasItsPage) {
  QStringList topics = {"NEW",    "PROPERTIES", "MANAGE", "IMAGESTRIP", "SETUP",   "PAINT",    "CODEC",
                        "TIPS",   "WELCOME",    "SYSTEM", "ABOUT",      "FILE",    "EDIT",     "INSERT",
                        "WINDOW", "HELP",       "CHUNK",  "COLOR",      "PALETTE", "RECOVERY", "RESIZE"};
  for (const SetupPageRow& page : setup_pages())
    topics << QStringLiteral("SETUP_") + QLatin1String(page.name);
  for (const auto sets : all_field_sets())
    for (const ChunkFieldSet& set : sets)
      if (set.tag != tag::fdAT) topics << QString::fromStdString("CHUNK_" + tag_letters(set.tag));
  for (const QString& topic : topics)
    EXPECT_EQ(page_of_topic(guide_folder(), topic), topic.toLower() + QStringLiteral(".md"));
  EXPECT_EQ(page_of_topic(guide_folder(), QStringLiteral("CHUNK_../x")), QStringLiteral("chunk.md"));
  EXPECT_EQ(page_of_topic(guide_folder(), QStringLiteral("NO_SUCH_TOPIC")), QLatin1String(kGuideIndex));
  EXPECT_EQ(page_of_topic(guide_folder(), QString()), QLatin1String(kGuideIndex));
}

TEST(Guide, TheFieldsThatAPageOfAnEditorNamesAreThere) {
  static const QRegularExpression row(QStringLiteral("^\\| (`[^|]*`) \\|"),
                                      QRegularExpression::MultilineOption);
  static const QRegularExpression word(QStringLiteral("`(\\w+)`"));
  std::size_t seen = 0;
  for (const auto sets : all_field_sets())
    for (const ChunkFieldSet& set : sets) {
      if (set.tag == tag::PNGI) continue;  // what its blocks hold is on their pages
      std::set<std::string> names;
      for (const ChunkField& field : set.rows) names.insert(field.field.name);
      const QString page =
          page_of_topic(guide_folder(), QString::fromStdString("CHUNK_" + tag_letters(set.tag)));
      const QString text = guide_text(guide_folder(), page);
      for (auto at = row.globalMatch(text); at.hasNext();)
        for (auto words = word.globalMatch(at.next().captured(1)); words.hasNext(); ++seen)
          EXPECT_TRUE(names.contains(words.next().captured(1).toStdString()) || names.empty())
              << page.toStdString() << ": " << text.toStdString();
    }
  EXPECT_GT(seen, 50u);
}

TEST(Guide, ContentsAreReadAsAListWithSteps) {
  const auto entries = parse_contents(
      QStringLiteral("# Title\n\n## Part\n\n- [A](a.md)\n  - [B b](b_c.md)\nText\n- [x](http://x)\n"));
  const std::vector<GuideEntry> expected = {{0, "Part", ""}, {1, "A", "a.md"}, {2, "B b", "b_c.md"}};
  EXPECT_EQ(entries, expected);
}

TEST(Guide, SearchWantsEveryWordAndPutsTitlesFirst) {
  const auto contents = parse_contents(guide_text(guide_folder(), QLatin1String(kGuideIndex)));
  const auto hits = search_guide(guide_folder(), contents, QStringLiteral("image STRIP"));
  ASSERT_FALSE(hits.empty());
  EXPECT_EQ(hits.front().page, QStringLiteral("imagestrip.md"));
  EXPECT_TRUE(search_guide(guide_folder(), contents, QStringLiteral("strip xyzzyplugh")).empty());
  EXPECT_TRUE(search_guide(guide_folder(), contents, QStringLiteral("  ")).empty());
}

TEST(Guide, IsFoundFromTheBuildAndBesideTheProgram) {
  EXPECT_EQ(find_guide(QString::fromStdString(program_folder().string())), guide_folder());
  const ScratchFolder folder;
  const QString root = QString::fromStdString((folder / "").string());
  EXPECT_TRUE(find_guide(root + QStringLiteral("usr/bin")).isEmpty() || !find_guide(root).startsWith(root));
  QDir().mkpath(root + QStringLiteral("usr/share/vellumcraft/docs/guide"));
  QDir().mkpath(root + QStringLiteral("usr/bin"));
  QFile index(root + QStringLiteral("usr/share/vellumcraft/docs/guide/index.md"));
  ASSERT_TRUE(index.open(QIODevice::WriteOnly));
  EXPECT_TRUE(find_guide(root + QStringLiteral("usr/bin"))
                  .endsWith(QStringLiteral("usr/share/vellumcraft/docs/guide")));
}

class HelpTest : public ::testing::Test {
 protected:
  HelpTest() { qputenv("XDG_CONFIG_HOME", (folder_ / "config").string().c_str()); }
  ~HelpTest() override { qputenv("XDG_CONFIG_HOME", before_); }
  const QByteArray before_ = qgetenv("XDG_CONFIG_HOME");
  ScratchFolder folder_;
  const SettingsGuard guard_;
};

TEST_F(HelpTest, WorksBesideADialogThatBlocksTheRest) {
  install_help();
  Host host;
  FormDialog dialog(QStringLiteral("Dialog"), QStringLiteral("CHUNK_tEXt"), {}, {}, host);
  bool reached = false;
  QTimer::singleShot(0, &dialog, [&] {
    dialog.buttons().button(QDialogButtonBox::Help)->click();
    QTest::qWait(20);
    HelpWindow* help = nullptr;
    for (QWidget* widget : QApplication::topLevelWidgets())
      if (auto* window = qobject_cast<HelpWindow*>(widget)) help = window;
    ASSERT_TRUE(help);
    EXPECT_TRUE(help->isVisible());
    EXPECT_EQ(help->view().page(), QStringLiteral("chunk_text.md"));
    // A click has to reach it although the dialog is modal.
    QTreeWidget* tree = help->findChild<QTreeWidget*>();
    EXPECT_EQ(tree->currentItem()->text(0), QStringLiteral("tEXt: text")) << "where the reader is";
    QTreeWidgetItem* first = tree->topLevelItem(0)->child(0);
    tree->scrollToItem(first);
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualItemRect(first).center());
    EXPECT_EQ(help->view().page(), QLatin1String(kGuideStart));
    reached = true;
    help->close();
    dialog.reject();
  });
  dialog.exec();
  EXPECT_TRUE(reached);
  showHelp = nullptr;
}

TEST_F(HelpTest, GoesBackSearchesAndRemembersItsSize) {
  {
    HelpWindow help(guide_folder());
    help.show();
    help.show_page(QStringLiteral("manage.md"));
    help.show_topic(QStringLiteral("SETUP_Files"));
    EXPECT_EQ(help.view().page(), QStringLiteral("setup_files.md"));
    help.view().backward();
    EXPECT_EQ(help.view().page(), QStringLiteral("manage.md"));
    EXPECT_GT(help.view().document()->toPlainText().size(), 200);
    help.findChild<QLineEdit*>()->setText(QStringLiteral("backups"));
    auto* hits = help.findChild<QListWidget*>();
    ASSERT_GT(hits->count(), 0);
    hits->setCurrentRow(0);
    EXPECT_FALSE(help.view().extraSelections().isEmpty());
    help.findChild<QLineEdit*>()->setText(QStringLiteral("xyzzyplugh"));
    EXPECT_EQ(hits->count(), 1);
    hits->setCurrentRow(0);
    help.resize(700, 500);
    help.close();
  }
  const HelpWindow again(guide_folder());
  EXPECT_EQ(again.size(), QSize(700, 500));
}

TEST_F(HelpTest, CanBeReadOnADarkDesktopAndAfterItChanges) {
  const QPalette before = QApplication::palette();
  HelpWindow help(guide_folder());
  help.show();
  help.show_page(QStringLiteral("setup_display.md"));
  for (const QPalette& palette : {dark_palette(), before}) {
    QApplication::setPalette(palette);
    QTest::qWait(5);
    const QTextDocument& page = *help.view().document();
    const QColor text = help.view().palette().color(QPalette::Text);
    std::size_t shaded = 0;
    for (QTextBlock block = page.begin(); block.isValid(); block = block.next())
      for (auto at = block.begin(); !at.atEnd(); ++at) {
        const QBrush ground = at.fragment().charFormat().background();
        if (ground.style() == Qt::NoBrush) continue;
        ++shaded;
        EXPECT_GE(style::contrast(ground.color(), text), 4.5);
      }
    EXPECT_GT(shaded, 20u);
  }
  QApplication::setPalette(before);
}

TEST_F(HelpTest, SaysSoWhereThereIsNoGuide) {
  HelpWindow help{QString()};
  help.show_page(QStringLiteral("start.md"));
  EXPECT_EQ(help.view().toPlainText().toStdString(), string_text(StringId::NoGuide));
}

}  // namespace
}  // namespace vellum::testing
