#include "core/edit/frame_scene.h"

#include "core/chunks/chunk_field_sets.h"

namespace vellum {
namespace {

bool is_image(const DocumentWindow& window, std::size_t i) {
  return is_image_entry(window.document.kind, window.list.record(i).tag);
}

ChunkRecord record_at(const DocumentWindow& window, std::size_t index, FrameOffset offset) {
  ChunkRecord record = window.list.record(index);
  SetFrameOffset(record, window.document.kind, offset);
  return record;
}

Picture straight(const CanvasState& state) {
  return state.canvas.shown ? straight_picture(state.canvas) : Picture();
}

}  // namespace

FrameScene::FrameScene(const DocumentWindow& window, std::size_t index)
    : values_(view_values(window.list, window.document, {Ground::Kind::Clear})), index_(index) {
  values_.rule.truncates = false;
  for (std::size_t i = 0; i < index; ++i)
    if (is_image(window, i)) compose_frame(state_, values_, window.list.record(i));
  before_ = straight(state_);
  next_ = neighbour_image(window, index, true);
}

CanvasState FrameScene::at(const DocumentWindow& window, FrameOffset offset) const {
  CanvasState state = state_;
  compose_frame(state, values_, record_at(window, index_, offset));
  return state;
}

Picture FrameScene::with_frame_at(const DocumentWindow& window, FrameOffset offset) const {
  return straight(at(window, offset));
}

Picture FrameScene::after(const DocumentWindow& window, FrameOffset offset) const {
  if (next_ == kNoEntry) return {};
  CanvasState state = at(window, offset);
  compose_frame(state, values_, window.list.record(next_));
  return straight(state);
}

std::size_t neighbour_image(const DocumentWindow& window, std::size_t index, bool behind) {
  for (std::size_t i = behind ? index + 1 : index - 1; i < window.list.size(); behind ? ++i : --i)
    if (is_image(window, i)) return i;
  return kNoEntry;
}

Extent canvas_with_frame_at(const DocumentWindow& window, std::size_t index, FrameOffset offset) {
  DocumentWindow copy;
  copy.document = window.document;
  copy.list = window.list;
  chunk_list_put(copy.list, index, record_at(window, index, offset));
  document_extent(copy.list, copy.document);
  return document_size(copy.list, copy.document);
}

bool pads_first_image(const DocumentWindow& window, Extent canvas) {
  if (window.document.kind != DocumentKind::APNG || window.document.defaultImage) return false;
  const std::size_t first = first_image(window);
  if (first == kNoEntry) return false;
  const FrameControl& frame = window.list.record(first).frameControl;
  return frame.frameWidth < canvas.width || frame.frameHeight < canvas.height;
}

bool fill_grown_canvas(DocumentWindow& window, std::size_t index, Extent before) {
  const FrameOffset place = GetFrameOffset(window.list.record(index), window.document.kind);
  const Extent now = canvas_with_frame_at(window, index, place);
  if (now.width <= before.width && now.height <= before.height) return true;
  const Extent canvas = frames_extent(window);
  return !pads_first_image(window, canvas) || enlarge_first_image(window, canvas);
}

}  // namespace vellum
