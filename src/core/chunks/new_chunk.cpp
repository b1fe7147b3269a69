#include "core/chunks/new_chunk.h"

#include <algorithm>
#include <ctime>

#include "base/byte_order.h"
#include "base/text.h"
#include "core/chunks/text_chunk.h"
#include "core/model/chunk_list.h"
#include "core/model/clock.h"
#include "core/model/record_picture.h"
#include "core/settings.h"
#include "image/builtin_palette.h"
#include "image/picture_operations.h"

namespace vellum {
namespace {

/// What a default content is made from: the window, the argument, and the record to fill (tag and owner are
/// set).
struct Making {
  const DocumentWindow& window;
  const NewChunkArgument& argument;
  ChunkRecord& record;

  bool payload(std::span<const std::uint8_t> bytes) const { return put_payload(record, bytes); }
};

std::uint32_t dimension(int setting) { return static_cast<std::uint32_t>(std::clamp(setting, 1, 1'000'000)); }

std::optional<ChunkRecord> ruling_header(const Making& making) {
  ChunkRecord header;
  const std::size_t from = static_cast<std::size_t>(std::max(making.window.document.caret, 0));
  if (chunk_find_header(making.window.list, making.window.document, from, header) == kNoEntry)
    return std::nullopt;
  return header;
}

bool make_header(const Making& making) {
  making.record.width = dimension(settings::DefaultWidth);
  making.record.height = dimension(settings::DefaultDepth);
  making.record.bitDepth = 8;
  making.record.colorType = 2;
  making.record.size = 13;
  return true;
}

bool make_mng_header(const Making& making) {
  making.record.frameWidth = dimension(settings::DefaultWidth);
  making.record.frameHeight = dimension(settings::DefaultDepth);
  making.record.ticksPerSecond = 1000;
  making.record.size = 28;
  return true;
}

bool make_webp_header(const Making& making) {
  WebpHeaderFields& header = making.record.webpHeader;
  header.canvasWidth = dimension(settings::DefaultWidth);
  header.canvasHeight = dimension(settings::DefaultDepth);
  header.colorType = 6;
  header.bitsPerPixel = 24;
  header.backgroundColor = static_cast<std::uint32_t>(settings::DefaultBackgroundColour);
  making.record.size = 28;
  return true;
}

bool make_palette(const Making& making) {
  Palette palette;
  std::uint32_t colors =
      std::min(BuiltInPalette(&palette, nullptr, std::clamp(settings::DefaultPalette, 0, 8)), 256u);
  if (const auto header = ruling_header(making); header && header->colorType == 3)
    colors = std::min(colors, 1u << std::min<unsigned>(header->bitDepth, 8));
  return making.payload(std::span(palette).first(3 * std::size_t{colors}));
}

bool make_end(const Making&) { return true; }

/// Takes the picture of the argument over.
bool take_picture(const Making& making, DocumentKind kind) {
  const Picture picture(making.argument.picture);
  if (picture) record_take_picture(making.record, kind, picture);
  return static_cast<bool>(picture);
}

/// Ten milliseconds.
void put_first_delay(FrameControl& control) {
  control.delayNum = 10;
  control.delayDen = 1000;
}

bool make_image(const Making& making) {
  const DocumentKind kind = making.window.document.kind;
  if (kind == DocumentKind::APNG) put_first_delay(making.record.frameControl);
  return take_picture(making, kind);
}

bool make_frame_control(const Making& making) {
  put_first_delay(making.record.frameControl);
  return take_picture(making, DocumentKind::APNG);
}

bool make_mng_image(const Making& making) { return take_picture(making, DocumentKind::MING); }

bool make_webp_image(const Making& making) {
  making.record.webpImage.delay = 10;
  return take_picture(making, DocumentKind::WEBP);
}

bool make_animation_control(const Making& making) {
  making.record.size = 8;
  return true;
}

bool make_gamma(const Making& making) {
  static constexpr std::uint8_t gamma[] = {0x00, 0x00, 0xB1, 0x8F};  // 45455: 1 / 2.2 in hundred-thousandths
  return making.payload(gamma);
}

/// Spare bytes behind a new text, so that it can be typed on in place.
constexpr std::size_t kSpareTextBytes = 16;

bool put_text(ChunkRecord& record, std::string_view keyword, std::string_view latin1) {
  const std::string text = std::string(keyword) + '\0' + std::string(latin1);
  return put_payload(record, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()},
                     kSpareTextBytes);
}

/// A text that Latin-1 has not all characters of is an iTXt, whatever was asked for.
bool make_text(const Making& making) {
  const TextPayload text = text_payload("Comment", settings::ForRent);
  if (text.tag == tag::iTXt) making.record.tag = tag::iTXt;
  return put_payload(making.record, text.payload, kSpareTextBytes);
}

bool make_international(const Making& making) {
  using namespace std::string_view_literals;
  std::string text("Comment\0\0\0\0\0"sv);
  text += settings::ForRent;
  return making.payload({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

bool make_time(const Making& making) { return making.payload(local_time_payload()); }

void put_sample(std::vector<std::uint8_t>& bytes, unsigned value) {
  bytes.push_back(static_cast<std::uint8_t>(value >> 8));
  bytes.push_back(static_cast<std::uint8_t>(value));
}

bool make_transparency(const Making& making) {
  const auto header = ruling_header(making);
  if (!header) return false;
  const unsigned white = (1u << header->bitDepth) - 1;
  std::vector<std::uint8_t> bytes;
  switch (header->colorType) {
    case 0:
      put_sample(bytes, white);
      break;
    case 2:
      for (int i = 0; i < 3; ++i) put_sample(bytes, white);
      break;
    case 3: {
      Palette palette;
      std::uint32_t entries = std::min(1u << header->bitDepth, std::max(making.argument.number, 1u));
      if (const std::uint32_t colors = chunk_find_palette(making.window.list, palette))
        entries = std::min(entries, colors);
      bytes.assign(entries, 255);
      break;
    }
    default:
      return false;
  }
  return making.payload(bytes);
}

Colour default_background() { return static_cast<Colour>(settings::DefaultBackgroundColour) & 0xFFFFFF; }

bool make_background(const Making& making) {
  const auto header = ruling_header(making);
  if (!header) return false;
  const Colour color = default_background();
  const auto sample = [&](unsigned value) {
    return header->bitDepth == 16 ? value * 257
           : header->bitDepth < 8 ? value >> (8 - header->bitDepth)
                                  : value;
  };
  std::vector<std::uint8_t> bytes;
  if (header->colorType == 3) {
    bytes = {0};
  } else if (header->colorType == 0 || header->colorType == 4) {
    put_sample(bytes, sample(grey_of(red_of(color), green_of(color), blue_of(color))));
  } else {
    for (const unsigned value : {red_of(color), green_of(color), blue_of(color)})
      put_sample(bytes, sample(value));
  }
  return making.payload(bytes);
}

/// All bits of each sample.
bool make_significant_bits(const Making& making) {
  static constexpr std::size_t samples[] = {1, 0, 3, 3, 2, 0, 4};
  const auto header = ruling_header(making);
  if (!header || header->colorType >= std::size(samples)) return false;
  const std::uint8_t depth = header->colorType == 3 ? 8 : header->bitDepth;
  return making.payload(std::vector<std::uint8_t>(samples[header->colorType], depth));
}

bool make_histogram(const Making& making) {
  Palette palette;
  const std::size_t colors = chunk_find_palette(making.window.list, palette);
  return colors > 0 && making.payload(std::vector<std::uint8_t>(2 * colors));
}

bool make_mng_background(const Making& making) {
  const Colour color = default_background();
  std::vector<std::uint8_t> bytes;
  for (const unsigned value : {red_of(color), green_of(color), blue_of(color)})
    put_sample(bytes, value * 257);
  bytes.resize(10);
  return making.payload(bytes);
}

bool make_termination(const Making& making) {
  static constexpr std::uint8_t repeat_for_ever[10] = {3};
  return making.payload(repeat_for_ever);
}

bool make_loop(const Making& making) {
  std::uint8_t bytes[5] = {};
  write_be32(bytes + 1, making.argument.number);
  return making.payload(bytes);
}

bool make_loop_end(const Making& making) {
  static constexpr std::uint8_t level[1] = {0};
  return making.payload(level);
}

bool make_framing(const Making& making) {
  std::uint8_t bytes[10] = {1, 0, 1};  // mode 1, an empty name, the delay changes
  write_be32(bytes + 6, making.argument.number);
  return making.payload(bytes);
}

bool make_definition(const Making& making) {
  std::uint8_t bytes[12] = {0, 0, 0, 1};  // object 0, shown, concrete
  write_be32(bytes + 4, making.argument.number & 0xFFFF);
  write_be32(bytes + 8, making.argument.number >> 16);
  return making.payload(bytes);
}

struct DefaultRow {
  ChunkTag tag;
  bool (*make)(const Making&);
};

constexpr DefaultRow kDefaults[] = {
    {tag::IHDR, make_header},
    {tag::MHDR, make_mng_header},
    {tag::PLTE, make_palette},
    {tag::IEND, make_end},
    {tag::MEND, make_end},
    {tag::IDAT, make_image},
    {tag::fcTL, make_frame_control},
    {tag::PNGI, make_mng_image},
    {tag::WEBH, make_webp_header},
    {tag::WEBI, make_webp_image},
    {tag::acTL, make_animation_control},
    {tag::gAMA, make_gamma},
    {tag::tEXt, make_text},
    {tag::zTXt, make_text},
    {tag::iTXt, make_international},
    {tag::tIME, make_time},
    {tag::sBIT, make_significant_bits},
    {tag::hIST, make_histogram},
    {tag::tRNS, make_transparency},
    {tag::bKGD, make_background},
    {tag::BACK, make_mng_background},
    {tag::TERM, make_termination},
    {tag::LOOP, make_loop},
    {tag::ENDL, make_loop_end},
    {tag::FRAM, make_framing},
    {tag::DEFI, make_definition},
};

/// Contents that depend on nothing.
struct BytesRow {
  ChunkTag tag;
  std::string_view bytes;
};

using namespace std::string_view_literals;

constexpr BytesRow kDefaultBytes[] = {
    {tag::pHYs, "\0\0\x0E\xC4\0\0\x0E\xC4\1"sv},  // 3780 pixels a meter: 96 an inch
    {tag::sRGB, "\0"sv},
    // The primaries of sRGB, in the units of each.
    {tag::cHRM,
     "\0\0\x7A\x26\0\0\x80\x84\0\0\xFA\0\0\0\x80\xE8\0\0\x75\x30\0\0\xEA\x60\0\0\x3A\x98\0\0\x17\x70"sv},
    {tag::cICP, "\1\x0D\0\1"sv},
    {tag::mDCV, "\x7D\0\x40\x74\x3A\x98\x75\x30\x1D\x4C\x0B\xB8\x3D\x13\x40\x42\0\x98\x96\x80\0\0\0\1"sv},
    {tag::cLLI, "\0\x98\x96\x80\0\x3D\x09\0"sv},
    {tag::iCCP, "Profile\0\0"sv},  // the profile itself has to be given
    {tag::sPLT, "Suggested\0\x08"sv},
    {tag::eXIf, "MM\0*\0\0\0\x08\0\1\1\x12\0\3\0\0\0\1\0\1\0\0\0\0\0\0"sv},  // upright
    {tag::oFFs, "\0\0\0\0\0\0\0\0\0"sv},
    {tag::sTER, "\0"sv},
    {tag::sCAL, "\0011\0001"sv},
    {tag::MAGN, ""sv},
    {tag::DISC, ""sv},
    {tag::SAVE, ""sv},
    {tag::SEEK, ""sv},
    {tag::SHOW, ""sv},
    // From object 1, the least that may be a source.
    {tag::PAST,
     "\0\0\0\0\0\0\0\0\0\0\0\0\1"
     "\0\0\0\0\0\0\0\0\0\0\0\0\0\0"
     "\0\0\0\0\0\0\0\0\0\0\0\0\0\0"sv},
    {tag::MOVE, "\0\0\0\0\0\0\0\0\0\0\0\0\0"sv},
};

bool put_default_bytes(ChunkRecord& record) {
  const auto row = std::ranges::find(kDefaultBytes, record.tag, &BytesRow::tag);
  return row != std::end(kDefaultBytes) &&
         put_payload(record, {reinterpret_cast<const std::uint8_t*>(row->bytes.data()), row->bytes.size()});
}

}  // namespace

ChunkRecord text_record(std::string_view keyword, std::string_view text) {
  const std::string latin1 = latin1_from_utf8(text.substr(0, text.find('\0')));
  std::string lines;
  for (std::size_t i = 0; i < latin1.size(); ++i)
    if (latin1[i] != '\r')
      lines += latin1[i];
    else if (i + 1 == latin1.size() || latin1[i + 1] != '\n')
      lines += '\n';
  ChunkRecord record;
  record.tag = tag::tEXt;
  put_text(record, keyword, lines);
  return record;
}

bool has_default_content(ChunkTag tag) {
  return std::ranges::find(kDefaults, tag, &DefaultRow::tag) != std::end(kDefaults) ||
         std::ranges::find(kDefaultBytes, tag, &BytesRow::tag) != std::end(kDefaultBytes);
}

bool new_chunk(const DocumentWindow& window, ChunkRecord& out, ChunkTag tag,
               const NewChunkArgument& argument) {
  out = {};
  const auto row = std::ranges::find(kDefaults, tag, &DefaultRow::tag);
  out.tag = tag;
  out.owner = &window.document;
  if (row == std::end(kDefaults) ? put_default_bytes(out) : row->make({window, argument, out})) return true;
  chunk_free(out);
  return false;
}

}  // namespace vellum
