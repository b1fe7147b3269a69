#include "shell/docks/preview_panel.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPainter>
#include <algorithm>

#include "core/model/frame_values.h"
#include "operations/frames.h"
#include "shell/look/icon.h"
#include "shell/look/style.h"
#include "shell/look/text.h"
#include "shell/viewer/player_clock.h"

namespace vellum {
namespace {

constexpr int kViewCommand = 56;
constexpr int kToolIcon = 16;
constexpr QSize kWanted(340, 280);
constexpr int kHiddenInterval = 500;  // milliseconds until a window that is an icon is looked at again

}  // namespace

PreviewPanel::PreviewPanel(DockContext& context)
    : context_(context), canvas_(new ViewerCanvas(this)), strip_(new ProgressStrip(this)) {
  setAccessibleName(tr("Preview"));
  setFocusPolicy(Qt::StrongFocus);
  canvas_->setFocusPolicy(Qt::NoFocus);
  canvas_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  canvas_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  canvas_->setMinimumHeight(style::kBoxIcon);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(1, 1, 1, 1);
  column->setSpacing(0);
  column->addWidget(canvas_, 1);
  column->addWidget(strip_);
  column->addWidget(make_controls());
  timer_.setSingleShot(true);
  timer_.setTimerType(Qt::PreciseTimer);
  connect(&timer_, &QTimer::timeout, this, &PreviewPanel::beat);
  connect(strip_, &ProgressStrip::sought, this, &PreviewPanel::stand_on);
  connect(canvas_, &ViewerCanvas::full_screen_wanted, this, [this] { context_.run(kViewCommand); });
  canvas_->set_ground(style::work_area_colour(palette()), false);
  canvas_->set_filling(true);
  show_state();
}

QSize PreviewPanel::sizeHint() const { return kWanted; }

QToolButton* PreviewPanel::add_tool(QWidget* bar, const char* icon, StringId tip,
                                    void (PreviewPanel::*press)()) {
  auto* button = new QToolButton(bar);
  button->setIcon(program_icon(icon));
  button->setIconSize(QSize(kToolIcon, kToolIcon));
  button->setAutoRaise(true);
  button->setFocusPolicy(Qt::TabFocus);
  button->setToolTip(text_of(tip));
  button->setAccessibleName(button->toolTip());
  connect(button, &QToolButton::clicked, this, press);
  bar->layout()->addWidget(button);
  tools_.push_back(button);
  return button;
}

QWidget* PreviewPanel::make_controls() {
  auto* bar = new QWidget(this);
  auto* row = new QHBoxLayout(bar);
  row->setContentsMargins(style::kGap / 4, style::kGap / 4, style::kGap / 4, style::kGap / 4);
  row->setSpacing(style::kGap / 4);
  row->addStretch(1);
  add_tool(bar, "rewind", StringId::ViewerRewind, &PreviewPanel::rewind);
  add_tool(bar, "step_back", StringId::ViewerStepBack, &PreviewPanel::step_back);
  play_ = add_tool(bar, "play", StringId::ViewerPlay, &PreviewPanel::toggle);
  add_tool(bar, "step_forward", StringId::ViewerStepForward, &PreviewPanel::step_forward);
  row->addStretch(1);
  return bar;
}

// --------------------------------------------------------------------------------------------- the document

void PreviewPanel::clear() {
  timer_.stop();
  player_.reset();
  content_ = {};
  followed_.reset();
  strip_->set_frames(0);
  strip_->show_progress(0, {});
  canvas_->show_frame({}, false);
  show_state();
}

void PreviewPanel::show_document(DocumentFrame* frame) {
  clear();
  frame_ = frame;
  if (frame) follow();
}

bool PreviewPanel::same_content() const {
  const ChunkList& now = frame_->entries();
  if (!player_ || now.size() != content_.list.size() || frame_->document().kind != content_.document.kind)
    return false;
  for (std::size_t i = 0; i < now.size(); ++i)
    if (now.entry(i).record != content_.list.entry(i).record) return false;
  return true;
}

/// Among the frames; nothing where the caret stands on another entry.
std::optional<std::uint32_t> PreviewPanel::caret_frame() const {
  const auto entries = frame_entries(frame_->content());
  const auto caret = static_cast<std::size_t>(std::max(frame_->document().caret, 0));
  const auto at = std::ranges::lower_bound(entries, caret);
  if (at == entries.end() || *at != caret) return std::nullopt;
  return static_cast<std::uint32_t>(at - entries.begin());
}

void PreviewPanel::follow() {
  const auto caret = caret_frame();
  const bool moved = std::exchange(followed_, caret) != caret && caret;
  if (!same_content()) {
    const bool first = !player_ || content_.list.empty();
    const bool plays = first ? wantsPlay_ : player_->can_pause() || goesOn_;
    load(moved ? *caret : first ? 0 : player_->shown().ordinal, plays && !moved);
  } else if (moved) {
    stand_on(*caret);
  }
}

void PreviewPanel::load(std::uint32_t ordinal, bool play) {
  Compositor::Heritage composed = player_ ? player_->leave() : Compositor::Heritage();
  player_.reset();
  content_ = {frame_->document(), frame_->entries(), {}};
  player_.emplace(content_.list, content_.document, player_clock());
  player_->follow_edits(std::move(composed));
  strip_->set_frames(player_->compositor().frames());
  strip_->setVisible(player_->compositor().frames() > 1);
  const bool begins = !player_->is_animation() || (ordinal == 0 && play);
  goesOn_ = play && !begins;
  begins ? player_->play() : player_->seek(ordinal);
  beat();
}

// -------------------------------------------------------------------------------------------------- playing

std::function<void(const ShownFrame&)> PreviewPanel::painter() {
  return [this](const ShownFrame& frame) {
    strip_->show_progress(frame.ordinal, to_qt(player_->progress_text()));
    canvas_->show_frame(frame.picture, player_->ground().kind == Ground::Kind::Clear);
  };
}

void PreviewPanel::beat() {
  if (!player_) return;
  if (window()->isMinimized()) return timer_.start(kHiddenInterval);
  auto wait = player_->tick(painter());
  // The frame that was sought is there, from which it plays.
  const bool plays = player_->can_pause() || (goesOn_ && player_->state() == PlayerState::Paused);
  if (!wait && !player_->is_waiting() && plays) {
    goesOn_ = false;
    player_->play();
    wait = std::max(player_->shown().delay, 1u);
  }
  beat_in(wait);
}

void PreviewPanel::beat_in(std::optional<std::uint32_t> wait) {
  if (wait)
    timer_.start(static_cast<int>(std::min<std::uint32_t>(*wait, INT32_MAX)));
  else
    timer_.stop();
  show_state();
}

void PreviewPanel::toggle() {
  if (!player_ || !player_->is_animation()) return;
  wantsPlay_ = player_->can_play() && !goesOn_;
  goesOn_ = false;
  wantsPlay_ ? player_->play() : player_->pause();
  beat_in(wantsPlay_ || player_->is_waiting() ? std::optional(0u) : std::nullopt);
}

void PreviewPanel::stand_on(std::uint32_t ordinal) {
  if (!player_ || !player_->is_animation()) return;
  goesOn_ = false;
  player_->seek(ordinal);
  beat();
}

void PreviewPanel::rewind() { stand_on(0); }

void PreviewPanel::step_back() {
  if (player_) stand_on(std::max(player_->shown().ordinal, 1u) - 1);
}

void PreviewPanel::step_forward() {
  if (player_) stand_on(player_->shown().ordinal + 1);
}

void PreviewPanel::show_state() {
  const bool animation = player_ && player_->is_animation() && player_->compositor().frames() > 1;
  for (QToolButton* tool : tools_) tool->setEnabled(animation);
  const bool plays = animation && (player_->can_pause() || goesOn_);
  if (play_->property("plays") != plays) {
    play_->setProperty("plays", plays);
    play_->setIcon(program_icon(plays ? "pause" : "play"));
    play_->setToolTip(text_of(plays ? StringId::ViewerPause : StringId::ViewerPlay));
    play_->setAccessibleName(play_->toolTip());
  }
  setAccessibleDescription(strip_->text());
}

// ------------------------------------------------------------------------------------------ keys and looks

void PreviewPanel::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_Space:
      return toggle();
    case Qt::Key_Left:
      return step_back();
    case Qt::Key_Right:
      return step_forward();
    case Qt::Key_Home:
      return rewind();
    case Qt::Key_End:
      return stand_on(UINT32_MAX);
    case Qt::Key_F:
      return canvas_->set_filling(true);
    default:
      DockPanel::keyPressEvent(event);
  }
}

void PreviewPanel::changeEvent(QEvent* event) {
  DockPanel::changeEvent(event);
  if (event->type() == QEvent::PaletteChange) canvas_->set_ground(style::work_area_colour(palette()), false);
}

/// A line around what hears the keys.
void PreviewPanel::paintEvent(QPaintEvent*) {
  if (!hasFocus()) return;
  QPainter painter(this);
  painter.setPen(palette().color(QPalette::Highlight));
  painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

void PreviewPanel::focusInEvent(QFocusEvent*) { update(); }
void PreviewPanel::focusOutEvent(QFocusEvent*) { update(); }

}  // namespace vellum
