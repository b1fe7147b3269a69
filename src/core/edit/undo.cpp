#include "core/edit/undo.h"

#include <algorithm>
#include <new>
#include <unordered_set>

#include "core/model/chunk_layout.h"
#include "core/settings.h"

namespace vellum {
namespace {

constexpr int kMostLevels = 32;

std::size_t level_limit() {
  return static_cast<std::size_t>(std::clamp(settings::UndoLevels, 1, kMostLevels));
}

/// Blocks of bytes that were met, by their place in memory.
class BlockSet {
 public:
  /// The bytes of the record's blocks that were not met before.
  std::uint64_t add(const ChunkRecord& record) {
    return add(record.data) + add(record.auxData) + add(record.spareData);
  }
  std::uint64_t add(const ChunkHandle& block) {
    return block && met_.insert(block.data()).second ? block.size() : 0;
  }
  std::uint64_t add(const ChunkList& list, std::size_t first, std::size_t end) {
    std::uint64_t bytes = 0;
    for (std::size_t i = first; i < end; ++i) bytes += add(list.record(i));
    return bytes;
  }

 private:
  std::unordered_set<const void*> met_;
};

/// At most the bytes that the older state holds and the newer doesn't. Changes are local: what the lists have
/// in common at both ends is passed over without a look at the records.
std::uint64_t bytes_beyond(const UndoLevel& older, const UndoLevel& newer) {
  const auto same = [&](std::size_t a, std::size_t b) {
    return older.list.entry(a).record == newer.list.entry(b).record;
  };
  std::size_t first = 0, end = older.list.size(), newer_end = newer.list.size();
  while (first < std::min(end, newer_end) && same(first, first)) ++first;
  while (end > first && newer_end > first && same(end - 1, newer_end - 1)) --end, --newer_end;
  BlockSet blocks;
  blocks.add(newer.list, first, newer_end);
  blocks.add(newer.defaultImage);
  return blocks.add(older.list, first, end) + blocks.add(older.defaultImage);
}

/// Works out exactly what each level holds beside the newer ones: what a pasted record brought back is not
/// counted twice.
void count_own_bytes(std::deque<UndoLevel>& levels) {
  BlockSet blocks;
  for (auto level = levels.rbegin(); level != levels.rend(); ++level)
    level->ownBytes = blocks.add(level->list, 0, level->list.size()) + blocks.add(level->defaultImage);
  levels.back().ownBytes = 0;  // the state of the window itself
}

std::uint64_t sum_of_own_bytes(const std::deque<UndoLevel>& levels) {
  std::uint64_t sum = 0;
  for (const UndoLevel& level : levels) sum += level.ownBytes;
  return sum;
}

/// Drops the oldest levels until the rest keep to the limit. The newest one is what the window holds now.
void keep_to_bytes(std::deque<UndoLevel>& levels, std::uint64_t most) {
  if (levels.size() > 1)
    levels[levels.size() - 2].ownBytes = bytes_beyond(levels[levels.size() - 2], levels.back());
  if (sum_of_own_bytes(levels) <= most) return;
  count_own_bytes(levels);
  while (sum_of_own_bytes(levels) > most) levels.pop_front();
}

}  // namespace

bool undo_push(DocumentWindow& window, Host& host, std::uint64_t most) {
  const Document& document = window.document;
  try {
    window.undoLevels.push_back({window.list, document.dirty, document.caret, document.defaultImage});
  } catch (const std::bad_alloc&) {
    host.show(StringId::UndoLevelError);
    return false;
  }
  try {
    keep_to_bytes(window.undoLevels, most);
  } catch (const std::bad_alloc&) {
    // Where there is no memory to count, older levels are too many.
    window.undoLevels.erase(window.undoLevels.begin(), std::prev(window.undoLevels.end()));
  }
  while (window.undoLevels.size() > level_limit()) window.undoLevels.pop_front();
  window.document.undoAvailable = true;
  return true;
}

bool undo_pop(DocumentWindow& window) {
  if (!window.document.undoAvailable || window.undoLevels.empty()) return false;
  const UndoLevel level = std::move(window.undoLevels.back());
  window.undoLevels.pop_back();
  Document& document = window.document;
  document.undoAvailable = !window.undoLevels.empty();
  if (level.list.empty()) return false;
  const QuietList quiet(window.list);
  window.list = level.list;
  document.caret = level.caret;
  document.dirty = level.dirty;
  document.defaultImage = level.defaultImage;
  chunk_list_close_change(window.list, document);
  return true;
}

void undo_clear(DocumentWindow& window) {
  window.undoLevels.clear();
  window.document.undoAvailable = false;
}

}  // namespace vellum
