#include "core/chunks/chunk_table.h"

#include <algorithm>
#include <string_view>

#include "base/byte_order.h"
#include "image/webp_container.h"

namespace vellum {
namespace {

using Payload = std::span<const std::uint8_t>;

constexpr std::uint32_t kAnyLength = 0x7FFFFFFF;  // PNG standard: a chunk's length has 31 bits

std::string_view as_text(Payload payload) {
  return {reinterpret_cast<const char*>(payload.data()), payload.size()};
}

/// The keyword in front of the first NUL; a keyword that is not ended is no keyword.
std::string_view keyword_of(Payload payload) {
  const std::string_view text = as_text(payload);
  const auto end = text.find('\0');
  return end == std::string_view::npos ? std::string_view() : text.substr(0, end);
}

bool has_keyword(Payload payload, const PngContext&) { return is_valid_keyword(keyword_of(payload)); }

bool check_text(Payload payload, const PngContext&) {
  const std::string_view keyword = keyword_of(payload);
  return is_valid_keyword(keyword) &&
         as_text(payload).find('\0', keyword.size() + 1) == std::string_view::npos;
}

bool check_international_text(Payload payload, const PngContext&) {
  const std::string_view text = as_text(payload);
  const std::string_view keyword = keyword_of(payload);
  const std::size_t flags = keyword.size() + 1;
  if (!is_valid_keyword(keyword) || flags + 2 > payload.size()) return false;
  const std::size_t language_end = text.find('\0', flags + 2);
  return payload[flags] <= 1 && payload[flags + 1] == 0 && language_end != std::string_view::npos &&
         text.find('\0', language_end + 1) != std::string_view::npos;
}

bool check_time(Payload p, const PngContext&) {
  return p[2] >= 1 && p[2] <= 12 && p[3] >= 1 && p[3] <= 31 && p[4] <= 23 && p[5] <= 59 && p[6] <= 60;
}

bool check_gamma(Payload p, const PngContext&) { return read_be32(p.data()) != 0; }

/// White and primaries lie inside the triangle x + y <= 1 and the white's y is not 0 (they are fractions of a
/// whole).
bool check_chromaticities(Payload p, const PngContext&) {
  for (std::size_t i = 0; i < 32; i += 8)
    if (std::uint64_t{read_be32(&p[i])} + read_be32(&p[i + 4]) > 100'000) return false;
  return read_be32(&p[0]) != 0 && read_be32(&p[4]) != 0;
}

bool check_rendering_intent(Payload p, const PngContext&) { return p[0] <= 3; }

bool check_profile(Payload payload, const PngContext&) {
  const std::string_view keyword = keyword_of(payload);
  return is_valid_keyword(keyword) && keyword.size() + 2 < payload.size() && payload[keyword.size() + 1] == 0;
}

bool check_significant_bits(Payload p, const PngContext& image) {
  static constexpr std::size_t samples[] = {1, 0, 3, 3, 2, 0, 4};
  const unsigned depth = image.colorType == 3 ? 8 : image.bitDepth;
  return p.size() == samples[image.colorType] &&
         std::ranges::all_of(p, [depth](std::uint8_t bits) { return bits >= 1 && bits <= depth; });
}

bool samples_fit(Payload p, unsigned depth) {
  for (std::size_t i = 0; i + 1 < p.size(); i += 2)
    if (depth < 16 && read_be16(&p[i]) >> depth != 0) return false;
  return true;
}

bool check_background(Payload p, const PngContext& image) {
  switch (image.colorType) {
    case 0:
    case 4:
      return p.size() == 2 && samples_fit(p, image.bitDepth);
    case 3:
      return p.size() == 1 && p[0] < image.paletteEntries;
    default:
      return p.size() == 6 && samples_fit(p, image.bitDepth);
  }
}

bool check_transparency(Payload p, const PngContext& image) {
  switch (image.colorType) {
    case 0:
      return p.size() == 2 && samples_fit(p, image.bitDepth);
    case 2:
      return p.size() == 6 && samples_fit(p, image.bitDepth);
    case 3:
      return !p.empty() && p.size() <= image.paletteEntries;
    default:
      return false;
  }
}

bool check_histogram(Payload p, const PngContext& image) {
  return image.paletteEntries != 0 && p.size() == 2 * std::size_t{image.paletteEntries};
}

bool check_unit(Payload p, const PngContext&) { return p[8] <= 1; }

bool check_suggested_palette(Payload payload, const PngContext&) {
  const std::string_view name = keyword_of(payload);
  if (!is_valid_keyword(name) || name.size() + 2 > payload.size()) return false;
  const unsigned depth = payload[name.size() + 1];
  const std::size_t entries = payload.size() - name.size() - 2;
  return (depth == 8 && entries % 6 == 0) || (depth == 16 && entries % 10 == 0);
}

/// Two positive decimal numbers behind a unit of 1 or 2 (PNG extensions, "sCAL").
bool check_scale(Payload payload, const PngContext&) {
  const std::string_view text = as_text(payload);
  const std::size_t parting = text.find('\0');
  if (payload[0] < 1 || payload[0] > 2 || parting == std::string_view::npos) return false;
  const auto positive = [](std::string_view number) {
    static constexpr std::string_view letters = "+-.eE0123456789";
    const std::string_view mantissa = number.substr(0, number.find_first_of("eE"));
    return number.find_first_not_of(letters) == std::string_view::npos && !number.starts_with('-') &&
           mantissa.find_first_of("123456789") != std::string_view::npos;
  };
  return positive(text.substr(1, parting - 1)) && positive(text.substr(parting + 1));
}

/// Name, NUL, limits, equation type, parameter count, unit, NUL, that many texts (PNG extensions, "pCAL").
bool check_calibration(Payload payload, const PngContext&) {
  const std::string_view text = as_text(payload);
  const std::string_view name = keyword_of(payload);
  const std::size_t head = name.size() + 1;
  if (!is_valid_keyword(name) || head + 10 > payload.size()) return false;
  const unsigned type = payload[head + 8];
  const auto nuls = std::ranges::count(text.substr(head + 10), '\0');
  return type <= 3 && nuls == static_cast<std::ptrdiff_t>(payload[head + 9]);
}

bool check_stereo(Payload p, const PngContext&) { return p[0] <= 1; }

/// The byte order mark of the TIFF header that begins it (PNG standard, third edition, "eXIf").
bool check_exif(Payload p, const PngContext&) {
  const std::string_view mark = as_text(p.first(4));
  return mark == std::string_view("II*\0", 4) || mark == std::string_view("MM\0*", 4);
}

bool check_application_extension(Payload p, const PngContext&) { return p.size() >= 11; }

bool check_palette(Payload p, const PngContext&) { return p.size() % 3 == 0; }

// Lengths that MNG 1.0 knows.
bool check_termination(Payload p, const PngContext&) {
  return p[0] == 3 ? p.size() == 10 : p[0] < 3 && p.size() == 1;
}
bool check_canvas(Payload p, const PngContext&) { return p.size() != 8; }
bool check_definition(Payload p, const PngContext&) {
  return p.size() <= 4 || p.size() == 12 || p.size() == 28;
}
/// Two numbers of objects, a byte, six numbers of 16 bits, a byte; what is missing at the end has its
/// default.
bool check_magnification(Payload p, const PngContext&) {
  return p.size() <= 4 ? p.size() % 2 == 0 : p.size() % 2 == 1 || p.size() == 18;
}
bool check_show(Payload p, const PngContext&) { return p.size() != 1 && p.size() != 3; }

// Chunks of a still picture's list that belong to an animation are raw, and as fixed as in the animation.
constexpr ChunkRow kChunks[] = {
    {tag::IHDR, kInPngs, kInPngs, ChunkPlace::Fixed, 13, 13, nullptr},
    {tag::IDAT, kInPngs, kInPng, ChunkPlace::Image, 0, kAnyLength, nullptr},
    {tag::IEND, kInPngs, kInPngs, ChunkPlace::Fixed, 0, 0, nullptr},
    {tag::acTL, kInPngs, kInPngs, ChunkPlace::Fixed, 8, 8, nullptr},
    {tag::fcTL, kInPngs, 0, ChunkPlace::Fixed, 26, 26, nullptr},
    {tag::fdAT, kInPngs, 0, ChunkPlace::Fixed, 4, kAnyLength, nullptr},
    {tag::cHRM, kInPngs, kInPngs, ChunkPlace::BeforePalette, 32, 32, check_chromaticities},
    {tag::gAMA, kInPngs, kInPngs, ChunkPlace::BeforePalette, 4, 4, check_gamma},
    {tag::iCCP, kInPngs, kInPngs, ChunkPlace::BeforePalette, 3, kAnyLength, check_profile},
    {tag::sBIT, kInPngs, kInPngs, ChunkPlace::BeforePalette, 1, 4, check_significant_bits},
    {tag::sRGB, kInPngs, kInPngs, ChunkPlace::BeforePalette, 1, 1, check_rendering_intent},
    {tag::cICP, kInPngs, kInPngs, ChunkPlace::BeforePalette, 4, 4, nullptr},
    {tag::mDCV, kInPngs, kInPngs, ChunkPlace::BeforePalette, 24, 24, nullptr},
    {tag::cLLI, kInPngs, kInPngs, ChunkPlace::BeforePalette, 8, 8, nullptr},
    {tag::PLTE, kInPngs, kInPngs, ChunkPlace::AtPalette, 3, 768, check_palette},
    {tag::bKGD, kInPngs, kInPngs, ChunkPlace::BehindPalette, 1, 6, check_background},
    {tag::hIST, kInPngs, kInPngs, ChunkPlace::BehindPalette, 2, 512, check_histogram},
    {tag::tRNS, kInPngs, kInPngs, ChunkPlace::BehindPalette, 1, 256, check_transparency},
    {tag::pHYs, kInPngs, kInPngs, ChunkPlace::BeforeImage, 9, 9, check_unit},
    {tag::oFFs, kInPngs, kInPngs, ChunkPlace::BeforeImage, 9, 9, check_unit},
    {tag::pCAL, kInPngs, kInPngs, ChunkPlace::BeforeImage, 12, kAnyLength, check_calibration},
    {tag::sCAL, kInPngs, kInPngs, ChunkPlace::BeforeImage, 4, kAnyLength, check_scale},
    {tag::sPLT, kInPngs, 0, ChunkPlace::BeforeImage, 3, kAnyLength, check_suggested_palette},
    {tag::sTER, kInPngs, kInPngs, ChunkPlace::BeforeImage, 1, 1, check_stereo},
    {tag::eXIf, kInPngs, kInPngs, ChunkPlace::Anywhere, 4, kAnyLength, check_exif},
    {tag::tIME, kInText, kInText, ChunkPlace::Anywhere, 7, 7, check_time},
    {tag::tEXt, kInText, 0, ChunkPlace::Anywhere, 2, kAnyLength, check_text},
    {tag::zTXt, kInText, 0, ChunkPlace::Anywhere, 3, kAnyLength, has_keyword},
    {tag::iTXt, kInText, 0, ChunkPlace::Anywhere, 6, kAnyLength, check_international_text},
    {tag::gIFg, kInPngs, 0, ChunkPlace::Anywhere, 4, 4, nullptr},
    {tag::gIFx, kInPngs, 0, ChunkPlace::Anywhere, 11, kAnyLength, check_application_extension},
    {tag::MHDR, kInMng, kInMng, ChunkPlace::Fixed, 28, kAnyLength, nullptr},
    {tag::MEND, kInMng, kInMng, ChunkPlace::Fixed, 0, 0, nullptr},
    {tag::PNGI, kInMng, 0, ChunkPlace::Image, 0, kAnyLength, nullptr},
    {tag::TERM, kInMng, kInMng, ChunkPlace::Termination, 1, 10, check_termination},
    {tag::BACK, kInMng, kInMng, ChunkPlace::Canvas, 6, 10, check_canvas},
    {tag::LOOP, kInMng, 0, ChunkPlace::Loop, 5, kAnyLength, nullptr},
    {tag::ENDL, kInMng, 0, ChunkPlace::Loop, 1, 1, nullptr},
    {tag::FRAM, kInMng, 0, ChunkPlace::Folded, 0, kAnyLength, nullptr},
    {tag::DEFI, kInMng, 0, ChunkPlace::Folded, 2, 28, check_definition},
    {tag::MOVE, kInMng, 0, ChunkPlace::Anywhere, 13, 13, nullptr},
    {tag::SHOW, kInMng, 0, ChunkPlace::Anywhere, 0, 5, check_show},
    {tag::CLIP, kInMng, 0, ChunkPlace::Anywhere, 21, 21, nullptr},
    {tag::CLON, kInMng, 0, ChunkPlace::Anywhere, 4, 16, nullptr},
    {tag::DISC, kInMng, 0, ChunkPlace::Anywhere, 0, kAnyLength, nullptr},
    {tag::SAVE, kInMng, kInMng, ChunkPlace::Anywhere, 0, kAnyLength, nullptr},
    {tag::SEEK, kInMng, 0, ChunkPlace::Anywhere, 0, kAnyLength, nullptr},
    {tag::MAGN, kInMng, 0, ChunkPlace::Anywhere, 0, 18, check_magnification},
    {tag::PAST, kInMng, 0, ChunkPlace::Anywhere, 41, kAnyLength, nullptr},
    {tag::nEED, kInMng, 0, ChunkPlace::Anywhere, 1, kAnyLength, nullptr},
    {tag::eXPI, kInMng, 0, ChunkPlace::Anywhere, 3, kAnyLength, nullptr},
    {tag::fPRI, kInMng, 0, ChunkPlace::Anywhere, 2, 2, nullptr},
    {tag::pHYg, kInMng, 0, ChunkPlace::Canvas, 0, 9, nullptr},
    {tag::WEBH, kInWebp, kInWebp, ChunkPlace::Fixed, 0, kAnyLength, nullptr},
    {tag::WEBI, kInWebp, 0, ChunkPlace::Image, 0, kAnyLength, nullptr},
    {tag::ICCP, kInWebp, kInWebp, ChunkPlace::BeforeImage, 0, kAnyLength, nullptr},
    {tag::EXIF, kInWebp, kInWebp, ChunkPlace::Anywhere, 0, kAnyLength, nullptr},
    {tag::XMP, kInWebp, kInWebp, ChunkPlace::Anywhere, 0, kAnyLength, nullptr},
};

/// RIFF names have any printable letters, but those of the images' own chunks.
bool is_valid_name(ChunkTag tag, DocumentKind kind) {
  if (kind != DocumentKind::WEBP) return is_valid_tag(tag);
  return !is_webp_image_chunk(tag) && tag_letters(tag).find('?') == std::string::npos;
}

bool is_known_anywhere(ChunkTag tag) {
  return std::ranges::find(kChunks, tag, &ChunkRow::tag) != std::end(kChunks);
}

}  // namespace

std::uint8_t kind_bit(DocumentKind kind) {
  static constexpr std::pair<DocumentKind, KindSet> bits[] = {{DocumentKind::PING, kInPng},
                                                              {DocumentKind::APNG, kInApng},
                                                              {DocumentKind::MING, kInMng},
                                                              {DocumentKind::WEBP, kInWebp}};
  const auto row = std::ranges::find(bits, kind, &std::pair<DocumentKind, KindSet>::first);
  return row == std::end(bits) ? std::uint8_t{0} : std::uint8_t{row->second};
}

std::span<const ChunkRow> chunk_table() { return kChunks; }

const ChunkRow* chunk_row(ChunkTag tag, DocumentKind kind) {
  const std::uint8_t bit = kind_bit(kind);
  const auto row =
      std::ranges::find_if(kChunks, [&](const ChunkRow& r) { return r.tag == tag && (r.kinds & bit); });
  return row == std::end(kChunks) ? nullptr : row;
}

bool stands_once(ChunkTag tag, DocumentKind kind) {
  const ChunkRow* row = chunk_row(tag, kind);
  return row && (row->once & kind_bit(kind));
}

ChunkPlace place_of(ChunkTag tag, DocumentKind kind) {
  const ChunkRow* row = chunk_row(tag, kind);
  return row ? row->place : ChunkPlace::Anywhere;
}

bool serves_all_images(ChunkTag tag) {
  static constexpr ChunkTag tags[] = {tag::gAMA, tag::cHRM, tag::sRGB, tag::iCCP, tag::pHYs};
  return std::ranges::find(tags, tag) != std::end(tags);
}

bool may_be_put(ChunkTag tag, DocumentKind kind) {
  if (const ChunkRow* row = chunk_row(tag, kind)) return row->place != ChunkPlace::Fixed;
  return is_valid_name(tag, kind) && (kind == DocumentKind::WEBP || is_ancillary(tag)) &&
         !is_known_anywhere(tag);
}

bool is_valid_chunk(ChunkTag tag, Payload payload, const PngContext& context, DocumentKind kind) {
  const ChunkRow* row = chunk_row(tag, kind);
  if (!row) return is_valid_name(tag, kind);
  return payload.size() >= row->shortest && payload.size() <= row->longest &&
         (!row->check || row->check(payload, context));
}

bool is_valid_keyword(std::string_view keyword) {
  if (keyword.empty() || keyword.size() > 79 || keyword.front() == ' ' || keyword.back() == ' ' ||
      keyword.find("  ") != std::string_view::npos)
    return false;
  return std::ranges::all_of(keyword, [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return (byte >= 32 && byte <= 126) || byte >= 161;
  });
}

}  // namespace vellum
