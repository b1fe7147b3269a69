#include "core/undo.h"

#include <algorithm>
#include <new>

#include "core/chunk_layout.h"
#include "core/settings.h"

namespace vellum {
namespace {

constexpr int kMostLevels = 32;

std::size_t level_limit() {
  return static_cast<std::size_t>(std::clamp(settings::UndoLevels, 1, kMostLevels));
}

}  // namespace

bool undo_push(DocumentWindow& window, Host& host) {
  const Document& document = window.document;
  try {
    window.undoLevels.push_back({window.list, document.dirty, document.caret, document.defaultImage});
  } catch (const std::bad_alloc&) {
    host.show(StringId::UndoLevelError);
    return false;
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
