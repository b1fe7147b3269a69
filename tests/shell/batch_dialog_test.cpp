// The window of the batch processor: files are chosen, worked on and written, and a person is asked where
// something stands.
#include "shell/dialogs/batch_dialog.h"

#include <QCheckBox>
#include <QDir>
#include <QPushButton>
#include <QTreeWidget>
#include <fstream>

#include "batch/settings.h"
#include "configuration/setting_table.h"
#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "operations/frames.h"
#include "shell/dialogs/batch_progress.h"
#include "shell/dialogs/operation_dialog.h"
#include "shell/dialogs/overwrite_prompt.h"
#include "shell/forms/form_dialog.h"
#include "shell/look/text.h"
#include "shell_fixture.h"

namespace vellum::testing {
namespace {

class BatchDialogTest : public DialogTest {
 protected:
  void SetUp() override {
    DialogTest::SetUp();
    std::filesystem::create_directory(folder_ / "in");
    std::filesystem::create_directory(folder_ / "out");
    for (const char* name : {"a.png", "b.png", "c.png"}) {
      DocumentWindow window = animated_document(3);
      Host host;
      ASSERT_TRUE(save_document(window, folder_ / "in" / name, host));
    }
    std::ofstream(folder_ / "in" / "bad.png") << "no picture";
    settings::BatchProcessorPath = (folder_ / "in").string();
    settings::BatchProcessorDestPath = (folder_ / "out").string();
    settings::BPOverwriteMode = 1;
    connect();
  }

  /// Answers the windows of a run as they come.
  void connect() {
    QObject::connect(&machine_, &QTimer::timeout, [this] {
      QWidget* top = QApplication::activeModalWidget();
      if (auto* operation = qobject_cast<OperationDialog*>(top)) return operation->accept();
      if (auto* setup = qobject_cast<FormDialog*>(top)) return setup->accept();
      if (auto* prompt = qobject_cast<OverwritePrompt*>(top)) {
        expect_presentable(*prompt);
        ++prompts_;
        prompt->choose(answer_);
        prompt->findChild<QCheckBox*>()->setChecked(true);
        return prompt->accept();
      }
      if (auto* progress = qobject_cast<BatchProgress*>(top)) {
        if (progress->at_work()) return;
        rows_ = progress->rows();
        expect_presentable(*progress);
        return progress->accept();
      }
      if (auto* other = qobject_cast<QDialog*>(top); other && other->objectName() == "DestinationDialog") {
        expect_presentable(*other);
        other->accept();
      }
    });
  }

  std::vector<BatchResult> run(BatchDialog& dialog, OverwriteAnswer answer) {
    answer_ = answer;
    rows_.clear();
    machine_.start(5);
    EXPECT_TRUE(dialog.run());
    machine_.stop();
    std::vector<BatchResult> results;
    for (const BatchRow& row : rows_) results.push_back(row.result);
    return results;
  }
  QStringList out() const { return QDir(path_text(folder_ / "out")).entryList(QDir::Files, QDir::Name); }

  /// All settings.
  static std::vector<std::string> settings_now() {
    std::vector<std::string> values;
    for (const SettingRow& row : setting_table())
      values.push_back(row.text ? *row.text : std::to_string(*row.number));
    return values;
  }

  QTimer machine_;
  OverwriteAnswer answer_ = OverwriteAnswer::Skip;
  int prompts_ = 0;
  std::vector<BatchRow> rows_;
};

TEST_F(BatchDialogTest, RunsOverTheSelectedFilesAndAsksWhereSomethingStands) {
  using enum BatchResult;
  in_dialog<BatchDialog>(331, [&](BatchDialog& dialog) {
    expect_presentable(dialog);
    ASSERT_TRUE(QTest::qWaitFor([&] { return dialog.files().paths().size() == 4; }, 5000));
    EXPECT_FALSE(dialog.run());
    ASSERT_EQ(answers_.messages.size(), 1u);
    EXPECT_EQ(answers_.messages[0].id, StringId::SelectionNotFound);
    dialog.files().selectAll();
    dialog.choose({.operation = find_operation("flip")});
    EXPECT_EQ(run(dialog, OverwriteAnswer::Skip), (std::vector{Ok, Ok, BadRead, Ok}));
    EXPECT_EQ(out(), QStringList({"FlipRotate_a.png", "FlipRotate_b.png", "FlipRotate_c.png"}));
    EXPECT_EQ(prompts_, 0);
    EXPECT_EQ(run(dialog, OverwriteAnswer::Skip), (std::vector{Skipped, Skipped, BadRead, Skipped}));
    EXPECT_EQ(prompts_, 1) << "one answer holds for the rest";
    EXPECT_EQ(run(dialog, OverwriteAnswer::KeepBoth), (std::vector{Ok, Ok, BadRead, Ok}));
    EXPECT_TRUE(out().contains("FlipRotate_c (2).png"));
    const auto cancelled = run(dialog, OverwriteAnswer::Cancel);
    EXPECT_EQ(std::ranges::count(cancelled, Ok), 0);
    EXPECT_EQ(out().size(), 6);
    settings::BPUseRecycleBin = 0;
    dialog.files().clearSelection();
    dialog.files().selectionModel()->select(dialog.files().model()->index(0, 0), QItemSelectionModel::Select);
    dialog.delete_selected(true);
    EXPECT_FALSE(std::filesystem::exists(folder_ / "in" / "a.png"));
    EXPECT_EQ(answers_.questions.back().id, StringId::DeleteThisQuestion);
    const auto kept = settings_now();
    machine_.start(5);
    dialog.findChild<QPushButton*>("setup")->click();
    machine_.stop();
    EXPECT_EQ(settings_now(), kept) << "what nobody changed stays";
  });
  // The wizard's command with Shift leads here, too. A place is kept; a folder elsewhere is shown all the
  // same.
  answers_.shift = true;
  in_dialog<BatchDialog>(59, [&](BatchDialog& dialog) {
    auto* place = dialog.findChild<QComboBox*>("place");
    EXPECT_EQ(place->currentIndex(), 0);
    const int home = place->findData(QDir::cleanPath(QDir::homePath()));
    ASSERT_GT(home, 0);
    place->setCurrentIndex(home);
    emit place->activated(home);
    EXPECT_EQ(dialog.folder(), QDir::cleanPath(QDir::homePath()));
    EXPECT_EQ(place->currentIndex(), home);
    EXPECT_EQ(settings::BatchProcessorSpecialFolder, 1);
    dialog.show_folder(QStringLiteral("/"));
    EXPECT_EQ(place->currentIndex(), 0);
  });
}

}  // namespace
}  // namespace vellum::testing
