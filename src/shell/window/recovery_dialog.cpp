#include "shell/window/recovery_dialog.h"

#include <QDateTime>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QTreeWidget>
#include <algorithm>

#include "shell/look/text.h"
#include "shell/widgets/dialog_frame.h"

namespace vellum {
namespace {

constexpr QSize kRows(560, 200);

QString name_of(const RecoveryNote& note) {
  Document document;
  document.kind = note.kind;
  document.fileName = note.fileName;
  return path_text(std::filesystem::path(document_title(document)).filename());
}

}  // namespace

RecoveryDialog::RecoveryDialog(Recovery& recovery, const std::vector<RecoveryNote>& notes, Host& host,
                               QWidget* parent)
    : QDialog(parent), recovery_(recovery), host_(host), notes_(notes), rows_(new QTreeWidget(this)) {
  setObjectName(QStringLiteral("RecoveryDialog"));
  setWindowTitle(text_of(StringId::RecoveryTitle));
  rows_->setAccessibleName(tr("Copies"));
  rows_->setHeaderLabels({tr("Name"), tr("Kind"), tr("Kept"), tr("Folder")});
  rows_->setRootIsDecorated(false);
  rows_->setSelectionMode(QAbstractItemView::ExtendedSelection);
  rows_->setMinimumSize(kRows);
  fill(notes);

  auto* buttons = add_buttons(*this, {}, QStringLiteral("RECOVERY"));
  const auto button = [&](StringId text, QDialogButtonBox::ButtonRole role) {
    return buttons->addButton(text_of(text), role);
  };
  auto* recover = button(StringId::RecoverButton, QDialogButtonBox::ActionRole);
  auto* discard = button(StringId::DeleteCopiesButton, QDialogButtonBox::ActionRole);
  button(StringId::RecoverLaterButton, QDialogButtonBox::RejectRole);
  recover->setDefault(true);
  connect(recover, &QPushButton::clicked, this, &RecoveryDialog::recover_selected);
  connect(discard, &QPushButton::clicked, this, &RecoveryDialog::delete_selected);
  connect(rows_, &QTreeWidget::itemDoubleClicked, this, &RecoveryDialog::recover_selected);
  const auto enable = [this, recover, discard] {
    const bool any = !rows_->selectedItems().isEmpty();
    recover->setEnabled(any);
    discard->setEnabled(any);
  };
  connect(rows_, &QTreeWidget::itemSelectionChanged, this, enable);

  QVBoxLayout* layout = dialog_layout(*this);
  auto* text = new QLabel(text_of(StringId::RecoveryFound));
  text->setWordWrap(true);
  layout->addWidget(text);
  layout->addWidget(rows_, 1);
  layout->addWidget(buttons);
  rows_->selectAll();
  rows_->setFocus();
}

void RecoveryDialog::fill(const std::vector<RecoveryNote>& notes) {
  for (const RecoveryNote& note : notes) {
    const QString made = QLocale().toString(QDateTime::fromSecsSinceEpoch(note.made), QLocale::ShortFormat);
    const QString folder = note.hasFileName ? path_text(note.fileName.parent_path()) : tr("(not saved yet)");
    new QTreeWidgetItem(rows_, {name_of(note), kind_text(note.kind), made, folder});
  }
  for (int column = 0; column < rows_->columnCount(); ++column) rows_->resizeColumnToContents(column);
}

std::vector<RecoveryNote> RecoveryDialog::selected() const {
  std::vector<RecoveryNote> notes;
  for (std::size_t i = 0; i < notes_.size(); ++i)
    if (rows_->topLevelItem(static_cast<int>(i))->isSelected()) notes.push_back(notes_[i]);
  return notes;
}

void RecoveryDialog::take(const RecoveryNote& note) {
  const auto at = std::ranges::find(notes_, note.path, &RecoveryNote::path);
  delete rows_->takeTopLevelItem(static_cast<int>(at - notes_.begin()));
  notes_.erase(at);
  if (notes_.empty()) accept();
}

void RecoveryDialog::recover_selected() {
  for (const RecoveryNote& note : selected())
    if (recovery_.recover(note))
      take(note);
    else
      host_.show(StringId::CopyUnreadable, StringId::RecoveryTitle, name_of(note).toStdString());
}

void RecoveryDialog::delete_selected() {
  const Message question{StringId::DeleteCopiesQuestion,
                         StringId::RecoveryTitle,
                         std::string(string_text(StringId::DeleteCopiesQuestion)),
                         {},
                         nullptr};
  if (host_.ask && host_.ask(question, false) != Answer::Yes) return;
  for (const RecoveryNote& note : selected()) {
    std::error_code error;
    std::filesystem::remove(note.path, error);
    take(note);
  }
}

void offer_recovery(Recovery& recovery, MainWindow& window) {
  const auto notes = recovery.find();
  if (!notes.empty()) RecoveryDialog(recovery, notes, window.services().host, &window).exec();
  recovery.leave();
}

}  // namespace vellum
