// Small moving samples of the effects of transitions, in a list of their names.
#pragma once

#include <QComboBox>
#include <QTimer>

#include "core/build/frame_stream.h"

namespace vellum {

/// Moves as long as it lives: in the open list all samples, else that of the chosen effect.
class EffectSamples : public QObject {
  Q_OBJECT
 public:
  explicit EffectSamples(QComboBox& list);

  static constexpr int kWidth = 48, kHeight = 36;

 private:
  void step();
  void show(int effect);

  QComboBox& list_;
  std::vector<FrameStream> streams_;
  std::size_t beat_ = 0;
  QTimer timer_;
};

}  // namespace vellum
