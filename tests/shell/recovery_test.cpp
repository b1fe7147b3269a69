// Copies of changed documents while the program runs, and what a start makes of those that a crash left.
#include "shell/window/recovery.h"

#include <QPushButton>
#include <QTreeWidget>

#include "core/edit/undo.h"
#include "shell/services/saving.h"
#include "shell/window/recovery_dialog.h"
#include "shell_fixture.h"
#include "support/documents.h"

namespace vellum::testing {
namespace {

namespace fs = std::filesystem;

class RecoveryTest : public WindowTest {
 protected:
  std::vector<fs::path> copies() const {
    std::vector<fs::path> found;
    for (const auto& item : fs::recursive_directory_iterator(store_))
      if (item.path().extension() == ".copy") found.push_back(item.path());
    return found;
  }
  DocumentFrame& add_changed(const std::string& name) {
    DocumentWindow content = small_document(DocumentKind::APNG, 2);
    content.document.fileName = folder_ / name;
    content.document.HasFileName = true;
    content.document.dirty = true;
    return add(std::move(content));
  }
  static void change(DocumentFrame& frame) {
    Host host;
    undo_push(frame.content(), host);
    frame.entries().remove(frame.entries().size() - 2);
    frame.document().dirty = true;
  }
  /// What a program leaves that ended in the middle of its work: a copy, and a lock that nobody has.
  void leave_copy(const std::string& name) {
    DocumentWindow content = small_document(DocumentKind::APNG, 2);
    content.document.fileName = folder_ / name;
    content.document.HasFileName = true;
    const auto crashed = RecoveryFolder::create(store_);
    ASSERT_TRUE(crashed && write_recovery_copy(content, crashed->copy_path(1), 1'000'000'000));
  }

  fs::path store_ = folder_ / "recovery";
};

TEST_F(RecoveryTest, ChangedDocumentsAreCopiedOnceAndUnchangedOnesNot) {
  Recovery recovery(main_, store_);
  add(small_document(DocumentKind::PING, 1));
  recovery.keep_changed();
  recovery.wait();
  EXPECT_FALSE(fs::exists(store_)) << "nothing was changed";

  DocumentFrame& frame = add_changed("a.png");
  recovery.keep_changed();
  recovery.wait();
  ASSERT_EQ(copies().size(), 1u);
  const fs::path copy = copies()[0];
  fs::last_write_time(copy, fs::file_time_type{});
  QTest::qWait(50);  // behind the rest that a copy is given
  recovery.keep_changed();
  recovery.wait();
  EXPECT_EQ(fs::last_write_time(copy), fs::file_time_type{}) << "it was written again";

  change(frame);
  const auto again = [&] {
    recovery.keep_changed();
    recovery.wait();
    return fs::last_write_time(copy) != fs::file_time_type{};
  };
  EXPECT_TRUE(QTest::qWaitFor(again));
  DocumentWindow read;
  ASSERT_TRUE(read_recovery_copy(copy, read));
  EXPECT_EQ(read.list.size(), frame.entries().size());
}

TEST_F(RecoveryTest, ACopyFollowsAnEditByItselfWithWhatUndoTakesBack) {
  Recovery recovery(main_, store_);
  DocumentFrame& frame = add_changed("a.png");
  change(frame);
  main_.refresh();
  constexpr int kMostMilliseconds = 20'000;
  ASSERT_TRUE(QTest::qWaitFor([&] { return fs::exists(store_) && copies().size() == 1; }, kMostMilliseconds));
  recovery.wait();
  DocumentWindow read;
  ASSERT_TRUE(read_recovery_copy(copies()[0], read));
  EXPECT_EQ(read.list.size(), frame.entries().size());
  ASSERT_TRUE(undo_pop(read));
  EXPECT_EQ(read.list.size(), frame.entries().size() + 1);
}

TEST_F(RecoveryTest, CopiesGoWithSavingClosingAndTheEnd) {
  {
    Recovery recovery(main_, store_);
    DocumentFrame& saved = add_changed("a.png");
    DocumentFrame& closed = add_changed("b.png");
    add_changed("c.png");
    recovery.keep_changed();
    recovery.wait();
    EXPECT_EQ(copies().size(), 3u);
    ASSERT_TRUE(save(saved.content(), main_.services()));
    main_.refresh();
    EXPECT_EQ(copies().size(), 2u);
    closed.close_without_question();
    EXPECT_TRUE(QTest::qWaitFor([&] { return copies().size() == 1; }));
    // One that is saved while its copy is being written.
    DocumentFrame& quick = add_changed("d.png");
    recovery.keep_changed();
    quick.document().dirty = false;
    recovery.wait();
    EXPECT_EQ(copies().size(), 1u);
  }
  EXPECT_TRUE(copies().empty());
  EXPECT_TRUE(RecoveryFolder::abandoned(store_).empty());
}

TEST_F(RecoveryTest, NothingIsSaidWhereNothingCanBeKept) {
  Recovery recovery(main_, "/proc/none/recovery");
  add_changed("a.png");
  recovery.keep_changed();
  recovery.wait();
  offer_recovery(recovery, main_);
  EXPECT_TRUE(answers_.messages.empty());
}

TEST_F(RecoveryTest, NothingIsCopiedInTheMiddleOfAnOperation) {
  Recovery recovery(main_, store_);
  add_changed("a.png");
  answers_.busy = true;
  recovery.keep_changed();
  recovery.wait();
  EXPECT_FALSE(fs::exists(store_));
}

TEST_F(RecoveryTest, ARecoveredDocumentIsAsItWasAndIsKeptUntilItIsSaved) {
  leave_copy("lost.png");
  Recovery recovery(main_, store_);
  const auto notes = recovery.find();
  ASSERT_EQ(notes.size(), 1u);
  ASSERT_TRUE(recovery.recover(notes[0]));
  recovery.leave();
  settle();
  ASSERT_EQ(documents(), 1u);
  DocumentFrame& frame = *main_.area().active();
  EXPECT_TRUE(frame.document().dirty);
  EXPECT_EQ(frame.document().fileName, folder_ / "lost.png");
  EXPECT_EQ(tags_of(frame.entries()), tags_of(small_document(DocumentKind::APNG, 2).list));
  EXPECT_EQ(copies().size(), 1u);
  EXPECT_TRUE(RecoveryFolder::abandoned(store_).empty());
  ASSERT_TRUE(save(frame.content(), main_.services()));
  main_.refresh();
  EXPECT_TRUE(copies().empty());
  EXPECT_TRUE(fs::exists(folder_ / "lost.png"));
}

TEST_F(RecoveryTest, TheDialogRecoversDeletesAndLeaves) {
  for (const char* name : {"a.png", "b.png", "c.png"}) leave_copy(name);
  Recovery recovery(main_, store_);
  Answers& answers = answers_;
  {
    RecoveryDialog dialog(recovery, recovery.find(), main_.services().host, &main_);
    dialog.show();
    auto* rows = dialog.findChild<QTreeWidget*>();
    const auto press = [&dialog](StringId text) {
      for (QPushButton* button : dialog.findChildren<QPushButton*>())
        if (button->text() == QString::fromUtf8(string_text(text).data())) return button->click();
      FAIL() << "no such button";
    };
    ASSERT_EQ(rows->topLevelItemCount(), 3);
    const auto choose = [&](const char* name) {
      rows->clearSelection();
      rows->findItems(QString::fromLatin1(name), Qt::MatchExactly).at(0)->setSelected(true);
    };
    choose("b.png");
    press(StringId::RecoverButton);
    EXPECT_EQ(documents(), 1u);
    EXPECT_EQ(rows->topLevelItemCount(), 2);
    choose("a.png");
    answers.answers = {Answer::No, Answer::Yes};
    press(StringId::DeleteCopiesButton);
    EXPECT_EQ(copies().size(), 3u);
    press(StringId::DeleteCopiesButton);
    EXPECT_EQ(copies().size(), 2u);
    press(StringId::RecoverLaterButton);
    EXPECT_FALSE(dialog.isVisible());
  }
  recovery.leave();
  EXPECT_EQ(recovery.find().size(), 1u) << "what was left is offered again";
}

TEST_F(RecoveryTest, ACopyThatCantBeReadIsToldAndStays) {
  leave_copy("a.png");
  Recovery recovery(main_, store_);
  const auto notes = recovery.find();
  ASSERT_EQ(notes.size(), 1u);
  fs::resize_file(notes[0].path, fs::file_size(notes[0].path) - 1);
  RecoveryDialog dialog(recovery, notes, main_.services().host, &main_);
  dialog.findChildren<QPushButton*>();
  emit dialog.findChild<QTreeWidget*>()->itemDoubleClicked(nullptr, 0);
  EXPECT_EQ(documents(), 0u);
  ASSERT_EQ(answers_.messages.size(), 1u);
  EXPECT_EQ(answers_.messages[0].id, StringId::CopyUnreadable);
  EXPECT_EQ(copies().size(), 1u);
}

}  // namespace
}  // namespace vellum::testing
