#include "shell/dialogs/frame_preview.h"

#include <QElapsedTimer>
#include <QPainter>

#include "shell/look/picture_image.h"
#include "shell/look/style.h"
#include "shell/look/text.h"

namespace vellum {

FramePreview::FramePreview(QWidget* parent) : QWidget(parent) {
  setAccessibleName(tr("Preview"));
  setMinimumSize(160, 120);
  timer_.setSingleShot(true);
  timer_.setTimerType(Qt::PreciseTimer);
  connect(&timer_, &QTimer::timeout, this, &FramePreview::beat);
}

void FramePreview::play(const DocumentWindow& window) {
  const bool was = !player_ || running();
  timer_.stop();
  player_.reset();
  window_.document = window.document;
  window_.list = window.list;
  QElapsedTimer clock;
  clock.start();
  player_.emplace(window_.list, window_.document,
                  [clock] { return static_cast<std::uint64_t>(clock.elapsed()); });
  player_->play();
  beat();
  set_running(was);
}

void FramePreview::set_running(bool running) {
  if (!player_) return;
  if (!running) return timer_.stop();
  if (player_->state() == PlayerState::Ended) player_->rewind([](const ShownFrame&) {});
  if (player_->can_play()) player_->play();
  timer_.start(0);
}

void FramePreview::beat() {
  const auto wait = player_->tick([this](const ShownFrame& shown) {
    picture_ = shown.picture;
    caption_ = to_qt(player_->progress_text());
    setAccessibleDescription(caption_);
    update();
  });
  if (wait) timer_.start(static_cast<int>(std::min<std::uint32_t>(*wait, INT32_MAX)));
}

void FramePreview::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  const int line = fontMetrics().height();
  const QRect room = rect().adjusted(1, 1, -1, -1 - line - style::kGap / 2);
  painter.setPen(palette().color(QPalette::Mid));
  painter.drawRect(room.adjusted(-1, -1, 0, 0));
  painter.setPen(palette().color(QPalette::WindowText));
  painter.drawText(rect(), Qt::AlignHCenter | Qt::AlignBottom, caption_);
  if (!picture_) return;
  QSize size(static_cast<int>(picture_.width()), static_cast<int>(picture_.height()));
  if (size.width() > room.width() || size.height() > room.height())
    size = size.scaled(room.size(), Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
  const QRect place(room.center() - QPoint(size.width() / 2, size.height() / 2), size);
  painter.drawImage(place, scaled_image(picture_, size * devicePixelRatioF()));
}

}  // namespace vellum
