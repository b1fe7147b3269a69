// What the animation wizard does: menus, keys, and what follows folders and files.
#include <QMenu>
#include <QShortcut>

#include "configuration/shell_settings.h"
#include "generators/settings.h"
#include "shell/dialogs/wizard_dialog.h"
#include "shell/dialogs/wizard_preview.h"
#include "shell/look/text.h"
#include "shell/services/folder_pictures.h"

namespace vellum {
namespace {

constexpr int kFolderRest = 300, kFollowRest = 150;  // ms

}  // namespace

void WizardDialog::make_actions() {
  connect(palette_, &QComboBox::activated, this, [this](int index) {
    settings::NewAnimationWizardPaletteOption = index;
    play();
  });
  connect(preserve_, &QCheckBox::toggled, this, &WizardDialog::play);
  connect(delay_, &QSpinBox::valueChanged, this, [this](int delay) {
    settings::NewAnimationWizardDelay = delay;
    play();
  });
  connect(add_, &QPushButton::clicked, this, &WizardDialog::add_selected);
  connect(remove_, &QPushButton::clicked, chosen_, &ThumbnailList::remove_selected);
  connect(test_, &QPushButton::clicked, this, &WizardDialog::run_test);
  connect(folders_, &FolderTree::folder_chosen, this, &WizardDialog::show_folder);
  connect(available_, &ThumbnailList::opened, this, &WizardDialog::add_selected);
  connect(chosen_, &ThumbnailList::opened, this, &WizardDialog::preview);
  for (ThumbnailList* list : {available_, chosen_}) {
    connect(list, &ThumbnailList::selection_changed, this, &WizardDialog::show_status);
    connect(list, &ThumbnailList::edited, this, &WizardDialog::show_status);
    list->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(list, &QWidget::customContextMenuRequested, this, [this, list](const QPoint& place) {
      QMenu menu(this);
      const QModelIndex at = list->indexAt(place);
      list == chosen_ ? fill_chosen_menu(menu, at.row()) : fill_available_menu(menu);
      menu.exec(list->viewport()->mapToGlobal(place));
    });
  }
  connect(chosen_, &ThumbnailList::edited, this, [this] { follow_sizes(true); });
  connect(chosen_, &ThumbnailList::files_dropped, this, &WizardDialog::take_files);
  connect(new QShortcut(QKeySequence::Refresh, this), &QShortcut::activated, this, [this] {
    thumbnails_.forget_changed(true);
    refresh();
  });
  connect(panes_, &QSplitter::splitterMoved, this, &WizardDialog::store_panes);
  follow_files();
}

/// What is made, and what happens in the folder.
void WizardDialog::follow_files() {
  connect(&thumbnails_, &Thumbnails::made, this, [this] {
    available_->refresh_looks();
    chosen_->refresh_looks();
    if (!followLater_.isActive()) followLater_.start();
  });
  refreshLater_.setSingleShot(true);
  followLater_.setSingleShot(true);
  refreshLater_.setInterval(kFolderRest);
  followLater_.setInterval(kFollowRest);
  connect(&refreshLater_, &QTimer::timeout, this, &WizardDialog::refresh);
  connect(&followLater_, &QTimer::timeout, this, [this] { follow_sizes(false); });
  connect(&watcher_, &QFileSystemWatcher::directoryChanged, this, [this] { refreshLater_.start(); });
}

void WizardDialog::add_selected() {
  chosen_->insert_paths(static_cast<int>(chosen_->paths().size()), available_->selected_paths());
}

void WizardDialog::take_files(int row, const QStringList& paths) {
  QStringList pictures;
  for (const QString& path : paths)
    if (is_picture_name(path)) pictures << path;
  chosen_->insert_paths(row, pictures);
}

void WizardDialog::preview(const QString& path) {
  WizardPreview box(path, this);
  box.exec();
}

void WizardDialog::set_thumbnails(ThumbnailList& list, int& setting, bool on) {
  setting = on;
  list.set_form(form_of(setting));
}

void WizardDialog::fill_available_menu(QMenu& menu) {
  const auto rows = available_->selected_rows();
  const auto count = static_cast<std::size_t>(available_->paths().size());
  if (rows.size() < count) menu.addAction(tr("Select &all"), available_, &QListView::selectAll);
  if (!rows.empty()) {
    menu.addAction(tr("Select &none"), available_, &QListView::clearSelection);
    menu.addAction(tr("A&dd to animation"), this, &WizardDialog::add_selected);
    menu.addAction(tr("&Preview"), this, [this, row = rows.front()] { preview(available_->paths()[row]); });
  }
  QAction* small = menu.addAction(tr("&Thumbnails"), this, [this](bool on) {
    set_thumbnails(*available_, settings::NewAnimationWizardFileThumbnails, on);
  });
  small->setCheckable(true);
  small->setChecked(settings::NewAnimationWizardFileThumbnails != 0);
  menu.addAction(tr("&Refresh"), this, [this] {
    thumbnails_.forget_changed(true);
    refresh();
  });
}

void WizardDialog::fill_chosen_menu(QMenu& menu, int row) {
  const auto rows = chosen_->selected_rows();
  const auto count = static_cast<std::size_t>(chosen_->paths().size());
  if (rows.size() < count) menu.addAction(tr("Select &all"), chosen_, &QListView::selectAll);
  if (!rows.empty()) {
    menu.addAction(tr("Select &none"), chosen_, &QListView::clearSelection);
    menu.addAction(tr("&Remove from animation"), chosen_, &ThumbnailList::remove_selected);
  }
  if (!rows.empty() && row >= 0) {
    const auto add = [&](const QString& title, void (ThumbnailList::*work)(int)) {
      QMenu* places = menu.addMenu(title);
      for (const auto& [id, to] : {std::pair(StringId::BeforeItem, row), {StringId::AfterItem, row + 1}})
        places->addAction(to_qt(filled(id, {std::to_string(row + 1)})), this,
                          [this, work, to = to] { (chosen_->*work)(to); });
    };
    add(tr("&Copy"), &ThumbnailList::copy_selected);
    add(tr("&Move"), &ThumbnailList::move_selected);
  }
  if (!rows.empty())
    menu.addAction(tr("&Preview"), this, [this, first = rows.front()] { preview(chosen_->paths()[first]); });
  QAction* small = menu.addAction(tr("&Thumbnails"), this, [this](bool on) {
    set_thumbnails(*chosen_, settings::NewAnimationWizardSelFileThumbnails, on);
  });
  small->setCheckable(true);
  small->setChecked(settings::NewAnimationWizardSelFileThumbnails != 0);
  if (count < 2) return;
  menu.addAction(tr("T&est"), this, &WizardDialog::run_test);
  menu.addSeparator();
  menu.addAction(tr("&Build"), this, &WizardDialog::accept);
}

}  // namespace vellum
