#include "core/files/png_chunks_out.h"

#include <algorithm>
#include <set>

#include "base/byte_order.h"
#include "core/chunks/chunk_payload.h"
#include "core/chunks/chunk_policy.h"

namespace vellum {
namespace {

using Payload = std::vector<std::uint8_t>;

bool is_grey(std::uint8_t colorType) { return colorType == 0 || colorType == 4; }

/// A sample of the old depth as one of the new: 16 bits give their high byte, 8 bits are repeated.
unsigned convert_sample(unsigned sample, unsigned from, unsigned to) {
  if (from == 16 && to <= 8) return sample >> 8;
  if (from <= 8 && to == 16) return sample * 257;
  return sample;
}

Payload samples_payload(std::initializer_list<unsigned> samples) {
  Payload payload;
  for (const unsigned sample : samples) {
    payload.push_back(static_cast<std::uint8_t>(sample >> 8));
    payload.push_back(static_cast<std::uint8_t>(sample));
  }
  return payload;
}

unsigned sample_at(const Payload& payload, std::size_t i) {
  return 2 * i + 1 < payload.size() ? read_be16(&payload[2 * i]) : 0;
}

/// bKGD: an index, one grey sample or three (PNG standard, "bKGD").
Payload convert_background(const Payload& old, const ChunksOutRequest& request) {
  const PngHeader& from = request.from;
  const PngHeader& to = request.written;
  if (from.colorType == to.colorType && from.bitDepth == to.bitDepth) return old;
  const auto depth = [&](unsigned sample) { return convert_sample(sample, from.bitDepth, to.bitDepth); };
  if (from.colorType == 3) {
    if (to.colorType == 3 || old.empty()) return old;
    const std::size_t at = 3 * std::size_t{old[0]};
    const auto& colors = request.fromPalette;
    return at + 2 < colors.size() ? samples_payload({colors[at], colors[at + 1], colors[at + 2]}) : Payload{};
  }
  const bool grey = is_grey(from.colorType);
  if (to.colorType == 3)
    return grey ? Payload{static_cast<std::uint8_t>(depth(sample_at(old, 0)))} : Payload{};
  if (is_grey(to.colorType)) return grey ? samples_payload({depth(sample_at(old, 0))}) : Payload{};
  const unsigned red = depth(sample_at(old, 0));
  if (grey) return samples_payload({red, red, red});
  return samples_payload({red, depth(sample_at(old, 1)), depth(sample_at(old, 2))});
}

/// tRNS: a table, one grey sample or three (PNG standard, "tRNS").
Payload convert_transparency(const Payload& old, const ChunksOutRequest& request) {
  const PngHeader& from = request.from;
  const PngHeader& to = request.written;
  if (request.greyBecamePalette) {
    if (old.size() != 2) return {};
    const std::size_t level = convert_sample(sample_at(old, 0), from.bitDepth, 8);
    if (level >= 256) return {};
    Payload table(level + 1, 255);
    table[level] = 0;
    return table;
  }
  if (from.colorType != to.colorType) return {};
  if (to.colorType == 3) {
    const std::size_t entries = request.palette.size() / 3;
    return {old.begin(), old.begin() + static_cast<std::ptrdiff_t>(std::min(old.size(), entries))};
  }
  if (from.bitDepth == to.bitDepth || old.size() % 2 != 0) return old;
  Payload converted = old;
  for (std::size_t i = 0; 2 * i < old.size(); ++i)
    write_be16(&converted[2 * i], convert_sample(sample_at(old, i), from.bitDepth, to.bitDepth));
  return converted;
}

/// sBIT: significant bits of red, green, blue or grey, and alpha; none above the sample depth.
Payload convert_significant_bits(Payload bits, const ChunksOutRequest& request) {
  const PngHeader& to = request.written;
  const bool had_alpha = request.from.colorType == 4 || request.from.colorType == 6;
  if (request.from.colorType != to.colorType) {
    if (is_grey(request.from.colorType) && !bits.empty() && !is_grey(to.colorType))
      bits.insert(bits.begin(), 2, bits[0]);
    if (to.colorType == 6 && !had_alpha) bits.push_back(8);
  }
  const std::uint8_t most = to.colorType == 3 ? 8 : to.bitDepth;
  for (std::uint8_t& value : bits) value = std::min(value, most);
  return bits;
}

struct ConversionRow {
  ChunkTag tag;
  Payload (*convert)(const Payload& old, const ChunksOutRequest& request);
};

constexpr ConversionRow kConversions[] = {
    {tag::bKGD, convert_background},
    {tag::tRNS, convert_transparency},
    {tag::sBIT,
     [](const Payload& old, const ChunksOutRequest& r) { return convert_significant_bits(old, r); }},
    {tag::PLTE, [](const Payload&, const ChunksOutRequest& r) { return r.palette; }},
};

Payload payload_of(const ChunkRecord& record, const ChunksOutRequest& request) {
  const Payload plain = plain_payload(record, request.level, request.updateTime, request.keepStored);
  const auto row = std::ranges::find(kConversions, record.tag, &ConversionRow::tag);
  return row == std::end(kConversions) ? plain : row->convert(plain, request);
}

bool is_animation_chunk(ChunkTag tag) { return tag == tag::acTL || tag == tag::fcTL || tag == tag::fdAT; }

/// Animation chunks of a still picture hold image data of the header that they came with.
bool belongs_to_other_header(ChunkTag tag, const ChunksOutRequest& request) {
  return is_animation_chunk(tag) && request.written != request.from;
}

PngContext context_of(const ChunksOutRequest& request) {
  return {request.written.bitDepth, request.written.colorType,
          static_cast<std::uint32_t>(request.palette.size() / 3)};
}

/// Whether there is no place for the chunk in this file, whatever it holds.
bool has_no_place(ChunkTag tag, const ChunksOutRequest& request, const std::set<ChunkTag>& seen) {
  return belongs_to_other_header(tag, request) || (tag == tag::tRNS && request.transparencyApplied) ||
         (tag == tag::PLTE && request.palette.empty()) ||
         (stands_once(tag, request.kind) && seen.contains(tag));
}

/// sRGB and iCCP tell the same thing and exclude each other (PNG standard, "sRGB"); the first one stays.
bool repeats_color_space(ChunkTag tag, const std::set<ChunkTag>& seen) {
  return (tag == tag::sRGB && seen.contains(tag::iCCP)) || (tag == tag::iCCP && seen.contains(tag::sRGB));
}

}  // namespace

std::vector<ChunkOut> chunks_out(const ChunkList& list, const ChunksOutRequest& request,
                                 std::vector<std::string>& notes) {
  std::vector<ChunkOut> out;
  std::set<ChunkTag> seen;
  for (std::size_t i = 0; i < list.size(); ++i) {
    const ChunkRecord& record = list.record(i);
    // Header, end and images are the writer's own; a still picture holds animation chunks as raw bytes.
    const bool raw = request.kind == DocumentKind::PING && is_animation_chunk(record.tag);
    const ChunkPlace place = place_of(record.tag, request.kind);
    if ((place == ChunkPlace::Fixed || place == ChunkPlace::Image) && !raw) continue;
    ChunkOut chunk{record.tag, payload_of(record, request), i};
    const bool homeless = repeats_color_space(chunk.tag, seen) || has_no_place(chunk.tag, request, seen);
    const Mending mending =
        homeless ? Mending::LeftOut : mend_chunk(chunk.tag, chunk.payload, context_of(request), request.kind);
    if (mending != Mending::Good) notes.push_back(mending_note(mending, chunk.tag, i));
    if (mending == Mending::LeftOut) continue;
    seen.insert(chunk.tag);
    out.push_back(std::move(chunk));
  }
  return out;
}

}  // namespace vellum
