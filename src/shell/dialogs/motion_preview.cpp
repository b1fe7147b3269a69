#include "shell/dialogs/motion_preview.h"

#include <algorithm>

#include "image/picture_operations.h"
#include "shell/look/picture_image.h"
#include "shell/widgets/checkers.h"

namespace vellum {
namespace {

constexpr QSize kPane(300, 240);
constexpr int kLeastBeat = 20, kMostBeat = 60'000;  // milliseconds

/// In true color with its transparency.
Picture visible(const StreamedFrame& frame) {
  if (!frame.picture || frame.picture.bits() == 32) return frame.picture;
  return PictureWithTransparency(frame.picture, frame.transparency);
}

QImage fitted(const QImage& image, QSize room) {
  if (image.width() <= room.width() && image.height() <= room.height()) return image;
  return image.scaled(room, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

/// On checkers where it lets something through.
QImage on_checkers(const QImage& image) {
  QImage shown(image.size(), QImage::Format_RGB32);
  QPainter painter(&shown);
  paint_checkers(painter, shown.rect());
  painter.drawImage(0, 0, image);
  return shown;
}

}  // namespace

MotionPreview::MotionPreview(QWidget* parent) : QLabel(parent) {
  setAccessibleName(tr("Preview"));
  setAlignment(Qt::AlignCenter);
  setMinimumSize(kPane);
  setFrameShape(QFrame::StyledPanel);
  // What it shows must not say how large it is.
  setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
  timer_.setSingleShot(true);
  connect(&timer_, &QTimer::timeout, this, &MotionPreview::step);
}

void MotionPreview::play(std::optional<FrameStream> stream) {
  stream_ = std::move(stream);
  next_ = 0;
  canvas_ = {};
  timer_.stop();
  clear();
  if (stream_ && stream_->count > 0) timer_.start(0);
}

void MotionPreview::lay(const StreamedFrame& frame) {
  const Picture picture = visible(frame);
  const bool empty = !canvas_ || frame.clears || next_ == 0;
  if (empty) canvas_ = PictureCreateAlpha(stream_->canvas.width, stream_->canvas.height);
  if (!picture || !canvas_) return;
  const Picture deep = picture.bits() == 32 ? picture : PictureToTrueColorAlpha(picture);
  const auto width = static_cast<std::int32_t>(deep.width()),
             height = static_cast<std::int32_t>(deep.height());
  if (frame.over)
    PictureComposite(canvas_, frame.offset.x, frame.offset.y, deep, width, height);
  else
    PictureBlit(canvas_, frame.offset.x, frame.offset.y, deep, 0, 0, width, height);
}

void MotionPreview::step() {
  const StreamedFrame frame = stream_->frame(next_);
  const Picture before = canvas_;
  lay(frame);
  setPixmap(QPixmap::fromImage(on_checkers(fitted(image_of_picture(canvas_), contentsRect().size()))));
  // What the next frame finds.
  if (frame.dispose == 2) canvas_ = before;
  if (frame.dispose == 1 && canvas_ && frame.picture)
    PictureFillRect(canvas_, frame.offset.x, frame.offset.y, static_cast<std::int32_t>(frame.picture.width()),
                    static_cast<std::int32_t>(frame.picture.height()), 0);
  next_ = (next_ + 1) % stream_->count;
  if (stream_->count > 1)
    timer_.start(static_cast<int>(std::clamp<std::uint32_t>(frame.delay, kLeastBeat, kMostBeat)));
}

}  // namespace vellum
