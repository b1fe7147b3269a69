#include "core/build/frame_stream.h"

#include <algorithm>

#include "core/build/build_animation.h"
#include "core/edit/frame_layer.h"
#include "core/model/chunk_description.h"
#include "core/model/chunk_layout.h"
#include "core/model/compose.h"
#include "core/model/frame_values.h"
#include "core/model/loops.h"
#include "core/model/record_picture.h"
#include "image/picture_operations.h"

namespace vellum {
namespace {

std::vector<std::size_t> image_entries(const DocumentWindow& window) {
  std::vector<std::size_t> entries;
  for (std::size_t i = 0; i < window.list.size(); ++i)
    if (is_image_entry(window.document.kind, window.list.record(i).tag)) entries.push_back(i);
  return entries;
}

FrameStream stream_of(const DocumentWindow& window, std::size_t count) {
  return {
      document_size(window.list, window.document), count, GetIterations(window.list, window.document), {}};
}

/// The canvases of a document, with the state behind the last one that was asked for.
struct CanvasWalk {
  const DocumentWindow& window;
  std::vector<std::size_t> entries;
  StraightCanvases canvases;
  std::size_t next = 0;
  Picture last;

  explicit CanvasWalk(const DocumentWindow& walked)
      : window(walked), entries(image_entries(walked)), canvases(walked) {}

  Picture at(std::size_t frame) {
    if (frame + 1 < next) {
      canvases = StraightCanvases(window);
      next = 0;
    }
    for (; next <= frame; ++next) last = canvases.next(window.list.record(entries[next]));
    return last;
  }
};

/// The one transparent index of a table whose other entries are opaque, the color that is the key of a
/// true color picture, -1 without any, and nothing where there is more than these can say.
std::optional<std::int32_t> single_key(const Picture& picture, std::span<const std::uint8_t> table) {
  if (table.empty() || picture.bits() == 32) return -1;
  if (picture.bits() == 24)
    return table.size() < 6 ? -1 : static_cast<std::int32_t>(make_colour(table[1], table[3], table[5]));
  std::int32_t found = -1;
  for (std::size_t i = 0; i < table.size(); ++i) {
    if (table[i] == 255) continue;
    if (table[i] != 0 || found >= 0) return std::nullopt;
    found = static_cast<std::int32_t>(i);
  }
  return found;
}

/// An image of an MNG has an alpha for each of its colors.
bool put_alphas(DocumentWindow& window, std::size_t place, std::span<const std::uint8_t> table) {
  ChunkRecord record = window.list.record(place);
  put_image_transparency(record, table);
  record.description = chunk_description(record);
  return chunk_list_put(window.list, place, record);
}

bool add_frame(DocumentWindow& window, const StreamedFrame& frame, std::size_t number) {
  Picture picture = frame.picture;
  auto key = single_key(picture, frame.transparency);
  const bool alphas = !key && window.document.kind == DocumentKind::MING;
  if (alphas) key = -1;
  const bool keyed = key && *key >= 0;
  const bool holds_key = window.document.kind == DocumentKind::MING || picture.bits() <= 8;
  if (!key || (keyed && (!holds_key || window.document.kind == DocumentKind::WEBP))) {
    picture = PictureWithTransparency(picture, frame.transparency);
    key = -1;
  }
  const AddFrameOptions options{kFrameDispose | kFrameBlend | kFrameTransparency, frame.dispose,
                                frame.over ? 1u : 0u, 0, frame.clears};
  const std::size_t behind = AddFrame(window, picture, *key, nullptr, frame.delay, frame.offset.x,
                                      frame.offset.y, static_cast<std::uint32_t>(number), &options);
  return behind != 0 && (!alphas || put_alphas(window, behind - 1, frame.transparency));
}

}  // namespace

FrameStream stored_frames(const DocumentWindow& window) {
  const auto entries = image_entries(window);
  FrameStream stream = stream_of(window, entries.size());
  stream.frame = [&window, entries, source = frame_source_of(window)](std::size_t frame) {
    const ChunkRecord& record = window.list.record(entries[frame]);
    const FrameManner manner = frame_manner(record, source.kind);
    StreamedFrame streamed;
    streamed.picture = picture_of(record);
    streamed.offset = GetFrameOffset(record, source.kind);
    streamed.delay = GetFrameDelay(record, source.kind, source.ticks);
    streamed.dispose = manner.dispose;
    streamed.over = manner.over;
    streamed.clears = manner.clears;
    if (streamed.picture && streamed.picture.bits() < 32)
      streamed.transparency = source.kind == DocumentKind::MING ? image_transparency(record) : source.table;
    return streamed;
  };
  return stream;
}

FrameStream canvas_frames(const DocumentWindow& window) {
  const auto walk = std::make_shared<CanvasWalk>(window);
  FrameStream stream = stream_of(window, walk->entries.size());
  const std::uint32_t ticks = ticks_per_second(window.list);
  stream.frame = [walk, ticks](std::size_t frame) {
    const DocumentWindow& from = walk->window;
    StreamedFrame streamed;
    streamed.picture = walk->at(frame);
    streamed.delay = GetFrameDelay(from.list.record(walk->entries[frame]), from.document.kind, ticks);
    streamed.clears = true;
    return streamed;
  };
  return stream;
}

bool build_from_stream(DocumentWindow& window, const FrameStream& stream, DocumentKind kind, Host& host,
                       StringId caption) {
  const auto number = build_number(kind);
  if (!number || stream.count == 0) return false;
  const bool mng = kind == DocumentKind::MING;
  const std::int32_t iterations =
      mng ? (stream.plays == 1 ? kNoLoop : 0) : static_cast<std::int32_t>(stream.plays);
  DocumentWindow made;
  made.document.fileName = window.document.fileName;
  made.document.thumbScale = window.document.thumbScale;
  const QuietList quiet(made.list);
  if (!BeginAnimation(made, iterations, 0, *number)) return false;
  const Progress progress(host, string_text(caption));
  for (std::size_t i = 0; i < stream.count; ++i) {
    if (host.stopped() || !add_frame(made, stream.frame(i), i)) return false;
    progress.step(i + 1, stream.count);
  }
  if (!EndAnimation(made, iterations)) return false;
  if (mng && stream.plays > 1) put_loop_plays(made, stream.plays);
  window.document = made.document;
  window.list = made.list;
  chunk_list_close_change(window.list, window.document);
  return true;
}

}  // namespace vellum
