// Values that every kind of document keeps in another place: of a frame, and of the animation as a whole.
#pragma once

#include "core/document.h"
#include "image/png_header.h"

namespace vellum {

/// Where a frame stands on the canvas, in pixels; may lie outside of it.
struct FrameOffset {
  std::int32_t x = 0, y = 0;
};

/// MING: the image's own DEFI when it has one with a location; APNG: its frame control; WEBP: its position;
/// otherwise the origin.
FrameOffset frame_offset(const ChunkRecord& record, DocumentKind kind);

/// How long a frame is shown, in milliseconds. APNG: its fraction of a second, a begun one counted whole;
/// MING: the delay of the FRAM in force, `ticks` of the MHDR to a second, truncated; WEBP: its delay.
std::uint32_t frame_delay_ms(const ChunkRecord& record, DocumentKind kind, std::uint32_t ticks);

/// A tRNS payload for a header in the form that PictureWithTransparency takes: a table by index (of levels in
/// grey pictures), or six bytes. Empty where nothing is transparent.
std::vector<std::uint8_t> transparency_table(std::span<const std::uint8_t> payload, const PngHeader& header);

/// How often the animation is played, 0 for ever. APNG: acTL; WEBP: its header; MING: the LOOP in front of
/// the first image, else the TERM.
std::uint32_t document_plays(const ChunkList& list, const Document& document);

/// 0x00BBGGRR: BACK, bKGD (not of paletted images) or the WebP header's color; `DefaultBackgroundColour`
/// where the document has none.
Colour document_background(const ChunkList& list, const Document& document);

}  // namespace vellum
