#include "playback/compositor.h"

#include <algorithm>
#include <utility>

#include "base/limits.h"
#include "base/parallel.h"
#include "core/model/frame_values.h"

namespace vellum {
namespace {

/// Visits from one checkpoint to the next at first: a step back composes at most so many frames again.
constexpr std::size_t kCheckpointStep = 32;
/// The same in a document that is edited, where a change is to be seen at once.
constexpr std::size_t kEditedStep = 8;
/// A long animation has fewer of them, so that all take at most this part of what may be kept.
constexpr std::uint64_t kCheckpointPart = 4;

std::uint64_t own_bytes(const Picture& composed, const ChunkRecord& record) {
  return composed.handle().shares_with(record.data) ? 0 : composed.handle().size();
}

/// A canvas has 16 bits a channel.
std::uint64_t state_bytes(const ViewValues& values) {
  return std::uint64_t{8} * values.canvas.width * values.canvas.height;
}

}  // namespace

Compositor::Compositor(const ChunkList& list, const Document& document, std::uint64_t most_kept)
    : list_(list),
      document_(document),
      mostKept_(std::min(most_kept, memory_budget() / 2)),
      values_(view_values(list, document)),
      walk_(begin_walk(list, document)),
      checkpointStep_(kCheckpointStep) {
  std::uint64_t time = 0;
  for (std::size_t i = 0; i < list.size(); ++i) {
    if (!is_image_entry(document.kind, list.record(i).tag)) continue;
    const std::uint32_t delay = GetFrameDelay(list.record(i), document.kind, values_.ticks);
    frames_.push_back({i, time, delay, {}, {}, false});
    time += delay;
  }
}

Compositor::Heritage Compositor::leave() {
  Heritage left = std::move(heritage_);
  if (left.visits.empty()) left.states[visits_.size()] = std::move(state_);
  left.visits.resize(std::max(left.visits.size(), visits_.size()));
  for (std::size_t visit = 0; visit < visits_.size(); ++visit) {
    Frame& frame = frames_[visits_[visit]];
    left.visits[visit] = {list_.entry(frame.entry).record, std::move(frame.composed)};
  }
  left.states.merge(checkpoints_);
  left.values = std::move(values_);
  left.bytes += std::exchange(kept_, 0);
  share_.set(0);
  return left;
}

void Compositor::follow_edits(Heritage earlier) {
  followsEdits_ = true;
  checkpointStep_ = kEditedStep;
  if (earlier.visits.empty() || !compose_alike(values_, earlier.values)) return;
  heritage_ = std::move(earlier);
  count_share();
}

/// The next visit, where it draws what it drew then.
bool Compositor::inherit(Frame& frame) {
  const std::size_t visit = visits_.size();
  if (auto state = heritage_.states.extract(visit)) checkpoints_.insert(std::move(state));
  if (visit >= heritage_.visits.size() ||
      !draw_alike(values_, *heritage_.visits[visit].record, list_.record(frame.entry))) {
    end_heritage();
    return false;
  }
  frame.visit = visit;
  visits_.push_back(static_cast<std::size_t>(&frame - frames_.data()));
  const Picture composed(std::move(heritage_.visits[visit].composed));
  if (!composed) return true;
  heritage_.bytes -= std::min(heritage_.bytes, own_bytes(composed, list_.record(frame.entry)));
  keep(frame, composed);
  return true;
}

/// From here on frames are composed, on the state behind the last one that was taken over: from the nearest
/// state that is kept. That one is kept too, since the next change is often one of the same frame.
void Compositor::end_heritage() {
  heritage_ = {};
  if (visits_.empty()) return;
  if (const auto state = checkpoints_.find(visits_.size()); state != checkpoints_.end()) {
    state_ = state->second;
    return;
  }
  compose_again(visits_.size() - 1);
  state_ = replay_;
  put_checkpoint(visits_.size(), state_);
}

void Compositor::count_share() {
  share_.set(kept_ + heritage_.bytes + checkpoints_.size() * state_bytes(values_));
}

std::optional<ShownFrame> Compositor::next(Rounds rounds) {
  const auto entry = next_image(walk_, list_, document_.kind);
  if (!entry || (walk_.repeats && rounds == Rounds::One)) return std::nullopt;
  return shown(*std::ranges::lower_bound(frames_, *entry, {}, &Frame::entry));
}

ShownFrame Compositor::frame(std::uint32_t ordinal) {
  Frame& frame = frames_.at(ordinal);
  if (!frame.visit && !frame.lost) prepare(ordinal, [] { return true; });
  return shown(frame);
}

ShownFrame Compositor::shown(Frame& frame) {
  Picture picture = picture_of_frame(frame);
  if (!picture) picture = picture_of(list_.record(frame.entry));
  return {frame.entry, static_cast<std::uint32_t>(&frame - frames_.data()), frame.start, frame.delay,
          std::move(picture)};
}

bool Compositor::prepare(std::uint32_t ordinal, const std::function<bool()>& may_go_on) {
  if (!compose_forgotten(may_go_on)) return false;
  std::vector<std::size_t> passed;
  walk_to(list_, document_, frames_.at(ordinal).entry, passed);
  for (const std::size_t entry : passed) {
    Frame& frame = *std::ranges::lower_bound(frames_, entry, {}, &Frame::entry);
    if (frame.visit || frame.lost) continue;
    if (!may_go_on()) return false;
    compose_first(frame);
  }
  return true;
}

void Compositor::go_to(std::uint32_t ordinal) {
  std::vector<std::size_t> passed;
  walk_ = walk_to(list_, document_, frames_.at(ordinal).entry, passed);
}

void Compositor::set_ground(Ground ground) {
  values_ = view_values(list_, document_, ground);
  visits_.insert(visits_.end(), forgotten_.begin() + static_cast<std::ptrdiff_t>(forgottenAt_),
                 forgotten_.end());
  forgotten_ = std::exchange(visits_, {});
  forgottenAt_ = 0;
  heritage_ = {};
  unpacking_.reset();
  for (Frame& frame : frames_) {
    frame.composed = {};
    frame.visit.reset();
  }
  kept_ = 0;
  state_ = replay_ = {};
  replayAt_ = 0;
  checkpoints_.clear();
  checkpointStep_ = followsEdits_ ? kEditedStep : kCheckpointStep;
  share_.set(0);
}

Picture Compositor::picture_of_frame(Frame& frame) {
  if (!frame.visit) compose_forgotten([] { return true; });
  if (frame.composed) return Picture(frame.composed);
  Picture composed = frame.visit ? compose_again(*frame.visit) : compose_first(frame);
  // One that was taken over without its canvas.
  return composed || !frame.visit ? composed : compose_again(*frame.visit);
}

Picture Compositor::compose_first(Frame& frame) {
  if (!heritage_.visits.empty() && inherit(frame))
    return frame.composed ? Picture(frame.composed) : Picture();
  const std::size_t visit = visits_.size();
  // One canvas in so many where frames are no longer kept; who keeps none may never come back.
  if (followsEdits_ || (mostKept_ != 0 && kept_ >= mostKept_)) put_checkpoint_in_turn(visit, state_);
  unpack(static_cast<std::size_t>(&frame - frames_.data()));
  Picture composed = compose_frame(state_, values_, list_.record(frame.entry));
  ++composed_;
  if (mostKept_ == 0) let_go_behind(frame.entry);
  frame.lost = !composed;
  if (!composed) return {};
  frame.visit = visit;
  visits_.push_back(static_cast<std::size_t>(&frame - frames_.data()));
  keep(frame, composed);
  return composed;
}

/// The canvas may be the picture of the image, and whoever shows one that came before may hold it still.
void Compositor::let_go_behind(std::size_t entry) {
  passed_.push_back(entry);
  std::erase_if(passed_, [&](std::size_t passed) { return let_go(list_.record(passed).data); });
}

/// Rows that are to be made again are made some frames ahead, side by side. Blocks are held for that and not
/// the list, which changes before the view of it goes.
void Compositor::unpack(std::size_t ordinal) {
  if (!list_.record(frames_[ordinal].entry).data.is_kept()) return;
  if (!unpacking_) {
    std::vector<ChunkHandle> blocks;
    for (const Frame& frame : frames_) blocks.push_back(list_.record(frame.entry).data);
    unpacking_.emplace(frames_.size(), [blocks = std::move(blocks)](std::size_t i) {
      const Picture picture(blocks[i]);
      if (picture && picture.handle().is_kept()) picture.row(0);
    });
  }
  unpacking_->take(ordinal, parallel_width());
}

bool Compositor::compose_forgotten(const std::function<bool()>& may_go_on) {
  while (forgottenAt_ < forgotten_.size()) {
    if (!may_go_on()) return false;
    Frame& frame = frames_[forgotten_[forgottenAt_++]];
    if (!frame.visit) compose_first(frame);
  }
  return true;
}

void Compositor::keep(Frame& frame, const Picture& composed) {
  const std::uint64_t bytes = own_bytes(composed, list_.record(frame.entry));
  if (bytes != 0 && kept_ >= mostKept_) return;
  kept_ += bytes;
  frame.composed = composed.handle();
  count_share();
}

void Compositor::put_checkpoint_in_turn(std::size_t visit, const CanvasState& state) {
  if (checkpoints_.empty() || visit % checkpointStep_ == 0) put_checkpoint(visit, state);
}

void Compositor::put_checkpoint(std::size_t visit, const CanvasState& state) {
  constexpr std::size_t kFewest = 8;
  checkpoints_[visit] = state;
  if (checkpoints_.size() > kFewest &&
      checkpoints_.size() * state_bytes(values_) > mostKept_ / kCheckpointPart) {
    checkpointStep_ *= 2;
    const std::size_t first = checkpoints_.begin()->first;
    std::erase_if(checkpoints_, [&](const auto& checkpoint) {
      return checkpoint.first != first && checkpoint.first % checkpointStep_ != 0;
    });
  }
  count_share();
}

Picture Compositor::compose_again(std::size_t visit) {
  const auto behind = checkpoints_.upper_bound(visit);
  const std::size_t checkpoint = behind == checkpoints_.begin() ? 0 : std::prev(behind)->first;
  if (replayAt_ > visit || replayAt_ < checkpoint) {
    replay_ = behind == checkpoints_.begin() ? CanvasState{} : std::prev(behind)->second;
    replayAt_ = checkpoint;
  }
  Picture composed;
  for (; replayAt_ <= visit; ++composed_) {
    if (mostKept_ == 0) put_checkpoint_in_turn(replayAt_, replay_);
    composed = compose_frame(replay_, values_, list_.record(frames_[visits_[replayAt_++]].entry));
  }
  return composed;
}

}  // namespace vellum
