#include "shell/docks/strip_panel.h"

#include <QToolButton>

#include "base/text.h"
#include "configuration/shell_settings.h"
#include "core/edit/delete_chunks.h"
#include "core/edit/insert_chunk.h"
#include "core/edit/move_chunks.h"
#include "image/graphic_file.h"
#include "shell/dialogs/parameter_dialog.h"
#include "shell/look/icon.h"
#include "shell/look/style.h"
#include "shell/look/text.h"
#include "shell/services/file_dialogs.h"
#include "shell/services/picture_files.h"

namespace vellum {
namespace {

constexpr int kEditCommand = 205;
constexpr int kToolIcon = 16;

/// A picture with this many frames: "name-strip.png".
std::filesystem::path strip_name(const Document& document) {
  return std::filesystem::path(document_title(document)).stem().string() + "-strip.png";
}

}  // namespace

StripPanel::StripPanel(DockContext& context)
    : context_(context),
      services_(context.services),
      view_(new StripView(context.thumbnails, this)),
      tools_(new QWidget(this)) {
  auto* row = new QBoxLayout(QBoxLayout::LeftToRight, this);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(0);
  row->addWidget(view_, 1);
  row->addWidget(tools_);
  auto* tools = new QBoxLayout(QBoxLayout::TopToBottom, tools_);
  tools->setContentsMargins(style::kGap / 4, style::kGap / 4, style::kGap / 4, style::kGap / 4);
  tools->setSpacing(style::kGap / 4);
  add_options();
  connect(add_tool("save", tr("Save strip...")), &QToolButton::clicked, this, &StripPanel::save_strip);
  connect(add_tool("insert", tr("Insert from strip...")), &QToolButton::clicked, this,
          &StripPanel::insert_from_strip);
  tools->addStretch(1);
  setFocusProxy(view_);
  connect_view();
}

QToolButton* StripPanel::add_tool(const char* icon, const QString& tip) {
  auto* button = new QToolButton(tools_);
  button->setIcon(program_icon(icon));
  button->setIconSize(QSize(kToolIcon, kToolIcon));
  button->setAutoRaise(true);
  button->setFocusPolicy(Qt::TabFocus);
  button->setToolTip(tip);
  button->setAccessibleName(tip);
  tools_->layout()->addWidget(button);
  return button;
}

void StripPanel::add_options() {
  QToolButton* options = add_tool("more", tr("Options"));
  auto* menu = new QMenu(options);
  add_option(*menu, tr("&Numbers"), kStripNumbers);
  add_option(*menu, tr("&Delays"), kStripDelays);
  add_option(*menu, tr("&Checkered background"), kStripCheckers);
  add_option(*menu, tr("Composed c&anvases"), kStripCanvases);
  add_option(*menu, tr("&Vertical"), kStripVertical);
  add_option(*menu, tr("&Gaps between frames"), kStripGaps);
  options->setMenu(menu);
  options->setPopupMode(QToolButton::InstantPopup);
}

void StripPanel::add_option(QMenu& menu, const QString& label, StripOption bit) {
  QAction* action = menu.addAction(label);
  action->setCheckable(true);
  action->setChecked((settings::StripOptions & bit) != 0);
  connect(action, &QAction::toggled, this, [this, bit](bool on) {
    settings::StripOptions = on ? settings::StripOptions | bit : settings::StripOptions & ~bit;
    lay_out();
    view_->reload();
    view_->updateGeometry();
  });
}

void StripPanel::connect_view() {
  view_->open_entry = [this](std::size_t entry) {
    frame_->document().caret = static_cast<std::int32_t>(entry);
    context_.run(kEditCommand);
  };
  view_->selected = [this] { frame_->show_caret(); };
  view_->delete_selected = [this] {
    if (!services_.busy()) delete_selected(frame_->content(), services_.host);
  };
  view_->move_selected = [this](std::size_t to, bool copy) { move_selected(to, copy); };
  view_->drag_out = [this] {
    if (!services_.busy() && context_.drag_out)
      context_.drag_out(*frame_, (settings::StripOptions & kStripCanvases) != 0);
  };
  view_->is_own = [this](const QMimeData& dragged) {
    return frame_ && !services_.busy() && context_.is_drag_of && context_.is_drag_of(*frame_, dragged);
  };
}

void StripPanel::show_document(DocumentFrame* frame) {
  frame_ = frame;
  view_->show_window(frame ? &frame->content() : nullptr);
  tools_->setEnabled(frame);
}

void StripPanel::follow() {
  view_->reload();
  view_->show_current();
}

void StripPanel::resizeEvent(QResizeEvent* event) {
  DockPanel::resizeEvent(event);
  lay_out();
}

/// The buttons stand across the way that the frames run.
void StripPanel::lay_out() {
  const bool down = height() > width();
  static_cast<QBoxLayout*>(layout())->setDirection(down ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
  static_cast<QBoxLayout*>(tools_->layout())
      ->setDirection(down ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
}

/// The selected frames, or copies of them, go in front of frame `to`, or behind the last one.
void StripPanel::move_selected(std::size_t to, bool copy) {
  if (services_.busy()) return;
  const FrameList frames = selected_frames(frame_->content());
  // Nothing moves where the frames stand there already.
  const bool run = !frames.empty() && frames.back() - frames.front() + 1 == frames.size();
  if (frames.empty() || (!copy && run && to >= frames.front() && to <= frames.back() + 1)) return;
  const bool at_end = to >= view_->frames();
  move_images(frame_->content(), {at_end ? view_->frames() : to + 1, !at_end, copy}, services_.host);
}

std::optional<FilmStrip> StripPanel::ask_for_cells(const Parameters& parameters) {
  if (!frame_ || services_.busy() || !services_.choose_file) return std::nullopt;
  ParameterDialog dialog(parameters, frame_->content(), {}, services_, this);
  dialog.begin();
  return dialog.exec() == QDialog::Accepted ? std::optional(film_strip_of(dialog.values())) : std::nullopt;
}

bool StripPanel::save_strip() {
  const auto strip = ask_for_cells(kSaveStrip);
  if (!strip) return false;
  const auto path = choose_picture_file(services_, tr("Save strip"), strip_name(frame_->document()));
  if (!path) return false;
  const Picture picture = film_strip(frame_->content(), *strip, services_.host);
  return picture && write_picture_file(*path, picture, services_.host);
}

bool StripPanel::insert_from_strip() {
  const auto strip = ask_for_cells(kCutStrip);
  if (!strip) return false;
  const auto path = services_.choose_file(
      {tr("Insert from strip").toStdString(), picture_filters(true).toStdString(), {}, false});
  return path && insert_cells(*strip, *path);
}

bool StripPanel::insert_cells(const FilmStrip& strip, const std::filesystem::path& path) {
  const Picture picture = read_picture_file(path, services_.host);
  if (!picture) return false;
  const Extent canvas = document_size(frame_->entries(), frame_->document());
  const CutStrip cut = cut_strip(picture, strip.cellWidth == 0 ? canvas.width : strip.cellWidth,
                                 strip.cellHeight == 0 ? canvas.height : strip.cellHeight);
  if (cut.cells.empty()) {
    services_.host.show(StringId::SmallerThanCell);
    return false;
  }
  if (!insert_pictures(frame_->content(), cut.cells, services_.host)) return false;
  if (cut.incomplete > 0)
    services_.host.set_status(filled(
        StringId::CellsLeftOut,
        {count_text(StringId::OneImage, cut.cells.size()), count_text(StringId::OneCell, cut.incomplete)}));
  return true;
}

}  // namespace vellum
