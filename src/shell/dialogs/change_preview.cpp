#include "shell/dialogs/change_preview.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollArea>
#include <QVBoxLayout>
#include <algorithm>

#include "base/limits.h"
#include "configuration/shell_settings.h"
#include "core/edit/frame_layer.h"
#include "core/edit/insert_chunk.h"
#include "image/resample.h"
#include "operations/frames.h"
#include "shell/look/picture_image.h"
#include "shell/look/style.h"

namespace vellum {
namespace {

constexpr QSizeF kFitted(400, 300);  ///< pixels that a preview is computed from at most
constexpr QSize kPane(240, 180), kNarrowPane(160, 120);
constexpr int kLeastBeat = 20;  ///< milliseconds

/// Also in actual size a preview has an end: a slider can't be dragged over what takes seconds.
QSizeF largest_actual() {
  const int most = std::clamp(settings::MaximumPreviewDimension, 0, 10'000);
  return most == 0 ? QSizeF(kMaximumDimension, kMaximumDimension) : QSizeF(most, most);
}

/// How much a frame is made smaller, so that neither it nor its result is larger than a preview.
double reduction(const Picture& frame, double growth, QSizeF most) {
  const double larger = std::max(growth, 1.0);
  return std::min({1.0, most.width() / (frame.width() * larger), most.height() / (frame.height() * larger)});
}

/// `fitted`: no larger than its pane.
void show_picture(QLabel& label, const Picture& picture, bool fitted) {
  QPixmap shown = picture ? QPixmap::fromImage(image_of_picture(picture)) : QPixmap();
  const QSize pane = label.parentWidget()->size();
  if (fitted && !shown.isNull() && (shown.width() > pane.width() || shown.height() > pane.height()))
    shown = shown.scaled(pane, Qt::KeepAspectRatio, Qt::SmoothTransformation);
  label.setPixmap(shown);
  label.adjustSize();
}

}  // namespace

ChangePreview::ChangePreview(const DocumentWindow& window, Change change, Growth growth, QWidget* parent,
                             Source source)
    : QWidget(parent),
      window_(window),
      change_(std::move(change)),
      growth_(std::move(growth)),
      source_(source) {
  setAccessibleName(tr("Preview"));
  panes_ = new QHBoxLayout;
  beforeLabel_ = add_pane(*panes_, tr("Before"));
  afterLabel_ = add_pane(*panes_, tr("After"));
  slider_ = new QSlider(Qt::Horizontal, this);
  slider_->setAccessibleName(tr("Frame", "of an animation"));
  const auto entries = frame_entries(window);
  slider_->setRange(0, std::max(static_cast<int>(entries.size()) - 1, 0));
  const auto current = std::ranges::find(entries, caret_entry(window));
  if (current != entries.end()) slider_->setValue(static_cast<int>(current - entries.begin()));
  play_ = new QToolButton(this);
  play_->setText(tr("Play"));
  play_->setCheckable(true);
  play_->setEnabled(slider_->maximum() > 0);
  actual_ = new QToolButton(this);
  actual_->setText(tr("Actual size"));
  actual_->setCheckable(true);
  auto* line = new QHBoxLayout;
  for (QWidget* widget :
       {static_cast<QWidget*>(slider_), static_cast<QWidget*>(play_), static_cast<QWidget*>(actual_)})
    line->addWidget(widget);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(style::kGap);
  layout->addLayout(panes_, 1);
  layout->addLayout(line);
  refreshTimer_.setSingleShot(true);
  playTimer_.setSingleShot(true);
  connect(&refreshTimer_, &QTimer::timeout, this, &ChangePreview::show_frame);
  connect(&playTimer_, &QTimer::timeout, this, &ChangePreview::step);
  connect(slider_, &QSlider::valueChanged, this, &ChangePreview::refresh);
  connect(actual_, &QToolButton::toggled, this, &ChangePreview::refresh);
  connect(play_, &QToolButton::toggled, this,
          [this](bool on) { on ? playTimer_.start(0) : playTimer_.stop(); });
  show_frame();
}

QLabel* ChangePreview::add_pane(QLayout& layout, const QString& title) {
  auto* side = new QWidget(this);
  auto* label = new QLabel(side);
  label->setAccessibleName(title);
  label->setAlignment(Qt::AlignCenter);
  auto* area = new QScrollArea(side);
  area->setWidget(label);
  area->setAccessibleName(title);
  area->setAlignment(Qt::AlignCenter);
  area->setMinimumSize(kPane);
  auto* column = new QVBoxLayout(side);
  column->setContentsMargins(0, 0, 0, 0);
  column->addWidget(new QLabel(title, side));
  column->addWidget(area, 1);
  layout.addWidget(side);
  return label;
}

void ChangePreview::stack() {
  panes_->setDirection(QBoxLayout::TopToBottom);
  for (QScrollArea* area : findChildren<QScrollArea*>()) area->setMinimumSize(kNarrowPane);
  static_cast<QBoxLayout*>(layout())->insertWidget(1, slider_);
}

void ChangePreview::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  refresh();
}

void ChangePreview::refresh() { refreshTimer_.start(0); }

Picture ChangePreview::frame_picture() {
  const auto entries = frame_entries(window_);
  if (entries.empty()) return {};
  const auto at = std::min(static_cast<std::size_t>(slider_->value()), entries.size() - 1);
  if (source_ == Source::ReducedFrame)
    return frame_layer_of(frame_source_of(window_), window_.list.record(entries[at])).picture;
  if (!compositor_) compositor_.emplace(window_.list, window_.document);
  return at < compositor_->frames() ? compositor_->frame(static_cast<std::uint32_t>(at)).picture : Picture();
}

Picture ChangePreview::reduced(const Picture& picture, double percent) const {
  return picture && percent < 100 ? PictureScalePercent(picture, percent, percent, ResampleFilter::Box)
                                  : picture;
}

void ChangePreview::show_frame() {
  Shown shown{frame_picture(), static_cast<std::size_t>(slider_->value()), 100};
  const QSizeF most = actual_->isChecked() ? largest_actual() : kFitted;
  const double percent = shown.picture ? 100 * reduction(shown.picture, growth_(shown.picture), most) : 100;
  Picture before = reduced(shown.picture, percent);
  if (source_ == Source::ReducedFrame) {
    shown.picture = before;
    shown.percent = percent;
  }
  after_ = shown.picture ? change_(shown) : Picture();
  afterScale_ = 100 / shown.percent;
  if (source_ == Source::Canvas && after_) {
    const double less = reduction(after_, 1, most);
    after_ = reduced(after_, 100 * less);
    afterScale_ = 1 / less;
  }
  show_picture(*beforeLabel_, before, !actual_->isChecked());
  show_picture(*afterLabel_, after_, !actual_->isChecked());
}

void ChangePreview::set_draggable(const QString& hint) {
  hint_ = new QLabel(hint, this);
  hint_->setWordWrap(true);
  static_cast<QBoxLayout*>(layout())->insertWidget(1, hint_);
  afterLabel_->setCursor(Qt::SizeAllCursor);
  afterLabel_->setFocusPolicy(Qt::StrongFocus);
  afterLabel_->setAccessibleDescription(hint);
  afterLabel_->installEventFilter(this);
}

bool ChangePreview::drag(const QMouseEvent& event) {
  const QPixmap shown = afterLabel_->pixmap();
  if (shown.isNull() || !after_) return false;
  // The picture stands in the middle of its label.
  const double scale = afterScale_ * after_.width() / shown.width();
  const QPointF corner =
      QPointF(afterLabel_->width() - shown.width(), afterLabel_->height() - shown.height()) / 2;
  const QPointF at = (event.position() - corner) * scale;
  if (event.type() == QEvent::MouseButtonPress) {
    grabbedAt_ = at;
    emit grabbed();
    return true;
  }
  if (!grabbedAt_) return false;
  emit dragged((at - *grabbedAt_).toPoint(), at.toPoint(),
               (QSizeF(after_.width(), after_.height()) * afterScale_).toSize());
  if (event.type() == QEvent::MouseButtonRelease) grabbedAt_.reset();
  return true;
}

bool ChangePreview::nudge(const QKeyEvent& event) {
  const int step = event.modifiers() & Qt::ShiftModifier ? 10 : 1;
  const int x = (event.key() == Qt::Key_Right) - (event.key() == Qt::Key_Left),
            y = (event.key() == Qt::Key_Down) - (event.key() == Qt::Key_Up);
  if (x == 0 && y == 0) return false;
  emit nudged(QPoint(x, y) * step);
  return true;
}

bool ChangePreview::eventFilter(QObject* watched, QEvent* event) {
  switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseMove:
    case QEvent::MouseButtonRelease:
      if (event->type() != QEvent::MouseMove && static_cast<QMouseEvent*>(event)->button() != Qt::LeftButton)
        break;
      if (drag(*static_cast<QMouseEvent*>(event))) return true;
      break;
    case QEvent::KeyPress:
      if (nudge(*static_cast<QKeyEvent*>(event))) return true;
      break;
    case QEvent::FocusIn:
    case QEvent::FocusOut: {
      QFont font = hint_->font();
      font.setUnderline(event->type() == QEvent::FocusIn);
      hint_->setFont(font);
      break;
    }
    default:
      break;
  }
  return QWidget::eventFilter(watched, event);
}

void ChangePreview::step() {
  slider_->setValue(slider_->value() == slider_->maximum() ? 0 : slider_->value() + 1);
  const auto entries = frame_entries(window_);
  const auto delay = GetFrameDelay(window_.list.record(entries[static_cast<std::size_t>(slider_->value())]),
                                   window_.document.kind, ticks_per_second(window_.list));
  playTimer_.start(std::max(static_cast<int>(std::min<std::uint32_t>(delay, 60'000)), kLeastBeat));
}

}  // namespace vellum
