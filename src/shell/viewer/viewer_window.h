// The window that plays an animation, or shows a still image. States and timing are the player's.
#pragma once

#include <QDialog>
#include <QLabel>
#include <QMenu>
#include <QTimer>
#include <QToolBar>

#include "playback/player.h"
#include "shell/services/services.h"
#include "shell/viewer/progress_strip.h"
#include "shell/viewer/viewer_canvas.h"

namespace vellum {

class ViewerWindow : public QDialog {
  Q_OBJECT
 public:
  /// Shows the document as it is now; entries share their records. Without a clock, that of the system.
  ViewerWindow(const DocumentWindow& window, Services& services, QWidget* parent = nullptr,
               Player::Clock clock = {});
  ~ViewerWindow() override;

  /// Shows the window until it is closed; the rest of the program rests. With `ClickOutsideAnimToClose` a
  /// click on another window of the program closes it.
  void run();

  const Player& player() const { return player_; }
  ViewerCanvas& canvas() { return *canvas_; }
  ProgressStrip& strip() { return *strip_; }
  QToolBar& bar() { return *bar_; }
  /// By the names of the table in the source; null for no command.
  QAction* command(const char* name) const { return findChild<QAction*>(QLatin1String(name)); }
  /// Milliseconds until the next beat; empty when none is due.
  std::optional<std::uint32_t> due() const { return due_; }

  /// One beat of the timer.
  void beat();

  // What buttons, keys and menu do.
  void play();
  void pause();
  void toggle();
  void rewind();
  void step_forward();
  void step_back();
  void go_forward();
  void go_back();
  void go_to_end();
  void zoom_in();
  void zoom_out();
  void show_actual_size();
  void fit();
  void toggle_full_screen();
  void leave_full_screen();
  void next_background();
  void choose_background();
  void faster();
  void slower();
  void normal_speed();
  void copy_frame();
  void save_frame();

  void done(int result) override;

 protected:
  void showEvent(QShowEvent* event) override;
  void changeEvent(QEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void make_commands();
  void fill_bar();
  void add_backgrounds(QMenu& menu);
  void open_at(const QWidget* beside);
  void set_background(std::size_t row);
  void set_ground(Ground ground);
  QColor surround() const;
  void set_full(bool full);
  void show_controls();
  void hide_controls();
  void place_controls();
  void seek(std::int64_t ordinal);
  void change_speed(int direction);
  void beat_in(std::optional<std::uint32_t> wait);
  void beat_if_waiting();
  void refresh();
  std::function<void(const ShownFrame&)> painter();
  QImage shown_image() const;
  bool is_outside(const QObject* watched) const;

  DocumentWindow window_;
  Services& services_;
  Player player_;
  ViewerCanvas* canvas_;
  QWidget* controls_;  ///< bar and strip; over the canvas on a full screen
  QToolBar* bar_;
  ProgressStrip* strip_;
  QLabel* speed_ = nullptr;
  QTimer timer_, resting_;  ///< the beat; how long the pointer has not moved on a full screen
  std::optional<std::uint32_t> due_;
  Colour chosen_ = 0x808080;
  std::size_t background_ = 0;
  bool full_ = false;
  int zoomBefore_ = 100;  ///< before the full screen
};

}  // namespace vellum
