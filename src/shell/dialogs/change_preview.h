// What a change of pixels will do: a frame before and after it, beside or above each other, with a slider
// over the frames.
#pragma once

#include <QBoxLayout>
#include <QLabel>
#include <QSlider>
#include <QTimer>
#include <QToolButton>
#include <QWidget>
#include <functional>
#include <optional>

#include "playback/compositor.h"

namespace vellum {

class ChangePreview : public QWidget {
  Q_OBJECT
 public:
  struct Shown {
    Picture picture;  ///< of the frame, reduced to the size of a preview
    std::size_t frame;
    double percent;  ///< that it was reduced to
  };
  /// Makes the picture of a frame what it becomes.
  using Change = std::function<Picture(const Shown& shown)>;
  /// How much larger than a frame its result is: the larger of both sides.
  using Growth = std::function<double(const Picture& frame)>;

  /// What is changed: a frame's own picture, made smaller first; or the canvas that it shows, as large as it
  /// is, and its result is made smaller.
  enum class Source { ReducedFrame, Canvas };

  /// The window outlives the preview.
  ChangePreview(const DocumentWindow& window, Change change, Growth growth, QWidget* parent = nullptr,
                Source source = Source::ReducedFrame);

  /// Shows the change anew, soon.
  void refresh();
  /// One pane above the other, for a place beside a form.
  void stack();
  /// From now on what lies in the picture can be dragged in the pane of the result, and moved there by the
  /// arrow keys (with Shift by ten); `hint` says so.
  void set_draggable(const QString& hint);
  const Picture& after() const { return after_; }
  QWidget& after_pane() { return *afterLabel_; }

 signals:
  // In pixels of the result's canvas.
  void grabbed();
  /// How far from where it was grabbed, and where the pointer is on a canvas of this size.
  void dragged(QPoint by, QPoint at, QSize canvas);
  void nudged(QPoint by);

 protected:
  void resizeEvent(QResizeEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QLabel* add_pane(QLayout& layout, const QString& title);
  void show_frame();
  void step();
  Picture frame_picture();
  Picture reduced(const Picture& picture, double percent) const;
  bool drag(const QMouseEvent& event);
  bool nudge(const QKeyEvent& event);

  const DocumentWindow& window_;
  Change change_;
  Growth growth_;
  Source source_;
  std::optional<Compositor> compositor_;
  QBoxLayout* panes_;
  QLabel *beforeLabel_, *afterLabel_;
  QSlider* slider_;
  QToolButton *play_, *actual_;
  QTimer refreshTimer_, playTimer_;
  Picture after_;
  double afterScale_ = 1;  ///< pixels of the result in one of `after_`
  QLabel* hint_ = nullptr;
  std::optional<QPointF> grabbedAt_;
};

}  // namespace vellum
