#include "shell/dialogs/combine_dialog.h"

#include <QPushButton>
#include <QVBoxLayout>
#include <fstream>

#include "configuration/config_file.h"
#include "operations/combine.h"
#include "operations/second_file.h"
#include "shell/dialogs/document_browser.h"
#include "shell/look/style.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr int kRowHeight = 48;  // pixels
constexpr const char* kFileList = "CombineFiles.txt";

const DocumentWindow& no_document() {
  static const DocumentWindow nothing;
  return nothing;
}

QStringList kept_files() {
  QStringList files;
  std::ifstream in(config_path(kFileList));
  for (std::string line; std::getline(in, line);)
    if (!line.empty() && std::filesystem::exists(line)) files << to_qt(line);
  return files;
}

void keep_files(const std::vector<std::string>& files) {
  std::ofstream out(config_path(kFileList));
  for (const std::string& file : files)
    if (file.find('\n') == std::string::npos && !lent_document(file)) out << file << '\n';
}

}  // namespace

CombineDialog::CombineDialog(Services& services, QWidget* parent)
    : ParameterDialog(kCombine, no_document(), {}, services, parent),
      thumbnails_(2 * kRowHeight),
      list_(new ThumbnailList([this](const QString& path) { return look_of_document(thumbnails_, path); },
                              this)) {
  list_->setObjectName(QStringLiteral("files"));
  list_->setAccessibleName(text_of(StringId::CombinedFilesTitle));
  list_->set_form({.height = kRowHeight});
  list_->set_takes_files(true);
  list_->setMinimumSize(9 * kRowHeight, 4 * kRowHeight);
  auto* outer = static_cast<QBoxLayout*>(layout());
  outer->insertWidget(0, list_, 1);
  outer->insertWidget(1, make_buttons());
  connect(this, &QDialog::accepted, this, [this] { keep_files(files()); });
  connect(list_, &ThumbnailList::edited, this, &CombineDialog::update_buttons);
  connect(list_, &ThumbnailList::files_dropped, this,
          [this](int row, const QStringList& paths) { list_->insert_paths(row, paths); });
  connect(&thumbnails_, &Thumbnails::made, list_, &ThumbnailList::refresh_looks);
  begin();
  add_files(kept_files());
  list_->clearSelection();
  update_buttons();
}

QWidget* CombineDialog::make_buttons() {
  list_->set_hint(tr("Add animations, or drop them here"));
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
    add_files(browse_documents(
        {.title = text_of(StringId::CombinedFilesTitle), .button = tr("&Add"), .several = true}, this));
  });
  add(tr("R&emove"), [this] { list_->remove_selected(); });
  add(tr("Move &up"), [this] { move_selected(-1); });
  add(tr("Move &down"), [this] { move_selected(1); });
  line->addStretch(1);
  return row;
}

void CombineDialog::add_files(const QStringList& files) {
  list_->insert_paths(static_cast<int>(list_->paths().size()), files);
}

std::vector<std::string> CombineDialog::files() const {
  std::vector<std::string> names;
  for (const QString& path : list_->paths()) names.push_back(path.toStdString());
  return names;
}

void CombineDialog::move_selected(int by) {
  const auto rows = list_->selected_rows();
  if (rows.empty()) return;
  const int to = by < 0 ? rows.front() - 1 : rows.back() + 2;
  if (to >= 0 && to <= static_cast<int>(list_->paths().size())) list_->move_selected(to);
}

void CombineDialog::update_buttons() {
  buttons().button(QDialogButtonBox::Ok)->setEnabled(!list_->paths().isEmpty());
}

}  // namespace vellum
