#include "core/edit/adding.h"

#include <algorithm>
#include <utility>

#include "core/chunks/new_chunk.h"
#include "core/edit/document_colors.h"
#include "core/edit/edit_closing.h"
#include "core/model/record_picture.h"
#include "core/settings.h"
#include "image/picture_rows.h"
#include "image/png_form.h"

namespace vellum {
namespace {

Added added(Placed placed) {
  return placed == Placed::Done ? Added::Done : placed == Placed::Exists ? Added::Exists : Added::NoPlace;
}

/// Whether one more image may come; the list is left alone where it may not.
bool has_room(Adding& adding) {
  const DocumentKind kind = adding.window.document.kind;
  return !stands_once(image_tag(kind), kind) || !adding.insertion.has(image_tag(kind));
}

/// The picture as the document holds it. The header of a document without an image may change by it, and
/// entries around.
Picture fitted(Adding& adding, const Picture& picture) {
  if (!adding.fitting.has_others()) adding.insertion.flush();
  const std::size_t before = adding.window.list.size();
  const Picture result = adding.fitting.fit(picture);
  if (adding.window.list.size() != before) adding.insertion.restart();
  return result;
}

/// Why there is no fitted picture.
Added failure(const Adding& adding) {
  return adding.fitting.cancelled() ? Added::Cancelled : Added::NoMemory;
}

/// The picture of a frame for another palette or kind: with its transparency as alpha, if it has any.
Picture shown(const FrameLayer& frame, const Picture& own) {
  return own.bits() <= 24 && picture_content(frame.picture).opaque ? own : frame.picture;
}

}  // namespace

void refuse(Adding& adding, Added added, StringId refused) {
  if (added == Added::NoMemory) refused = StringId::MemoryError;
  if (added != Added::Done && added != Added::Cancelled) adding.refuse(refused);
}

Adding::Adding(DocumentWindow& to, std::size_t wanted, Host& listener, std::optional<PaletteChoice> choice)
    : window(to), host(listener), insertion(to, wanted), fitting(to, listener, choice) {}

void Adding::refuse(StringId message) {
  if (std::ranges::find(refusals, message) == refusals.end()) refusals.push_back(message);
}

bool Adding::finish() {
  if (std::exchange(finished, true)) return false;
  insertion.flush();
  const bool changed = folded || insertion.count() > 0;
  if (changed) finish_edit(window, insertion.counted());
  for (const StringId message : std::exchange(refusals, {})) host.show(message);
  return changed;
}

Added add_picture(Adding& adding, const Picture& picture) {
  const DocumentKind kind = adding.window.document.kind;
  if (!has_room(adding)) return Added::Exists;
  NewChunkArgument argument;
  argument.picture = fitted(adding, picture).handle();
  ChunkRecord record;
  if (!argument.picture || !new_chunk(adding.window, record, image_tag(kind), argument))
    return failure(adding);
  const auto delay = static_cast<std::uint32_t>(std::clamp(settings::DefaultDelay, 0, 60'000));
  set_frame_delay(record, kind, kind == DocumentKind::MING ? ticks_per_second(adding.window.list) : 1000,
                  delay);
  return added(adding.insertion.add(record));
}

Added add_frame(Adding& adding, const FrameSource& source, const ChunkRecord& record) {
  const DocumentKind kind = adding.window.document.kind;
  const Picture own = picture_of(record);
  if (!has_rows(own)) return Added::NoMemory;
  if (!has_room(adding)) return Added::Exists;
  const std::uint32_t ticks = kind == DocumentKind::MING ? ticks_per_second(adding.window.list) : 1000;
  if (kind == source.kind && adding.fitting.holds(own, source.table)) {
    ChunkRecord same = record;
    same.tag = image_tag(kind);
    if (kind == DocumentKind::MING && ticks != source.ticks && (same.flags & CRF_FRAM))
      set_frame_delay(same, kind, ticks, frame_delay_ms(record, kind, source.ticks));
    if (kind == DocumentKind::PING) header_take_size(adding.window, own);
    return added(adding.insertion.add(same));
  }
  FrameLayer frame = frame_layer_of(source, record);
  if (!frame.picture) return Added::NoMemory;
  frame.picture = fitted(adding, shown(frame, own));
  ChunkRecord converted;
  if (!frame.picture || !frame_record_of(adding.window, frame, converted)) return failure(adding);
  return added(adding.insertion.add(converted));
}

}  // namespace vellum
