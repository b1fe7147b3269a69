#include "shell/dialogs/folder_line.h"

#include <QDir>
#include <QFileInfo>
#include <QLineEdit>

#include "batch/settings.h"
#include "configuration/config_file.h"
#include "configuration/history.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr const char* kHistoryName = "QDXBatchProcessorHistory.txt";

std::vector<std::string> kept_folders() {
  auto folders = load_history(config_path(kHistoryName), HistoryKind::Texts);
  const auto most = static_cast<std::size_t>(std::clamp(settings::BPDestHistoryMax, 1, 64));
  if (folders.size() > most) folders.resize(most);
  return folders;
}

}  // namespace

FolderLine::FolderLine(QWidget* parent) : QComboBox(parent) {
  setEditable(true);
  setInsertPolicy(NoInsert);
  setAccessibleName(tr("Folder"));
  setSizeAdjustPolicy(AdjustToMinimumContentsLengthWithIcon);
  setMinimumContentsLength(12);
  for (const std::string& folder : kept_folders()) addItem(to_qt(folder));
  rest_.setSingleShot(true);
  rest_.setInterval(std::clamp(settings::BPEditFieldDelay, 0, 10'000));
  connect(&rest_, &QTimer::timeout, this, &FolderLine::take);
  connect(lineEdit(), &QLineEdit::textEdited, this, [this] { rest_.start(); });
  connect(lineEdit(), &QLineEdit::returnPressed, this, &FolderLine::take);
  connect(this, &QComboBox::activated, this, &FolderLine::take);
}

void FolderLine::show_folder(const QString& folder) {
  rest_.stop();
  // Who types sees what was typed.
  if (QDir::cleanPath(currentText()) != folder) setEditText(folder);
}

void FolderLine::remember(const QString& folder) {
  keep_in_history(config_path(kHistoryName), folder.toStdString(), HistoryKind::Texts);
}

void FolderLine::take() {
  rest_.stop();
  const QString folder = QDir::cleanPath(currentText());
  if (QFileInfo(folder).isDir()) emit folder_chosen(folder);
}

}  // namespace vellum
