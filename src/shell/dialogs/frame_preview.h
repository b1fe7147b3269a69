// A running preview of a document: a copy of it plays in a small picture.
#pragma once

#include <QTimer>
#include <QToolButton>
#include <QWidget>
#include <optional>

#include "playback/player.h"

namespace vellum {

class FramePreview : public QWidget {
  Q_OBJECT
 public:
  explicit FramePreview(QWidget* parent = nullptr);

  /// Plays this state of a document, which is copied; entries share their records.
  void play(const DocumentWindow& window);
  void set_running(bool running);
  bool running() const { return timer_.isActive(); }
  const QString& caption() const { return caption_; }

  QSize sizeHint() const override { return {280, 210}; }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  void beat();

  DocumentWindow window_;
  std::optional<Player> player_;
  QTimer timer_;
  Picture picture_;
  QString caption_;
};

}  // namespace vellum
