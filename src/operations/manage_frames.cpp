#include "operations/manage_frames.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <numeric>

#include "base/limits.h"
#include "core/edit/delete_chunks.h"
#include "core/edit/edit_closing.h"
#include "core/edit/placement.h"
#include "core/model/chunk_description.h"
#include "core/model/first_frame.h"

namespace vellum {
namespace {

/// Changes one record; `turn` counts the frames of the list. True when the value was held.
using Change = std::function<bool(ChunkRecord& record, std::size_t turn)>;

/// All of a frame that these actions change.
bool same_frame(const ChunkRecord& a, const ChunkRecord& b, DocumentKind kind, std::uint32_t ticks) {
  const FrameTime first = frame_time(a, kind, ticks), second = frame_time(b, kind, ticks);
  const FrameOffset here = GetFrameOffset(a, kind), there = GetFrameOffset(b, kind);
  return first.num == second.num && first.den == second.den && here.x == there.x && here.y == there.y &&
         a.frameControl.dispose == b.frameControl.dispose && a.frameControl.blend == b.frameControl.blend &&
         a.webpImage.dispose == b.webpImage.dispose && clears_canvas(a) == clears_canvas(b);
}

enum class Closes { Times, Places };

Managed change_frames(DocumentWindow& window, const FrameList& frames, Closes closes, const Change& change) {
  const DocumentKind kind = window.document.kind;
  const std::uint32_t ticks = ticks_per_second(window.list);
  const auto entries = frame_entries(window);
  Managed managed;
  {
    const QuietList quiet(window.list);
    for (std::size_t turn = 0; turn < frames.size(); ++turn) {
      if (frames[turn] >= entries.size()) continue;
      const std::size_t entry = entries[frames[turn]];
      ChunkRecord record = window.list.record(entry);
      managed.held += change(record, turn);
      if (same_frame(record, window.list.record(entry), kind, ticks)) continue;
      record.description = chunk_description(record);
      chunk_list_put(window.list, entry, record);
      ++managed.changed;
    }
  }
  if (managed.changed > 0) finish_frames(window, closes == Closes::Times);
  return managed;
}

Managed change_times(DocumentWindow& window, const FrameList& frames,
                     const std::function<FrameTime(FrameTime, std::size_t turn)>& next) {
  const DocumentKind kind = window.document.kind;
  const std::uint32_t ticks = ticks_per_second(window.list);
  return change_frames(window, frames, Closes::Times, [&](ChunkRecord& record, std::size_t turn) {
    const FrameTime now = frame_time(record, kind, ticks), wanted = next(now, turn);
    if (Wide{now.num} * wanted.den == Wide{wanted.num} * now.den) return false;
    return set_frame_time(record, kind, ticks, wanted);
  });
}

// ---------------------------------------------------------------------------------------------------------
// places

Extent frame_extent(const ChunkRecord& record) {
  const Picture picture = picture_of(record);
  return picture ? Extent{picture.width(), picture.height()} : Extent{};
}

/// The offset nearest to a wanted one that the kind can tell, and whether it is another.
bool put_offset(ChunkRecord& record, DocumentKind kind, std::int64_t x, std::int64_t y) {
  const Extent size = frame_extent(record);
  const bool below = kind == DocumentKind::MING;
  const auto hold = [below](std::int64_t value, std::uint32_t length) {
    const std::int64_t most =
        below ? INT32_MAX : std::max<std::int64_t>(std::int64_t{kMaximumDimension} - length, 0);
    return std::clamp<std::int64_t>(value, below ? INT32_MIN : 0, most);
  };
  const std::int64_t left = hold(x, size.width), top = hold(y, size.height);
  SetFrameOffset(record, kind, {static_cast<std::int32_t>(left), static_cast<std::int32_t>(top)});
  return left != x || top != y;
}

using Place = std::function<std::pair<std::int64_t, std::int64_t>(const ChunkRecord& record)>;

Managed change_places(DocumentWindow& window, const FrameList& frames, const Place& place) {
  const DocumentKind kind = window.document.kind;
  const bool locked = kind == DocumentKind::APNG && !window.document.defaultImage;
  return change_frames(window, frames, Closes::Places, [&](ChunkRecord& record, std::size_t turn) {
    const auto [x, y] = place(record);
    const FrameOffset now = GetFrameOffset(record, kind);
    if (now.x == x && now.y == y) return false;
    return (locked && frames[turn] == 0) || put_offset(record, kind, x, y);
  });
}

// ---------------------------------------------------------------------------------------------------------
// order and number

/// What images are read with and what plays them, beside headers, ends and the images themselves.
bool serves_images(ChunkTag tag) {
  static constexpr ChunkTag serving[] = {tag::IHDR, tag::acTL, tag::IEND, tag::MHDR, tag::MEND, tag::WEBH,
                                         tag::PLTE, tag::tRNS, tag::fcTL, tag::LOOP, tag::ENDL, tag::TERM,
                                         tag::FRAM, tag::DEFI, tag::MOVE, tag::SHOW};
  return std::ranges::find(serving, tag) != std::end(serving);
}

/// Deletes the entries that `goes` names, without a word.
std::size_t delete_entries(DocumentWindow& window, const std::function<bool(std::size_t)>& goes) {
  std::vector<bool> marks(window.list.size());
  for (std::size_t i = 0; i < marks.size(); ++i) marks[i] = goes(i);
  const std::size_t before = window.list.size();
  Host silent;
  delete_marked(window, std::move(marks), silent);
  return before - window.list.size();
}

}  // namespace

void finish_frames(DocumentWindow& window, bool counted) {
  finish_edit(window, counted);
  pad_first_frame(window);
}

std::uint64_t total_time_ms(const DocumentWindow& window, const FrameList& frames) {
  const std::uint32_t ticks = ticks_per_second(window.list);
  const auto entries = frame_entries(window);
  Wide whole = 0;
  double parts = 0;
  for (const std::size_t frame : frames) {
    const FrameTime time = frame_time(window.list.record(entries[frame]), window.document.kind, ticks);
    whole += time.num * 1000 / time.den;
    parts += static_cast<double>(time.num * 1000 % time.den) / static_cast<double>(time.den);
  }
  return static_cast<std::uint64_t>(whole) + static_cast<std::uint64_t>(std::llround(parts));
}

Managed set_delays(DocumentWindow& window, const FrameList& frames, std::uint32_t milliseconds) {
  const DocumentKind kind = window.document.kind;
  const std::uint32_t ticks = ticks_per_second(window.list);
  return change_times(window, frames, [&](FrameTime, std::size_t) {
    // A time above 0 is at least one tick.
    const bool short_of_a_tick =
        kind == DocumentKind::MING && milliseconds > 0 && Wide{milliseconds} * ticks < 500;
    return short_of_a_tick ? FrameTime{1, ticks} : FrameTime{milliseconds, 1000};
  });
}

Managed scale_delays(DocumentWindow& window, const FrameList& frames, std::uint32_t percent) {
  return change_times(window, frames, [percent](FrameTime time, std::size_t) {
    return FrameTime{time.num * percent, time.den * 100};
  });
}

Managed add_to_delays(DocumentWindow& window, const FrameList& frames, std::int32_t milliseconds) {
  return change_times(window, frames, [milliseconds](FrameTime time, std::size_t) {
    const std::uint64_t now = time.num * 1000;
    const std::uint64_t change = static_cast<std::uint64_t>(std::abs(milliseconds)) * time.den;
    const std::uint64_t sum = milliseconds >= 0 ? now + change : now - std::min(now, change);
    return FrameTime{sum, time.den * 1000};
  });
}

Managed set_total_time(DocumentWindow& window, const FrameList& frames, std::uint64_t milliseconds) {
  const DocumentKind kind = window.document.kind;
  const std::uint32_t ticks = ticks_per_second(window.list);
  const std::uint64_t unit = time_unit(kind, ticks);
  const auto total = static_cast<std::uint64_t>((Wide{milliseconds} * unit + 500) / 1000);
  const auto entries = frame_entries(window);
  std::vector<Wide> shares;
  Wide sum = 0;
  for (const std::size_t frame : frames) {
    const FrameTime time = frame_time(window.list.record(entries[frame]), kind, ticks);
    shares.push_back(Wide{time.num} * 1'000'000 / time.den);
    sum += shares.back();
  }
  if (sum == 0) shares.assign(frames.size(), 1), sum = frames.size();
  Wide passed = 0;
  std::uint64_t given = 0;
  return change_frames(window, frames, Closes::Times, [&](ChunkRecord& record, std::size_t turn) {
    passed += shares[turn];
    const auto end = static_cast<std::uint64_t>((passed * total + sum / 2) / sum);
    const std::uint64_t wanted = end - std::min(end, given);
    const bool held = set_frame_time(record, kind, ticks, {wanted, unit});
    const FrameTime now = frame_time(record, kind, ticks);
    given += static_cast<std::uint64_t>(Wide{now.num} * unit / now.den);
    return held;
  });
}

Managed set_frame_rate(DocumentWindow& window, const FrameList& frames, FrameDelay delay) {
  const DocumentKind kind = window.document.kind;
  const FrameTime each{delay.num, delay.den == 0 ? 100u : delay.den};
  if (kind == DocumentKind::APNG)
    return change_times(window, frames, [each](FrameTime, std::size_t) { return each; });
  const std::uint64_t unit = time_unit(kind, ticks_per_second(window.list));
  const auto end_of = [&](std::size_t turn) {
    return static_cast<std::uint64_t>((Wide{turn} * each.num * unit + each.den / 2) / each.den);
  };
  return change_times(window, frames, [&](FrameTime, std::size_t turn) {
    return FrameTime{end_of(turn + 1) - end_of(turn), unit};
  });
}

Managed set_positions(DocumentWindow& window, const FrameList& frames, FrameOffset place) {
  return change_places(window, frames, [place](const ChunkRecord&) {
    return std::pair<std::int64_t, std::int64_t>(place.x, place.y);
  });
}

Managed move_frames_by(DocumentWindow& window, const FrameList& frames, FrameOffset distance) {
  return change_places(window, frames, [&, kind = window.document.kind](const ChunkRecord& record) {
    const FrameOffset now = GetFrameOffset(record, kind);
    return std::pair<std::int64_t, std::int64_t>(std::int64_t{now.x} + distance.x,
                                                 std::int64_t{now.y} + distance.y);
  });
}

Managed align_frames(DocumentWindow& window, const FrameList& frames, std::size_t place) {
  const Extent canvas = document_size(window.list, window.document);
  const auto column = static_cast<std::int64_t>(place % 3), row = static_cast<std::int64_t>(place / 3);
  return change_places(window, frames, [=](const ChunkRecord& record) {
    const Extent size = frame_extent(record);
    return std::pair<std::int64_t, std::int64_t>((std::int64_t{canvas.width} - size.width) * column / 2,
                                                 (std::int64_t{canvas.height} - size.height) * row / 2);
  });
}

bool has_disposal(DocumentKind kind, std::uint32_t dispose) {
  return dispose <= (kind == DocumentKind::APNG ? 2u : 1u);
}

Managed set_disposal(DocumentWindow& window, const FrameList& frames, std::uint32_t dispose) {
  const DocumentKind kind = window.document.kind;
  if (!has_disposal(kind, dispose)) return {};
  return change_frames(window, frames, Closes::Places, [&](ChunkRecord& record, std::size_t) {
    set_frame_dispose(record, kind, dispose);
    return false;
  });
}

Managed set_blending(DocumentWindow& window, const FrameList& frames, std::uint32_t blend) {
  if (window.document.kind != DocumentKind::APNG || blend > 1) return {};
  return change_frames(window, frames, Closes::Places, [blend](ChunkRecord& record, std::size_t) {
    record.frameControl.blend = static_cast<std::uint8_t>(blend);
    return false;
  });
}

Managed duplicate_frames(DocumentWindow& window, const FrameList& frames) {
  const auto entries = frame_entries(window);
  std::vector<std::shared_ptr<const ChunkRecord>> copies;
  std::vector<bool> twice(window.list.size());
  for (const std::size_t frame : frames) {
    copies.push_back(window.list.entry(entries[frame]).record);
    twice[entries[frame]] = true;
  }
  if (copies.empty() || window.list.size() + copies.size() > kMaximumEntries) return {};
  std::vector<std::size_t> order;
  std::size_t copy = window.list.size();
  for (std::size_t i = 0; i < twice.size(); ++i) {
    order.push_back(i);
    if (twice[i]) order.push_back(copy++);
  }
  const QuietList quiet(window.list);
  window.list.insert(window.list.size(), copies);
  window.list.reorder(order);
  finish_frames(window, true);
  return {copies.size(), 0};
}

Managed shift_frames(DocumentWindow& window, FrameList& frames, bool down) {
  const auto entries = frame_entries(window);
  const std::size_t count = entries.size();
  std::vector<bool> moving(count);
  for (const std::size_t frame : frames) moving[frame] = true;
  FrameList order = all_frames(count);
  std::size_t swaps = 0;
  // Seen from the side that they go to, each moving frame changes places with one that stays.
  const auto at = [&](std::size_t step) { return down ? count - 1 - step : step; };
  for (std::size_t step = 1; step < count; ++step) {
    const std::size_t here = at(step), next = at(step - 1);
    if (!moving[here] || moving[next]) continue;
    std::swap(order[here], order[next]);
    moving[here] = false;
    moving[next] = true;
    ++swaps;
  }
  if (swaps == 0) return {};
  const ChunkList before = window.list;
  {
    const QuietList quiet(window.list);
    for (std::size_t i = 0; i < count; ++i)
      if (order[i] != i) window.list.replace(entries[i], before.entry(entries[order[i]]).record);
  }
  frames.clear();
  for (std::size_t i = 0; i < count; ++i)
    if (moving[i]) frames.push_back(i);
  finish_frames(window, true);
  return {swaps, 0};
}

Managed delete_frames(DocumentWindow& window, const FrameList& frames, Host& host) {
  const auto entries = frame_entries(window);
  if (frames.empty()) return {};
  if (frames.size() >= entries.size()) {
    host.show(StringId::KeepOneImage);
    return {};
  }
  std::vector<bool> goes(window.list.size());
  for (const std::size_t frame : frames) goes[entries[frame]] = true;
  const std::size_t deleted = delete_entries(window, [&](std::size_t i) { return goes[i]; });
  pad_first_frame(window);
  return {deleted, 0};
}

std::size_t delete_texts(DocumentWindow& window) {
  return delete_entries(window, [&](std::size_t i) { return is_text(window.list.record(i).tag); });
}

std::size_t delete_all_but_images(DocumentWindow& window) {
  const DocumentKind kind = window.document.kind;
  const auto streams = opaque_streams(window.list, kind);
  return delete_entries(window, [&](std::size_t i) {
    const ChunkTag tag = window.list.record(i).tag;
    return !is_image_entry(kind, tag) && !serves_images(tag) && !stream_of(streams, i);
  });
}

bool take_draft(DocumentWindow& window, const DocumentWindow& draft) {
  bool same = window.list.size() == draft.list.size();
  for (std::size_t i = 0; same && i < window.list.size(); ++i)
    same = window.list.entry(i).record == draft.list.entry(i).record;
  if (same) return false;
  window.document.caret = draft.document.caret;
  window.document.defaultImage = draft.document.defaultImage;
  window.document.PartialRedraw = true;
  const QuietList quiet(window.list);
  window.list = draft.list;
  // The draft has made the closing calls that forget counts.
  finish_edit(window, false);
  return true;
}

}  // namespace vellum
