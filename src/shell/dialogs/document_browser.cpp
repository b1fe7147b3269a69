#include "shell/dialogs/document_browser.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "configuration/shell_settings.h"
#include "operations/frames.h"
#include "operations/second_file.h"
#include "shell/forms/default_folders.h"
#include "shell/look/picture_image.h"
#include "shell/look/style.h"
#include "shell/look/text.h"
#include "shell/widgets/dialog_frame.h"

namespace vellum {
namespace {

constexpr QSize kFirstSize(860, 520), kLeastSize(480, 320);
constexpr int kRowHeight = 56, kLeastTree = 140, kFirstTree = 240;
constexpr int kFilterRest = 150;  // ms

enum BrowserFlag { kThumbnails = 1, kDetails = 2, kAnimations = 4, kSubfolders = 8 };

bool has_flag(int bit) { return (settings::DocumentBrowserFlags & bit) != 0; }

ThumbnailListForm list_form() {
  return {.thumbnails = has_flag(kThumbnails), .details = has_flag(kDetails), .height = kRowHeight};
}

FileLook look_of_lent(const DocumentWindow& window) {
  FileLook look;
  look.known = true;
  const auto entries = frame_entries(window);
  const Extent size = document_size(window.list, window.document);
  look.size = QSize(static_cast<int>(size.width), static_cast<int>(size.height));
  look.animated = entries.size() > 1;
  look.detail = QObject::tr("        (%1 x %2), %n image(s)", nullptr, static_cast<int>(entries.size()))
                    .arg(size.width)
                    .arg(size.height);
  const Picture first = entries.empty() ? Picture() : picture_of(window.list.record(entries.front()));
  if (!first) return look;
  const QSize own(static_cast<int>(first.width()), static_cast<int>(first.height()));
  const QSize room(2 * kRowHeight, 2 * kRowHeight);
  look.image = scaled_image(
      first, own.boundedTo(room) == own ? own : own.scaled(room, Qt::KeepAspectRatio).expandedTo({1, 1}));
  return look;
}

QString first_folder(const QString& now) {
  const QString folder = now.isEmpty() ? QString() : QFileInfo(now).absolutePath();
  return !folder.isEmpty() && !lent_document(now.toStdString()) && QDir(folder).exists()
             ? QDir::cleanPath(folder)
             : QDir::cleanPath(usable_folder(settings::DocumentBrowserPath));
}

}  // namespace

FileLook look_of_document(Thumbnails& thumbnails, const QString& path) {
  if (const DocumentWindow* lent = lent_document(path.toStdString())) return look_of_lent(*lent);
  FileLook look = thumbnails.look(path);
  if (look.detail.isEmpty() && !look.size.isEmpty())
    look.detail = QStringLiteral("        (%1 x %2)").arg(look.size.width()).arg(look.size.height());
  if (look.animated)
    look.detail += (look.detail.isEmpty() ? QStringLiteral("        ") : QStringLiteral(", ")) +
                   QObject::tr("animation");
  return look;
}

DocumentBrowser::DocumentBrowser(const BrowseRequest& request, QWidget* parent)
    : QDialog(parent),
      request_(request),
      thumbnails_(2 * kRowHeight),
      pages_(new QTabWidget(this)),
      documents_(new ThumbnailList(
          [this](const QString& path) { return look_of_document(thumbnails_, path); }, this)),
      status_(new QLabel(this)) {
  setWindowTitle(request.title);
  setMinimumSize(kLeastSize);
  resize(kFirstSize);
  QVBoxLayout* layout = dialog_layout(*this);
  layout->setSpacing(style::kGap);
  pages_->addTab(make_files(), tr("&Files"));
  make_documents();
  pages_->tabBar()->setVisible(pages_->count() > 1);
  layout->addWidget(pages_, 1);
  status_->setTextFormat(Qt::PlainText);
  layout->addWidget(status_);
  buttons_ =
      add_buttons(*this, QDialogButtonBox::Ok | QDialogButtonBox::Cancel, QStringLiteral("DOCUMENTBROWSER"));
  buttons_->button(QDialogButtonBox::Ok)->setText(request.button.isEmpty() ? tr("&Open") : request.button);
  layout->addWidget(buttons_);
  connect_parts();
  show_folder(first_folder(request.now));
}

QWidget* DocumentBrowser::make_files() {
  panes_ = new QSplitter(pages_);
  panes_->setChildrenCollapsible(false);
  folders_ = new FolderTree(panes_);
  folders_->setAccessibleName(tr("Folders"));
  folders_->setMinimumWidth(kLeastTree);
  auto* right = new QWidget(panes_);
  auto* column = new QVBoxLayout(right);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(style::kGap);
  path_ = new QLineEdit(right);
  path_->setAccessibleName(tr("Folder"));
  find_ = new QLineEdit(right);
  find_->setPlaceholderText(tr("Find by name"));
  find_->setAccessibleName(find_->placeholderText());
  find_->setClearButtonEnabled(true);
  auto* line = new QHBoxLayout;
  line->addWidget(path_, 2);
  line->addWidget(find_, 1);
  column->addLayout(line);
  files_ =
      new ThumbnailList([this](const QString& path) { return look_of_document(thumbnails_, path); }, right);
  files_->setAccessibleName(tr("Files"));
  column->addWidget(files_, 1);
  column->addWidget(make_flags());
  panes_->addWidget(folders_);
  panes_->addWidget(right);
  panes_->setStretchFactor(1, 1);
  const int tree = settings::BrowserWide > 0 ? std::max(settings::BrowserWide, kLeastTree) : kFirstTree;
  panes_->setSizes({tree, std::max(kFirstSize.width() - tree, kLeastTree)});
  return panes_;
}

QWidget* DocumentBrowser::make_flags() {
  auto* row = new QWidget(panes_);
  auto* line = new QHBoxLayout(row);
  line->setContentsMargins(0, 0, 0, 0);
  line->setSpacing(style::kWideGap);
  const auto add = [&](const QString& text, int bit) {
    auto* box = new QCheckBox(text, row);
    box->setChecked(has_flag(bit));
    connect(box, &QCheckBox::toggled, this, [this, bit](bool on) { set_flag(bit, on); });
    line->addWidget(box);
  };
  add(tr("&Thumbnails"), kThumbnails);
  add(tr("&Details"), kDetails);
  add(tr("&Animations only"), kAnimations);
  add(tr("Folders &below"), kSubfolders);
  line->addStretch(1);
  return row;
}

void DocumentBrowser::make_documents() {
  documents_->setAccessibleName(tr("Open documents"));
  documents_->hide();
  QStringList names;
  for (const LentDocument& lent : lent_documents()) names << to_qt(lent.name);
  if (!request_.openDocuments || names.isEmpty()) return;
  documents_->set_paths(names);
  pages_->addTab(documents_, tr("Open do&cuments"));
  if (lent_document(request_.now.toStdString())) pages_->setCurrentWidget(documents_);
}

void DocumentBrowser::connect_parts() {
  connect(folders_, &FolderTree::folder_chosen, this, &DocumentBrowser::show_folder);
  connect(path_, &QLineEdit::editingFinished, this, [this] {
    const QString typed = QDir::cleanPath(path_->text());
    if (QFileInfo(typed).isDir()) return show_folder(typed);
    path_->setText(folder_);
  });
  connect(find_, &QLineEdit::textChanged, this, &DocumentBrowser::show_files);
  connect(panes_, &QSplitter::splitterMoved, this,
          [this] { settings::BrowserWide = panes_->sizes().front(); });
  connect(pages_, &QTabWidget::currentChanged, this, &DocumentBrowser::show_status);
  connect(&listing_, &FolderDocuments::listed, this, [this](const QStringList& paths) {
    listed_ = paths;
    show_files();
  });
  filterLater_.setSingleShot(true);
  filterLater_.setInterval(kFilterRest);
  connect(&filterLater_, &QTimer::timeout, this, &DocumentBrowser::show_files);
  connect(&thumbnails_, &Thumbnails::made, this, [this](const QString& path) {
    files_->refresh_looks();
    if (has_flag(kAnimations) && !thumbnails_.peek(path).animated && !filterLater_.isActive())
      filterLater_.start();
  });
  for (ThumbnailList* list : {files_, documents_}) {
    list->set_form(list_form());
    list->setSelectionMode(request_.several ? QAbstractItemView::ExtendedSelection
                                            : QAbstractItemView::SingleSelection);
    connect(list, &ThumbnailList::selection_changed, this, &DocumentBrowser::show_status);
    connect(list, &ThumbnailList::opened, this, &QDialog::accept);
  }
}

void DocumentBrowser::set_flag(int bit, bool on) {
  settings::DocumentBrowserFlags =
      on ? settings::DocumentBrowserFlags | bit : settings::DocumentBrowserFlags & ~bit;
  for (ThumbnailList* list : {files_, documents_}) list->set_form(list_form());
  bit == kSubfolders ? list_anew() : show_files();
}

void DocumentBrowser::show_folder(const QString& folder) {
  if (folder.isEmpty() || folder == folder_) return;
  folder_ = folder;
  path_->setText(folder);
  settings::DocumentBrowserPath = to_path(folder).string();
  folders_->show_folder(folder);
  list_anew();
}

void DocumentBrowser::list_anew() {
  listed_.clear();
  show_files();
  listing_.list(folder_, has_flag(kSubfolders));
  show_status();
}

void DocumentBrowser::show_files() {
  QStringList wanted;
  const QString part = find_->text();
  for (const QString& path : std::as_const(listed_)) {
    if (!part.isEmpty() && !QFileInfo(path).fileName().contains(part, Qt::CaseInsensitive)) continue;
    // What isn't known yet is shown until it is; asking for it makes that soon.
    const FileLook look = has_flag(kAnimations) ? thumbnails_.look(path) : FileLook();
    if (!look.known || look.animated) wanted << path;
  }
  files_->set_paths(wanted);
  show_status();
}

QStringList DocumentBrowser::chosen() const {
  return (pages_->currentWidget() == documents_ ? documents_ : files_)->selected_paths();
}

void DocumentBrowser::show_status() {
  const auto count = chosen().size();
  buttons_->button(QDialogButtonBox::Ok)->setEnabled(count > 0);
  const bool documents = pages_->currentWidget() == documents_;
  const auto all = (documents ? documents_ : files_)->paths().size();
  status_->setText(!documents && listing_.at_work() ? tr("Reading the folder...")
                   : documents
                       ? tr("%1 open (%2 selected)").arg(all).arg(count)
                       : tr("%1 (%2 selected)")
                             .arg(to_qt(count_text(StringId::OneFile, static_cast<std::uint64_t>(all))))
                             .arg(count));
}

void DocumentBrowser::done(int result) {
  if (isVisible()) settings::BrowserWide = panes_->sizes().front();
  QDialog::done(result);
}

QStringList browse_documents(const BrowseRequest& request, QWidget* parent) {
  DocumentBrowser browser(request, parent);
  return browser.exec() == QDialog::Accepted ? browser.chosen() : QStringList();
}

}  // namespace vellum
