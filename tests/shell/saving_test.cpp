#include "shell/services/saving.h"

#include <QMimeData>
#include <fstream>

#include "core/files/save_document.h"
#include "shell/services/file_dialogs.h"
#include "shell/window/file_watch.h"
#include "shell_fixture.h"

namespace vellum::testing {
namespace {

namespace fs = std::filesystem;

TEST(Saving, NamesGetTheExtensionOfTheirKind) {
  struct Case {
    const char* name;
    DocumentKind kind;
    const char* expected;
  };
  constexpr Case cases[] = {
      {"a.png", DocumentKind::PING, "a.png"},   {"a.PNG", DocumentKind::APNG, "a.PNG"},
      {"a.apng", DocumentKind::APNG, "a.png"},  {"a.apng", DocumentKind::PING, "a.png"},
      {"a.webp", DocumentKind::PING, "a.png"},  {"a", DocumentKind::PING, "a.png"},
      {"a.v2", DocumentKind::PING, "a.v2.png"}, {"a.png", DocumentKind::MING, "a.mng"},
      {"a.mng", DocumentKind::WEBP, "a.webp"},  {"/x.mng/a", DocumentKind::APNG, "/x.mng/a.png"},
  };
  for (const Case& c : cases) EXPECT_EQ(with_kind_extension(c.name, c.kind), c.expected) << c.name;
}

TEST(FileDialogs, OfferEachFormatInSmallAndCapitalLetters) {
  const QStringList filters = open_filters().split(QStringLiteral(";;"));
  for (const char* extension : {"png", "PNG", "mng", "MNG", "webp", "WEBP", "gif", "GIF"})
    EXPECT_TRUE(filters.front().contains(QStringLiteral("*.%1").arg(QLatin1String(extension)))) << extension;
  EXPECT_EQ(filters[1].toStdString(), "PNG (*.png *.PNG *.apng *.APNG)");
  const QStringList pictures = picture_filters(false).split(QStringLiteral(";;"));
  for (const char* name : {"a.png", "b.GIF", "c.webp", "d.x.bmp"}) {
    const int fitting = filter_of_name(pictures.join(QStringLiteral(";;")), name);
    const auto extension = std::filesystem::path(name).extension().string().substr(1);
    EXPECT_TRUE(pictures[fitting].contains(QString::fromStdString("*." + extension))) << name;
  }
  EXPECT_EQ(filter_of_name(pictures.join(QStringLiteral(";;")), "none"), 0);
}

TEST_F(WindowTest, AFileThatAnotherProgramWritesIsToldOnce) {
  const fs::path path = folder_ / "a.png";
  DocumentWindow still = still_document();
  ASSERT_TRUE(save_document(still, path, main_.services().host));
  const FileWatch watch(main_);
  ASSERT_TRUE(main_.open(path));
  DocumentFrame& frame = *main_.area().active();
  ASSERT_TRUE(save(frame.content(), main_.services()));  // its own saving is no news
  QTest::qWait(800);
  EXPECT_TRUE(frame.document().notes.empty());
  const auto bytes = file_text(path);
  fs::remove(path);
  std::ofstream(path, std::ios::binary) << bytes;
  fs::last_write_time(path, fs::last_write_time(path) + std::chrono::seconds(5));
  EXPECT_TRUE(QTest::qWaitFor([&] { return !frame.document().notes.empty(); }, 5000));
  QTest::qWait(800);
  EXPECT_EQ(frame.document().notes.size(), 1u);
}

class SavingTest : public ::testing::Test {
 protected:
  SavingTest() : services_(answers_.services()) {}
  /// A document that was loaded from a file of this name.
  DocumentWindow loaded(const std::string& name) {
    DocumentWindow window = still_document();
    window.document.fileName = folder_ / name;
    window.document.HasFileName = true;
    EXPECT_TRUE(save_document(window, window.document.fileName, services_.host));
    return window;
  }

  ScratchFolder folder_;
  Answers answers_;
  Services services_;
};

TEST_F(SavingTest, ADocumentWithoutANameOfItsOwnAsksForOne) {
  DocumentWindow untitled = still_document();
  answers_.save = folder_ / "new";
  EXPECT_TRUE(save(untitled, services_));
  EXPECT_EQ(untitled.document.fileName, folder_ / "new.png");
  EXPECT_TRUE(untitled.document.HasFileName);
  EXPECT_FALSE(file_text(folder_ / "new.png").empty());

  DocumentWindow stated = loaded("UnTitled.png");
  answers_.save = folder_ / "untitled.png";
  EXPECT_TRUE(save(stated, services_));
  EXPECT_EQ(stated.document.fileName, folder_ / "untitled.png");

  DocumentWindow named = loaded("named.png");
  EXPECT_TRUE(save(named, services_));
  ASSERT_EQ(answers_.saveChoices.size(), 2u);
  EXPECT_EQ(answers_.saveChoices[0].name, "untitled.png");
}

TEST_F(SavingTest, AFailedOrCancelledSaveAsBringsTheOldNameBack) {
  for (const bool had_name : {true, false})
    for (const std::optional<fs::path>& chosen :
         {std::optional(folder_ / "no such folder/a.png"), std::optional<fs::path>()}) {
      DocumentWindow window = loaded("old.png");
      window.document.HasFileName = had_name;
      window.document.dirty = true;
      answers_.save = chosen;
      answers_.messages.clear();
      EXPECT_FALSE(save_as(window, services_));
      EXPECT_EQ(window.document.fileName, folder_ / "old.png");
      EXPECT_EQ(window.document.HasFileName, had_name);
      EXPECT_TRUE(window.document.dirty);
      EXPECT_EQ(answers_.messages.size(), chosen ? 1u : 0u);
    }
}

TEST_F(SavingTest, AFrameLargerThanTheFirstIsRefusedBeforeANameIsAskedFor) {
  DocumentWindow window = animated_document(2);
  ChunkRecord frame = window.list.record(3);
  frame.frameControl.frameWidth += 1;
  chunk_list_put(window.list, 3, frame);
  EXPECT_FALSE(save(window, services_));
  EXPECT_TRUE(answers_.saveChoices.empty());
  ASSERT_EQ(answers_.messages.size(), 1u);
  EXPECT_EQ(answers_.messages[0].id, StringId::FrameTooLarge);
}

TEST_F(SavingTest, AFileThatAnotherProgramChangedIsAskedAbout) {
  DocumentWindow window = loaded("shared.png");
  std::ofstream(folder_ / "shared.png") << "another";
  fs::last_write_time(folder_ / "shared.png", window.document.fileTime + std::chrono::seconds(5));
  answers_.answers = {Answer::No};
  EXPECT_FALSE(save(window, services_));
  EXPECT_EQ(file_text(folder_ / "shared.png"), "another");
  ASSERT_EQ(answers_.questions.size(), 1u);
  EXPECT_NE(answers_.questions[0].text.find((folder_ / "shared.png").string()), std::string::npos);
  answers_.answers = {Answer::Yes};
  EXPECT_TRUE(save(window, services_));
  EXPECT_NE(file_text(folder_ / "shared.png"), "another");
  EXPECT_TRUE(save(window, services_));
  EXPECT_EQ(answers_.questions.size(), 2u);
  fs::remove(folder_ / "shared.png");
  EXPECT_TRUE(save(window, services_)) << "a file that is gone can't be lost";
}

struct CloseCase {
  const char* name;
  bool dirty;
  Answer answer;
  bool save_works;
  bool closes;
  std::size_t questions;
};

constexpr CloseCase kCloses[] = {
    {"clean", false, Answer::Cancel, true, true, 0},          {"No", true, Answer::No, true, true, 1},
    {"Cancel", true, Answer::Cancel, true, false, 1},         {"Yes", true, Answer::Yes, true, true, 1},
    {"Yes, not written", true, Answer::Yes, false, false, 1},
};

class ClosingTest : public WindowTest {
 protected:
  DocumentFrame& add_modified(const std::string& name) {
    DocumentWindow content = still_document();
    content.document.fileName = folder_ / name;
    content.document.HasFileName = content.document.dirty = true;
    return add(std::move(content));
  }
};

TEST_F(ClosingTest, AsksWhetherChangesAreSaved) {
  for (const CloseCase& c : kCloses) {
    answers_.questions.clear();
    DocumentFrame& frame = add_modified(c.save_works ? "good.png" : "no folder/bad.png");
    frame.document().dirty = c.dirty;
    answers_.answers = {c.answer};
    fs::remove(folder_ / "good.png");
    main_.run(106);
    settle();
    EXPECT_EQ(documents() == 0, c.closes) << c.name;
    EXPECT_EQ(answers_.questions.size(), c.questions) << c.name;
    EXPECT_EQ(fs::exists(folder_ / "good.png"), c.dirty && c.answer == Answer::Yes && c.save_works) << c.name;
    if (!c.closes) {
      EXPECT_TRUE(frame.document().dirty);
      frame.close_without_question();
      settle();
    }
  }
}

TEST_F(ClosingTest, CancelStopsTheWholeRowOfWindows) {
  for (const int command : {109, 55}) {
    for (const char* name : {"a.png", "b.png", "c.png"}) add_modified(name);
    answers_.answers = {Answer::No, Answer::Cancel};
    main_.run(command);
    settle();
    EXPECT_EQ(documents(), 2u) << command;
    EXPECT_TRUE(main_.isVisible()) << command;
    answers_.answers = {Answer::No, Answer::No};
    main_.run(109);
    settle();
    EXPECT_EQ(documents(), 0u) << command;
  }
  main_.run(55);
  EXPECT_FALSE(main_.isVisible());
}

TEST_F(ClosingTest, CloseAllWithShiftLosesChangesWithoutAQuestion) {
  for (const char* name : {"a.png", "b.png"}) add_modified(name);
  answers_.shift = true;
  main_.run(109);
  settle();
  EXPECT_EQ(documents(), 0u);
  EXPECT_TRUE(answers_.questions.empty());
}

class OpeningTest : public ClosingTest {
 protected:
  fs::path written(const std::string& name) {
    DocumentWindow window = still_document();
    EXPECT_TRUE(save_document(window, folder_ / name, main_.services().host));
    return folder_ / name;
  }
};

TEST_F(OpeningTest, AFileIsShownAndABadOneLeavesNoWindow) {
  EXPECT_TRUE(main_.open(written("a.png")));
  ASSERT_EQ(documents(), 1u);
  EXPECT_EQ(main_.area().active()->entries().size(), 3u);
  EXPECT_TRUE(main_.commands().action(57)->isEnabled());
  std::ofstream(folder_ / "bad.png") << "no picture at all";
  EXPECT_FALSE(main_.open(folder_ / "bad.png"));
  EXPECT_FALSE(main_.open(folder_ / "missing.png"));
  settle();
  EXPECT_EQ(documents(), 1u);
  EXPECT_EQ(answers_.messages.size(), 2u);
  EXPECT_TRUE(main_.commands().action(57)->isEnabled());
  answers_.open = written("b.png");
  main_.run(58);
  EXPECT_EQ(documents(), 2u);
}

TEST_F(OpeningTest, EachDroppedFileIsOpened) {
  QMimeData data;
  data.setUrls({QUrl::fromLocalFile(QString::fromStdString(written("a b.png"))),
                QUrl::fromLocalFile(QString::fromStdString(written("c#%20.png"))),
                QUrl("https://example.org/d.png")});
  QDragEnterEvent enter({50, 50}, Qt::CopyAction, &data, Qt::LeftButton, {});
  QApplication::sendEvent(&main_, &enter);
  EXPECT_TRUE(enter.isAccepted());
  QDropEvent drop({50, 50}, Qt::CopyAction, &data, Qt::LeftButton, {});
  QApplication::sendEvent(&main_, &drop);
  settle();
  EXPECT_EQ(documents(), 2u);
  EXPECT_TRUE(answers_.messages.empty());

  QMimeData text;
  text.setText("no file");
  QDragEnterEvent refused({50, 50}, Qt::CopyAction, &text, Qt::LeftButton, {});
  refused.setAccepted(false);
  QApplication::sendEvent(&main_, &refused);
  EXPECT_FALSE(refused.isAccepted());
}

}  // namespace
}  // namespace vellum::testing
