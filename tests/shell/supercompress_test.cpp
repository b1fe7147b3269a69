// Supercompress on the desktop: the boxes follow the document and the settings, a run makes a window.
#include <QCheckBox>
#include <QPushButton>

#include "operations/frames.h"
#include "operations/settings.h"
#include "shell/dialogs/supercompress_dialog.h"
#include "shell_fixture.h"

namespace vellum::testing {
namespace {

using SupercompressDialogTest = DialogTest;

TEST_F(SupercompressDialogTest, TellsWhatItDoesAndMakesAWindowOfTheResult) {
  DocumentFrame& frame = add(animated_document(3));
  const auto before = frame.content().list.entry(frame_entries(frame.content())[1]).record;
  settings::SupercompressionOptions = kTextPass | kPrunePass | kRedundancyPass;
  in_dialog<SupercompressDialog>(111, [&](SupercompressDialog& dialog) {
    expect_presentable(dialog);
    const auto box = [&](const char* name) { return dialog.findChild<QCheckBox*>(name); };
    EXPECT_FALSE(box("palette")->isEnabled() || box("redundancy")->isEnabled() ||
                 box("stripText")->isEnabled());
    EXPECT_TRUE(box("prune")->isChecked());
    EXPECT_FALSE(box("redundancy")->isChecked() || box("deep")->isChecked());
    auto* list = dialog.findChild<QListWidget*>("status");
    auto* ok = dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok);
    EXPECT_EQ(list->item(0)->text(), "Searching...");
    EXPECT_FALSE(ok->isEnabled());
    box("prune")->click();
    dialog.start();
    EXPECT_EQ(list->item(list->count() - 1)->text(), "No compression was achieved.");
    EXPECT_FALSE(ok->isEnabled());
    box("prune")->click();
    box("deep")->click();
    box("close")->click();
    EXPECT_TRUE(settings::SupercompressionOptions & kCloseWhenDone) << "at once";
    dialog.findChild<QPushButton*>("start")->click();
    EXPECT_FALSE(dialog.isVisible()) << "it closes by itself";
  });
  ASSERT_EQ(documents(), 2u);
  DocumentFrame& made = *main_.area().documents().back();
  EXPECT_TRUE(made.document().fileName.string().starts_with("Supercompressed_"));
  EXPECT_TRUE(made.document().dirty && !made.document().HasFileName);
  EXPECT_EQ(settings::SupercompressionOptions,
            int{kTextPass | kPrunePass | kRedundancyPass | kDeepPass | kCloseWhenDone});
  EXPECT_EQ(frame.content().list.entry(frame_entries(frame.content())[1]).record, before);
}

}  // namespace
}  // namespace vellum::testing
