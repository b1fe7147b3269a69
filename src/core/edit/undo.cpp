#include "core/edit/undo.h"

#include <algorithm>
#include <new>
#include <unordered_set>
#include <utility>

#include "base/fields.h"
#include "core/edit/insert_chunk.h"
#include "core/edit/undo_restore.h"
#include "core/model/chunk_description.h"
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
    return block && met_.insert(block.identity()).second ? block.held_bytes() : 0;
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

/// What the window holds, as a level.
UndoLevel present_state(const DocumentWindow& window, std::string_view name) {
  const Document& document = window.document;
  return {window.list, document.dirty, document.caret, document.defaultImage, std::string(name), 0, {}};
}

bool is_present(const UndoLevel& level, const DocumentWindow& window) {
  const auto same = [](const ChunkList::Entry& a, const ChunkList::Entry& b) {
    return a.record == b.record && a.selected == b.selected;
  };
  const ChunkList &a = level.list, &b = window.list;
  if (a.size() != b.size() || level.defaultImage.identity() != window.document.defaultImage.identity())
    return false;
  for (std::size_t i = 0; i < a.size(); ++i)
    if (!same(a.entry(i), b.entry(i))) return false;
  return true;
}

void become(DocumentWindow& window, const UndoLevel& level) {
  const QuietList quiet(window.list);
  Document& document = window.document;
  window.list = level.list;
  document.caret = level.caret;
  document.dirty = level.dirty;
  document.defaultImage = level.defaultImage;
  chunk_list_close_change(window.list, document);
}

UndoLevel take_newest(DocumentWindow& window) {
  UndoLevel level = std::move(window.undoLevels.back());
  window.undoLevels.pop_back();
  window.document.undoAvailable = !window.undoLevels.empty();
  return level;
}

}  // namespace

bool undo_push(DocumentWindow& window, Host& host, std::string_view name, std::uint64_t most) {
  undo_settle(window);
  try {
    window.undoLevels.push_back(present_state(window, name));
  } catch (const std::bad_alloc&) {
    host.show(StringId::UndoLevelError);
    return false;
  }
  window.undoLevels.back().redo = std::exchange(window.redoLevels, {});
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

void undo_restore(DocumentWindow& window, std::deque<UndoLevel> levels) {
  while (levels.size() > level_limit()) levels.pop_front();
  levels.push_back(present_state(window, {}));
  count_own_bytes(levels);
  while (sum_of_own_bytes(levels) > kMaximumUndoBytes) levels.pop_front();
  levels.pop_back();
  window.undoLevels = std::move(levels);
  window.document.undoAvailable = !window.undoLevels.empty();
}

void undo_settle(DocumentWindow& window) {
  auto& levels = window.undoLevels;
  while (!levels.empty() && is_present(levels.back(), window))
    window.redoLevels = std::move(take_newest(window).redo);
  if (!levels.empty()) levels.back().redo.clear();
  window.document.undoAvailable = !levels.empty();
}

bool undo_pop(DocumentWindow& window) {
  undo_settle(window);
  if (window.undoLevels.empty()) return false;
  const UndoLevel level = take_newest(window);
  if (level.list.empty()) return false;
  try {
    window.redoLevels.push_back(present_state(window, level.name));
  } catch (const std::bad_alloc&) {
    window.redoLevels.clear();  // undone for good
  }
  become(window, level);
  return true;
}

bool redo_pop(DocumentWindow& window) {
  undo_settle(window);
  if (window.redoLevels.empty()) return false;
  const UndoLevel level = std::move(window.redoLevels.back());
  window.redoLevels.pop_back();
  window.undoLevels.push_back(present_state(window, level.name));
  window.document.undoAvailable = true;
  become(window, level);
  return true;
}

void undo_take_back(DocumentWindow& window) {
  if (window.undoLevels.empty()) return;
  UndoLevel level = take_newest(window);
  become(window, level);
  window.redoLevels = std::move(level.redo);
}

void undo_clear(DocumentWindow& window) {
  window.undoLevels.clear();
  window.redoLevels.clear();
  window.document.undoAvailable = false;
}

std::string undo_name(StringId what, std::size_t chunks, ChunkTag single) {
  return filled(
      what, {chunks == 1 ? tag_letters(single) : filled(StringId::NumberOfChunks, {std::to_string(chunks)})});
}

std::string undo_name(StringId what, const DocumentWindow& window) {
  const ChunkList& list = window.list;
  if (list.empty()) return filled(what, {{}});
  const std::size_t chosen = list.selected_count();
  std::size_t single = caret_entry(window);
  for (std::size_t i = 0; chosen == 1 && i < list.size(); ++i)
    if (list.entry(i).selected) single = i;
  return undo_name(what, std::max<std::size_t>(chosen, 1), list.record(single).tag);
}

}  // namespace vellum
