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

/// Ticks of the MHDR to a second, at least 1; 1000 without one.
std::uint32_t ticks_per_second(const ChunkList& list);

/// The setters of both. APNG: the delay as a fraction whose terms have 16 bits. MING: in `ticks` to a second,
/// rounded, at least 1 for a delay above 0, in the image's FRAM, which is made where it had none; the offset
/// in its DEFI, made only for one that is not the origin. WEBP: at most 24 bits.
void set_frame_delay(ChunkRecord& record, DocumentKind kind, std::uint32_t ticks, std::uint32_t milliseconds);
void set_frame_offset(ChunkRecord& record, DocumentKind kind, FrameOffset offset);

/// Whether the image of an MNG begins on a cleared canvas: framing modes 3 and 4 (MNG 1.0, "FRAM").
inline bool clears_canvas(const ChunkRecord& record) {
  return (record.flags & CRF_FRAM) && record.image->framBlock.framingMode >= 3;
}

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
