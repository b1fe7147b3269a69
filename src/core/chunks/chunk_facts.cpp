#include "core/chunks/chunk_facts.h"

#include <algorithm>

#include "base/text.h"
#include "base/translation.h"
#include "core/chunks/chunk_facts_of.h"
#include "core/chunks/text_chunk.h"
#include "core/model/chunk_description.h"

namespace vellum {
namespace {

constexpr std::size_t kMostBytes = 240;

struct FactRow {
  ChunkTag tag;
  ChunkFamily family;
  const char* name = nullptr;  ///< where the description has none
  ChunkFacts (*facts)(const EntryPlace&) = nullptr;
};

using F = ChunkFamily;

constexpr FactRow kFacts[] = {
    {tag::IHDR, F::Header, nullptr, facts_of_header},
    {tag::MHDR, F::Header, nullptr, facts_of_mng_header},
    {tag::WEBH, F::Header, nullptr, facts_of_webp_header},
    {tag::IDAT, F::Frame, nullptr, facts_of_image},
    {tag::fdAT, F::Frame, nullptr, facts_of_image},
    {tag::PNGI, F::Frame, nullptr, facts_of_image},
    {tag::WEBI, F::Frame, nullptr, facts_of_image},
    {tag::fcTL, F::Frame, nullptr, facts_of_frame_control},
    {tag::JHDR, F::Frame, "JPEG image"},
    {make_tag("JDAT"), F::Frame, "JPEG data", facts_of_bytes},
    {make_tag("JDAA"), F::Frame, "JPEG alpha", facts_of_bytes},
    {tag::DHDR, F::Frame, "Delta image", facts_of_reading},
    {tag::BASI, F::Frame, "Basis image", facts_of_reading},
    {tag::PLTE, F::Colors, nullptr, facts_of_palette},
    {tag::tRNS, F::Colors, nullptr, facts_of_transparency},
    {tag::bKGD, F::Colors, nullptr, facts_of_background},
    {tag::BACK, F::Colors, nullptr, facts_of_mng_background},
    {tag::hIST, F::Colors, "Histogram", facts_of_histogram},
    {tag::sPLT, F::Colors, "Suggested palette", facts_of_suggested_palette},
    {tag::gAMA, F::ColorSpace, nullptr, facts_of_gamma},
    {tag::cHRM, F::ColorSpace, "Chromaticities", facts_of_reading},
    {tag::sRGB, F::ColorSpace, "Standard RGB", facts_of_reading},
    {tag::iCCP, F::ColorSpace, "Color profile", facts_of_profile},
    {tag::ICCP, F::ColorSpace, nullptr, facts_of_bare_profile},
    {tag::sBIT, F::ColorSpace, "Significant bits", facts_of_reading},
    {tag::cICP, F::ColorSpace, "Video color space", facts_of_code_points},
    {tag::mDCV, F::ColorSpace, "Mastering display", facts_of_display},
    {tag::cLLI, F::ColorSpace, "Light level", facts_of_light},
    {tag::tEXt, F::Text, nullptr, facts_of_text},
    {tag::zTXt, F::Text, nullptr, facts_of_text},
    {tag::iTXt, F::Text, "International text", facts_of_text},
    {tag::XMP, F::Text, nullptr, facts_of_xmp},
    {tag::tIME, F::Time},
    {tag::acTL, F::Control, nullptr, facts_of_animation},
    {tag::TERM, F::Control, nullptr, facts_of_termination},
    {tag::LOOP, F::Control, nullptr, facts_of_loop},
    {tag::ENDL, F::Control},
    {tag::FRAM, F::Control, nullptr, facts_of_framing},
    {tag::DEFI, F::Control, nullptr, facts_of_definition},
    {tag::MOVE, F::Control, nullptr, facts_of_move},
    {tag::SHOW, F::Control, nullptr, facts_of_show},
    {tag::CLIP, F::Control, "Clipping", facts_of_reading},
    {tag::CLON, F::Control, "Clone", facts_of_reading},
    {tag::DISC, F::Control, "Discard", facts_of_reading},
    {tag::SAVE, F::Control, "Save point", facts_of_reading},
    {tag::SEEK, F::Control, "Seek point", facts_of_reading},
    {tag::MAGN, F::Control, "Magnification", facts_of_reading},
    {tag::PAST, F::Control, "Paste", facts_of_reading},
    {tag::nEED, F::Control, "Needed features", facts_of_reading},
    {tag::eXPI, F::Control, "Export", facts_of_reading},
    {tag::fPRI, F::Control, "Priority", facts_of_reading},
    {tag::gIFg, F::Control, "GIF control", facts_of_bytes},
    {tag::gIFx, F::Control, "GIF extension", facts_of_bytes},
    {tag::pHYs, F::Measure, "Pixel size", facts_of_size},
    {tag::pHYg, F::Measure, "Pixel size of all images", facts_of_size},
    {tag::oFFs, F::Measure, "Place on a page", facts_of_reading},
    {tag::pCAL, F::Measure, "Calibration", facts_of_reading},
    {tag::sCAL, F::Measure, "Scale", facts_of_reading},
    {tag::sTER, F::Measure, "Stereo image"},
    {tag::eXIf, F::Measure, "Camera data", facts_of_camera},
    {tag::EXIF, F::Measure, nullptr, facts_of_camera},
    {tag::IEND, F::End},
    {tag::MEND, F::End},
};

const FactRow* fact_row(ChunkTag tag) {
  const auto row = std::ranges::find(kFacts, tag, &FactRow::tag);
  return row == std::end(kFacts) ? nullptr : row;
}

/// Images of one kind of document are raw chunks in another.
bool is_raw_image(const EntryPlace& place) {
  const ChunkTag tag = place.record().tag;
  static constexpr ChunkTag images[] = {tag::IDAT, tag::fdAT, tag::PNGI, tag::WEBI};
  return std::ranges::find(images, tag) != std::end(images) &&
         !is_image_entry(place.window.document.kind, tag);
}

ChunkFacts told(const EntryPlace& place, const FactRow* row) {
  if (is_raw_image(place)) return facts_of_stored_frame(place);
  if (!row) return facts_of_bytes(place);
  return row->facts ? row->facts(place) : ChunkFacts();
}

/// Line ends, tabs and what can't be seen become one blank.
std::string on_one_line(std::string_view text) {
  std::string line;
  for (const char c : text) {
    const bool blank = static_cast<unsigned char>(c) <= ' ' || c == '\x7F';
    if (!blank)
      line += c;
    else if (!line.empty() && line.back() != ' ')
      line += ' ';
  }
  return cut_utf8(std::move(line), kMostBytes);
}

}  // namespace

ChunkFamily chunk_family(ChunkTag tag) {
  const FactRow* row = fact_row(tag);
  return row ? row->family : F::Unknown;
}

const char* chunk_name(ChunkTag tag) {
  const FactRow* row = fact_row(tag);
  return row ? row->name : nullptr;
}

ChunkFacts chunk_facts(const DocumentWindow& window, std::size_t index) {
  if (index >= window.list.size()) return {};
  const FactRow* row = fact_row(window.list.record(index).tag);
  ChunkFacts facts = told({window, index}, row);
  if (row && row->name) facts.text = translated(row->name) + (facts.text.empty() ? "" : ": " + facts.text);
  facts.text = on_one_line(facts.text);
  return facts;
}

std::string searched_text(const DocumentWindow& window, std::size_t index) {
  const ChunkRecord& record = window.list.record(index);
  const RowText row = row_text(index, record.description);
  std::string text = row.label + row.text + '\n' + chunk_facts(window, index).text;
  if (!is_text(record.tag)) return text;
  if (const auto whole = read_text_chunk(record)) text += '\n' + whole->keyword + '\n' + whole->text;
  return text;
}

std::string shown_value(const DocumentWindow& window, std::size_t index, const char* name, bool inside) {
  const std::vector<Field> fields = chunk_fields(window, index);
  const Field* field = find_field(fields, name);
  const FieldValues values = read_chunk_fields(window, index);
  const FieldValue* value = values.find(name);
  if (!field || !value) return {};
  const auto* number = std::get_if<std::int64_t>(value);
  const bool special = field->special && number && *number == field->specialValue;
  if (special) return inside_sentence(field->special);
  const std::string text = field_value_text(*field, *value);
  if (field->type != FieldType::Choice) return text;
  return inside ? inside_sentence(text) : std::string(translated(text));
}

std::string joined_facts(std::initializer_list<std::string> parts) {
  std::string text;
  for (const std::string& part : parts)
    if (!part.empty()) text += (text.empty() ? "" : ", ") + part;
  return text;
}

}  // namespace vellum
