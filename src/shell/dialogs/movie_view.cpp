#include "shell/dialogs/movie_view.h"

#include <QBoxLayout>

#include "base/fields.h"
#include "base/text.h"
#include "shell/look/picture_image.h"
#include "shell/look/style.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr QSize kLeast(320, 200);
/// Per cent; 0: as large as fits.
constexpr int kSizes[] = {0, 25, 50, 100, 200};

QString time_text(std::int64_t milliseconds) {
  return QStringLiteral("%1:%2.%3")
      .arg(milliseconds / 60000)
      .arg(milliseconds / 1000 % 60, 2, 10, QLatin1Char('0'))
      .arg(milliseconds % 1000, 3, 10, QLatin1Char('0'));
}

}  // namespace

MovieView::MovieView(QWidget* parent)
    : QWidget(parent),
      area_(new QScrollArea(this)),
      picture_(new QLabel(this)),
      place_(new QLabel(this)),
      slider_(new QSlider(Qt::Horizontal, this)),
      play_(new QPushButton(tr("&Play"), this)),
      loop_(new QCheckBox(tr("&Loop"), this)),
      size_(new QComboBox(this)) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(style::kGap);
  area_->setWidget(picture_);
  area_->setAccessibleName(tr("Movie"));
  area_->setWidgetResizable(true);
  area_->setMinimumSize(kLeast);
  picture_->setAlignment(Qt::AlignCenter);
  picture_->setAccessibleName(tr("Movie"));
  slider_->setAccessibleName(tr("Time"));
  size_->setAccessibleName(tr("Size"));
  for (const int percent : kSizes)
    size_->addItem(percent == 0 ? tr("Fit") : tr("%1 %").arg(percent), percent);
  auto* row = new QHBoxLayout;
  row->setSpacing(style::kGap);
  row->addWidget(play_);
  const auto add = [&](const QString& text, void (MovieView::*action)()) {
    auto* button = new QPushButton(text, this);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, action);
    row->addWidget(button);
  };
  add(tr("Re&wind"), &MovieView::rewind);
  add(tr("&Step"), &MovieView::step);
  row->addWidget(loop_);
  row->addStretch(1);
  row->addWidget(size_);
  row->addWidget(place_);
  layout->addWidget(area_, 1);
  layout->addWidget(slider_);
  layout->addLayout(row);
  play_->setAutoDefault(false);
  timer_.setSingleShot(true);
  timer_.setTimerType(Qt::PreciseTimer);
  connect(&timer_, &QTimer::timeout, this, &MovieView::beat);
  connect(play_, &QPushButton::clicked, this, &MovieView::toggle);
  connect(size_, &QComboBox::currentIndexChanged, this, &MovieView::show_image);
  connect(slider_, &QSlider::actionTriggered, this, [this] { go_to(slider_->sliderPosition()); });
}

bool MovieView::open(const std::filesystem::path& file, Host& host) {
  timer_.stop();
  reader_ = open_movie(file, 0, host);
  if (!reader_) return false;
  slider_->setRange(0, static_cast<int>(std::min<std::int64_t>(facts().duration / 1000, 0x7FFFFFFF)));
  next_ = reader_->next();
  show_frame();
  return true;
}

QString MovieView::facts_text() const {
  const MovieFacts& f = facts();
  QString text = tr("%1, %2 - %3 x %4 - %5")
                     .arg(to_qt(f.format), to_qt(f.codec))
                     .arg(f.width)
                     .arg(f.height)
                     .arg(time_text(f.duration / 1000));
  if (f.frames > 0) text += tr(" - %1").arg(to_qt(count_text(StringId::OneFrame, f.frames)));
  if (f.sound) text += tr(" - with sound");
  return text;
}

void MovieView::show_frame() {
  if (!next_) return;
  shown_ = *next_;
  const Picture picture = reader_->picture();
  if (picture) image_ = image_of_picture(picture);
  const QSignalBlocker quiet(slider_);
  slider_->setValue(static_cast<int>(shown_ / 1000));
  place_->setText(time_text(shown_ / 1000));
  show_image();
}

void MovieView::show_image() {
  if (image_.isNull()) return;
  const int percent = size_->currentData().toInt();
  const QSize room = area_->viewport()->size();
  QSize size = percent > 0 ? image_.size() * percent / 100 : image_.size();
  if (percent == 0 && (size.width() > room.width() || size.height() > room.height()))
    size.scale(room, Qt::KeepAspectRatio);
  picture_->setMinimumSize(percent > 0 ? size : QSize(1, 1));
  picture_->setPixmap(QPixmap::fromImage(
      image_.scaled(size.expandedTo({1, 1}), Qt::IgnoreAspectRatio, Qt::SmoothTransformation)));
}

void MovieView::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  show_image();
}

/// The frame that comes next is read now and shown when it is due.
void MovieView::wait_for_next() {
  next_ = reader_->next();
  if (!next_ && loop_->isChecked() && reader_->seek(0)) {
    next_ = reader_->next();
    begun_ = 0;
    clock_.start();
  }
  if (!next_) return play_->setText(tr("&Play"));
  const std::int64_t due = (*next_ - begun_) / 1000 - clock_.elapsed();
  timer_.start(static_cast<int>(std::clamp<std::int64_t>(due, 0, 60'000)));
}

void MovieView::beat() {
  show_frame();
  wait_for_next();
}

void MovieView::toggle() {
  if (!reader_) return;
  if (timer_.isActive()) {
    timer_.stop();
    play_->setText(tr("&Play"));
    return;
  }
  if (!next_) rewind();
  play_->setText(tr("&Pause"));
  begun_ = shown_;
  clock_.start();
  wait_for_next();
}

void MovieView::rewind() { go_to(0); }

void MovieView::step() {
  if (!reader_) return;
  timer_.stop();
  play_->setText(tr("&Play"));
  // While it played the next frame was read already.
  if (!next_ || *next_ <= shown_) next_ = reader_->next();
  show_frame();
}

void MovieView::go_to(std::int64_t time) {
  if (!reader_) return;
  const bool played = timer_.isActive();
  timer_.stop();
  if (!reader_->seek(time * 1000)) return;
  // The last frame that begins in front of the time.
  std::optional<std::int64_t> found;
  while ((next_ = reader_->next())) {
    found = next_;
    if (*next_ >= time * 1000) break;
  }
  next_ = found;
  show_frame();
  play_->setText(tr("&Play"));
  if (played) toggle();
}

}  // namespace vellum
