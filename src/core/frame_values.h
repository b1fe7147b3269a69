// Values of a frame that every kind of document keeps in another place, and the color behind the frames.
#pragma once

#include "core/document.h"

namespace vellum {

/// Where a frame stands on the canvas, in pixels; may lie outside of it.
struct FrameOffset {
  std::int32_t x = 0, y = 0;
};

/// MING: the image's own DEFI when it has one with a location; APNG: its frame control; WEBP: its position;
/// otherwise the origin.
FrameOffset frame_offset(const ChunkRecord& record, DocumentKind kind);

/// 0x00BBGGRR: BACK, bKGD (not of paletted images) or the WebP header's color; `DefaultBackgroundColour`
/// where the document has none.
Colour document_background(const ChunkList& list, const Document& document);

}  // namespace vellum
