// What a change of pixels will do: a frame before and after it, beside each other, with a slider over the
// frames.
#pragma once

#include <QLabel>
#include <QSlider>
#include <QTimer>
#include <QToolButton>
#include <QWidget>
#include <functional>

#include "core/document.h"

namespace vellum {

class ChangePreview : public QWidget {
  Q_OBJECT
 public:
  /// Makes the picture of a frame (24 or 32 bits, reduced to the size of a preview) what it becomes.
  using Change = std::function<Picture(const Picture& frame)>;
  /// How much larger than a frame its result is: the larger of both sides. The window outlives the preview.
  using Growth = std::function<double()>;

  ChangePreview(const DocumentWindow& window, Change change, Growth growth, QWidget* parent = nullptr);

  /// Shows the change anew, soon.
  void refresh();
  const Picture& after() const { return after_; }

 private:
  QLabel* add_pane(QLayout& layout, const QString& title);
  void show_frame();
  void step();
  Picture frame_picture() const;

  const DocumentWindow& window_;
  Change change_;
  Growth growth_;
  QLabel *beforeLabel_, *afterLabel_;
  QSlider* slider_;
  QToolButton *play_, *actual_;
  QTimer refreshTimer_, playTimer_;
  Picture after_;
};

}  // namespace vellum
