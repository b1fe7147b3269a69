#include "core/edit/move_chunks.h"

#include <algorithm>
#include <numeric>

#include "core/edit/edit_closing.h"
#include "core/edit/insert_chunk.h"
#include "core/edit/undo.h"
#include "core/model/loops.h"

namespace vellum {
namespace {

using Order = std::vector<std::size_t>;

Order present_order(std::size_t size) {
  Order order(size);
  std::iota(order.begin(), order.end(), std::size_t{0});
  return order;
}

bool refuse(Host& host, StringId message = StringId::DropRefused) {
  host.show(message);
  return false;
}

/// Whether the entries that stand elsewhere than before may stand there, and streams stay whole.
bool is_legal(const ChunkList& before, const ChunkList& after, const Order& order, DocumentKind kind) {
  const ListShape shape = shape_of(after, kind);
  const auto old_streams = opaque_streams(before, kind), streams = opaque_streams(after, kind);
  for (std::size_t i = 0; i < order.size(); ++i) {
    if (order[i] == i) continue;
    const bool in_stream = stream_of(old_streams, order[i]) || stream_of(streams, i);
    if (in_stream || !is_in_place(shape, after.record(i).tag, i)) return false;
  }
  return kind != DocumentKind::MING || !loops_match(before) || loops_match(after);
}

bool moves_counted(const ChunkList& list, const Order& order, DocumentKind kind) {
  for (std::size_t i = 0; i < order.size(); ++i)
    if (order[i] != i && is_counted(kind, list.record(order[i]).tag)) return true;
  return false;
}

/// Gives the list this order where it is legal, with an undo level where `push` wants one. The caret goes
/// with its entry.
bool apply_order(DocumentWindow& window, const Order& order, bool push, Host& host) {
  const DocumentKind kind = window.document.kind;
  ChunkList after = window.list;
  after.reorder(order);
  if (!is_legal(window.list, after, order, kind)) return refuse(host);
  if (push && !undo_push(window, host, undo_name(StringId::UndoMove, window))) return false;
  const bool counted = moves_counted(window.list, order, kind);
  const std::size_t caret = caret_entry(window);
  window.document.caret = static_cast<std::int32_t>(std::ranges::find(order, caret) - order.begin());
  window.list.reorder(order);
  finish_edit(window, counted);
  return true;
}

std::vector<bool> moving_entries(const DocumentWindow& window) {
  std::vector<bool> moving(window.list.size());
  for (std::size_t i = 0; i < moving.size(); ++i) moving[i] = window.list.entry(i).selected;
  if (window.list.selected_count() == 0) moving[caret_entry(window)] = true;
  return moving;
}

/// Every run of moving entries changes places with its neighbour; false where one has none.
bool shift_runs(Order& order, const std::vector<bool>& moving, bool down) {
  for (std::size_t first = 0; first < order.size();) {
    std::size_t end = first;
    while (end < order.size() && moving[end]) ++end;
    if (end == first) {
      ++first;
      continue;
    }
    if (down ? end == order.size() : first == 0) return false;
    const auto at = [&order](std::size_t i) { return order.begin() + static_cast<std::ptrdiff_t>(i); };
    if (down)
      std::rotate(at(first), at(end), at(end + 1));
    else
      std::rotate(at(first - 1), at(first), at(end));
    first = end + (down ? 1 : 0);
  }
  return true;
}

bool is_image(const DocumentWindow& window, std::size_t entry) {
  return is_image_entry(window.document.kind, window.list.record(entry).tag);
}

/// The entry that the images go in front of or behind: the target, or its first neighbour that stays, away
/// from the side they go to; nothing when all images move.
std::optional<std::size_t> anchor_of(const std::vector<std::size_t>& images, const std::vector<bool>& moving,
                                     const MoveImages& request) {
  std::size_t at = std::clamp<std::size_t>(request.image, 1, images.size()) - 1;
  if (request.copy) return images[at];
  while (moving[images[at]]) {
    if (request.before ? ++at == images.size() : at-- == 0) return std::nullopt;
  }
  return images[at];
}

bool copy_images(DocumentWindow& window, std::size_t position, const std::vector<bool>& moving) {
  std::vector<std::shared_ptr<const ChunkRecord>> copies;
  for (std::size_t i = 0; i < moving.size(); ++i)
    if (moving[i]) copies.push_back(window.list.entry(i).record);
  window.list.insert(position, copies);
  window.list.select_all(false);
  for (std::size_t i = 0; i < copies.size(); ++i) window.list.select(position + i, true);
  window.document.caret = static_cast<std::int32_t>(position + copies.size() - 1);
  finish_edit(window, true);
  return true;
}

Order order_with_moved(const std::vector<bool>& moving, std::size_t position) {
  Order order, moved;
  for (std::size_t i = 0; i < moving.size(); ++i)
    if (moving[i]) moved.push_back(i);
  for (std::size_t i = 0; i <= moving.size(); ++i) {
    if (i == position) order.insert(order.end(), moved.begin(), moved.end());
    if (i < moving.size() && !moving[i]) order.push_back(i);
  }
  return order;
}

}  // namespace

bool move_rows(DocumentWindow& window, bool down, Host& host) {
  if (window.list.empty()) return false;
  Order order = present_order(window.list.size());
  if (!shift_runs(order, moving_entries(window), down)) return refuse(host);
  return apply_order(window, order, true, host);
}

bool move_entry(DocumentWindow& window, std::size_t from, std::size_t to, Host& host) {
  if (from >= window.list.size() || to >= window.list.size())
    return refuse(host, StringId::ErrorAccessingChunk);
  Order order = present_order(window.list.size());
  const auto at = [&order](std::size_t i) { return order.begin() + static_cast<std::ptrdiff_t>(i); };
  if (from < to)
    std::rotate(at(from), at(from + 1), at(to + 1));
  else
    std::rotate(at(to), at(from), at(from + 1));
  window.document.caret = static_cast<std::int32_t>(from);
  return apply_order(window, order, true, host);
}

bool move_images(DocumentWindow& window, const MoveImages& request, Host& host) {
  std::vector<bool> moving(window.list.size());
  std::vector<std::size_t> images;
  for (std::size_t i = 0; i < moving.size(); ++i) {
    if (!is_image(window, i)) continue;
    images.push_back(i);
    moving[i] = window.list.entry(i).selected;
  }
  if (std::ranges::find(moving, true) == moving.end()) return refuse(host, StringId::SelectImagesToMove);
  const StringId what = request.copy ? StringId::UndoCopyImages : StringId::UndoMove;
  if (!undo_push(window, host, undo_name(what, window))) return false;
  const auto anchor = anchor_of(images, moving, request);
  if (!anchor) return false;
  const std::size_t position = *anchor + (request.before ? 0 : 1);
  if (request.copy)
    return window.document.kind == DocumentKind::PING ? refuse(host) : copy_images(window, position, moving);
  return apply_order(window, order_with_moved(moving, position), false, host);
}

namespace {

/// Whether copies of these entries may stand at a position.
bool copies_fit(const DocumentWindow& window, const std::vector<bool>& copied, std::size_t position) {
  const DocumentKind kind = window.document.kind;
  if (position > window.list.size() || outside_streams(window.list, kind, position) != position) return false;
  const auto streams = opaque_streams(window.list, kind);
  ChunkList after = window.list;
  std::size_t at = position;
  for (std::size_t i = 0; i < copied.size(); ++i) {
    if (!copied[i]) continue;
    const auto& record = window.list.entry(i).record;
    if (stands_once(record->tag, kind) || stream_of(streams, i)) return false;
    after.insert(at++, record);
  }
  const ListShape shape = shape_of(after, kind);
  for (std::size_t i = position; i < at; ++i)
    if (!is_in_place(shape, after.record(i).tag, i)) return false;
  return kind != DocumentKind::MING || !loops_match(window.list) || loops_match(after);
}

}  // namespace

bool may_put_rows(const DocumentWindow& window, const PutRows& request) {
  if (window.list.empty() || request.position > window.list.size()) return false;
  const std::vector<bool> moving = moving_entries(window);
  if (request.copy) return copies_fit(window, moving, request.position);
  const Order order = order_with_moved(moving, request.position);
  ChunkList after = window.list;
  after.reorder(order);
  return is_legal(window.list, after, order, window.document.kind);
}

bool put_rows(DocumentWindow& window, const PutRows& request, Host& host) {
  if (window.list.empty() || request.position > window.list.size())
    return refuse(host, StringId::ErrorAccessingChunk);
  const std::vector<bool> moving = moving_entries(window);
  if (request.copy) {
    if (!copies_fit(window, moving, request.position)) return refuse(host);
    return undo_push(window, host, undo_name(StringId::UndoCopyImages, window)) &&
           copy_images(window, request.position, moving);
  }
  const Order order = order_with_moved(moving, request.position);
  return order != present_order(order.size()) && apply_order(window, order, true, host);
}

}  // namespace vellum
