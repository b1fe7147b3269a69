// A movie that plays: picture, buttons, a slider over its time. There is no sound.
#pragma once

#include <QCheckBox>
#include <QComboBox>
#include <QElapsedTimer>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QSlider>
#include <QTimer>

#include "exchange/movie.h"

namespace vellum {

class MovieView : public QWidget {
  Q_OBJECT
 public:
  explicit MovieView(QWidget* parent = nullptr);

  /// False with the reason kept in the host.
  bool open(const std::filesystem::path& file, Host& host);
  const MovieFacts& facts() const { return reader_->facts; }
  /// A few words for people: format, size, time, frames.
  QString facts_text() const;
  /// Milliseconds of the frame that is shown.
  std::int64_t time() const { return shown_ / 1000; }
  bool plays() const { return timer_.isActive(); }

  // What the buttons do.
  void toggle();
  void rewind();
  void step();
  /// Shows the frame of a time, ms.
  void go_to(std::int64_t time);

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  void beat();
  void show_frame();
  void wait_for_next();
  void show_image();

  std::optional<MovieReader> reader_;
  std::optional<std::int64_t> next_;  ///< time of the frame that the reader has come to, µs
  std::int64_t shown_ = 0, begun_ = 0;
  QImage image_;
  QElapsedTimer clock_;
  QTimer timer_;
  QScrollArea* area_;
  QLabel *picture_, *place_;
  QSlider* slider_;
  QPushButton* play_;
  QCheckBox* loop_;
  QComboBox* size_;
};

}  // namespace vellum
