#include "core/chunks/chunk_reading.h"

#include <iterator>

#include "base/string_table.h"
#include "base/translation.h"
#include "core/chunks/payload_reader.h"

namespace vellum {
namespace {

struct ReadingRow {
  ChunkTag tag;
  bool mngOnly;
  void (*read)(PayloadReader&);
};

constexpr ReadingRow kReadings[] = {
    {tag::iTXt, false, read_international_text},
    {tag::eXIf, false, read_exif},
    {tag::iCCP, false, read_profile},
    {tag::ICCP, false, read_bare_profile},
    {tag::EXIF, false, read_exif},
    {tag::XMP, false, read_xmp},
    {tag::pHYs, false, read_physical_size},
    {tag::sRGB, false, read_rendering_intent},
    {tag::cHRM, false, read_chromaticities},
    {tag::sBIT, false, read_significant_bits},
    {tag::cICP, false, read_code_points},
    {tag::hIST, false, read_histogram},
    {tag::sPLT, false, read_suggested_palette},
    {tag::mDCV, false, read_mastering_display},
    {tag::cLLI, false, read_light_level},
    {tag::oFFs, false, read_offset},
    {tag::pCAL, false, read_calibration},
    {tag::sCAL, false, read_scale},
    {tag::CLIP, true, read_clip},
    {tag::CLON, true, read_clone},
    {tag::DISC, true, read_discard},
    {tag::SAVE, true, read_save},
    {tag::SEEK, true, read_seek},
    {tag::nEED, true, read_needed},
    {tag::eXPI, true, read_export},
    {tag::fPRI, true, read_priority},
    {tag::pHYg, true, read_global_physical_size},
    {tag::MAGN, true, read_magnify},
    {tag::PAST, true, read_paste},
    {make_tag("BASI"), true, read_basis},
    {make_tag("DHDR"), true, read_delta_header},
};

const ReadingRow* reading_row(ChunkTag tag, DocumentKind kind) {
  const auto row = std::ranges::find(kReadings, tag, &ReadingRow::tag);
  if (row == std::end(kReadings) || (row->mngOnly && kind != DocumentKind::MING)) return nullptr;
  return row;
}

/// One property: a bit of one of the four letters.
struct PropertyRow {
  const char* name;
  int letter;
  const char* upper;
  const char* lower;
};

constexpr PropertyRow kProperties[] = {
    {"Ancillary", 0, "no, needed to show the image", "yes, may be passed over"},
    {"Private", 1, "no, a registered chunk", "yes, of one program"},
    {"Reserved", 2, "no, as the standard wants it", "yes, not valid today"},
    {"Safe to copy", 3, "no, depends on the image data", "yes, whatever else changes"},
};

}  // namespace

bool has_chunk_reading(ChunkTag tag, DocumentKind kind) { return reading_row(tag, kind) != nullptr; }

std::vector<ReadingLine> chunk_reading(ChunkTag tag, std::span<const std::uint8_t> payload,
                                       DocumentKind kind) {
  const ReadingRow* row = reading_row(tag, kind);
  if (!row) return {};
  PayloadReader reader(payload);
  row->read(reader);
  auto lines = reader.take_lines();
  if (reader.damaged())
    lines.push_back({"", with_value(string_text(StringId::DamagedChunk), tag_letters(tag))});
  else if (reader.left() > 0)
    lines.push_back({"", with_value(string_text(StringId::BytesBehindContent), grouped(reader.left()))});
  return lines;
}

std::vector<ReadingLine> tag_properties(ChunkTag tag) {
  std::vector<ReadingLine> lines;
  for (const PropertyRow& row : kProperties)
    lines.push_back({row.name, translated(tag >> (24 - 8 * row.letter) & 0x20 ? row.lower : row.upper)});
  return lines;
}

std::string reading_text(const std::vector<ReadingLine>& lines) {
  std::string text;
  for (const ReadingLine& line : lines) {
    if (!text.empty()) text += '\n';
    text += line.name.empty() ? line.value : std::string(translated(line.name)) + ": " + line.value;
  }
  return text;
}

}  // namespace vellum
