// Dialog state: every kind of control through its file and back.
#include "shell/forms/dialog_state.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLineEdit>
#include <QListWidget>
#include <QRadioButton>
#include <QScrollBar>
#include <QSpinBox>
#include <fstream>

#include "shell/forms/color_button.h"
#include "shell_fixture.h"

namespace vellum::testing {
namespace {

/// A dialog with one control of each kind; `list` are the lines of its lists.
struct Sample {
  explicit Sample(const QStringList& list = {"one", "two", "three"}) {
    for (QComboBox* box : {&byIndex, &byText}) box->addItems(list);
    rows.addItems(list);
    number.setRange(-5, 5);
    real.setRange(0, 10);
    const std::pair<QWidget*, const char*> named[] = {
        {&check, "check"},     {&byIndex, "byIndex"}, {&byText, "byText"}, {&color, "color"},
        {&text, "text"},       {&number, "number"},   {&real, "real"},     {&first, "choice_0"},
        {&second, "choice_1"}, {&bar, "bar"},         {&rows, "rows"}};
    for (const auto& [widget, name] : named) {
      widget->setParent(&dialog);
      widget->setObjectName(QLatin1String(name));
    }
  }
  std::vector<DialogStateRow> table() {
    return {{1, "UINT", "", &plain},
            {2, "CHKB", "check"},
            {3, "CBOX", "byIndex"},
            {4, "CBSL", "byText"},
            {5, "CBTN", "color"},
            {6, "TEDT", "text"},
            {7, "SPNI", "number"},
            {8, "SPNF", "real", nullptr, 1, 3},
            {10, "RADB", "choice", nullptr, 2},
            {20, "SCRB", "bar"},
            {21, "LSTB", "rows"}};
  }

  QDialog dialog;
  QCheckBox check;
  QComboBox byIndex, byText;
  ColorButton color{true};
  QLineEdit text;
  QSpinBox number;
  QDoubleSpinBox real;
  QRadioButton first, second;
  QScrollBar bar;
  QListWidget rows;
  std::uint32_t plain = 0;
};

const char* const kLines =
    "DlgItem_000001=UINT,4294967295\nDlgItem_000002=CHKB,1\nDlgItem_000003=CBOX,2\nDlgItem_000004=CBSL,two\n"
    "DlgItem_000005=CBTN,4278190335\nDlgItem_000006=TEDT,a,b\\\\n\nDlgItem_000007=SPNI,-3\n"
    "DlgItem_000008=SPNF,2.500\nDlgItem_000011=RADB,1\nDlgItem_000020=SCRB,40\nDlgItem_000021=LSTB,1\n";

TEST(DialogState, EveryControlComesBack) {
  const ScratchFolder folder;
  std::ofstream(folder / "in.txt") << "; a comment\n" << kLines << "Other=CHKB,0\n";
  Sample sample;
  restore_dialog_state(sample.dialog, sample.table(), folder / "in.txt");
  EXPECT_EQ(sample.plain, 0xFFFFFFFFu);
  EXPECT_TRUE(sample.check.isChecked());
  EXPECT_EQ(sample.byIndex.currentIndex(), 2);
  EXPECT_EQ(sample.byText.currentText(), "two");
  EXPECT_EQ(sample.color.color(), 0xFF0000FFu);
  EXPECT_EQ(sample.text.text(), "a,b\\n");
  EXPECT_EQ(sample.number.value(), -3);
  EXPECT_EQ(sample.real.value(), 2.5);
  EXPECT_TRUE(sample.second.isChecked());
  EXPECT_EQ(sample.bar.value(), 40);
  EXPECT_EQ(sample.rows.currentRow(), 1);
  store_dialog_state(sample.dialog, sample.table(), folder / "out.txt");
  EXPECT_EQ(file_text(folder / "out.txt"), kLines);
}

TEST(DialogState, WhatDoesNotFitIsLeftOut) {
  const ScratchFolder folder;
  std::ofstream(folder / "in.txt")
      << "DlgItem_000003=CBOX,9\nDlgItem_000004=CBSL,gone\nDlgItem_000002=CBOX,1\n"
         "DlgItem_000007=SPNI,99999999999\nDlgItem_000012=RADB,1\nDlgItem_=CHKB,1\n"
         "DlgItem_000002=CHKB\nDlgItem_000021=LSTB,-4\n";
  Sample sample;
  restore_dialog_state(sample.dialog, sample.table(), folder / "in.txt");
  EXPECT_EQ(sample.byIndex.currentIndex(), 0);
  EXPECT_EQ(sample.byText.currentIndex(), 0);
  EXPECT_FALSE(sample.check.isChecked());
  EXPECT_EQ(sample.number.value(), 5) << "brought within its range";
  EXPECT_FALSE(sample.second.isChecked());
  restore_dialog_state(sample.dialog, sample.table(), folder / "missing.txt");

  // Another version of the dialog lacks a control: the rest comes back.
  std::ofstream(folder / "all.txt") << kLines;
  Sample other;
  other.check.setObjectName(QStringLiteral("elsewhere"));
  restore_dialog_state(other.dialog, other.table(), folder / "all.txt");
  EXPECT_FALSE(other.check.isChecked());
  EXPECT_EQ(other.bar.value(), 40);
  store_dialog_state(other.dialog, other.table(), folder / "out.txt");
  EXPECT_EQ(file_text(folder / "out.txt").find("000002"), std::string::npos);
}

}  // namespace
}  // namespace vellum::testing
