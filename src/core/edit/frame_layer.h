// Frames of any kind of document in one form: from the record of one kind, to the record of another.
#pragma once

#include "core/model/whole_canvases.h"

namespace vellum {

/// What the frames of a document have in common.
struct FrameSource {
  DocumentKind kind = DocumentKind::None;
  std::vector<std::uint8_t> table;  ///< transparency of the document's pictures, as pictures take it
  std::uint32_t ticks = 1000;       ///< of an MNG, to a second
};

FrameSource frame_source_of(const DocumentWindow& window);

/// The frame of an image record: its picture in true color with its transparency as alpha (null where it has
/// lost it), offset, delay, disposal, blending and clearing by the rules that play it.
FrameLayer frame_layer_of(const FrameSource& source, const ChunkRecord& record);

/// The part of the frame that lies on the canvas, or right of and below its origin; a transparent pixel that
/// changes nothing where there is none. A null picture when memory is exhausted.
FrameLayer cut_to(const FrameLayer& frame, Extent canvas);
FrameLayer cut_at_origin(const FrameLayer& frame);

/// An image record of the document's kind with this frame. Parts at negative offsets are cut off but in an
/// MNG. False when memory is exhausted.
bool frame_record_of(const DocumentWindow& to, const FrameLayer& frame, ChunkRecord& record);

/// Gives an image record a picture that is the whole canvas while it is shown: at the origin, in place of
/// what was there. The delay stays. `transparent`: something may show through it.
void put_whole_canvas(ChunkRecord& record, DocumentKind kind, const Picture& picture, bool transparent);

}  // namespace vellum
