#include "shell/dialogs/change_preview.h"

#include <QVBoxLayout>

#include "shell/picture_image.h"
#include "shell/style.h"

namespace vellum {
namespace {

constexpr QSize kRoom(400, 300);  ///< pixels that are worked on while not all of them are asked for
constexpr QSize kArea(240, 190);

QSize size_of(const Picture& picture) {
  return {static_cast<int>(picture.width()), static_cast<int>(picture.height())};
}

DocumentWindow copy_of(const DocumentWindow& window) {
  DocumentWindow copy;
  copy.document = window.document;
  copy.list = window.list;
  return copy;
}

}  // namespace

ChangePreview::ChangePreview(const DocumentWindow& window, Change change, QWidget* parent)
    : QWidget(parent),
      window_(copy_of(window)),
      compositor_(window_.list, window_.document),
      change_(std::move(change)) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  auto* pictures = new QHBoxLayout;
  before_ = add_picture(pictures, tr("Before"));
  after_ = add_picture(pictures, tr("After"));
  layout->addLayout(pictures, 1);
  slider_ = new QSlider(Qt::Horizontal, this);
  slider_->setAccessibleName(tr("Frame"));
  slider_->setRange(1, static_cast<int>(std::max<std::size_t>(compositor_.frames(), 1)));
  play_ = new QToolButton(this);
  play_->setText(tr("&Play"));
  play_->setCheckable(true);
  actual_ = new QCheckBox(tr("&Actual size"), this);
  auto* line = new QHBoxLayout;
  line->addWidget(play_);
  line->addWidget(slider_, 1);
  line->addWidget(actual_);
  layout->addLayout(line);
  timer_.setSingleShot(true);
  connect(&timer_, &QTimer::timeout, this, &ChangePreview::next_frame);
  connect(slider_, &QSlider::valueChanged, this, &ChangePreview::refresh);
  connect(actual_, &QCheckBox::toggled, this, &ChangePreview::refresh);
  connect(play_, &QToolButton::toggled, this, &ChangePreview::set_playing);
  refresh();
}

QLabel* ChangePreview::add_picture(QLayout* side, const QString& name) {
  auto* label = new QLabel(this);
  label->setAlignment(Qt::AlignCenter);
  label->setAccessibleName(name);
  auto* area = new QScrollArea(this);
  area->setWidget(label);
  area->setWidgetResizable(true);
  area->setMinimumSize(kArea);
  auto* column = new QVBoxLayout;
  column->addWidget(new QLabel(name, this));
  column->addWidget(area, 1);
  static_cast<QBoxLayout*>(side)->addLayout(column, 1);
  return label;
}

void ChangePreview::show_picture(QLabel* label, const Picture& picture, QSize size) {
  label->setPixmap(picture ? QPixmap::fromImage(scaled_image(picture, size)) : QPixmap());
}

void ChangePreview::refresh() {
  if (compositor_.frames() == 0) return;
  const auto frame = static_cast<std::uint32_t>(slider_->value() - 1);
  Picture canvas = compositor_.frame(frame).picture;
  if (!canvas) return;
  const QSize whole = size_of(canvas);
  const bool large = whole.width() > kRoom.width() || whole.height() > kRoom.height();
  if (large && !actual_->isChecked())
    canvas = picture_of_image(
        scaled_image(canvas, whole.scaled(kRoom, Qt::KeepAspectRatio).expandedTo(QSize(1, 1))));
  if (!canvas) return;
  QSize shown = size_of(canvas);
  if (!actual_->isChecked() && (shown.width() > kArea.width() || shown.height() > kArea.height()))
    shown = shown.scaled(kArea, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
  show_picture(before_, canvas, shown);
  show_picture(after_, change_(canvas, frame), shown);
}

void ChangePreview::set_playing(bool playing) { playing ? timer_.start(0) : timer_.stop(); }

void ChangePreview::next_frame() {
  slider_->setValue(slider_->value() < slider_->maximum() ? slider_->value() + 1 : 1);
  const auto frame = static_cast<std::uint32_t>(slider_->value() - 1);
  timer_.start(static_cast<int>(std::clamp<std::uint32_t>(compositor_.frame(frame).delay, 10, 60'000)));
}

}  // namespace vellum
