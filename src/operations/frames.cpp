#include "operations/frames.h"

#include <algorithm>
#include <charconv>
#include <numeric>

#include "base/text.h"
#include "core/model/playing_rules.h"

namespace vellum {
namespace {

/// A number from 1 to `most`, which is taken away from the front of the text.
std::optional<std::size_t> take_number(std::string_view& text, std::size_t most) {
  std::size_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || value == 0 || value > most) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return value;
}

bool mark_range(std::string_view part, std::vector<bool>& marks) {
  const auto first = take_number(part, marks.size());
  if (!first) return false;
  auto last = first;
  if (part.starts_with('-')) {
    part.remove_prefix(1);
    last = take_number(part, marks.size());
  }
  if (!last || *last < *first || !part.empty()) return false;
  for (std::size_t i = *first - 1; i < *last; ++i) marks[i] = true;
  return true;
}

FrameList marked(const std::vector<bool>& marks) {
  FrameList frames;
  for (std::size_t i = 0; i < marks.size(); ++i)
    if (marks[i]) frames.push_back(i);
  return frames;
}

}  // namespace

std::vector<std::size_t> frame_entries(const DocumentWindow& window) {
  std::vector<std::size_t> entries;
  for (std::size_t i = 0; i < window.list.size(); ++i)
    if (is_image_entry(window.document.kind, window.list.record(i).tag)) entries.push_back(i);
  return entries;
}

FrameList all_frames(std::size_t count) {
  FrameList frames(count);
  std::iota(frames.begin(), frames.end(), std::size_t{0});
  return frames;
}

FrameList selected_frames(const DocumentWindow& window) {
  FrameList frames;
  const auto entries = frame_entries(window);
  for (std::size_t i = 0; i < entries.size(); ++i)
    if (window.list.entry(entries[i]).selected) frames.push_back(i);
  return frames;
}

bool first_frame_stays(const DocumentWindow& window) {
  const DocumentKind kind = window.document.kind;
  const auto entries = frame_entries(window);
  if (kind == DocumentKind::WEBP) return entries.size() < 2;
  return std::ranges::none_of(entries, [&](std::size_t entry) {
    return entry != entries.front() && frame_manner(window.list.record(entry), kind).clears;
  });
}

std::optional<FrameList> parse_frame_list(std::string_view text, std::size_t count) {
  std::vector<bool> marks(count);
  for (std::size_t at = 0; at <= text.size();) {
    const std::size_t comma = std::min(text.find(',', at), text.size());
    if (!mark_range(trimmed(text.substr(at, comma - at)), marks)) return std::nullopt;
    at = comma + 1;
  }
  return marked(marks);
}

FrameList every_nth(std::size_t count, std::size_t n) {
  FrameList frames;
  for (std::size_t i = n; n > 0 && i <= count; i += n) frames.push_back(i - 1);
  return frames;
}

FrameList inverted(const FrameList& frames, std::size_t count) {
  std::vector<bool> marks(count, true);
  for (const std::size_t i : frames)
    if (i < count) marks[i] = false;
  return marked(marks);
}

}  // namespace vellum
