#include "core/edit/insertion.h"

#include <algorithm>

#include "base/limits.h"
#include "core/edit/edit_closing.h"

namespace vellum {

Insertion::Insertion(DocumentWindow& window, std::size_t wanted)
    : window_(window),
      shape_(shape_of(window.list, window.document.kind)),
      wanted_(outside_streams(window.list, window.document.kind, wanted)) {}

void Insertion::restart() {
  flush();
  shape_ = shape_of(window_.list, window_.document.kind);
  wanted_ = static_cast<std::size_t>(window_.document.caret) + 1;
  tags_.clear();
}

const std::unordered_set<ChunkTag>& Insertion::tags() {
  if (tags_.empty())
    for (std::size_t i = 0; i < window_.list.size(); ++i) tags_.insert(window_.list.record(i).tag);
  return tags_;
}

Placed Insertion::add(ChunkRecord record) {
  const DocumentKind kind = window_.document.kind;
  const ChunkTag tag = record.tag;
  if (stands_once(tag, kind) && has(tag)) return Placed::Exists;
  const auto place = place_for(shape_, tag, wanted_);
  if (!place || shape_.size >= kMaximumEntries) return Placed::NoPlace;
  if (pending_.empty() || *place != pendingAt_ + pending_.size()) {
    flush();
    pendingAt_ = *place;
  }
  record.owner = nullptr;
  pending_.push_back(make_entry(window_.document, record));
  added_.insert(pending_.back().get());
  shape_insert(shape_, *place, tag);
  if (!tags_.empty()) tags_.insert(tag);
  wanted_ = std::max(*place, wanted_) + 1;
  counted_ = counted_ || is_counted(kind, tag);
  window_.document.caret = static_cast<std::int32_t>(*place);
  ++count_;
  return Placed::Done;
}

void Insertion::select_added() {
  flush();
  const QuietList quiet(window_.list);
  for (std::size_t i = 0; i < window_.list.size(); ++i)
    window_.list.select(i, added_.contains(&window_.list.record(i)));
}

void Insertion::flush() {
  if (!pending_.empty()) window_.list.insert(pendingAt_, pending_);
  pending_.clear();
}

}  // namespace vellum
