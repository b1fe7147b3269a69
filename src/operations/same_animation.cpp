#include "operations/same_animation.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "base/byte_order.h"
#include "core/model/compose.h"
#include "core/model/frame_values.h"
#include "operations/frames.h"
#include "playback/frame_walk.h"

namespace vellum {
namespace {

bool same_pixels(const std::uint8_t* a, const std::uint8_t* b, std::size_t width) {
  if (std::memcmp(a, b, 4 * width) == 0) return true;
  for (std::size_t x = 0; x < width; ++x) {
    const std::uint32_t left = read_le32(a + 4 * x), right = read_le32(b + 4 * x);
    if (left != right && (left >> 24 != 0 || right >> 24 != 0)) return false;  // what is clear has no color
  }
  return true;
}

bool same_canvas(const Picture& a, const Picture& b) {
  if (!a || !b || a.width() != b.width() || a.height() != b.height()) return false;
  for (std::uint32_t y = 0; y < a.height(); ++y)
    if (!same_pixels(a.row(y), b.row(y), a.width())) return false;
  return true;
}

/// Frames in the order in which they play, by number: loops of an MNG round and round, as far as anything new
/// can come of that.
std::vector<std::size_t> played_order(const DocumentWindow& window, const std::vector<std::size_t>& entries) {
  std::vector<std::size_t> order;
  if (window.document.kind != DocumentKind::MING) return all_frames(entries.size());
  const std::size_t most = 2 * entries.size() + 256;
  FrameWalk walk = begin_walk(window.list, window.document);
  while (order.size() < most) {
    const auto entry = next_image(walk, window.list, window.document.kind);
    if (!entry) break;
    order.push_back(static_cast<std::size_t>(std::ranges::lower_bound(entries, *entry) - entries.begin()));
  }
  return order;
}

/// Plays both side by side; where they differ, goes back to put a frame right.
class Comparison {
 public:
  Comparison(SourceCanvases& source, const DocumentWindow& after)
      : source_(source),
        before_(source.window()),
        after_(after),
        beforeEntries_(frame_entries(before_)),
        afterEntries_(frame_entries(after)),
        order_(played_order(before_, beforeEntries_)),
        known_(source.keeps_all() && order_ == all_frames(beforeEntries_.size())) {
    rewind();
  }

  bool comparable() const {
    if (beforeEntries_.size() != afterEntries_.size()) return false;
    const DocumentKind kind = before_.document.kind;
    const std::uint32_t ticks = ticks_per_second(before_.list);
    for (std::size_t i = 0; i < beforeEntries_.size(); ++i)
      if (GetFrameDelay(before_.list.record(beforeEntries_[i]), kind, ticks) !=
          GetFrameDelay(after_.list.record(afterEntries_[i]), kind, ticks))
        return false;
    return true;
  }

  /// The first step from here on at which the canvases differ.
  std::optional<std::size_t> next_difference(Host& host) {
    for (; at_ < order_.size(); ++at_) {
      if (host.stopped()) return at_;
      last_ = now_;
      now_ = next_;
      if (!same_canvas(canvas_before(order_[at_]),
                       next_.after.next(after_.list.record(afterEntries_[order_[at_]]))))
        return at_;
    }
    return std::nullopt;
  }

  bool changed(std::size_t frame) const {
    return before_.list.entry(beforeEntries_[frame]).record != after_.list.entry(afterEntries_[frame]).record;
  }
  /// The frame whose change is seen at this step most likely, and where playing goes on once it is put right.
  std::optional<std::size_t> suspect(std::size_t step) {
    for (std::size_t back = 0; back <= step; ++back) {
      const std::size_t frame = order_[step - back];
      if (!changed(frame)) continue;
      if (back == 0)
        next_ = now_;
      else if (back == 1)
        next_ = now_ = last_, at_ = step - 1;
      else
        rewind();
      return frame;
    }
    return std::nullopt;
  }
  void rewind() {
    at_ = 0;
    next_ = now_ = last_ = {StraightCanvases(before_), StraightCanvases(after_)};
  }
  bool repeats() const { return order_.size() > beforeEntries_.size(); }
  const std::vector<std::size_t>& before_entries() const { return beforeEntries_; }
  const std::vector<std::size_t>& after_entries() const { return afterEntries_; }

 private:
  Picture canvas_before(std::size_t frame) {
    return known_ ? source_.canvas(frame) : next_.before.next(before_.list.record(beforeEntries_[frame]));
  }

  struct Pair {
    StraightCanvases before, after;
  };
  SourceCanvases& source_;
  const DocumentWindow &before_, &after_;
  std::vector<std::size_t> beforeEntries_, afterEntries_, order_;
  bool known_;  ///< canvases are those of the list's order, each of which is kept
  std::size_t at_ = 0;
  /// In front of the next step, of the one that was taken last, and of the one before that.
  Pair next_{StraightCanvases(before_), StraightCanvases(after_)}, now_ = next_, last_ = next_;
};

}  // namespace

bool is_same_animation(SourceCanvases& before, const DocumentWindow& after, Host& host) {
  Comparison comparison(before, after);
  return comparison.comparable() && !comparison.next_difference(host);
}

std::optional<std::size_t> restore_differing_frames(SourceCanvases& before, DocumentWindow& after,
                                                    Host& host) {
  Comparison comparison(before, after);
  if (!comparison.comparable()) return std::nullopt;
  std::size_t restored = 0;
  for (bool again = true; again;) {
    const std::size_t so_far = restored;
    while (const auto step = comparison.next_difference(host)) {
      const auto frame = host.stopped() ? std::nullopt : comparison.suspect(*step);
      if (!frame) return std::nullopt;
      after.list.replace(comparison.after_entries()[*frame],
                         before.window().list.entry(comparison.before_entries()[*frame]).record);
      ++restored;
    }
    // What was put right in a later round is seen in the earlier ones too.
    again = comparison.repeats() && restored > so_far;
    comparison.rewind();
  }
  return restored;
}

}  // namespace vellum
