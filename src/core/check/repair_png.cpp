// A PNG stream made right: its chunks at their places, its image and its frames.
#include <algorithm>
#include <set>

#include "base/byte_order.h"
#include "base/translation.h"
#include "core/check/checking.h"
#include "core/check/repairing.h"
#include "core/chunks/chunk_policy.h"

namespace vellum {
namespace {

/// Where a chunk goes around the image (PNG standard, "Chunk ordering").
enum Part { kFront, kPalette, kBehindPalette, kBeforeImage, kBehindImage };

Part part_of(ChunkTag tag, bool imageSeen) {
  switch (place_of(tag, DocumentKind::APNG)) {
    case ChunkPlace::BeforePalette:
      return kFront;
    case ChunkPlace::AtPalette:
      return kPalette;
    case ChunkPlace::BehindPalette:
      return kBehindPalette;
    case ChunkPlace::BeforeImage:
      return kBeforeImage;
    default:
      return imageSeen ? kBehindImage : kFront;
  }
}

/// A chunk that is written.
struct KeptChunk {
  ChunkTag tag;
  Payload payload;
  Part part;
};

struct RepairedFrame {
  Payload control;
  RepairedImage image;
  bool ofImage = false;
};

struct PngRepair {
  DocumentKind kind;
  std::vector<std::string>& given_up;
  PngHeader header{};
  PngContext context{};
  std::vector<KeptChunk> kept{};
  RepairedImage image{};
  std::vector<RepairedFrame> frames{};
  std::uint32_t plays = 0;

  void lose(const FoundChunk& chunk, const char* why) { given_up.push_back(chunk_name(chunk) + ": " + why); }

  bool take_header(const FoundChunk& chunk) {
    if (chunk.tag != tag::IHDR || chunk.data.size() < 13) return false;
    header = parse_png_header(chunk.data.first<13>());
    context.bitDepth = header.bitDepth;
    context.colorType = header.colorType;
    return !png_header_fault(header);
  }

  bool indexed() const { return header.colorType == 3; }

  void take_palette(std::span<const FoundChunk> chunks, std::uint32_t inherited) {
    context.paletteEntries = inherited;
    const auto palette = std::ranges::find(chunks, tag::PLTE, &FoundChunk::tag);
    if (palette == chunks.end() || header.colorType == 0 || header.colorType == 4) return;
    const std::size_t most = indexed() ? std::size_t{1} << header.bitDepth : 256;
    const std::size_t entries = std::min(palette->data.size() / 3, most);
    if (entries == 0) return;
    context.paletteEntries = static_cast<std::uint32_t>(entries);
    const auto colors = palette->data.first(3 * entries);
    kept.push_back({tag::PLTE, {colors.begin(), colors.end()}, kPalette});
  }

  void take_other(const FoundChunk& chunk, bool imageSeen, std::set<ChunkTag>& seen) {
    if (!is_valid_tag(chunk.tag)) return lose(chunk, translated("no chunk has such a name."));
    if (!is_ancillary(chunk.tag)) return lose(chunk, translated("it is critical and not known."));
    if (stands_once(chunk.tag, DocumentKind::APNG) && seen.contains(chunk.tag))
      return lose(chunk, translated("there is one already."));
    Payload payload(chunk.data.begin(), chunk.data.end());
    const DocumentKind judge = judging_kind(kind, chunk.tag);
    mend_chunk(chunk.tag, payload, context, judge);
    if (!is_valid_chunk(chunk.tag, payload, context, judge) || !packed_is_whole(chunk.tag, payload))
      return lose(chunk, translated("its content is not valid."));
    seen.insert(chunk.tag);
    kept.push_back({chunk.tag, std::move(payload), part_of(chunk.tag, imageSeen)});
  }

  void take_others(std::span<const FoundChunk> chunks) {
    std::set<ChunkTag> seen;
    bool imageSeen = false;
    for (const FoundChunk& chunk : chunks) {
      imageSeen |= chunk.tag == tag::IDAT;
      static constexpr ChunkTag own[] = {tag::IHDR, tag::PLTE, tag::IDAT, tag::IEND,
                                         tag::acTL, tag::fcTL, tag::fdAT};
      if (std::ranges::find(own, chunk.tag) == std::end(own)) take_other(chunk, imageSeen, seen);
    }
  }

  /// Told where rows are missing.
  void tell_rows(const RepairedImage& repaired, const std::string& what) {
    if (repaired.rowsThere < repaired.rows)
      given_up.push_back(what + ": " + std::to_string(repaired.rows - repaired.rowsThere) +
                         translated(" of ") + std::to_string(repaired.rows) +
                         translated(" rows are missing."));
  }

  void take_image(std::span<const FoundChunk> chunks) {
    std::vector<std::span<const std::uint8_t>> data;
    for (const FoundChunk& chunk : chunks)
      if (chunk.tag == tag::IDAT) data.push_back(chunk.data);
    image = repair_image(header, data, indexed());
    tell_rows(image, translated("The image"));
  }

  /// The control with values that exist; nothing for one that can't be told.
  std::optional<Payload> mended_control(const FoundChunk& chunk, bool ofImage) const {
    if (chunk.data.size() < 26) return std::nullopt;
    Payload control(chunk.data.begin(), chunk.data.begin() + 26);
    if (control[24] > 2) control[24] = 0;
    if (control[25] > 1) control[25] = 0;
    const auto value = [&](std::size_t at) { return std::uint64_t{read_be32(&control[at])}; };
    const bool fits = value(4) > 0 && value(8) > 0 && value(12) + value(4) <= header.width &&
                      value(16) + value(8) <= header.height;
    const bool whole = value(4) == header.width && value(8) == header.height;
    return fits && (whole || !ofImage) ? std::optional(std::move(control)) : std::nullopt;
  }

  /// The frame of the control at `at` of `chunks`, and the data up to the next one.
  void take_frame(std::span<const FoundChunk> chunks, std::size_t at, bool ofImage) {
    auto control = mended_control(chunks[at], ofImage);
    if (!control) return lose(chunks[at], translated("the frame can't be where it is told."));
    RepairedFrame frame{std::move(*control), {}, ofImage};
    if (!ofImage) {
      std::vector<std::span<const std::uint8_t>> data;
      for (std::size_t i = at + 1; i < chunks.size() && chunks[i].tag != tag::fcTL; ++i)
        if (chunks[i].tag == tag::fdAT && chunks[i].data.size() > 4)
          data.push_back(chunks[i].data.subspan(4));
      PngHeader own = header;
      own.width = read_be32(&frame.control[4]);
      own.height = read_be32(&frame.control[8]);
      frame.image = repair_image(own, data, indexed());
      if (!frame.image.there()) return lose(chunks[at], translated("the frame has no data."));
      tell_rows(frame.image, translated("Frame ") + std::to_string(frames.size() + 1));
    }
    frames.push_back(std::move(frame));
  }

  void take_frames(std::span<const FoundChunk> chunks) {
    bool imageSeen = false;
    std::size_t of_image = chunks.size();
    for (std::size_t i = 0; i < chunks.size(); ++i) {
      if (chunks[i].tag == tag::IDAT) imageSeen = true;
      if (chunks[i].tag == tag::fcTL && !imageSeen) of_image = i;
    }
    imageSeen = false;
    for (std::size_t i = 0; i < chunks.size(); ++i) {
      if (chunks[i].tag == tag::IDAT) imageSeen = true;
      if (chunks[i].tag == tag::acTL && chunks[i].data.size() >= 8) plays = read_be32(&chunks[i].data[4]);
      if (chunks[i].tag == tag::fcTL && (imageSeen || i == of_image)) take_frame(chunks, i, i == of_image);
    }
  }

  /// What indexes need: of the palette of the image, or of the one it inherits.
  void complete_palette(std::uint32_t& inherited) {
    unsigned largest = image.largestIndex;
    for (const RepairedFrame& frame : frames) largest = std::max(largest, frame.image.largestIndex);
    const auto palette = std::ranges::find(kept, tag::PLTE, &KeptChunk::tag);
    if (!indexed()) return;
    if (palette == kept.end())
      inherited = std::max(inherited, largest + 1);
    else if (palette->payload.size() < 3 * (std::size_t{largest} + 1))
      palette->payload.resize(3 * (std::size_t{largest} + 1));
  }

  void write_frame(Payload& out, RepairedFrame& frame, std::uint32_t& sequence) {
    write_be32(frame.control.data(), sequence++);
    append_chunk(out, tag::fcTL, frame.control);
    for (const auto piece : frame.image.pieces) {
      Payload payload(4);
      write_be32(payload.data(), sequence++);
      payload.insert(payload.end(), piece.begin(), piece.end());
      append_chunk(out, tag::fdAT, payload);
    }
  }

  void write_part(Payload& out, Part part) const {
    for (const KeptChunk& chunk : kept)
      if (chunk.part == part) append_chunk(out, chunk.tag, chunk.payload);
  }

  void write(Payload& out) {
    append_chunk(out, tag::IHDR, png_header_payload(header));
    std::uint32_t sequence = 0;
    if (!frames.empty()) {
      std::uint8_t control[8];
      write_be32(control, static_cast<std::uint32_t>(frames.size()));
      write_be32(control + 4, plays);
      append_chunk(out, tag::acTL, control);
    }
    for (const Part part : {kFront, kPalette, kBehindPalette, kBeforeImage}) write_part(out, part);
    if (!frames.empty() && frames.front().ofImage) write_frame(out, frames.front(), sequence);
    for (const auto piece : image.pieces) append_chunk(out, tag::IDAT, piece);
    for (RepairedFrame& frame : frames)
      if (!frame.ofImage) write_frame(out, frame, sequence);
    write_part(out, kBehindImage);
    append_chunk(out, tag::IEND, {});
  }
};

}  // namespace

bool repair_png_stream(std::span<const FoundChunk> chunks, DocumentKind kind, std::uint32_t& inherited,
                       Payload& out, std::vector<std::string>& given_up) {
  PngRepair repair{kind, given_up};
  if (chunks.empty() || !repair.take_header(chunks.front())) {
    given_up.emplace_back(translated("The header of an image can't be."));
    return false;
  }
  repair.take_palette(chunks, inherited);
  if (repair.indexed() && repair.context.paletteEntries == 0) {
    given_up.emplace_back(translated("The palette of an image is missing."));
    return false;
  }
  repair.take_image(chunks);
  if (!repair.image.there()) return false;
  if (kind == DocumentKind::APNG) repair.take_frames(chunks);
  repair.complete_palette(inherited);
  repair.take_others(chunks);
  repair.write(out);
  return true;
}

}  // namespace vellum
