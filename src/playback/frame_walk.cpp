#include "playback/frame_walk.h"

#include "core/model/frame_values.h"
#include "playback/settings.h"

namespace vellum {
namespace {

/// A repeat count that stands for no end (MNG 1.0, "LOOP").
constexpr std::uint32_t kForEver = 0x7FFFFFFF;

constexpr int kLeastStack = 1024, kMostStack = 32700;

/// A mark beyond the capacity of the stack is lost.
void push(FrameWalk& walk, WalkMark mark) {
  const auto capacity =
      static_cast<std::size_t>(std::clamp(settings::ViewStackSize, kLeastStack, kMostStack));
  if (walk.stack.size() + 1 < capacity) walk.stack.push_back(mark);
}

/// MNG 1.0, "TERM": the count of repeats stands behind the two actions and the delay.
void push_passes(FrameWalk& walk, const ChunkList& list, const Document& document) {
  if (document.kind == DocumentKind::MING) {
    const std::size_t at = chunk_find_first(list, tag::TERM);
    if (at == kNoEntry) return;
    // Counted down, so many rounds last longer than anyone looks on.
    const std::uint32_t rounds = payload_be32(list.record(at), 6);
    push(walk, {WalkMark::Kind::Pass, rounds, 0, at + 1, rounds >= kForEver, 0});
    return;
  }
  const std::uint32_t plays = GetIterations(list, document);
  push(walk, {WalkMark::Kind::Pass, plays - 1, 0, 1, plays == 0, 0});
}

/// Goes on behind the ENDL of this level, or to the end of the list.
void skip_loop(FrameWalk& walk, const ChunkList& list, std::uint8_t level) {
  while (walk.position < list.size()) {
    const ChunkRecord& record = list.record(walk.position++);
    if (record.tag == tag::ENDL && payload_byte(record, 0) == level) return;
  }
}

void enter_loop(FrameWalk& walk, const ChunkList& list) {
  const std::size_t at = walk.position - 1;
  const ChunkRecord& record = list.record(at);
  if (!record.data) return;
  const std::uint8_t level = payload_byte(record, 0);
  const std::uint32_t count = payload_be32(record, 1);
  if (count == 0)
    skip_loop(walk, list, level);
  else
    push(walk, {WalkMark::Kind::Loop, count, level, at, count == kForEver, walk.images});
}

/// Starts another round at `position`. False where the last one showed nothing.
bool repeat(FrameWalk& walk, WalkMark mark, std::size_t position) {
  if (mark.images == walk.images) {
    walk.ended = walk.ended || mark.forEver;
    return false;
  }
  mark.images = walk.images;
  walk.repeats = walk.repeats || mark.forEver;
  walk.position = position;
  push(walk, mark);
  return true;
}

void leave_loop(FrameWalk& walk, const ChunkRecord& end) {
  if (walk.stack.empty()) return;
  WalkMark mark = walk.stack.back();
  walk.stack.pop_back();
  if (mark.level != payload_byte(end, 0) || mark.count == 0) return;
  if (!mark.forEver && --mark.count == 0) return;
  repeat(walk, mark, mark.position + 1);
}

/// At the end of the list: another pass where one is left, else the animation is over.
bool begin_next_pass(FrameWalk& walk) {
  if (!walk.stack.empty()) {
    WalkMark mark = walk.stack.back();
    walk.stack.pop_back();
    if (mark.kind == WalkMark::Kind::Pass && (mark.forEver || mark.count != 0)) {
      if (!mark.forEver) --mark.count;
      if (repeat(walk, mark, mark.position)) return true;
    }
  }
  walk.ended = true;
  return false;
}

}  // namespace

FrameWalk begin_walk(const ChunkList& list, const Document& document) {
  FrameWalk walk;
  push(walk, {});
  push_passes(walk, list, document);
  return walk;
}

std::optional<std::size_t> next_image(FrameWalk& walk, const ChunkList& list, DocumentKind kind) {
  while (!walk.ended) {
    if (walk.position >= list.size()) {
      if (list.empty() || !begin_next_pass(walk)) break;
      continue;
    }
    const ChunkRecord& record = list.record(walk.position++);
    if (is_image_entry(kind, record.tag)) {
      ++walk.images;
      return walk.position - 1;
    }
    if (record.tag == tag::LOOP) enter_loop(walk, list);
    if (record.tag == tag::ENDL) leave_loop(walk, record);
  }
  walk.ended = true;
  return std::nullopt;
}

void rewind_walk(FrameWalk& walk, const ChunkList& list, const Document& document) {
  walk = begin_walk(list, document);
  walk.position = 1;
}

void step_walk_back(FrameWalk& walk, const ChunkList& list, DocumentKind kind) {
  walk.ended = false;
  if (walk.position == 0) return;
  const auto at_image = [&] {
    return walk.position < list.size() && is_image_entry(kind, list.record(walk.position).tag);
  };
  const auto to_image_before = [&] {
    while (walk.position > 1) {
      --walk.position;
      if (at_image()) return;
    }
  };
  to_image_before();  // past the frame that is shown
  to_image_before();
}

FrameWalk walk_to(const ChunkList& list, const Document& document, std::size_t entry,
                  std::vector<std::size_t>& passed) {
  FrameWalk walk = begin_walk(list, document);
  while (walk.position < std::min(entry, list.size())) {
    const std::size_t at = walk.position++;
    const ChunkRecord& record = list.record(at);
    if (is_image_entry(document.kind, record.tag)) {
      ++walk.images;
      passed.push_back(at);
    }
    if (record.tag == tag::ENDL && !walk.stack.empty()) walk.stack.pop_back();
    if (record.tag == tag::LOOP) enter_loop(walk, list);
    // Who asks for an image in a loop of no rounds sees it all the same.
    if (walk.position > entry) walk.position = at + 1;
  }
  return walk;
}

}  // namespace vellum
