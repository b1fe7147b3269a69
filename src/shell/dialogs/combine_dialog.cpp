#include "shell/dialogs/combine_dialog.h"

#include <QDragEnterEvent>
#include <QFileDialog>
#include <QMimeData>
#include <QPushButton>
#include <QVBoxLayout>
#include <fstream>

#include "configuration/config_file.h"
#include "configuration/shell_settings.h"
#include "operations/combine.h"
#include "shell/forms/default_folders.h"
#include "shell/look/style.h"
#include "shell/look/text.h"
#include "shell/services/file_dialogs.h"
#include "shell/services/file_thumbnail.h"

namespace vellum {
namespace {

constexpr int kThumbnail = 48;  // pixels
constexpr const char* kFileList = "CombineFiles.txt";

const DocumentWindow& no_document() {
  static const DocumentWindow nothing;
  return nothing;
}

std::vector<std::filesystem::path> kept_files() {
  std::vector<std::filesystem::path> files;
  std::ifstream in(config_path(kFileList));
  for (std::string line; std::getline(in, line);)
    if (!line.empty() && std::filesystem::exists(line)) files.emplace_back(line);
  return files;
}

void keep_files(const std::vector<std::string>& files) {
  std::ofstream out(config_path(kFileList));
  for (const std::string& file : files)
    if (file.find('\n') == std::string::npos) out << file << '\n';
}

}  // namespace

CombineDialog::CombineDialog(Services& services, QWidget* parent)
    : ParameterDialog(kCombine, no_document(), {}, services, parent), list_(new QListWidget(this)) {
  setAcceptDrops(true);
  list_->setObjectName(QStringLiteral("files"));
  list_->setAccessibleName(text_of(StringId::CombinedFilesTitle));
  list_->setIconSize({kThumbnail, kThumbnail});
  list_->setDragDropMode(QAbstractItemView::InternalMove);
  list_->setSelectionMode(QAbstractItemView::ExtendedSelection);
  auto* outer = static_cast<QBoxLayout*>(layout());
  outer->insertWidget(0, list_, 1);
  outer->insertWidget(1, make_buttons());
  connect(this, &QDialog::accepted, this, [this] { keep_files(files()); });
  connect(list_->model(), &QAbstractItemModel::rowsInserted, this, &CombineDialog::update_buttons);
  connect(list_->model(), &QAbstractItemModel::rowsRemoved, this, &CombineDialog::update_buttons);
  begin();
  add_files(kept_files());
  update_buttons();
}

QWidget* CombineDialog::make_buttons() {
  auto* row = new QWidget(this);
  auto* line = new QHBoxLayout(row);
  line->setContentsMargins(0, 0, 0, 0);
  line->setSpacing(style::kGap);
  const auto add = [&](const QString& text, const auto& work) {
    auto* button = new QPushButton(text, row);
    button->setAutoDefault(false);
    line->addWidget(button);
    connect(button, &QPushButton::clicked, this, work);
  };
  add(tr("&Add..."), [this] {
    const QStringList names = QFileDialog::getOpenFileNames(
        this, text_of(StringId::CombinedFilesTitle), usable_folder(settings::RecentFolder), open_filters());
    std::vector<std::filesystem::path> files;
    for (const QString& name : names) files.push_back(to_path(name));
    if (!files.empty()) settings::RecentFolder = files.front().parent_path().string();
    add_files(files);
  });
  add(tr("R&emove"), [this] { qDeleteAll(list_->selectedItems()); });
  add(tr("Move &up"), [this] { move_current(-1); });
  add(tr("Move &down"), [this] { move_current(1); });
  line->addStretch(1);
  return row;
}

void CombineDialog::add_files(const std::vector<std::filesystem::path>& files) {
  for (const auto& file : files) {
    auto* item = new QListWidgetItem(to_qt(file.filename().string()), list_);
    item->setData(Qt::UserRole, to_qt(file.string()));
    item->setToolTip(to_qt(file.string()));
    if (const QImage image = file_thumbnail(file, kThumbnail); !image.isNull())
      item->setIcon(QIcon(QPixmap::fromImage(image)));
  }
}

std::vector<std::string> CombineDialog::files() const {
  std::vector<std::string> names;
  for (int i = 0; i < list_->count(); ++i)
    names.push_back(list_->item(i)->data(Qt::UserRole).toString().toStdString());
  return names;
}

void CombineDialog::move_current(int by) {
  const int row = list_->currentRow(), to = row + by;
  if (row < 0 || to < 0 || to >= list_->count()) return;
  list_->insertItem(to, list_->takeItem(row));
  list_->setCurrentRow(to);
}

void CombineDialog::update_buttons() {
  buttons().button(QDialogButtonBox::Ok)->setEnabled(list_->count() > 0);
}

void CombineDialog::dragEnterEvent(QDragEnterEvent* event) {
  if (event->mimeData()->hasUrls()) event->acceptProposedAction();
}

void CombineDialog::dropEvent(QDropEvent* event) {
  std::vector<std::filesystem::path> files;
  for (const QUrl& url : event->mimeData()->urls())
    if (url.isLocalFile()) files.push_back(to_path(url.toLocalFile()));
  add_files(files);
}

}  // namespace vellum
