// Facts of texts, of measures, and of what has no facts of its own.
#include <algorithm>
#include <array>

#include "base/text.h"
#include "base/translation.h"
#include "core/chunks/chunk_facts_of.h"
#include "core/chunks/chunk_reading.h"
#include "core/chunks/compressed_text.h"
#include "core/chunks/exif_orientation.h"
#include "image/inflate.h"

namespace vellum {
namespace {

constexpr std::size_t kBeginning = 400;   // bytes of a text: more than a line shows
constexpr std::size_t kReadBytes = 4096;  // of a payload whose lines are told
constexpr std::size_t kReadLines = 4;
constexpr double kMetersPerInch = 0.0254;

std::string_view as_text(std::span<const std::uint8_t> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// What stands in front of the next NUL, which is taken off `rest` with it.
std::string_view take_string(std::string_view& rest) {
  const std::size_t end = std::min(rest.find('\0'), rest.size());
  const std::string_view taken = rest.substr(0, end);
  rest.remove_prefix(std::min(end + 1, rest.size()));
  return taken;
}

/// The description has the keyword.
std::string beginning_of_latin1(std::string_view payload) {
  take_string(payload);
  const std::string_view text = payload.substr(0, kBeginning);
  return utf8_from_latin1(text.substr(0, text.find('\0')));
}

std::string beginning_of_international(std::string_view payload) {
  const std::string keyword = utf8_from_latin1(take_string(payload).substr(0, 80));
  if (payload.size() < 4) return keyword;
  const bool compressed = payload[0] == 1;
  payload.remove_prefix(2);
  const std::string_view language = take_string(payload);
  take_string(payload);
  std::array<std::uint8_t, kBeginning> inflated{};
  std::string_view text = payload;
  if (compressed) {
    const auto got =
        inflate_into({reinterpret_cast<const std::uint8_t*>(payload.data()), payload.size()}, inflated);
    text = as_text(std::span(inflated).first(got.value_or(0)));
  }
  std::string begin = cut_utf8(std::string(text.substr(0, kBeginning)), kBeginning);
  const std::string head =
      language.empty() ? keyword : keyword + " (" + std::string(language.substr(0, 20)) + ")";
  return joined_facts({head, is_utf8(begin) ? begin : utf8_from_latin1(begin)});
}

std::string size_in_units(std::uint32_t x, std::uint32_t y, bool meter) {
  if (!meter) return format_text("%u : %u", x, y);
  if (x == y)
    return format_text(translated("%.4g dpi, %s pixels a meter"), x * kMetersPerInch, grouped(x).c_str());
  return format_text(translated("%.4g x %.4g dpi, %s x %s pixels a meter"), x * kMetersPerInch,
                     y * kMetersPerInch, grouped(x).c_str(), grouped(y).c_str());
}

ChunkFacts first_lines(const EntryPlace& place, std::size_t most) {
  const ChunkRecord& record = place.record();
  const auto payload = raw_payload(record);
  const auto lines = chunk_reading(record.tag, payload.first(std::min(payload.size(), kReadBytes)),
                                   place.window.document.kind);
  std::string text;
  std::size_t told = 0;
  for (const ReadingLine& line : lines)
    if (!line.name.empty() && told++ < most)
      text = joined_facts({text, inside_sentence(line.name) + ' ' + line.value});
  return text.empty() ? facts_of_bytes(place) : ChunkFacts{text, {}};
}

const char* orientation_text(std::uint16_t orientation) {
  static constexpr const char* texts[] = {"",
                                          "upright",
                                          "mirrored",
                                          "upside down",
                                          "flipped",
                                          "turned left and flipped",
                                          "turned left",
                                          "turned right and flipped",
                                          "turned right"};
  return orientation < std::size(texts) ? translated(texts[orientation]) : "";
}

}  // namespace

ChunkFacts facts_of_text(const EntryPlace& place) {
  const ChunkRecord& record = place.record();
  if (record.tag == tag::tEXt) return {beginning_of_latin1(as_text(raw_payload(record))), {}};
  if (record.tag == tag::iTXt) return {beginning_of_international(as_text(raw_payload(record))), {}};
  // A zTXt is held inflated where it could be.
  const auto block = record.data.bytes();
  if (!inflatable_keyword(block)) return facts_of_bytes(place);
  return {beginning_of_latin1(as_text(block)), {}};
}

ChunkFacts facts_of_xmp(const EntryPlace& place) {
  const auto payload = raw_payload(place.record());
  std::string text(as_text(payload.first(std::min(payload.size(), kBeginning))));
  return {cut_utf8(std::move(text), kBeginning), {}};
}

ChunkFacts facts_of_size(const EntryPlace& place) {
  const ChunkRecord& record = place.record();
  if (raw_payload(record).size() < 9) return {};
  return {size_in_units(payload_be32(record, 0), payload_be32(record, 4), payload_byte(record, 8) == 1), {}};
}

ChunkFacts facts_of_camera(const EntryPlace& place) {
  const auto orientation = exif_orientation(raw_payload(place.record()));
  return {joined_facts({orientation_text(orientation.value_or(0)), facts_of_bytes(place).text}), {}};
}

ChunkFacts facts_of_reading(const EntryPlace& place) { return first_lines(place, kReadLines); }

// Their other lines are single counts and colors.
ChunkFacts facts_of_histogram(const EntryPlace& place) { return first_lines(place, 1); }

ChunkFacts facts_of_suggested_palette(const EntryPlace& place) { return first_lines(place, 3); }

ChunkFacts facts_of_bytes(const EntryPlace& place) {
  const std::size_t bytes = raw_payload(place.record()).size();
  return {grouped(bytes) + (bytes == 1 ? translated(" byte") : translated(" bytes")), {}};
}

}  // namespace vellum
