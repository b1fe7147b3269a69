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
  const Picture& after() const { return after_; }

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  QLabel* add_pane(QLayout& layout, const QString& title);
  void show_frame();
  void step();
  Picture frame_picture();
  Picture reduced(const Picture& picture, double percent) const;

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
};

}  // namespace vellum
