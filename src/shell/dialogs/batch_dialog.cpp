#include "shell/dialogs/batch_dialog.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMenu>
#include <QShortcut>
#include <QStandardPaths>
#include <QVBoxLayout>

#include "batch/settings.h"
#include "configuration/shell_settings.h"
#include "core/files/open_document.h"
#include "shell/dialogs/batch_progress.h"
#include "shell/dialogs/batch_setup.h"
#include "shell/dialogs/destination_dialog.h"
#include "shell/dialogs/folder_actions.h"
#include "shell/dialogs/operation_dialog.h"
#include "shell/look/style.h"
#include "shell/look/text.h"
#include "shell/widgets/dialog_frame.h"
#include "shell/widgets/folder_places.h"

namespace vellum {
namespace {

constexpr QSize kFirstSize(860, 560), kLeastSize(560, 360);
constexpr int kNumberRole = Qt::UserRole + 1;
constexpr int kLeastTree = 140, kFirstTree = 240, kLeastFiles = 320, kLeastRow = 32, kMostRow = 256,
              kRefreshRest = 300;

QString first_folder() {
  const QString kept = to_qt(settings::BatchProcessorPath);
  if (!kept.isEmpty() && QDir(kept).exists()) return QDir::cleanPath(kept);
  const QString pictures = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
  return QDir(pictures).exists() ? QDir::cleanPath(pictures) : QDir::homePath();
}

int row_height() { return std::clamp(settings::BatchProcessorItemHeight, kLeastRow, kMostRow); }

BatchRun run_of(const BatchProcess& process, const FieldValues& values, const QString& destination) {
  static constexpr Overwrite modes[] = {Overwrite::Silently, Overwrite::Ask, Overwrite::KeepBoth};
  BatchRun run;
  run.work = batch_work(
      process, [values](const DocumentWindow&) { return std::optional(values); },
      settings::BPAutoUpsample != 0);
  run.naming.destination = to_path(destination);
  run.naming.overwrite = modes[std::clamp(settings::BPOverwriteMode, 0, 2)];
  name_results(run.naming, process, values);
  if (settings::BPUsePrefixes != 0) run.naming.prefix = batch_prefix(process, true);
  run.thumbnails = settings::BatchProcessorTHNL != 0;
  run.hiddenThumbnails = settings::BatchProcessorHiddenTHNL != 0;
  return run;
}

/// An export says what its files end in.
QString name_of(const BatchProcess& process) {
  const QString title = shown(process.parameters().title);
  if (process.operation || process.exporter->formatField) return title;
  return QStringLiteral("%1 (%2)").arg(title, to_qt(result_extension(process, {})));
}

/// What an export is to do; it has no preview.
std::optional<FieldValues> ask_for_export(const Parameters& parameters, const DocumentWindow& window,
                                          Services& services, QWidget* parent) {
  if (parameters.fields.empty()) return FieldValues();
  ParameterDialog dialog(parameters, window, {}, services, parent);
  dialog.begin();
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return dialog.values();
}

}  // namespace

BatchDialog::BatchDialog(Services& services, QWidget* parent)
    : QDialog(parent),
      services_(services),
      thumbnails_(static_cast<int>(row_height() * devicePixelRatioF())),
      process_(new QComboBox(this)),
      panes_(new QSplitter(this)),
      status_(new QLabel(this)) {
  setWindowTitle(tr("Batch processor"));
  setObjectName(QStringLiteral("BatchDialog"));
  setWindowFlag(Qt::WindowMaximizeButtonHint);
  QVBoxLayout* layout = dialog_layout(*this);
  layout->setSpacing(style::kGap);
  make_panes();
  make_controls(*layout);
  connect_parts();
  setMinimumSize(kLeastSize);
  const QSize kept(settings::BatchProcessorDialogWide, settings::BatchProcessorDialogDeep);
  resize(kept.isEmpty() ? kFirstSize : kept.expandedTo(kLeastSize));
  const int tree = settings::BatchProcessorTreeWide > 0 ? settings::BatchProcessorTreeWide : kFirstTree;
  const int files =
      settings::BatchProcessorFilesWide > 0 ? settings::BatchProcessorFilesWide : width() - tree;
  panes_->setSizes({std::max(tree, kLeastTree), files});
  place_->setCurrentIndex(std::max(place_->findData(settings::BatchProcessorSpecialFolder, kNumberRole), 0));
  folders_->begin_at(place_->currentData().toString());
  show_folder(first_folder());
}

void BatchDialog::make_panes() {
  panes_->setChildrenCollapsible(false);
  auto* left = new QWidget(panes_);
  left->setMinimumWidth(kLeastTree);
  auto* places = new QVBoxLayout(left);
  places->setContentsMargins(0, 0, 0, 0);
  places->setSpacing(style::kGap);
  place_ = new QComboBox(left);
  place_->setAccessibleName(tr("Place"));
  place_->setObjectName(QStringLiteral("place"));
  place_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  for (const FolderPlace& place : folder_places()) {
    place_->addItem(place.name, place.path);
    place_->setItemData(place_->count() - 1, place.number, kNumberRole);
  }
  places->addWidget(place_);
  folders_ = new FolderTree(left);
  folders_->setAccessibleName(tr("Folders"));
  places->addWidget(folders_, 1);
  auto* right = new QWidget(panes_);
  auto* column = new QVBoxLayout(right);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(style::kGap);
  line_ = new FolderLine(right);
  column->addWidget(line_);
  files_ = new ThumbnailList([this](const QString& path) { return thumbnails_.look(path); }, right);
  files_->setAccessibleName(tr("Files"));
  files_->setObjectName(QStringLiteral("files"));
  files_->set_form({.height = row_height()});
  files_->setSelectionMode(QAbstractItemView::ExtendedSelection);
  files_->setContextMenuPolicy(Qt::CustomContextMenu);
  column->addWidget(files_, 1);
  panes_->setStretchFactor(1, 1);
}

void BatchDialog::make_controls(QVBoxLayout& layout) {
  auto* top = new QHBoxLayout;
  top->setSpacing(style::kGap);
  auto* label = new QLabel(tr("&Process:"), this);
  label->setBuddy(process_);
  for (const BatchProcess& row : batch_processes()) process_->addItem(name_of(row));
  process_->setCurrentIndex(std::clamp(settings::BatchProcessorProcess, 0, process_->count() - 1));
  process_->setObjectName(QStringLiteral("process"));
  auto* setup = new QPushButton(tr("Set&up..."), this);
  setup->setObjectName(QStringLiteral("setup"));
  setup->setAutoDefault(false);
  connect(setup, &QPushButton::clicked, this, [this] { edit_batch_settings(services_, this); });
  top->addWidget(label);
  top->addWidget(process_, 1);
  top->addWidget(setup);
  layout.addLayout(top);
  layout.addWidget(panes_, 1);
  status_->setTextFormat(Qt::PlainText);
  layout.addWidget(status_);
  QDialogButtonBox* buttons = add_buttons(*this, QDialogButtonBox::Close, QStringLiteral("BATCHPROCESSOR"));
  start_ = buttons->addButton(tr("&Start..."), QDialogButtonBox::ActionRole);
  start_->setDefault(true);
  connect(start_, &QPushButton::clicked, this, &BatchDialog::run);
  layout.addWidget(buttons);
}

void BatchDialog::connect_parts() {
  connect(process_, &QComboBox::activated, this, [](int index) { settings::BatchProcessorProcess = index; });
  connect(place_, &QComboBox::activated, this, [this] {
    const QString folder = place_->currentData().toString();
    settings::BatchProcessorSpecialFolder = place_->currentData(kNumberRole).toInt();
    if (!ShownFolders::is_within(folder_, folder)) show_folder(folder);
    folders_->begin_at(folder);
    place_->setCurrentIndex(place_->findData(folders_->first()));
  });
  connect(folders_, &FolderTree::folder_chosen, this, &BatchDialog::show_folder);
  connect(line_, &FolderLine::folder_chosen, this, &BatchDialog::show_folder);
  connect(&listing_, &FolderDocuments::listed, this, [this](const QStringList& paths) {
    files_->set_paths(paths);
    show_status();
  });
  connect(&thumbnails_, &Thumbnails::made, this, [this] { files_->refresh_looks(); });
  connect(files_, &ThumbnailList::selection_changed, this, &BatchDialog::show_status);
  connect(files_, &ThumbnailList::opened, this, &BatchDialog::view_file);
  connect(files_, &QWidget::customContextMenuRequested, this, [this](const QPoint& place) {
    QMenu menu(this);
    fill_menu(menu);
    menu.exec(files_->viewport()->mapToGlobal(place));
  });
  folders_->setContextMenuPolicy(Qt::CustomContextMenu);
  connect(folders_, &QWidget::customContextMenuRequested, this, [this](const QPoint& place) {
    QMenu menu(this);
    add_folder_actions(menu, folder_, services_, this,
                       [this](const QString& folder) { show_folder(folder); });
    menu.exec(folders_->viewport()->mapToGlobal(place));
  });
  connect(new QShortcut(QKeySequence::Refresh, this), &QShortcut::activated, this, [this] { refresh(true); });
  connect(new QShortcut(QKeySequence::Delete, files_, nullptr, nullptr, Qt::WidgetShortcut),
          &QShortcut::activated, this, [this] { delete_selected(false); });
  refreshLater_.setSingleShot(true);
  refreshLater_.setInterval(kRefreshRest);
  connect(&refreshLater_, &QTimer::timeout, this, [this] { refresh(false); });
  connect(&watcher_, &QFileSystemWatcher::directoryChanged, this, [this] { refreshLater_.start(); });
  connect(panes_, &QSplitter::splitterMoved, this, [this] {
    settings::BatchProcessorTreeWide = panes_->sizes().at(0);
    settings::BatchProcessorFilesWide = panes_->sizes().at(1);
  });
}

void BatchDialog::show_folder(const QString& folder) {
  if (folder.isEmpty() || folder == folder_) return;
  folder_ = folder;
  settings::BatchProcessorPath = to_path(folder).string();
  line_->show_folder(folder);
  folders_->show_folder(folder);
  place_->setCurrentIndex(place_->findData(folders_->first()));
  if (!watcher_.directories().isEmpty()) watcher_.removePaths(watcher_.directories());
  if (settings::WatchFolders != 0) watcher_.addPath(folder);
  files_->set_paths({});
  refresh(false);
}

void BatchDialog::refresh(bool all) {
  thumbnails_.forget_changed(all);
  listing_.list(folder_, false);
  files_->refresh_looks();
  show_status();
}

void BatchDialog::show_status() {
  const auto selected = files_->selected_rows().size();
  start_->setEnabled(selected > 0);
  status_->setText(
      listing_.at_work() && files_->paths().isEmpty()
          ? tr("Reading the folder...")
          : tr("%1 (%2 selected)")
                .arg(to_qt(count_text(StringId::OneFile, static_cast<std::uint64_t>(files_->paths().size()))))
                .arg(selected));
}

void BatchDialog::choose(const BatchProcess& process) {
  const auto row = std::ranges::find(batch_processes(), process);
  if (row != batch_processes().end())
    process_->setCurrentIndex(static_cast<int>(row - batch_processes().begin()));
}

const BatchProcess& BatchDialog::process() const {
  return batch_processes()[static_cast<std::size_t>(process_->currentIndex())];
}

/// The dialog of the operation or export over the first of the files.
std::optional<FieldValues> BatchDialog::ask_values(const QString& sample) {
  DocumentWindow window;
  Host silent;
  if (!QFileInfo::exists(sample)) {
    services_.host.show(StringId::FileNotFound);
    return std::nullopt;
  }
  const Parameters& parameters = process().parameters();
  if (!open_document(window, to_path(sample), silent) || !takes_kind(parameters, window.document.kind)) {
    services_.host.show(StringId::ErrorAccessingChunk, {}, to_path(sample).string());
    return std::nullopt;
  }
  if (process().exporter) return ask_for_export(parameters, window, services_, this);
  window.list.select_all(true);
  const auto choice = ask_for_operation(*process().operation, window, services_, this);
  return choice ? std::optional(choice->values) : std::nullopt;
}

bool BatchDialog::run() {
  const QStringList paths = files_->selected_paths();
  if (paths.isEmpty()) {
    services_.host.show(StringId::SelectionNotFound);
    return false;
  }
  const auto values = ask_values(paths.front());
  const auto destination = values ? choose_destination(services_, this) : std::nullopt;
  if (!destination) return false;
  std::vector<BatchFile> files;
  for (const QString& path : paths) files.push_back({to_path(path), {}});
  line_->remember(folder_);
  BatchProgress(run_of(process(), *values, *destination), std::move(files), services_, this).exec();
  refresh(false);
  return true;
}

void BatchDialog::view_file(const QString& path) {
  DocumentWindow window;
  if (open_document(window, to_path(path), services_.host) && view) view(window);
}

bool BatchDialog::wants_deleting(const QStringList& paths, bool named) {
  const bool trash = settings::BPUseRecycleBin != 0;
  const auto ask = [&](StringId id, const std::string& value) {
    const Message question{id, {}, filled(id, {value}), {}, nullptr};
    return !services_.host.ask || services_.host.ask(question, false) == Answer::Yes;
  };
  if (paths.size() == 1 && !named)
    return ask(trash ? StringId::TrashSelectedQuestion : StringId::DeleteSelectedQuestion, {});
  if (paths.size() == 1)
    return ask(trash ? StringId::TrashThisQuestion : StringId::DeleteThisQuestion,
               QFileInfo(paths.front()).fileName().toStdString());
  return ask(trash ? StringId::TrashSeveralQuestion : StringId::DeleteSeveralQuestion,
             std::to_string(paths.size()));
}

void BatchDialog::delete_selected(bool named) {
  const QStringList paths = files_->selected_paths();
  if (paths.isEmpty() || !wants_deleting(paths, named)) return;
  bool trash = settings::BPUseRecycleBin != 0;
  for (const QString& path : paths) {
    if (trash && QFile::moveToTrash(path)) continue;
    const std::string name = QFileInfo(path).fileName().toStdString();
    if (trash) {
      const Message question{
          StringId::NoTrashQuestion, {}, filled(StringId::NoTrashQuestion, {name}), {}, nullptr};
      if (services_.host.ask && services_.host.ask(question, false) != Answer::Yes) break;
      trash = false;  // one answer holds for the rest
    }
    if (!QFile::remove(path)) services_.host.show(StringId::FileNotRemoved, {}, name);
  }
  refresh(false);
}

void BatchDialog::fill_menu(QMenu& menu) {
  const QStringList selected = files_->selected_paths();
  menu.addAction(tr("&Delete"), this, [this] { delete_selected(true); })->setEnabled(!selected.isEmpty());
  menu.addAction(tr("Select &all"), files_, &QListView::selectAll);
  menu.addAction(tr("Select &none"), files_, &QListView::clearSelection)->setEnabled(!selected.isEmpty());
  menu.addAction(tr("&Refresh"), this, [this] { refresh(true); });
  menu.addAction(tr("&View"), this, [this, selected] { view_file(selected.value(0)); })
      ->setEnabled(!selected.isEmpty());
}

/// Where the screen is small the files keep their room.
void BatchDialog::resizeEvent(QResizeEvent* event) {
  QDialog::resizeEvent(event);
  const int across = panes_->width(), most = std::max(across - kLeastFiles, kLeastTree);
  if (panes_->sizes().at(0) > most) panes_->setSizes({most, across - most});
}

void BatchDialog::done(int result) {
  if (!isMaximized() && isVisible()) {
    settings::BatchProcessorDialogWide = width();
    settings::BatchProcessorDialogDeep = height();
  }
  QDialog::done(result);
}

}  // namespace vellum
