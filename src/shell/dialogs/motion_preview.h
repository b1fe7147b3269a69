// Frames of a stream as they play, before anything is built.
#pragma once

#include <QLabel>
#include <QTimer>

#include "core/build/frame_stream.h"

namespace vellum {

class MotionPreview : public QLabel {
  Q_OBJECT
 public:
  explicit MotionPreview(QWidget* parent = nullptr);

  /// Plays the frames from the first one on; each is computed when it is due. Without frames it is empty.
  void play(std::optional<FrameStream> stream);
  const Picture& shown() const { return canvas_; }

 private:
  void step();
  void lay(const StreamedFrame& frame);

  std::optional<FrameStream> stream_;
  std::size_t next_ = 0;
  Picture canvas_;
  QTimer timer_;
};

}  // namespace vellum
