// The player: what a viewer does, without a window. States, timing and titles; whoever shows it brings a
// clock and a timer.
#pragma once

#include <functional>
#include <string>

#include "playback/compositor.h"

namespace vellum {

enum class PlayerState { Opening, Playing, Paused, Ended, Closed };

class Player {
 public:
  /// Milliseconds of a clock that never goes back in earnest; a step back is taken as no time.
  using Clock = std::function<std::uint64_t()>;

  Player(const ChunkList& list, const Document& document, Clock clock);

  PlayerState state() const { return state_; }
  const ShownFrame& shown() const { return shown_; }
  const Compositor& compositor() const { return compositor_; }

  /// Play: the next tick is due at once.
  void play();
  /// One beat of the timer: composes and shows the next frame (`paint` is called with it), and gives the time
  /// until the next beat in milliseconds, at least 1; empty when there is none. What drawing took is charged
  /// against the delay, unless it took as long as the delay or longer: then the delay begins anew.
  std::optional<std::uint32_t> tick(const std::function<void(const ShownFrame&)>& paint);
  void pause();
  /// The first frame, standing.
  void rewind(const std::function<void(const ShownFrame&)>& paint);
  void step_forward(const std::function<void(const ShownFrame&)>& paint);
  void step_back(const std::function<void(const ShownFrame&)>& paint);
  void close() { state_ = PlayerState::Closed; }

  bool can_play() const { return state_ != PlayerState::Playing; }
  bool can_pause() const { return state_ == PlayerState::Playing; }

  /// "View NAME [W x H]" while it plays, "Block N" otherwise, N being the place in the list; a zoom (per
  /// cent) other than 100 is told behind it.
  std::string title(int zoom) const;
  /// "3 of 10 frames - 200 ms".
  std::string progress_text() const;

 private:
  bool show_next(const std::function<void(const ShownFrame&)>& paint);

  const ChunkList& list_;
  const Document& document_;
  Compositor compositor_;
  Clock clock_;
  ShownFrame shown_;
  PlayerState state_ = PlayerState::Opening;
};

}  // namespace vellum
