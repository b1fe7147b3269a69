// The strip at the bottom of a viewer: how far the animation is, in color and in words. Pressing and dragging
// on it seeks.
#pragma once

#include <QWidget>

namespace vellum {

class ProgressStrip : public QWidget {
  Q_OBJECT
 public:
  explicit ProgressStrip(QWidget* parent = nullptr);

  void set_frames(std::size_t frames) { frames_ = frames; }
  void show_progress(std::uint32_t ordinal, const QString& text);
  std::uint32_t ordinal() const { return ordinal_; }
  const QString& text() const { return text_; }

 signals:
  void sought(std::uint32_t ordinal);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;

 private:
  std::size_t frames_ = 0;
  std::uint32_t ordinal_ = 0;
  QString text_;
};

}  // namespace vellum
