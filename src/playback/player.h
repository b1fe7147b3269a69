// The player: what a viewer does, without a window. States, timing and titles; whoever shows it brings a
// clock and a timer.
#pragma once

#include <functional>
#include <span>
#include <string>

#include "playback/compositor.h"

namespace vellum {

enum class PlayerState { Opening, Playing, Paused, Ended, Closed };

class Player {
 public:
  /// Milliseconds of a clock that never goes back in earnest; a step back is taken as no time.
  using Clock = std::function<std::uint64_t()>;

  Player(const ChunkList& list, const Document& document, Clock clock);

  /// Before it plays, for a document that is edited: what an earlier state of it showed is not composed again
  /// as long as nothing changed.
  void follow_edits(Compositor::Heritage earlier) { compositor_.follow_edits(std::move(earlier)); }
  /// The canvases for the next player; this one is used up.
  Compositor::Heritage leave() { return compositor_.leave(); }

  PlayerState state() const { return state_; }
  const ShownFrame& shown() const { return shown_; }
  const Compositor& compositor() const { return compositor_; }

  /// Play: the next tick is due at once. At the end of an animation it begins anew.
  void play();
  /// One beat of the timer: composes and shows the next frame (`paint` is called with it), and gives the time
  /// until the next beat in milliseconds, at least 1; empty when there is none, as behind the only image of
  /// an animation where nothing can follow. What drawing took is charged against the delay, unless it took as
  /// long as the delay or longer: then the delay begins anew.
  std::optional<std::uint32_t> tick(const std::function<void(const ShownFrame&)>& paint);
  void pause();
  /// The first frame, standing.
  void rewind(const std::function<void(const ShownFrame&)>& paint);
  /// While the shown frame is composed anew for another ground, a step is sought, since it takes as long.
  void step_forward(const std::function<void(const ShownFrame&)>& paint);
  void step_back(const std::function<void(const ShownFrame&)>& paint);
  /// Any frame, standing; of a number beyond the last one, that. What plays in front of it may have to be
  /// composed first: the following ticks do that, some milliseconds each, and the last of them shows it.
  void seek(std::uint32_t ordinal);
  /// What the animation lies on. The frame that is shown is composed anew by the following ticks; what plays
  /// goes on behind it.
  void set_ground(Ground ground);
  const Ground& ground() const { return ground_; }
  /// Whether a tick is due although nothing plays.
  bool is_waiting() const { return target_.has_value(); }
  void close();

  /// Percent, one of `speeds`. Delays are that much shorter.
  int speed() const { return speed_; }
  /// The next step up (1) or down (-1), or normal speed (0).
  void change_speed(int direction);
  static std::span<const int> speeds();

  bool can_play() const { return state_ != PlayerState::Playing; }
  bool can_pause() const { return state_ == PlayerState::Playing; }
  /// An animation; a still image has nothing to step through.
  bool is_animation() const;

  /// "View NAME [W x H]" while it plays and for a still image, "Block N" otherwise, N being the row of the
  /// frame that is shown; a zoom (percent) other than 100 is told behind it.
  std::string title(int zoom) const;
  /// "3 of 10 frames - 200 ms".
  std::string progress_text() const;

 private:
  bool show_next(const std::function<void(const ShownFrame&)>& paint);
  void stand(PlayerState state);
  bool is_settled() const;
  std::uint32_t wait_behind(std::uint64_t begin) const;
  std::optional<std::uint32_t> go_to_target(const std::function<void(const ShownFrame&)>& paint);
  std::optional<std::uint32_t> show_pass(const std::function<void(const ShownFrame&)>& paint);

  const ChunkList& list_;
  const Document& document_;
  Compositor compositor_;
  Clock clock_;
  ShownFrame shown_;
  bool hasShown_ = false;
  PlayerState state_ = PlayerState::Opening;
  std::optional<std::uint32_t> target_;  ///< the frame that is sought, or composed anew
  bool stays_ = false;  ///< the target is the frame that is shown: the walk stays where it is
  Ground ground_;
  int speed_ = 100;
  unsigned pass_ = 0;  ///< of an interlaced still image, shown last
};

}  // namespace vellum
