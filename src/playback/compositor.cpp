#include "playback/compositor.h"

#include "base/limits.h"
#include "core/frame_values.h"

namespace vellum {
namespace {

/// Visits from one checkpoint to the next: a step back composes at most so many frames again.
constexpr std::size_t kCheckpointStep = 32;

std::uint64_t own_bytes(const Picture& composed, const ChunkRecord& record) {
  return composed.handle().data() == record.data.data() ? 0 : composed.handle().size();
}

}  // namespace

Compositor::Compositor(const ChunkList& list, const Document& document, std::uint64_t most_kept)
    : list_(list),
      document_(document),
      mostKept_(most_kept),
      values_(view_values(list, document)),
      walk_(begin_walk(list, document)) {
  std::uint64_t time = 0;
  for (std::size_t i = 0; i < list.size(); ++i) {
    if (!is_image_entry(document.kind, list.record(i).tag)) continue;
    const std::uint32_t delay = GetFrameDelay(list.record(i), document.kind, values_.ticks);
    frames_.push_back({i, time, delay, {}, {}});
    time += delay;
  }
}

std::optional<ShownFrame> Compositor::next() {
  const auto entry = next_image(walk_, list_, document_.kind);
  if (!entry) return std::nullopt;
  Frame& frame = *std::ranges::lower_bound(frames_, *entry, {}, &Frame::entry);
  Picture picture = picture_of_frame(frame);
  if (!picture) picture = picture_of(list_.record(*entry));
  return ShownFrame{*entry, static_cast<std::uint32_t>(&frame - frames_.data()), frame.start, frame.delay,
                    std::move(picture)};
}

Picture Compositor::picture_of_frame(Frame& frame) {
  if (frame.composed) return frame.composed;
  return frame.visit ? compose_again(*frame.visit) : compose_first(frame);
}

Picture Compositor::compose_first(Frame& frame) {
  const std::size_t visit = visits_.size();
  // Small against the frames: one canvas in so many, and only where frames are no longer kept.
  if (kept_ >= mostKept_ && (checkpoints_.empty() || visit % kCheckpointStep == 0))
    checkpoints_[visit] = state_;
  Picture composed = compose_frame(state_, values_, list_.record(frame.entry));
  if (!composed) return {};
  frame.visit = visit;
  visits_.push_back(static_cast<std::size_t>(&frame - frames_.data()));
  keep(frame, composed);
  return composed;
}

void Compositor::keep(Frame& frame, const Picture& composed) {
  const std::uint64_t bytes = own_bytes(composed, list_.record(frame.entry));
  if (bytes != 0 && kept_ >= mostKept_) return;
  kept_ += bytes;
  frame.composed = composed;
}

Picture Compositor::compose_again(std::size_t visit) {
  const auto behind = checkpoints_.upper_bound(visit);
  const std::size_t checkpoint = behind == checkpoints_.begin() ? 0 : std::prev(behind)->first;
  if (replayAt_ > visit || replayAt_ < checkpoint) {
    replay_ = behind == checkpoints_.begin() ? CanvasState{} : std::prev(behind)->second;
    replayAt_ = checkpoint;
  }
  Picture composed;
  while (replayAt_ <= visit)
    composed = compose_frame(replay_, values_, list_.record(frames_[visits_[replayAt_++]].entry));
  return composed;
}

}  // namespace vellum
