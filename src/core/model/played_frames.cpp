#include "core/model/played_frames.h"

#include <algorithm>

#include "base/limits.h"
#include "core/model/frame_values.h"
#include "core/model/loops.h"

namespace vellum {
namespace {

/// What matters of an MNG here: its images, and the loops around them.
struct Step {
  enum class What { Image, Loop, End } what;
  std::size_t entry;
  std::uint8_t level = 0;
  std::uint32_t count = 0;
};

std::vector<Step> steps_of(const ChunkList& list) {
  std::vector<Step> steps;
  for (std::size_t i = 0; i < list.size(); ++i) {
    const ChunkRecord& record = list.record(i);
    if (record.tag == tag::PNGI) steps.push_back({Step::What::Image, i});
    if (record.tag == tag::LOOP)
      steps.push_back({Step::What::Loop, i, payload_byte(record, 0), payload_be32(record, 1)});
    if (record.tag == tag::ENDL) steps.push_back({Step::What::End, i, payload_byte(record, 0)});
  }
  return steps;
}

/// The step that ends the loop which begins at a step; behind the last one without such.
std::size_t end_of(const std::vector<Step>& steps, std::size_t loop) {
  for (std::size_t i = loop + 1; i < steps.size(); ++i)
    if (steps[i].what == Step::What::End && steps[i].level == steps[loop].level) return i;
  return steps.size();
}

/// Takes the loop around all images away.
bool take_outer(std::vector<Step>& steps) {
  if (steps.empty() || steps.front().what != Step::What::Loop) return false;
  const std::size_t end = end_of(steps, 0);
  for (std::size_t i = end; i < steps.size(); ++i)
    if (steps[i].what == Step::What::Image) return false;
  steps.resize(end);
  steps.erase(steps.begin());
  return true;
}

/// A loop that is being repeated.
struct Round {
  std::size_t loop, left;
  std::size_t images;  ///< found when the round began: one without any isn't repeated
};

/// The images in the order in which they play; nothing when they are too many, or have no end.
std::optional<std::vector<std::size_t>> unrolled(const std::vector<Step>& steps) {
  std::vector<std::size_t> images;
  std::vector<Round> rounds;
  for (std::size_t i = 0; i < steps.size(); ++i) {
    const Step& step = steps[i];
    if (step.what == Step::What::Image) {
      if (images.size() == kMaximumUnrolled) return std::nullopt;
      images.push_back(step.entry);
    } else if (step.what == Step::What::Loop) {
      if (step.count == 0)
        i = end_of(steps, i);
      else
        rounds.push_back({i, step.count, images.size()});
    } else if (!rounds.empty() && steps[rounds.back().loop].level == step.level) {
      Round& round = rounds.back();
      const bool again = --round.left != 0 && round.images != images.size();
      if (again && steps[round.loop].count >= kLoopForEver) return std::nullopt;
      round.images = images.size();
      if (again)
        i = round.loop;
      else
        rounds.pop_back();
    }
  }
  return images;
}

std::vector<std::size_t> images_of(const DocumentWindow& window) {
  std::vector<std::size_t> entries;
  for (std::size_t i = 0; i < window.list.size(); ++i)
    if (is_image_entry(window.document.kind, window.list.record(i).tag)) entries.push_back(i);
  return entries;
}

/// Whether the loop in front of the first image is one of those inside.
bool begins_inside(const std::vector<Step>& steps) {
  return !steps.empty() && steps.front().what == Step::What::Loop;
}

}  // namespace

std::size_t whole_loop(const ChunkList& list) {
  std::vector<Step> steps = steps_of(list);
  const std::size_t first = steps.empty() ? kNoEntry : steps.front().entry;
  return take_outer(steps) ? first : kNoEntry;
}

std::uint32_t whole_plays(const DocumentWindow& window) {
  const bool inside = window.document.kind == DocumentKind::MING && begins_inside(steps_of(window.list)) &&
                      whole_loop(window.list) == kNoEntry;
  return inside ? term_plays(window.list) : GetIterations(window.list, window.document);
}

PlayedFrames played_frames(const DocumentWindow& window) {
  PlayedFrames result{images_of(window), whole_plays(window)};
  if (window.document.kind != DocumentKind::MING) return result;
  std::vector<Step> steps = steps_of(window.list);
  take_outer(steps);
  if (std::ranges::all_of(steps, [](const Step& step) { return step.what == Step::What::Image; }))
    return result;
  const auto images = unrolled(steps);
  if (images && (images->size() <= kMaximumUnrolled) && !images->empty())
    result.entries = *images;
  else
    result.loopsLost = true;
  if (result.loopsLost) result.plays = GetIterations(window.list, window.document);
  return result;
}

}  // namespace vellum
