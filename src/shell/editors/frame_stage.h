// The picture of an image entry by itself, on its canvas, or among the frames beside it.
#pragma once

#include <QComboBox>
#include <QLabel>
#include <QToolButton>

#include "base/string_table.h"
#include "core/edit/frame_scene.h"
#include "shell/widgets/picture_panel.h"

namespace vellum {

/// Steps through the frames and tells how one is moved; who owns the values answers with `move_frame`.
class FrameStage : public QWidget {
  Q_OBJECT
 public:
  explicit FrameStage(QWidget* parent = nullptr);

  PicturePanel& panel() { return *panel_; }
  /// The entry's picture with the document's transparency.
  const Picture& own() const { return own_; }

  /// Shows an entry of a document, which outlives this. `placeable`: it may be moved on the canvas.
  void show_frame(const DocumentWindow& window, std::size_t index, FrameOffset offset, bool placeable);
  /// The same frame at another place.
  void move_frame(FrameOffset offset);
  /// The line below the picture; empty hides it.
  void tell(const QString& note);

 signals:
  void moved(QPoint pixels);
  void step_wanted(bool forwards);

 private:
  QWidget* make_bar();
  QComboBox* make_choice(const QString& name, std::initializer_list<StringId> texts, int& setting);
  void show_ordinal();
  void display(bool anew);
  Picture on_stage(QPoint& corner) const;

  PicturePanel* panel_;
  QToolButton *before_ = nullptr, *behind_ = nullptr;
  QLabel *ordinal_ = nullptr, *note_;
  QComboBox *view_ = nullptr, *ground_ = nullptr;
  const DocumentWindow* window_ = nullptr;
  std::size_t index_ = 0;
  FrameOffset offset_;
  bool placeable_ = false;
  Picture own_;
  FrameScene scene_;
};

}  // namespace vellum
