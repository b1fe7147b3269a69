#include "shell/dialogs/wizard_dialog.h"

#include <QApplication>
#include <QDir>
#include <QResizeEvent>
#include <QScreen>
#include <QStandardPaths>
#include <QVBoxLayout>
#include <atomic>
#include <mutex>

#include "base/text.h"
#include "configuration/shell_settings.h"
#include "core/build/build_animation.h"
#include "generators/settings.h"
#include "shell/look/picture_image.h"
#include "shell/look/style.h"
#include "shell/look/text.h"
#include "shell/services/folder_pictures.h"
#include "shell/widgets/dialog_frame.h"

namespace vellum {
namespace {

constexpr QSize kLeastSize(736, 441);
constexpr int kScreenMargin = 32, kLeastPane = 100;
constexpr int kPreviewSide = 160;

QString first_folder() {
  const QString kept = to_qt(settings::NewAnimationWizardPath);
  if (!kept.isEmpty() && QDir(kept).exists()) return QDir::cleanPath(kept);
  const QString pictures = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
  return QDir(pictures).exists() ? QDir::cleanPath(pictures) : QDir::homePath();
}

const Field& field(std::string_view name) { return *find_field(kWizard.fields, name); }

int held(const Field& field) {
  return static_cast<int>(std::get<std::int64_t>(clamped(field, FieldValue(std::int64_t{*field.setting}))));
}

QCheckBox* flag_box(const Field& field, QWidget* parent) {
  auto* box = new QCheckBox(shown(field.label), parent);
  box->setToolTip(shown(field.tip));
  box->setChecked(*field.setting != 0);
  QObject::connect(box, &QCheckBox::toggled, [&field](bool on) { *field.setting = on; });
  return box;
}

constexpr int kLeastRow = 32, kMostRow = 128;

int row_height() { return std::clamp(settings::NewAnimationWizardItemHeight, kLeastRow, kMostRow); }

/// Of a row's picture, on the sharpest screen.
int row_pixels() { return static_cast<int>(row_height() * qApp->devicePixelRatio()); }

/// A frame of the preview: what was made of it; else the file's small picture, as large as the file is among
/// the others.
StreamedFrame small_frame(const FileLook& look, double scale, std::uint32_t delay) {
  StreamedFrame frame;
  frame.clears = true;
  frame.delay = delay;
  if (look.image.isNull()) return frame;
  const QSize size = look.size.isEmpty() ? look.image.size() : (QSizeF(look.size) * scale).toSize();
  frame.picture = picture_of_image(
      look.image.scaled(size.expandedTo({1, 1}), Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
  return frame;
}

}  // namespace

WizardDialog::WizardDialog(Services& services, QWidget* parent)
    : QDialog(parent),
      services_(services),
      kind_(build_kind(kDefaultKind)),
      thumbnails_(row_pixels()),
      pictures_(kPreviewSide),
      motion_(new MotionPreview(this)) {
  setWindowTitle(shown(kWizard.title));
  setWindowFlag(Qt::WindowMaximizeButtonHint);
  if (services.shift_held && services.shift_held()) reset_settings();
  QVBoxLayout* layout = dialog_layout(*this);
  layout->setSpacing(style::kGap);
  make_lists();
  layout->addWidget(panes_, 1);
  status_ = new QLabel(this);
  status_->setTextFormat(Qt::PlainText);
  status_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
  make_controls(layout);
  make_actions();
  choose_size();
  lay_out_panes();
  show_folder(first_folder());
}

/// On purpose other values than those of the first time.
void WizardDialog::reset_settings() {
  settings::NewAnimationWizardDelay = 10;
  settings::NewAnimationWizardLoop = 1;
  settings::NewAnimationWizardPaletteOption = kWizardAsIs;
  settings::NewAnimationWizardDialogWide = settings::NewAnimationWizardDialogDeep = 0;
  settings::NewAnimationWizardTreeWide = settings::NewAnimationWizardFilesWide = 0;
  settings::NewAnimationWizardSelFilesWide = 0;
  settings::NewAnimationWizardFileThumbnails = settings::NewAnimationWizardSelFileThumbnails = 1;
  settings::WizardPreserveTransparency = 0;
  settings::NewAnimationWizardPath.clear();
}

void WizardDialog::make_lists() {
  const auto looks = [this](const QString& path) { return thumbnails_.look(path); };
  folders_ = new FolderTree(this);
  available_ = new ThumbnailList(looks, this);
  chosen_ = new ThumbnailList(looks, this);
  chosen_->set_takes_files(true);
  available_->set_form(form_of(settings::NewAnimationWizardFileThumbnails));
  chosen_->set_form(form_of(settings::NewAnimationWizardSelFileThumbnails));
  panes_ = new QSplitter(this);
  panes_->setChildrenCollapsible(false);
  auto* left = new QSplitter(Qt::Vertical, panes_);
  left->setChildrenCollapsible(false);
  left->addWidget(make_pane(tr("&Folders"), folders_));
  motion_->setMinimumSize(kLeastPane, 90);
  motion_->setToolTip(tr("The pictures of the animation as they will play"));
  left->addWidget(motion_);
  left->setStretchFactor(0, 1);
  left->setSizes({400, kPreviewSide + 4});
  panes_->addWidget(left);
  add_ = new QPushButton(tr("A&dd"), this);
  remove_ = new QPushButton(tr("&Remove"), this);
  panes_->addWidget(make_pane(tr("A&vailable files"), available_, add_));
  panes_->addWidget(make_pane(tr("A&nimation"), chosen_, remove_));
  for (int i = 0; i < panes_->count(); ++i) {
    panes_->widget(i)->setMinimumWidth(kLeastPane);
    panes_->handle(i)->setObjectName(QStringLiteral("QDXPRONewAnimationWizardHorzDragClass"));
  }
}

QWidget* WizardDialog::make_pane(const QString& title, QWidget* list, QPushButton* below) {
  auto* pane = new QWidget(panes_);
  auto* layout = new QVBoxLayout(pane);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(style::kGap / 2);
  auto* label = new QLabel(title, pane);
  label->setBuddy(list);
  list->setAccessibleName(QString(title).remove(u'&'));
  layout->addWidget(label);
  layout->addWidget(list, 1);
  if (below) layout->addWidget(below, 0, Qt::AlignRight);
  return pane;
}

void WizardDialog::make_controls(QVBoxLayout* layout) {
  auto* row = new QHBoxLayout;
  row->setSpacing(style::kGap);
  palette_ = new QComboBox(this);
  const auto choices = field("palette").choices.first(wizard_palettes(kind_));
  for (const FieldChoice& choice : choices) palette_->addItem(shown(choice.name));
  palette_->setCurrentIndex(std::clamp(settings::NewAnimationWizardPaletteOption, 0, palette_->count() - 1));
  if (kind_ != DocumentKind::MING)
    palette_->setToolTip(tr("Pictures are used as they are while transparency is preserved"));
  delay_ = new QSpinBox(this);
  delay_->setRange(static_cast<int>(field("delay").least), static_cast<int>(field("delay").most));
  delay_->setValue(held(field("delay")));
  delay_->setToolTip(shown(field("delay").tip));
  loop_ = flag_box(field("loop"), this);
  preserve_ = flag_box(field("preserveTransparency"), this);
  const auto labelled = [&](const QString& text, QWidget* control) {
    auto* label = new QLabel(text, this);
    label->setBuddy(control);
    row->addWidget(label);
    row->addWidget(control);
  };
  labelled(tr("&Palette:"), palette_);
  labelled(tr("De&lay:"), delay_);
  row->addWidget(loop_);
  row->addWidget(preserve_);
  row->addStretch(1);
  layout->addLayout(row);
  layout->addWidget(status_);
  buttons_ = add_buttons(*this, QDialogButtonBox::Cancel, QStringLiteral("ANIMATIONWIZARD"));
  build_ = buttons_->addButton(tr("&Build"), QDialogButtonBox::AcceptRole);
  test_ = buttons_->addButton(tr("T&est"), QDialogButtonBox::ActionRole);
  for (QPushButton* button : {add_, remove_, test_}) button->setAutoDefault(false);
  layout->addWidget(buttons_);
}

void WizardDialog::choose_size() {
  setMinimumSize(kLeastSize);
  const QSize kept(settings::NewAnimationWizardDialogWide, settings::NewAnimationWizardDialogDeep);
  if (kept.width() >= kLeastSize.width() && kept.height() >= kLeastSize.height()) return resize(kept);
  const QSize screen = this->screen()->availableSize();
  resize((screen - QSize(2 * kScreenMargin, 2 * kScreenMargin)).expandedTo(kLeastSize));
}

void WizardDialog::lay_out_panes() {
  const int wide = width() - 2 * style::kWideGap;
  const auto or_else = [](int kept, int otherwise) {
    return std::max(kept > 0 ? kept : otherwise, kLeastPane);
  };
  const int tree = or_else(settings::NewAnimationWizardTreeWide, std::min(wide / 4, 280));
  const int files = or_else(settings::NewAnimationWizardFilesWide, (wide - tree) / 2);
  panes_->setSizes({tree, files, or_else(settings::NewAnimationWizardSelFilesWide, wide - tree - files)});
}

void WizardDialog::store_panes() {
  const QList<int> sizes = panes_->sizes();
  settings::NewAnimationWizardTreeWide = sizes[0];
  settings::NewAnimationWizardFilesWide = sizes[1];
  settings::NewAnimationWizardSelFilesWide = sizes[2];
}

void WizardDialog::resizeEvent(QResizeEvent* event) {
  QDialog::resizeEvent(event);
  show_status();
}

void WizardDialog::done(int result) {
  if (!isMaximized() && isVisible()) {
    settings::NewAnimationWizardDialogWide = width();
    settings::NewAnimationWizardDialogDeep = height();
  }
  QDialog::done(result);
}

ThumbnailListForm WizardDialog::form_of(int thumbnails) const {
  return {.thumbnails = thumbnails != 0,
          .details = settings::NewAnimationWizardThumbnailDetails != 0,
          .tight = settings::NewAnimationWizardTightThumbnails != 0,
          .exact = settings::NewAnimationWizardExactThumbnails != 0,
          .height = row_height()};
}

void WizardDialog::show_folder(const QString& folder) {
  if (folder.isEmpty() || folder == folder_) return;
  folder_ = folder;
  const QString kept = folder.endsWith(u'/') ? folder : folder + u'/';
  settings::NewAnimationWizardPath = to_path(kept).string();
  watch(folder);
  folders_->show_folder(folder);
  available_->clearSelection();
  refresh();
  available_->scrollToTop();
}

void WizardDialog::watch(const QString& folder) {
  if (!watcher_.directories().isEmpty()) watcher_.removePaths(watcher_.directories());
  if (settings::WatchFolders != 0) watcher_.addPath(folder);
}

void WizardDialog::refresh() {
  thumbnails_.forget_changed();
  available_->set_paths(pictures_of_folder(folder_));
  available_->refresh_looks();
  chosen_->refresh_looks();
  show_status();
}

void WizardDialog::show_status() {
  const auto selected = available_->selected_rows().size(), selectedChosen = chosen_->selected_rows().size();
  const auto count = chosen_->paths().size();
  add_->setEnabled(selected > 0);
  remove_->setEnabled(selectedChosen > 0);
  build_->setEnabled(count > 1);
  test_->setEnabled(count > 1);
  tell(to_qt(filled(StringId::WizardStatus,
                    {folder_.toStdString(), std::to_string(available_->paths().size()),
                     std::to_string(selected), std::to_string(count), std::to_string(selectedChosen)})));
}

void WizardDialog::tell(const QString& text) {
  statusText_ = text;
  status_->setToolTip(text.toHtmlEscaped());
  status_->setText(status_->fontMetrics().elidedText(text, Qt::ElideMiddle, std::max(status_->width(), 200)));
}

void WizardDialog::follow_sizes(bool anew) {
  const QSize before = canvas_;
  if (anew) canvas_ = QSize();
  for (const QString& path : chosen_->paths()) canvas_ = canvas_.expandedTo(thumbnails_.peek(path).size);
  if (anew || canvas_ != before) play();
}

/// The frames that will be built, made smaller one by one.
struct WizardDialog::Shown {
  WizardChoice choice;
  DocumentKind kind;
  Extent canvas;
  QSize small;  ///< the canvas in the preview
  std::atomic<bool> wanted = true;
  std::once_flag once;
  WizardShown frame;

  FileLook look(const QString& path) {
    std::call_once(once, [this] {
      Host quiet;
      quiet.ask = [](const Message&, bool) { return Answer::Yes; };
      quiet.stop_requested = [this] { return !wanted; };
      frame = wizard_shown(choice.files, choice.values, kind, quiet);
    });
    FileLook look;
    if (!frame || !wanted) return look;
    const bool first = to_path(path) == choice.files.front();
    const Picture whole = frame(to_path(path), first ? 0 : 1, canvas);
    if (whole) look.image = scaled_image(whole, small);
    return look;
  }
};

WizardDialog::~WizardDialog() {
  if (shown_) shown_->wanted = false;
}

void WizardDialog::play() {
  const QStringList files = chosen_->paths();
  if (shown_) shown_->wanted = false;
  if (files.isEmpty() || canvas_.isEmpty()) return motion_->play(std::nullopt);
  const double scale = std::min(1.0, double{kPreviewSide} / std::max(canvas_.width(), canvas_.height()));
  const QSize small = (QSizeF(canvas_) * scale).toSize().expandedTo({1, 1});
  shown_ = std::make_shared<Shown>();
  shown_->choice = choice();
  shown_->kind = kind_;
  shown_->canvas = {static_cast<std::uint32_t>(canvas_.width()),
                    static_cast<std::uint32_t>(canvas_.height())};
  shown_->small = small;
  pictures_.set_maker([shown = shown_](const QString& path) { return shown->look(path); });
  const auto delay = static_cast<std::uint32_t>(delay_->value());
  FrameStream stream;
  stream.canvas = {static_cast<std::uint32_t>(small.width()), static_cast<std::uint32_t>(small.height())};
  stream.count = static_cast<std::size_t>(files.size());
  stream.frame = [this, files, scale, delay](std::size_t frame) {
    // The next ones are made while this one is seen.
    const auto at = static_cast<qsizetype>(frame);
    for (qsizetype ahead = 3; ahead > 0; --ahead) pictures_.look(files[(at + ahead) % files.size()]);
    const FileLook made = pictures_.look(files[at]);
    return small_frame(made.image.isNull() ? thumbnails_.peek(files[at]) : made, scale, delay);
  };
  motion_->play(std::move(stream));
}

FieldValues WizardDialog::values() const {
  FieldValues values = setting_values(kWizard.fields);
  values.set("palette", std::int64_t{palette_->currentIndex()});
  const bool control = services_.control_held && services_.control_held();
  values.set("masks", std::int64_t{!control});
  return values;
}

WizardChoice WizardDialog::choice() const {
  WizardChoice choice{{}, values()};
  for (const QString& path : chosen_->paths()) choice.files.push_back(to_path(path));
  return choice;
}

bool WizardDialog::run(DocumentWindow& window) {
  if (!build || chosen_->paths().size() < 2) return false;
  const WizardChoice chosen = choice();
  motion_->play(std::nullopt);
  tell(text_of(StringId::WizardBuilding));
  status_->repaint();
  QApplication::setOverrideCursor(Qt::WaitCursor);
  Host host = services_.host;
  host.progress_step = [this](std::uint64_t done, std::uint64_t total) {
    if (services_.host.progress_step) services_.host.progress_step(done, total);
    const auto percent = done * 100 / std::max<std::uint64_t>(total, 1);
    tell(text_of(StringId::WizardBuilding) + QStringLiteral("  %1 %").arg(percent));
  };
  const bool good = build(chosen, window, host);
  QApplication::restoreOverrideCursor();
  show_status();
  play();
  return good;
}

void WizardDialog::accept() {
  if (run(made_)) QDialog::accept();
}

void WizardDialog::run_test() {
  DocumentWindow temporary;
  if (!run(temporary) || !view) return;
  motion_->play(std::nullopt);
  view(temporary);
  play();
}

}  // namespace vellum
