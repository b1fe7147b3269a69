// Facts of palettes, of single colors, and of what colors mean.
#include <algorithm>

#include "base/text.h"
#include "base/translation.h"
#include "core/chunks/chunk_facts_of.h"
#include "core/chunks/chunk_reading.h"
#include "image/inflate.h"

namespace vellum {
namespace {

constexpr std::size_t kMostColors = 16;
constexpr std::size_t kProfileHeader = 128;  // ICC.1:2022, 7.2

unsigned be16(const ChunkRecord& record, std::size_t at) {
  return payload_byte(record, at) * 256u + payload_byte(record, at + 1);
}

/// A sample of this depth at eight bits.
Colour of_eight_bits(unsigned sample, unsigned depth) {
  const unsigned most = (1u << std::min(depth, 16u)) - 1;
  return most == 0 ? 0 : std::min(sample, most) * 255u / most;
}

/// One or three samples of 16 bits at the beginning of the payload.
ChunkFacts sampled_color(const ChunkRecord& record, bool grey, unsigned depth) {
  const auto sample = [&](std::size_t i) { return be16(record, grey ? 0 : 2 * i); };
  const std::string text =
      grey ? format_text("%u", sample(0)) : format_text("%u, %u, %u", sample(0), sample(1), sample(2));
  return {text,
          {make_colour(of_eight_bits(sample(0), depth), of_eight_bits(sample(1), depth),
                       of_eight_bits(sample(2), depth))}};
}

ChunkFacts palette_color(const EntryPlace& place, unsigned index) {
  Palette palette{};
  const std::uint32_t colors = chunk_find_palette(place.window.list, palette);
  ChunkFacts facts{format_text(translated("color %u"), index), {}};
  if (index < colors)
    facts.colors = {make_colour(palette[3 * index], palette[3 * index + 1], palette[3 * index + 2])};
  return facts;
}

/// The values of a reading, without the numbers that stand in front of their meanings.
std::string values_of(const std::vector<ReadingLine>& lines, std::initializer_list<const char*> names) {
  std::string text;
  for (const char* name : names) {
    const auto line = std::ranges::find(lines, name, &ReadingLine::name);
    if (line == lines.end()) continue;
    const std::size_t number = line->value.find(", ");
    const bool numbered = number != std::string::npos && number <= 3;
    text = joined_facts({text, numbered ? line->value.substr(number + 2) : line->value});
  }
  return text;
}

std::string profile_text(std::span<const std::uint8_t> header) {
  return values_of(chunk_reading(tag::ICCP, header, DocumentKind::WEBP), {"Class"}) + ", " +
         values_of(chunk_reading(tag::ICCP, header, DocumentKind::WEBP), {"Color space"});
}

std::string luminance(std::uint32_t value) { return format_text("%g", value / 10000.0); }

}  // namespace

ChunkFacts facts_of_palette(const EntryPlace& place) {
  const auto payload = raw_payload(place.record());
  ChunkFacts facts;
  for (std::size_t i = 0; i + 2 < payload.size() && facts.colors.size() < kMostColors; i += 3)
    facts.colors.push_back(make_colour(payload[i], payload[i + 1], payload[i + 2]));
  return facts;
}

ChunkFacts facts_of_transparency(const EntryPlace& place) {
  const auto header = ruling_header(place);
  if (header && header->colorType != 3) {
    ChunkFacts facts = sampled_color(place.record(), header->colorType == 0, header->bitDepth);
    facts.text = translated("color ") + facts.text;
    return facts;
  }
  const auto payload = raw_payload(place.record());
  const auto table = payload.first(std::min<std::size_t>(payload.size(), 256));
  const auto clear = std::ranges::count(table, std::uint8_t{0});
  const auto half = std::ranges::count_if(table, [](std::uint8_t alpha) { return alpha > 0 && alpha < 255; });
  const auto colors = [](std::ptrdiff_t count, const char* what) {
    return count == 0 ? std::string()
                      : format_text("%d %s %s", static_cast<int>(count),
                                    count == 1 ? translated("color") : translated("colors"), what);
  };
  return {
      joined_facts({colors(clear, translated("transparent")), colors(half, translated("half transparent"))}),
      {}};
}

ChunkFacts facts_of_background(const EntryPlace& place) {
  const auto header = ruling_header(place);
  if (header && header->colorType == 3) return palette_color(place, payload_byte(place.record(), 0));
  return sampled_color(place.record(), header && header->colorType % 4 == 0, header ? header->bitDepth : 8u);
}

ChunkFacts facts_of_mng_background(const EntryPlace& place) {
  ChunkFacts facts = sampled_color(place.record(), false, 16);
  if (payload_byte(place.record(), 6) != 0) facts.text += translated(", required");
  return facts;
}

ChunkFacts facts_of_gamma(const EntryPlace& place) {
  return {translated("stored as ") + grouped(payload_be32(place.record(), 0)), {}};
}

/// Name, NUL, a zero, the profile deflated.
ChunkFacts facts_of_profile(const EntryPlace& place) {
  const auto payload = raw_payload(place.record());
  const auto name = payload.first(std::min<std::size_t>(payload.size(), 80));
  const auto end = std::ranges::find(name, std::uint8_t{0});
  const std::string text = utf8_from_latin1(
      {reinterpret_cast<const char*>(name.data()), static_cast<std::size_t>(end - name.begin())});
  const auto begin = static_cast<std::size_t>(end - name.begin()) + 2;
  if (begin >= payload.size()) return {text, {}};
  std::array<std::uint8_t, kProfileHeader> header{};
  const auto got = inflate_into(payload.subspan(begin), header);
  return {joined_facts({text, got && *got == header.size() ? profile_text(header) : std::string(),
                        facts_of_bytes(place).text}),
          {}};
}

ChunkFacts facts_of_bare_profile(const EntryPlace& place) {
  const auto payload = raw_payload(place.record());
  if (payload.size() < kProfileHeader) return facts_of_bytes(place);
  return {joined_facts({profile_text(payload.first(kProfileHeader)), facts_of_bytes(place).text}), {}};
}

ChunkFacts facts_of_code_points(const EntryPlace& place) {
  const auto lines = chunk_reading(tag::cICP, raw_payload(place.record()), place.window.document.kind);
  const std::string range = values_of(lines, {"Range"});
  return {joined_facts({values_of(lines, {"Color primaries", "Transfer function", "Matrix coefficients"}),
                        range.empty() ? "" : format_text(translated("%s range"), range.c_str())}),
          {}};
}

ChunkFacts facts_of_display(const EntryPlace& place) {
  const ChunkRecord& record = place.record();
  if (record.size != 24) return facts_of_bytes(place);
  return {luminance(payload_be32(record, 20)) + translated(" to ") + luminance(payload_be32(record, 16)) +
              " cd/m\u00B2",
          {}};
}

ChunkFacts facts_of_light(const EntryPlace& place) {
  const ChunkRecord& record = place.record();
  if (record.size != 8) return facts_of_bytes(place);
  return {translated("at most ") + luminance(payload_be32(record, 0)) + translated(" cd/m\u00B2, frames ") +
              luminance(payload_be32(record, 4)) + " cd/m\u00B2",
          {}};
}

}  // namespace vellum
