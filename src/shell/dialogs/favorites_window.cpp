#include "shell/dialogs/favorites_window.h"

#include <QBoxLayout>
#include <QDesktopServices>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QInputDialog>
#include <QLabel>
#include <QUrl>

#include "base/file.h"
#include "base/text.h"
#include "configuration/shell_settings.h"
#include "shell/dialogs/document_browser.h"
#include "shell/forms/default_folders.h"
#include "shell/look/style.h"
#include "shell/look/text.h"
#include "shell/services/favorite_files.h"
#include "shell/widgets/dialog_frame.h"

namespace vellum {
namespace {

constexpr int kThumbnail = 96;
constexpr QSize kWindow(860, 560);
constexpr std::uint64_t kMostBytes = std::uint64_t{16} << 20;

}  // namespace

FavoritesWindow::FavoritesWindow(Services& services, QWidget* parent)
    : QDialog(parent),
      services_(services),
      thumbnails_(kThumbnail),
      galleries_(new QListWidget(this)),
      files_(new ThumbnailList([this](const QString& path) { return look(path); }, this)),
      move_(new QComboBox(this)) {
  setWindowTitle(tr("Favorites"));
  QVBoxLayout* layout = dialog_layout(*this);
  auto* row = new QHBoxLayout;
  row->setSpacing(style::kWideGap);
  row->addWidget(make_galleries(), 1);
  row->addWidget(make_files(), 3);
  layout->addLayout(row, 1);
  layout->addWidget(add_buttons(*this, QDialogButtonBox::Close, QStringLiteral("FAVORITES")));
  const bool kept = settings::FavoritesDialogWide > 0 && settings::FavoritesDialogDeep > 0;
  resize(kept ? QSize(std::clamp(settings::FavoritesDialogWide, 400, 4000),
                      std::clamp(settings::FavoritesDialogDeep, 300, 4000))
              : kWindow);
  connect(&thumbnails_, &Thumbnails::made, files_, [this] { files_->refresh_looks(); });
  connect(galleries_, &QListWidget::currentRowChanged, this, [this] { show_gallery(); });
  connect(files_, &ThumbnailList::edited, this, [this] { put({current(), shown().paths}); });
  connect(files_, &ThumbnailList::selection_changed, this, &FavoritesWindow::settle_buttons);
  connect(files_, &ThumbnailList::opened, this,
          [this] { settings::FavoritesDoubleClickOpen != 0 ? open_selected() : view_selected(); });
  connect(files_, &ThumbnailList::files_dropped, this,
          [this](int, const QStringList& files) { add_files(files); });
  reload_favorites();
  fill(settings::FavoritesGalleryCurrent);
}

FavoritesWindow::~FavoritesWindow() {
  settings::FavoritesGalleryCurrent = current();
  settings::FavoritesDialogWide = width();
  settings::FavoritesDialogDeep = height();
}

QPushButton* FavoritesWindow::add_button(QLayout& layout, const QString& text,
                                         void (FavoritesWindow::*action)()) {
  auto* button = new QPushButton(text, this);
  button->setAutoDefault(false);
  connect(button, &QPushButton::clicked, this, action);
  layout.addWidget(button);
  return button;
}

QWidget* FavoritesWindow::make_galleries() {
  auto* side = new QWidget(this);
  auto* layout = new QVBoxLayout(side);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(style::kGap);
  galleries_->setAccessibleName(tr("Galleries"));
  layout->addWidget(galleries_, 1);
  auto* grid = new QGridLayout;
  const auto add = [&](const QString& text, int row, int column, auto action) {
    auto* button = new QPushButton(text, side);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, action);
    grid->addWidget(button, row, column);
    return button;
  };
  add(tr("&New..."), 0, 0, [this] { new_gallery(); });
  needGallery_ = {add(tr("&Rename..."), 0, 1, [this] { rename_gallery(); }),
                  add(tr("&Delete"), 1, 0, [this] { delete_gallery(); }),
                  add(tr("Pin &here"), 1, 1, [this] { pin_here(); }),
                  add(tr("E&xport..."), 2, 1, [this] { export_gallery(); })};
  needGallery_[2]->setToolTip(tr("Files that are pinned go to this gallery"));
  add(tr("&Import..."), 2, 0, [this] { import_gallery(); });
  layout->addLayout(grid);
  return side;
}

QWidget* FavoritesWindow::make_files() {
  auto* side = new QWidget(this);
  auto* layout = new QVBoxLayout(side);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(style::kGap);
  files_->set_form({.height = 72});
  files_->set_takes_files(true);
  files_->setAccessibleName(tr("Files"));
  files_->set_hint(tr("Add files, or drop them here"));
  layout->addWidget(files_, 1);
  auto* row = new QHBoxLayout;
  add_button(*row, tr("&Add..."), &FavoritesWindow::browse);
  needFiles_ = {add_button(*row, tr("&Open"), &FavoritesWindow::open_selected),
                add_button(*row, tr("&View"), &FavoritesWindow::view_selected),
                add_button(*row, tr("Re&move"), &FavoritesWindow::remove_selected)};
  auto* copy = new QPushButton(tr("&Copy files to..."), side);
  copy->setAutoDefault(false);
  connect(copy, &QPushButton::clicked, this, [this] { copy_selected(); });
  row->addWidget(copy);
  needFiles_.push_back(copy);
  row->addStretch(1);
  layout->addLayout(row);
  row = new QHBoxLayout;
  needFiles_.push_back(add_button(*row, tr("Show in &folder"), &FavoritesWindow::reveal_selected));
  move_->setAccessibleName(tr("Move to gallery"));
  connect(move_, &QComboBox::activated, this, [this](int index) {
    if (index > 0) move_selected(move_->itemText(index));
    move_->setCurrentIndex(0);
  });
  row->addWidget(move_);
  row->addStretch(1);
  layout->addLayout(row);
  return side;
}

/// Files that are gone are grey.
FileLook FavoritesWindow::look(const QString& path) {
  if (QFileInfo::exists(path)) return thumbnails_.look(path);
  FileLook gone;
  gone.detail = tr("This file is missing");
  return gone;
}

std::string FavoritesWindow::current() const {
  const QListWidgetItem* item = galleries_->currentItem();
  return item ? item->data(Qt::UserRole).toString().toStdString() : std::string();
}

FavoritesGallery FavoritesWindow::shown() const {
  FavoritesGallery gallery{current(), {}};
  for (const QString& path : files_->paths()) gallery.paths.push_back(path.toStdString());
  return gallery;
}

void FavoritesWindow::fill(const std::string& name) {
  const QSignalBlocker quiet(galleries_);
  galleries_->clear();
  move_->clear();
  move_->addItem(tr("Move to gallery..."));
  std::vector<std::string> names;
  for (const FavoritesGallery& gallery : favorite_galleries()) names.push_back(gallery.name);
  if (names.empty()) names.push_back("Favorites");
  for (const std::string& one : names) {
    const bool is_default = one == settings::FavoritesDefaultPin;
    auto* item = new QListWidgetItem(to_qt(one) + (is_default ? tr("  (pins)") : QString()), galleries_);
    item->setData(Qt::UserRole, to_qt(one));
    move_->addItem(to_qt(one));
    if (one == name) galleries_->setCurrentItem(item);
  }
  if (!galleries_->currentItem()) galleries_->setCurrentRow(0);
  show_gallery();
}

void FavoritesWindow::show_gallery() {
  const std::string name = current();
  QStringList paths;
  for (const FavoritesGallery& gallery : favorite_galleries())
    if (gallery.name == name)
      for (const std::string& path : gallery.paths) paths << to_qt(path);
  files_->set_paths(paths);
  settle_buttons();
}

void FavoritesWindow::settle_buttons() {
  for (QPushButton* button : needFiles_) button->setEnabled(!files_->selected_rows().empty());
  for (QPushButton* button : needGallery_) button->setEnabled(galleries_->currentItem() != nullptr);
  move_->setEnabled(!files_->selected_rows().empty() && move_->count() > 2);
}

bool FavoritesWindow::put(const FavoritesGallery& gallery) {
  std::string reason;
  if (put_gallery(gallery, reason)) return true;
  services_.host.show(StringId::ErrorWritingFile, {}, reason);
  return false;
}

void FavoritesWindow::new_gallery(QString name) {
  if (name.isEmpty()) name = QInputDialog::getText(this, tr("New gallery"), tr("Name")).trimmed();
  if (name.isEmpty()) return;
  if (!is_gallery_name(name.toStdString())) return services_.host.show(StringId::NoGalleryName);
  if (std::ranges::count(favorite_galleries(), name.toStdString(), &FavoritesGallery::name) > 0)
    return services_.host.show(StringId::GalleryExists);
  if (put({name.toStdString(), {}})) fill(name.toStdString());
}

void FavoritesWindow::rename_gallery(QString name) {
  const std::string old = current();
  if (name.isEmpty())
    name = QInputDialog::getText(this, tr("Rename gallery"), tr("Name"), QLineEdit::Normal, to_qt(old))
               .trimmed();
  const std::string wanted = name.toStdString();
  if (name.isEmpty() || wanted == old) return;
  if (!is_gallery_name(wanted)) return services_.host.show(StringId::NoGalleryName);
  if (std::ranges::count(favorite_galleries(), wanted, &FavoritesGallery::name) > 0)
    return services_.host.show(StringId::GalleryExists);
  FavoritesGallery gallery = shown();
  gallery.name = wanted;
  if (!put(gallery)) return;
  std::error_code error;
  std::filesystem::remove(favorites_file(favorites_folder(), old), error);
  if (settings::FavoritesDefaultPin == old) settings::FavoritesDefaultPin = wanted;
  reload_favorites();
  fill(wanted);
}

void FavoritesWindow::delete_gallery() {
  const std::string name = current();
  const StringId id = StringId::DeleteGalleryQuestion;
  if (services_.host.ask &&
      services_.host.ask({id, {}, filled(id, {name}), {}, nullptr}, false) != Answer::Yes)
    return;
  const QString file = path_text(favorites_file(favorites_folder(), name));
  const bool gone = !QFileInfo::exists(file) ||
                    (settings::FavoritesRecycleGalleries != 0 && QFile::moveToTrash(file)) ||
                    QFile::remove(file);
  if (!gone) return services_.host.show(StringId::ErrorWritingFile, {}, file.toStdString());
  reload_favorites();
  fill(settings::FavoritesDefaultPin);
}

void FavoritesWindow::import_gallery() {
  if (!services_.choose_file) return;
  const auto file = services_.choose_file(
      {tr("Import a gallery").toStdString(), tr("Galleries (*.pngfav)").toStdString(), {}});
  if (!file) return;
  std::string reason;
  const auto bytes = read_file(*file, reason, kMostBytes);
  const auto paths =
      bytes ? parse_favorites({reinterpret_cast<const char*>(bytes->data()), bytes->size()}) : std::nullopt;
  if (!paths) return services_.host.show(StringId::FileCorrupted, StringId::ErrorReadingFile, reason);
  std::string name = file->stem().string();
  for (int i = 2; std::ranges::count(favorite_galleries(), name, &FavoritesGallery::name) > 0; ++i)
    name = file->stem().string() + " " + std::to_string(i);
  if (!is_gallery_name(name)) return services_.host.show(StringId::NoGalleryName);
  if (put({name, *paths})) fill(name);
}

void FavoritesWindow::export_gallery() {
  if (!services_.choose_file) return;
  FileChoice choice{tr("Export a gallery").toStdString(), tr("Galleries (*.pngfav)").toStdString(),
                    current() + std::string(kFavoritesExtension), true};
  auto file = services_.choose_file(choice);
  if (!file) return;
  if (!file->has_extension()) *file += kFavoritesExtension;
  const std::string text = favorites_text(shown().paths);
  SafeFile written(*file);
  if (!written.write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}) || !written.commit())
    services_.host.show(StringId::ErrorWritingFile, {}, written.reason());
}

void FavoritesWindow::browse() {
  add_files(browse_documents(
      {.title = tr("Add to the favorites"), .button = tr("&Add"), .several = true, .openDocuments = false},
      this));
}

void FavoritesWindow::add_files(const QStringList& files) {
  if (files.isEmpty()) return;
  FavoritesGallery gallery = shown();
  for (const QString& file : files) add_favorite(gallery, to_path(file));
  if (put(gallery)) show_gallery();
}

void FavoritesWindow::open_selected() {
  for (const QString& path : files_->selected_paths())
    if (open) open(to_path(path));
}

void FavoritesWindow::view_selected() {
  const QStringList selected = files_->selected_paths();
  if (!selected.isEmpty() && view) view(to_path(selected.front()));
}

void FavoritesWindow::remove_selected() { files_->remove_selected(); }

void FavoritesWindow::move_selected(const QString& name) {
  const QStringList moved = files_->selected_paths();
  if (moved.isEmpty() || name.toStdString() == current()) return;
  FavoritesGallery target = load_favorites_gallery(favorites_folder(), name.toStdString());
  for (const QString& path : moved) add_favorite(target, to_path(path));
  if (put(target)) files_->remove_selected();
}

void FavoritesWindow::copy_selected(QString folder) {
  const QStringList files = files_->selected_paths();
  if (folder.isEmpty())
    folder = QFileDialog::getExistingDirectory(this, tr("Copy files to"),
                                               usable_folder(settings::FavoritesDestination));
  if (files.isEmpty() || folder.isEmpty()) return;
  settings::FavoritesDestination = folder.toStdString();
  std::size_t copied = 0;
  // What stands there stays: QFile::copy refuses it.
  for (const QString& file : files)
    copied += QFile::copy(file, folder + u'/' + QFileInfo(file).fileName()) ? 1 : 0;
  const std::string told =
      filled(StringId::FilesCopied, {std::to_string(copied), count_text(StringId::OneFile, files.size())});
  if (copied == static_cast<std::size_t>(files.size())) return services_.host.set_status(told);
  if (services_.host.message) services_.host.message({StringId::FilesCopied, {}, told, {}, nullptr});
}

void FavoritesWindow::reveal_selected() {
  const QStringList selected = files_->selected_paths();
  if (!selected.isEmpty()) QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(selected.front()).path()));
}

void FavoritesWindow::pin_here() {
  settings::FavoritesDefaultPin = current();
  fill(current());
}

}  // namespace vellum
