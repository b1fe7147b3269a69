// The frames that a viewer shows, one after another, each as the whole canvas.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>

#include "base/limits.h"
#include "base/memory_budget.h"
#include "base/work_ahead.h"
#include "core/model/compose.h"
#include "playback/frame_walk.h"

namespace vellum {

/// A frame that is shown.
struct ShownFrame {
  std::size_t entry = 0;      ///< its index in the list
  std::uint32_t ordinal = 0;  ///< among the images, from 0
  std::uint64_t start = 0;    ///< milliseconds from the beginning of one pass that looks at no loops
  std::uint32_t delay = 0;    ///< milliseconds
  /// The canvas, 24 bits (on no ground 32, colors multiplied by alpha); the image's own picture where it
  /// could not be composed; null where that is lost.
  Picture picture;
};

/// One view of a document, which must outlive it and stay as it is. A frame is composed at its first visit,
/// on what the visits before it left; that result is shown at every later visit.
class Compositor {
 public:
  /// Composed frames are kept up to `most_kept` bytes, and one more, and up to half of the memory budget, of
  /// which they are a part. With 0 the rows of an image are let go as soon as it is composed, too.
  Compositor(const ChunkList& list, const Document& document,
             std::uint64_t most_kept = kMaximumComposedBytes);

  /// What was composed of one state of a document, in the order of the first visits. It needs neither the
  /// list nor the view any more.
  struct Heritage {
    struct Visit {
      std::shared_ptr<const ChunkRecord> record;
      ChunkHandle composed;  ///< null where it wasn't kept
    };
    ViewValues values;
    std::vector<Visit> visits;
    std::map<std::size_t, CanvasState> states;  ///< in front of some of them, and behind the last one
    std::uint64_t bytes = 0;                    ///< of the canvases
  };
  /// The view is used up by it.
  Heritage leave();
  /// For a document that is edited, before the first frame is asked for. What was composed of an earlier
  /// state is taken as composed as long as, frame by frame, the same is drawn; and states of the canvas are
  /// kept every some frames, so that little is composed again in front of a frame that changes.
  void follow_edits(Heritage earlier);
  /// How many frames were composed so far, and not taken over.
  std::uint64_t composed() const { return composed_; }

  /// Of an animation without an end.
  enum class Rounds { All, One };
  /// Empty when the animation is over.
  std::optional<ShownFrame> next(Rounds rounds = Rounds::All);
  void rewind() { rewind_walk(walk_, list_, document_); }
  void step_back() { step_walk_back(walk_, list_, document_.kind); }

  /// Composes what plays in front of this frame and was not composed yet, as long as `may_go_on` says so.
  /// False when something is left.
  bool prepare(std::uint32_t ordinal, const std::function<bool()>& may_go_on);
  /// The next frame is this one, as if the list had been played up to it. There must be such a frame.
  void go_to(std::uint32_t ordinal);
  /// A frame as if the list had been played up to it, without going anywhere.
  ShownFrame frame(std::uint32_t ordinal);
  /// What the animation lies on from now on. All that was composed is composed anew, in its order, by
  /// `prepare` or before the next frame.
  void set_ground(Ground ground);

  const ViewValues& values() const { return values_; }
  std::size_t frames() const { return frames_.size(); }
  std::size_t position() const { return walk_.position; }
  /// Bytes of the composed frames that are kept now.
  std::uint64_t kept_bytes() const { return kept_; }

 private:
  struct Frame {
    std::size_t entry;
    std::uint64_t start;
    std::uint32_t delay;
    ChunkHandle composed;              ///< null where it isn't kept
    std::optional<std::size_t> visit;  ///< when it was composed first, counted in frames
    bool lost = false;                 ///< it could not be composed
  };

  ShownFrame shown(Frame& frame);
  bool inherit(Frame& frame);
  void end_heritage();
  bool compose_forgotten(const std::function<bool()>& may_go_on);
  Picture picture_of_frame(Frame& frame);
  Picture compose_first(Frame& frame);
  Picture compose_again(std::size_t visit);
  void keep(Frame& frame, const Picture& composed);
  void put_checkpoint_in_turn(std::size_t visit, const CanvasState& state);
  void put_checkpoint(std::size_t visit, const CanvasState& state);
  void count_share();
  void unpack(std::size_t ordinal);
  void let_go_behind(std::size_t entry);

  const ChunkList& list_;
  const Document& document_;
  std::uint64_t mostKept_, kept_ = 0;
  ViewValues values_;
  FrameWalk walk_;
  std::vector<Frame> frames_;
  CanvasState state_;                ///< behind the last first visit
  std::vector<std::size_t> visits_;  ///< frames in the order of their first visits

  std::vector<std::size_t> forgotten_;  ///< frames in that order whose canvases are not valid any more
  std::size_t forgottenAt_ = 0;         ///< how many of them have been composed anew

  /// For composing again what was not kept: canvases at some visits (the state in front of each), and where
  /// the last such run ended.
  std::map<std::size_t, CanvasState> checkpoints_;
  std::size_t checkpointStep_;
  CanvasState replay_;
  std::size_t replayAt_ = 0;
  bool followsEdits_ = false;
  Heritage heritage_;  ///< empty where nothing is inherited any more
  std::uint64_t composed_ = 0;
  BudgetShare share_;
  std::vector<std::size_t> passed_;     ///< entries whose rows are still there, where nothing is kept
  std::optional<WorkAhead> unpacking_;  ///< rows that are to be made again, by the ordinals of frames
};

}  // namespace vellum
