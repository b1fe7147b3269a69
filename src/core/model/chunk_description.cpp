#include "core/model/chunk_description.h"

#include <algorithm>

#include "base/text.h"
#include "base/translation.h"
#include "core/model/clock.h"

namespace vellum {
namespace {

constexpr std::size_t kDescriptionBytes = 260;

/// "16,777,216": the colors that a header can tell apart. Color type 2 (and 6, by its three color samples)
/// counts three samples, every other type one.
std::string header_colors(const ChunkRecord& record) {
  const unsigned bits = record.bitDepth * (record.colorType == 2 || record.colorType == 6 ? 3u : 1u);
  return grouped(bits < 64 ? std::uint64_t{1} << bits : 0);
}

std::string size_and_colors(const ChunkRecord& record) {
  return format_text(translated(" (%u x %u, %s colors)"), record.width, record.height,
                     header_colors(record).c_str());
}

std::string webp_header(const ChunkRecord& record) {
  return format_text(translated(" (%u x %u, %s colors)"), record.webpHeader.canvasWidth,
                     record.webpHeader.canvasHeight, grouped(16'777'216).c_str());
}

std::string mng_header(const ChunkRecord& record) {
  return format_text(" (%u x %u)", record.frameWidth, record.frameHeight);
}

std::string palette_entries(const ChunkRecord& record) {
  return format_text(translated(" (%u entries)"), record.size / 3u);
}

std::string time_text(const ChunkRecord& record) {
  const unsigned year = payload_byte(record, 0) * 256u + payload_byte(record, 1);
  return format_text(" %s %u,%u %u:%.2u:%.2u", month_name(payload_byte(record, 2)), payload_byte(record, 3),
                     year, payload_byte(record, 4), payload_byte(record, 5), payload_byte(record, 6));
}

/// The keyword alone: the payload up to its first control byte.
std::string keyword(const ChunkRecord& record) {
  const auto bytes = record.data.bytes();
  const std::size_t most = std::min(bytes.size(), kDescriptionBytes);
  std::string text(" ");
  for (std::size_t i = 0; i < most && bytes[i] >= 32; ++i) text += static_cast<char>(bytes[i]);
  return utf8_from_latin1(text);
}

std::string gamma_value(const ChunkRecord& record) {
  const std::uint32_t stored = payload_be32(record, 0);
  return format_text(" %02.02f", stored == 0 ? 0.0 : 100000.0 / stored);
}

std::string loops(const ChunkRecord& record) {
  return format_text(translated(" (%s loops)"),
                     record.numPlays == 0 ? translated("infinite") : grouped(record.numPlays).c_str());
}

std::string frame_size(const ChunkRecord& record) {
  return format_text(" (%u x %u)", record.frameControl.frameWidth, record.frameControl.frameHeight);
}

std::string object_id(const ChunkRecord& record) {
  return format_text(" #%u", payload_byte(record, 0) * 256u + payload_byte(record, 1));
}

std::string nesting_level(const ChunkRecord& record) { return format_text(" #%u", payload_byte(record, 0)); }

struct DescriptionRow {
  ChunkTag tag;
  const char* label;
  std::string (*rest)(const ChunkRecord&);  ///< what follows the four letters; null: nothing
};

constexpr DescriptionRow kDescriptions[] = {
    {tag::IHDR, "HEADER", size_and_colors},
    {tag::PNGI, "PNG IMAGE", size_and_colors},
    {tag::WEBH, "HEADER", webp_header},
    {tag::MHDR, "MNG HEADER", mng_header},
    {tag::IDAT, "IMAGE", nullptr},
    {tag::WEBI, "IMAGE", nullptr},
    {tag::ICCP, "COLOR PROFILE", nullptr},
    {tag::EXIF, "CAMERA DATA", nullptr},
    {tag::XMP, "XMP", nullptr},
    {tag::PLTE, "PALETTE", palette_entries},
    {tag::tIME, "TIME", time_text},
    {tag::tEXt, "TEXT", keyword},
    {tag::zTXt, "TEXT", keyword},
    {tag::gAMA, "GAMMA", gamma_value},
    {tag::bKGD, "BACKGROUND", nullptr},
    {tag::tRNS, "TRANSPARENCY", nullptr},
    {tag::acTL, "ANIMATION CONTROL", loops},
    {tag::fcTL, "FRAME CONTROL", frame_size},
    {tag::fdAT, "FRAME IMAGE", nullptr},
    {tag::IEND, "END", nullptr},
    {tag::MEND, "END", nullptr},
    {tag::TERM, "TERMINATION", nullptr},
    {tag::DEFI, "OBJECT DEFINITION", object_id},
    {tag::LOOP, "LOOP", nesting_level},
    {tag::ENDL, "END LOOP", nesting_level},
    {tag::FRAM, "FRAME", nullptr},
    {tag::BACK, "MNG BACKGROUND", nullptr},
    {tag::MOVE, "MOVE", nullptr},
    {tag::SHOW, "SHOW", nullptr},
};

}  // namespace

std::string chunk_description(const ChunkRecord& record) {
  const auto row = std::ranges::find(kDescriptions, record.tag, &DescriptionRow::tag);
  const bool known = row != std::end(kDescriptions);
  std::string text(known ? row->label : "UNKNOWN");
  text += "? ";
  text += tag_letters(record.tag);
  if (known && row->rest) text += row->rest(record);
  return cut_utf8(std::move(text), kDescriptionBytes);
}

RowText row_text(std::size_t index, const std::string& description) {
  const std::string number = format_text("%5u: ", static_cast<unsigned>(index + 1));
  const std::string_view line = description;
  const std::size_t parting = line.find('?');
  if (parting == std::string_view::npos) return {number + description, {}};
  return {number + std::string(translated(line.substr(0, parting))), std::string(line.substr(parting + 1))};
}

}  // namespace vellum
