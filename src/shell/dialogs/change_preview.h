// The frames of an animation before and after a change, side by side.
#pragma once

#include <QCheckBox>
#include <QLabel>
#include <QScrollArea>
#include <QSlider>
#include <QTimer>
#include <QToolButton>

#include "playback/compositor.h"

namespace vellum {

class ChangePreview : public QWidget {
  Q_OBJECT
 public:
  /// What a canvas of 24 bits becomes.
  using Change = std::function<Picture(const Picture& canvas, std::size_t frame)>;

  /// Plays a copy of the document, which costs a pointer an entry.
  ChangePreview(const DocumentWindow& window, Change change, QWidget* parent = nullptr);

  /// Shows the frame anew, after what the change depends on was edited.
  void refresh();
  QImage after() const { return after_->pixmap().toImage(); }

 private:
  QLabel* add_picture(QLayout* side, const QString& name);
  void show_picture(QLabel* label, const Picture& picture, QSize size);
  void set_playing(bool playing);
  void next_frame();

  DocumentWindow window_;
  Compositor compositor_;
  Change change_;
  QLabel *before_, *after_;
  QSlider* slider_;
  QToolButton* play_;
  QCheckBox* actual_;
  QTimer timer_;
};

}  // namespace vellum
