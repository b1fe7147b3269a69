// The dock that plays the active document while it is edited, as a viewer does.
#pragma once

#include <QTimer>
#include <QToolButton>

#include "playback/player.h"
#include "shell/docks/dock_panel.h"
#include "shell/viewer/progress_strip.h"
#include "shell/viewer/viewer_canvas.h"

namespace vellum {

class PreviewPanel : public DockPanel {
  Q_OBJECT
 public:
  explicit PreviewPanel(DockContext& context);

  void show_document(DocumentFrame* frame) override;
  void follow() override;

  /// Null while nothing is shown.
  const Player* player() const { return player_ ? &*player_ : nullptr; }
  ViewerCanvas& canvas() { return *canvas_; }
  /// Whether a beat of the timer is due.
  bool is_waiting() const { return timer_.isActive(); }

  void toggle();
  void rewind();
  void step_back();
  void step_forward();

  QSize sizeHint() const override;

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void changeEvent(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;

 private:
  QWidget* make_controls();
  QToolButton* add_tool(QWidget* bar, const char* icon, StringId tip, void (PreviewPanel::*press)());
  void load(std::uint32_t ordinal, bool play);
  void clear();
  bool same_content() const;
  std::optional<std::uint32_t> caret_frame() const;
  void stand_on(std::uint32_t ordinal);
  void beat();
  void beat_in(std::optional<std::uint32_t> wait);
  std::function<void(const ShownFrame&)> painter();
  void show_state();

  DockContext& context_;
  DocumentFrame* frame_ = nullptr;
  DocumentWindow content_;  ///< what plays: the document as it was when it changed last
  std::optional<Player> player_;
  ViewerCanvas* canvas_;
  ProgressStrip* strip_;
  std::vector<QToolButton*> tools_;
  QToolButton* play_ = nullptr;
  QTimer timer_;
  std::optional<std::uint32_t> followed_;  ///< the frame of the caret, where it stands on one
  bool wantsPlay_ = true;                  ///< as the user left it
  bool goesOn_ = false;                    ///< plays on once the frame that is sought is shown
};

}  // namespace vellum
