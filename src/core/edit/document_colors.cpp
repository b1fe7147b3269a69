#include "core/edit/document_colors.h"

#include <algorithm>

#include "base/byte_order.h"
#include "core/chunks/chunk_table.h"
#include "core/edit/placement.h"
#include "core/model/chunk_description.h"
#include "core/model/header_record.h"
#include "core/model/record_picture.h"
#include "image/picture_operations.h"
#include "image/png_form.h"
#include "image/remap.h"
#include "image/to_colors.h"

namespace vellum {
namespace {

void remove_entry(DocumentWindow& window, std::size_t index) {
  window.list.remove(index);
  if (static_cast<std::int64_t>(index) < window.document.caret) --window.document.caret;
}

void remove_tag(DocumentWindow& window, ChunkTag tag) {
  if (const std::size_t at = chunk_find_first(window.list, tag); at != kNoEntry) remove_entry(window, at);
}

/// The first entry with this tag gets the payload; it is made where there is none.
void put_chunk(DocumentWindow& window, ChunkTag tag, std::span<const std::uint8_t> payload) {
  ChunkRecord record;
  record.tag = tag;
  record.data = ChunkHandle::copy_of(payload);
  record.size = static_cast<std::int32_t>(payload.size());
  const auto entry = make_entry(window.document, record);
  if (const std::size_t at = chunk_find_first(window.list, tag); at != kNoEntry)
    return window.list.replace(at, entry);
  const auto place = place_for(shape_of(window.list, window.document.kind), tag, 0);
  if (!place) return;
  window.list.insert(*place, entry);
  if (static_cast<std::int64_t>(*place) <= window.document.caret) ++window.document.caret;
}

void put_or_remove(DocumentWindow& window, ChunkTag tag, std::span<const std::uint8_t> payload) {
  payload.empty() ? remove_tag(window, tag) : put_chunk(window, tag, payload);
}

void put_palette(DocumentWindow& window, const Picture& picture) {
  Palette palette;
  put_chunk(window, tag::PLTE,
            std::span(palette).first(3 * std::size_t{PictureGetPalette(picture, palette)}));
}

/// Removes what was made for the header `before`, or for other colors, and means something else now.
void remove_unfit(DocumentWindow& window, const PngHeader& before, const PngHeader& header,
                  bool other_colors) {
  Palette palette;
  const PngContext context{header.bitDepth, header.colorType, chunk_find_palette(window.list, palette)};
  const bool other_depth = before.bitDepth != header.bitDepth;
  const bool other_samples = other_depth || (before.colorType & 3) != (header.colorType & 3);
  const std::pair<ChunkTag, bool> means_other[] = {
      {tag::tRNS, other_colors || other_depth || before.colorType != header.colorType},
      {tag::bKGD, other_colors || other_samples},
      {tag::hIST, other_colors},
      {tag::sBIT, false},
  };
  for (const auto& [tag, other] : means_other) {
    const std::size_t at = chunk_find_first(window.list, tag);
    if (at == kNoEntry) continue;
    if (other || !is_valid_chunk(tag, raw_payload(window.list.record(at)), context)) remove_entry(window, at);
  }
}

void store(DocumentWindow& window, std::size_t index, ChunkRecord& record) {
  record.description = chunk_description(record);
  chunk_list_put(window.list, index, record);
}

// The background: an index, one grey sample or three (PNG standard, "bKGD").

using Rgb = std::array<std::uint8_t, 3>;

constexpr unsigned most_sample(unsigned depth) { return (1u << depth) - 1; }

/// A sample as one of 8 bits, and the reverse.
std::uint8_t level_of(unsigned sample, unsigned depth) {
  return static_cast<std::uint8_t>(std::min(sample, most_sample(depth)) * 255 / most_sample(depth));
}
unsigned sample_of(unsigned level, unsigned depth) { return (level * most_sample(depth) + 127) / 255; }

std::optional<Rgb> background_of(const DocumentWindow& window, const PngHeader& header) {
  const std::size_t at = chunk_find_first(window.list, tag::bKGD);
  if (at == kNoEntry) return std::nullopt;
  const auto payload = raw_payload(window.list.record(at));
  if (header.colorType == 3) {
    Palette palette;
    const std::uint32_t colors = chunk_find_palette(window.list, palette);
    if (payload.empty() || payload[0] >= colors) return std::nullopt;
    return Rgb{palette[3u * payload[0]], palette[3u * payload[0] + 1], palette[3u * payload[0] + 2]};
  }
  const bool grey = header.colorType == 0 || header.colorType == 4;
  if (payload.size() < (grey ? 2u : 6u)) return std::nullopt;
  Rgb color;
  for (std::size_t i = 0; i < 3; ++i)
    color[i] = level_of(read_be16(&payload[grey ? 0 : 2 * i]), header.bitDepth);
  return color;
}

std::vector<std::uint8_t> background_payload(const Rgb& color, const DocumentColors& colors) {
  if (colors.colorType == 3)
    return {static_cast<std::uint8_t>(
        NearestPaletteIndex(color[0], color[1], color[2], colors.palette, colors.colors))};
  const bool grey = colors.colorType == 0 || colors.colorType == 4;
  std::vector<std::uint8_t> payload(grey ? 2 : 6);
  if (grey)
    write_be16(&payload[0], sample_of(grey_of(color[0], color[1], color[2]), colors.bitDepth));
  else
    for (std::size_t i = 0; i < 3; ++i) write_be16(&payload[2 * i], sample_of(color[i], colors.bitDepth));
  return payload;
}

}  // namespace

void header_take_picture(DocumentWindow& window, const Picture& picture) {
  ChunkRecord record;
  const std::size_t at = chunk_find_first(window.list, tag::IHDR, &record);
  if (at == kNoEntry) return;
  const PngHeader before = png_header_of(record);
  record.width = picture.width();
  record.height = picture.height();
  record.bitDepth = static_cast<std::uint8_t>(std::min(picture.bits(), 8u));
  record.colorType = color_type_of_bits(picture.bits());
  Palette palette;
  const std::uint32_t colors = chunk_find_palette(window.list, palette);
  const bool other_colors = picture.bits() <= 8 && !has_colors(picture, palette, colors);
  if (other_colors)
    put_palette(window, picture);
  else if (record.colorType == 3 && before.colorType == 3 && colors <= 1u << before.bitDepth)
    record.bitDepth = before.bitDepth;
  store(window, at, record);
  remove_unfit(window, before, png_header_of(record), other_colors);
}

void header_take_size(DocumentWindow& window, const Picture& picture) {
  ChunkRecord record;
  const std::size_t at = chunk_find_first(window.list, tag::IHDR, &record);
  if (at == kNoEntry) return;
  record.width = picture.width();
  record.height = picture.height();
  store(window, at, record);
}

void put_document_colors(DocumentWindow& window, const DocumentColors& colors) {
  ChunkRecord record;
  const std::size_t at = chunk_find_first(window.list, tag::IHDR, &record);
  if (at == kNoEntry) return;
  const PngHeader before = png_header_of(record);
  const auto background = background_of(window, before);
  const bool other = record.colorType != colors.colorType || record.bitDepth != colors.bitDepth;
  record.colorType = colors.colorType;
  record.bitDepth = colors.bitDepth;
  store(window, at, record);
  const std::size_t bytes = colors.colorType == 3 ? 3 * std::size_t{colors.colors} : 0;
  put_or_remove(window, tag::PLTE, std::span(colors.palette).first(bytes));
  remove_unfit(window, before, png_header_of(record), other || bytes != 0);
  put_or_remove(window, tag::tRNS, colors.transparency);
  if (background) put_or_remove(window, tag::bKGD, background_payload(*background, colors));
}

void put_document_background(DocumentWindow& window, Colour color) {
  const Rgb samples{static_cast<std::uint8_t>(red_of(color)), static_cast<std::uint8_t>(green_of(color)),
                    static_cast<std::uint8_t>(blue_of(color))};
  if (window.document.kind == DocumentKind::MING)
    return put_chunk(window, tag::BACK, background_payload(samples, {.colorType = 2, .bitDepth = 16}));
  const bool webp = window.document.kind == DocumentKind::WEBP;
  ChunkRecord header;
  const std::size_t at = chunk_find_first(window.list, webp ? tag::WEBH : tag::IHDR, &header);
  if (at == kNoEntry) return;
  if (webp) {
    header.webpHeader.backgroundColor = color;
    return store(window, at, header);
  }
  DocumentColors colors{.colorType = header.colorType, .bitDepth = header.bitDepth};
  colors.colors = chunk_find_palette(window.list, colors.palette);
  if (header.colorType != 3 || colors.colors > 0)
    put_chunk(window, tag::bKGD, background_payload(samples, colors));
}

}  // namespace vellum
