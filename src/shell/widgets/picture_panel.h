// A picture view with its zoom above it and what is under the pointer below.
#pragma once

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>

#include "shell/widgets/picture_view.h"

namespace vellum {

class PicturePanel : public QWidget {
  Q_OBJECT
 public:
  explicit PicturePanel(QWidget* parent = nullptr);
  PictureView& view() { return *view_; }
  /// The line below tells of `described`, where what is shown was made from another picture.
  void set_picture(const Picture& picture, const Picture& described = {});
  /// At the right of the zoom.
  void add_tool(QWidget* tool) { tools_->addWidget(tool); }

 private:
  void show_zoom(int percent);

  PictureView* view_;
  QComboBox* zoom_;
  QHBoxLayout* tools_;
  QLabel* size_;
  QLabel* pointer_;
};

}  // namespace vellum
