// Values that every kind of document keeps in another place: of a frame, and of the animation as a whole.
#pragma once

#include "core/model/document.h"
#include "image/png_header.h"

namespace vellum {

/// Where a frame stands on the canvas, in pixels; may lie outside of it.
struct FrameOffset {
  std::int32_t x = 0, y = 0;
};

/// MING: the image's own DEFI when it has one with a location; APNG: its frame control; WEBP: its position;
/// otherwise the origin.
FrameOffset GetFrameOffset(const ChunkRecord& record, DocumentKind kind);

/// How long a frame is shown, in milliseconds. APNG: its fraction of a second, a begun one counted whole;
/// MING: its `delay_ticks`, `ticks` of the MHDR to a second, truncated; WEBP: its delay.
std::uint32_t frame_delay_ms(const ChunkRecord& record, DocumentKind kind, std::uint32_t ticks);

/// The delay that playback works with, in milliseconds: as `frame_delay_ms`, but in an APNG a numerator of 0
/// counts as 1, and a record that is no image gives 1.
std::uint32_t GetFrameDelay(const ChunkRecord& record, DocumentKind kind, std::uint32_t ticks);

/// What becomes of a frame before the next one is drawn: 0 None, 1 Background, 2 Previous. MING: 1 when the
/// FRAM in force has framing mode 3 or 4; APNG: of IDAT records only.
std::uint32_t GetFrameDispose(const ChunkRecord& record, DocumentKind kind);

/// Ticks of the MHDR to a second, at least 1; 1000 without one.
std::uint32_t ticks_per_second(const ChunkList& list);

/// The setters of both. APNG: the delay as a fraction whose terms have 16 bits. MING: in `ticks` to a second,
/// rounded, at least 1 for a delay above 0, in the image's FRAM, which is made where it had none; the offset
/// in its DEFI, made only for one that is not the origin. WEBP: at most 24 bits.
void set_frame_delay(ChunkRecord& record, DocumentKind kind, std::uint32_t ticks, std::uint32_t milliseconds);
void SetFrameOffset(ChunkRecord& record, DocumentKind kind, FrameOffset offset);
/// 0 None, 1 Background, 2 Previous, as far as the kind has it. MING: framing mode 3 or, for None, 1 (4 and
/// 2 of a subframe whose images stay together).
void set_frame_dispose(ChunkRecord& record, DocumentKind kind, std::uint32_t dispose);

/// Gives an image of an MNG this delay in ticks, in its FRAM, which is made where it had none.
void set_frame_ticks(ChunkRecord& record, std::uint32_t amount);

/// Whether the image of an MNG begins on a cleared canvas: framing modes 3 and 4 (MNG 1.0, "FRAM").
inline bool clears_canvas(const ChunkRecord& record) {
  const std::uint8_t mode = record.image->framBlock.framingMode;
  return (record.flags & CRF_FRAM) && (mode == 3 || mode == 4);
}

/// A tRNS payload for a header in the form that PictureWithTransparency takes: a table by index (of levels in
/// grey pictures), or six bytes. Empty where nothing is transparent.
std::vector<std::uint8_t> transparency_table(std::span<const std::uint8_t> payload, const PngHeader& header);

/// The same for what rules a picture: the document's own tRNS (PNG, animated PNG; none in front of index 1),
/// and that of an image of an MNG.
std::vector<std::uint8_t> document_transparency(const ChunkList& list);
std::vector<std::uint8_t> image_transparency(const ChunkRecord& record);

/// How often the animation is played, 0 for ever. APNG: acTL; WEBP: its header; MING: the LOOP in front of
/// the first image, else the TERM.
std::uint32_t GetIterations(const ChunkList& list, const Document& document);
/// What the TERM of an MNG says of it, 0 for ever; 1 without one. MNG 1.0, "TERM": action 3 repeats, then the
/// action after it, a delay and the count of repeats.
std::uint32_t term_plays(const ChunkList& list);

/// 0x00BBGGRR: BACK, bKGD (not of paletted images) or the WebP header's color; `DefaultBackgroundColour`
/// where the document has none.
Colour document_background(const ChunkList& list, const Document& document);

}  // namespace vellum
