#include "shell/dialogs/strip_window.h"

#include <QPushButton>
#include <QShortcut>
#include <QVBoxLayout>

#include "base/text.h"
#include "configuration/shell_settings.h"
#include "core/edit/delete_chunks.h"
#include "core/edit/insert_chunk.h"
#include "core/edit/move_chunks.h"
#include "image/graphic_file.h"
#include "shell/dialogs/parameter_dialog.h"
#include "shell/look/style.h"
#include "shell/look/text.h"
#include "shell/services/file_dialogs.h"
#include "shell/services/picture_files.h"

namespace vellum {
namespace {

constexpr int kEditCommand = 205;

QString window_title(DocumentFrame& frame) {
  const std::filesystem::path name = document_title(frame.document());
  return plain_title(path_text(name.filename())) + QObject::tr(" - Image Strip");
}

/// A picture with this many frames: "name-strip.png".
std::filesystem::path strip_name(const Document& document) {
  return std::filesystem::path(document_title(document)).stem().string() + "-strip.png";
}

}  // namespace

StripWindow::StripWindow(DocumentFrame& frame, ThumbnailCache& thumbnails, Services& services,
                         std::function<void(int)> run, QWidget* parent)
    : QWidget(parent, Qt::Tool),
      frame_(frame),
      services_(services),
      view_(new StripView(frame.content(), thumbnails, this)) {
  setAttribute(Qt::WA_DeleteOnClose);
  setObjectName(QStringLiteral("StripWindow"));
  setWindowTitle(window_title(frame));
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(style::kGap, style::kGap, style::kGap, style::kGap);
  layout->addWidget(view_, 1);
  auto* line = new QHBoxLayout;
  auto* options = new QPushButton(tr("&Options"));
  auto* menu = new QMenu(options);
  add_option(*menu, tr("&Numbers"), kStripNumbers);
  add_option(*menu, tr("&Delays"), kStripDelays);
  add_option(*menu, tr("&Checkered background"), kStripCheckers);
  add_option(*menu, tr("Composed c&anvases"), kStripCanvases);
  add_option(*menu, tr("&Vertical"), kStripVertical);
  add_option(*menu, tr("&Gaps between frames"), kStripGaps);
  options->setMenu(menu);
  auto* save = new QPushButton(tr("&Save strip..."));
  auto* insert = new QPushButton(tr("&Insert from strip..."));
  connect(save, &QPushButton::clicked, this, &StripWindow::save_strip);
  connect(insert, &QPushButton::clicked, this, &StripWindow::insert_from_strip);
  line->addWidget(options);
  line->addStretch(1);
  line->addWidget(save);
  line->addWidget(insert);
  layout->addLayout(line);
  view_->open_entry = [this, run](std::size_t entry) {
    frame_.document().caret = static_cast<std::int32_t>(entry);
    run(kEditCommand);
  };
  view_->delete_selected = [this] {
    if (!services_.busy()) delete_selected(frame_.content(), services_.host);
  };
  view_->move_selected = [this](std::size_t to) { move_selected(to); };
  for (const auto& [keys, command] : {std::pair(QKeySequence::Cut, 201),
                                      {QKeySequence::Copy, 202},
                                      {QKeySequence::Paste, 203},
                                      {QKeySequence::Undo, 204},
                                      {QKeySequence::Redo, 208}})
    connect(new QShortcut(QKeySequence(keys), this), &QShortcut::activated, this,
            [run, number = command] { run(number); });
  connect(new QShortcut(QKeySequence::HelpContents, this), &QShortcut::activated, this, [] {
    if (showHelp) showHelp(QStringLiteral("IMAGESTRIP"));
  });
  connect(&frame, &DocumentFrame::changed, this, [this] {
    setWindowTitle(window_title(frame_));
    view_->reload();
  });
  // Nothing may be drawn any more once the document is gone.
  connect(&frame, &QObject::destroyed, this, [this] {
    hide();
    deleteLater();
  });
  adjustSize();
  view_->setFocus();
}

void StripWindow::add_option(QMenu& menu, const QString& label, StripOption bit) {
  QAction* action = menu.addAction(label);
  action->setCheckable(true);
  action->setChecked((settings::StripOptions & bit) != 0);
  connect(action, &QAction::toggled, this, [this, bit](bool on) {
    settings::StripOptions = on ? settings::StripOptions | bit : settings::StripOptions & ~bit;
    view_->reload();
    view_->updateGeometry();
    adjustSize();
  });
}

/// The selected frames go in front of frame `to`, or behind the last one.
void StripWindow::move_selected(std::size_t to) {
  if (services_.busy()) return;
  const FrameList frames = selected_frames(frame_.content());
  // Nothing moves where the frames stand there already.
  const bool run = !frames.empty() && frames.back() - frames.front() + 1 == frames.size();
  if (frames.empty() || (run && to >= frames.front() && to <= frames.back() + 1)) return;
  const bool at_end = to >= view_->frames();
  move_images(frame_.content(), {at_end ? view_->frames() : to + 1, !at_end, false}, services_.host);
}

std::optional<FilmStrip> StripWindow::ask_for_cells(const Parameters& parameters) {
  if (services_.busy() || !services_.choose_file) return std::nullopt;
  ParameterDialog dialog(parameters, frame_.content(), {}, services_, this);
  dialog.begin();
  return dialog.exec() == QDialog::Accepted ? std::optional(film_strip_of(dialog.values())) : std::nullopt;
}

bool StripWindow::save_strip() {
  const auto strip = ask_for_cells(kSaveStrip);
  if (!strip) return false;
  const auto path = choose_picture_file(services_, tr("Save strip"), strip_name(frame_.document()));
  if (!path) return false;
  const Picture picture = film_strip(frame_.content(), *strip, services_.host);
  return picture && write_picture_file(*path, picture, services_.host);
}

bool StripWindow::insert_from_strip() {
  const auto strip = ask_for_cells(kCutStrip);
  if (!strip) return false;
  const auto path = services_.choose_file(
      {tr("Insert from strip").toStdString(), picture_filters(true).toStdString(), {}, false});
  return path && insert_cells(*strip, *path);
}

bool StripWindow::insert_cells(const FilmStrip& strip, const std::filesystem::path& path) {
  const Picture picture = read_picture_file(path, services_.host);
  if (!picture) return false;
  const Extent canvas = document_size(frame_.entries(), frame_.document());
  const CutStrip cut = cut_strip(picture, strip.cellWidth == 0 ? canvas.width : strip.cellWidth,
                                 strip.cellHeight == 0 ? canvas.height : strip.cellHeight);
  if (cut.cells.empty()) {
    services_.host.show(StringId::SmallerThanCell);
    return false;
  }
  if (!insert_pictures(frame_.content(), cut.cells, services_.host)) return false;
  if (cut.incomplete > 0)
    services_.host.set_status(
        filled(StringId::CellsLeftOut, {std::to_string(cut.cells.size()), std::to_string(cut.incomplete)}));
  return true;
}

}  // namespace vellum
