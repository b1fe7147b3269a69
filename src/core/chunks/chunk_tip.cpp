#include "core/chunks/chunk_tip.h"

#include <algorithm>

#include "base/text.h"
#include "base/translation.h"
#include "core/chunks/chunk_facts.h"
#include "core/chunks/chunk_field_sets.h"
#include "core/chunks/chunk_reading.h"
#include "core/chunks/mng_counts.h"
#include "core/chunks/text_chunk.h"
#include "core/model/clock.h"
#include "core/model/frame_values.h"
#include "core/model/header_record.h"
#include "core/settings.h"

namespace vellum {
namespace {

constexpr std::size_t kMostLines = 12, kMostCharacters = 80, kTextLines = 8;

std::string shown(const EntryPlace& place, const char* name) {
  return shown_value(place.window, place.index, name);
}

unsigned number(const EntryPlace& place, std::size_t offset) { return payload_be32(place.record(), offset); }
unsigned short_number(const EntryPlace& place, std::size_t offset) {
  return payload_byte(place.record(), offset) * 256u + payload_byte(place.record(), offset + 1);
}

std::uint32_t ticks_of(const DocumentWindow& window) {
  const std::size_t header = chunk_find_first(window.list, tag::MHDR);
  return header == kNoEntry ? 0 : window.list.record(header).ticksPerSecond;
}

std::string of_header(const EntryPlace& place) {
  const ChunkRecord& r = place.record();
  return format_text(translated("Width: %u\nDepth: %u\nBits: %u\nColor type: %s\nInterlaced: %s"), r.width,
                     r.height, r.bitDepth, shown(place, "colorType").c_str(),
                     r.interlace ? translated("yes") : translated("no"));
}

std::string of_mng_header(const EntryPlace& place) {
  const ChunkRecord& r = place.record();
  return format_text(
      translated("Frame size: %u x %u\nTicks per second: %u\nFrames: %u\nPlay time: %u\nProfile: 0x%08X"),
      r.frameWidth, r.frameHeight, r.ticksPerSecond, r.frameCount, r.playTime, r.simplicityProfile);
}

std::string of_palette(const EntryPlace& place) {
  return format_text(translated("%u colors"), place.record().size / 3u);
}

const char* dispose_name(std::uint32_t dispose) {
  static constexpr const char* names[] = {"None", "Background", "Previous"};
  return translated(names[std::min<std::uint32_t>(dispose, 2)]);
}

std::string frame_lines(const EntryPlace& place, std::uint32_t width, std::uint32_t height) {
  const DocumentWindow& window = place.window;
  const DocumentKind kind = window.document.kind;
  std::size_t ordinal = 0;
  for (std::size_t i = 0; i <= place.index; ++i)
    if (is_image_entry(kind, window.list.record(i).tag)) ++ordinal;
  std::string text = ordinal == 0 ? std::string()
                                  : format_text(translated("Image %zu of %zu\n"), ordinal,
                                                chunk_count_images(window.list, kind));
  text += format_text(translated("Size: %u x %u"), width, height);
  if (!is_animation(kind)) return text;
  const FrameOffset offset = GetFrameOffset(place.record(), kind);
  return text + format_text(translated("\nPosition: %d, %d\nDelay: %u ms"), offset.x, offset.y,
                            frame_delay_ms(place.record(), kind, ticks_of(window)));
}

/// Colors that the pixels of a picture can have, and whether they have alpha.
std::string color_lines(const Picture& picture) {
  const std::uint64_t colors = std::uint64_t{1} << std::min(picture.bits(), 24u);
  return format_text(translated("\nColors: %s\nAlpha: %s"), grouped(colors).c_str(),
                     picture.bits() == 32 ? translated("yes") : translated("no"));
}

std::string disposal_lines(const EntryPlace& place) {
  const ChunkRecord& r = place.record();
  switch (place.window.document.kind) {
    case DocumentKind::APNG:
      return format_text(translated("\nDispose: %s\nBlend: %s"), dispose_name(r.frameControl.dispose),
                         translated(r.frameControl.blend ? "Over" : "Source"));
    case DocumentKind::WEBP:
      return format_text(translated("\nDispose: %s"), dispose_name(r.webpImage.dispose));
    case DocumentKind::MING:
      return format_text(translated("\nDispose: %s"), dispose_name(clears_canvas(r) ? 1 : 0));
    default:
      return {};
  }
}

std::string of_image(const EntryPlace& place) {
  const Picture picture = picture_of(place.record());
  if (!picture) return {};
  return frame_lines(place, picture.width(), picture.height()) + color_lines(picture) + disposal_lines(place);
}

std::string of_frame_control(const EntryPlace& place) {
  const FrameControl& frame = place.record().frameControl;
  return frame_lines(place, frame.frameWidth, frame.frameHeight) + disposal_lines(place);
}

std::string of_animation(const EntryPlace& place) {
  const ChunkList& list = place.window.list;
  std::uint64_t time = 0;
  for (std::size_t i = 0; i < list.size(); ++i)
    if (is_image_entry(DocumentKind::APNG, list.record(i).tag))
      time += frame_delay_ms(list.record(i), DocumentKind::APNG, 0);
  return format_text(translated("Frames: %u\nPlays: %s\nRunning time: %llu ms"), place.record().numFrames,
                     shown(place, "numPlays").c_str(), static_cast<unsigned long long>(time));
}

/// Keyword and the first lines of the text.
std::string of_text(const EntryPlace& place) {
  const auto text = read_text_chunk(place.record());
  if (!text) return {};
  std::size_t end = 0;
  for (std::size_t lines = 0; lines < kTextLines && end != std::string::npos; ++lines)
    end = text->text.find('\n', end == 0 && lines == 0 ? 0 : end + 1);
  return text->keyword + "\n" + text->text.substr(0, end);
}

std::string of_time(const EntryPlace& place) {
  const ChunkRecord& r = place.record();
  return format_text("%s %u, %u, %u:%.2u:%.2u", month_name(payload_byte(r, 2)), payload_byte(r, 3),
                     short_number(place, 0), payload_byte(r, 4), payload_byte(r, 5), payload_byte(r, 6));
}

std::string of_gamma(const EntryPlace& place) {
  const std::uint32_t stored = number(place, 0);
  return format_text(translated("Gamma: %02.02f (%u)"), stored == 0 ? 0.0 : 100000.0 / stored, stored);
}

std::string of_transparency(const EntryPlace& place) {
  const auto header = ruling_header(place);
  if (header && header->colorType == 0)
    return format_text(translated("Transparent color: %u"), short_number(place, 0));
  if (header && header->colorType == 2)
    return format_text(translated("Transparent color: %u, %u, %u"), short_number(place, 0),
                       short_number(place, 2), short_number(place, 4));
  Palette palette;
  const auto payload = raw_payload(place.record());
  const auto transparent = std::ranges::count_if(payload, [](std::uint8_t alpha) { return alpha < 255; });
  return format_text(translated("%u of %u colors are transparent"), static_cast<unsigned>(transparent),
                     chunk_find_palette(place.window.list, palette));
}

std::string of_background(const EntryPlace& place) {
  const auto header = ruling_header(place);
  if (header && header->colorType == 3)
    return format_text(translated("Background: color %u"), payload_byte(place.record(), 0));
  if (header && header->colorType % 4 == 0)
    return format_text(translated("Background: %u"), short_number(place, 0));
  return format_text(translated("Background: %u, %u, %u"), short_number(place, 0), short_number(place, 2),
                     short_number(place, 4));
}

std::string of_mng_background(const EntryPlace& place) {
  return format_text(translated("Background: %u, %u, %u\nRequired: %s"), short_number(place, 0),
                     short_number(place, 2), short_number(place, 4), shown(place, "mandatory").c_str());
}

std::string of_termination(const EntryPlace& place) {
  const std::string action = translated("Action: ") + shown(place, "action");
  if (payload_byte(place.record(), 0) != 3) return action;
  return action + format_text(translated("\nIterations: %s\nDelay: %u"), shown(place, "iterations").c_str(),
                              number(place, 2));
}

std::string of_loop(const EntryPlace& place) {
  return format_text(translated("Loop level: %u\nRepeats: %s"), payload_byte(place.record(), 0),
                     shown(place, "count").c_str());
}

std::string of_loop_end(const EntryPlace& place) {
  return format_text(translated("Loop level: %u"), payload_byte(place.record(), 0));
}

std::string of_framing(const EntryPlace& place) {
  const FieldValues values = read_chunk_fields(place.window, place.index);
  const auto delay = static_cast<std::uint64_t>(values.number("delay"));
  const std::uint64_t ms = delay * 1000 / std::max(ticks_of(place.window), 1u);
  return format_text(translated("Framing mode: %u\nDelay: %llu ticks (%llu ms)"),
                     payload_byte(place.record(), 0), static_cast<unsigned long long>(delay),
                     static_cast<unsigned long long>(ms));
}

std::string of_definition(const EntryPlace& place) {
  return format_text(translated("Object: %u\nPosition: %d, %d"), short_number(place, 0),
                     static_cast<int>(number(place, 4)), static_cast<int>(number(place, 8)));
}

std::string objects_line(const EntryPlace& place) {
  const FieldValues values = read_chunk_fields(place.window, place.index);
  return format_text(translated("Objects: %u to %u\n"), static_cast<unsigned>(values.number("first")),
                     static_cast<unsigned>(values.number("last")));
}

std::string of_move(const EntryPlace& place) {
  return objects_line(place) + format_text("%s: %d, %d", shown(place, "mode").c_str(),
                                           static_cast<int>(number(place, 5)),
                                           static_cast<int>(number(place, 9)));
}

std::string of_show(const EntryPlace& place) {
  return objects_line(place) + translated("Mode: ") + shown(place, "mode");
}

std::string of_webp_header(const EntryPlace& place) {
  const WebpHeaderFields& header = place.record().webpHeader;
  return format_text(translated("Canvas: %u x %u\nLoops: %s\nFrames: %u"), header.canvasWidth,
                     header.canvasHeight, shown(place, "loopCount").c_str(), header.frameCount);
}

std::string of_end(const EntryPlace&) { return std::string(string_text(StringId::EndNoContent)); }

/// The first 32 bytes, 16 a line, with their characters.
std::string of_unknown(const EntryPlace& place) {
  const auto payload = raw_payload(place.record());
  std::string text =
      format_text(translated("%s, %zu bytes"), tag_letters(place.record().tag).c_str(), payload.size());
  for (std::size_t line = 0; line < 32 && line < payload.size(); line += 16) {
    std::string letters;
    text += '\n';
    for (std::size_t i = line; i < std::min(line + 16, payload.size()); ++i) {
      text += format_text("%02X ", payload[i]);
      letters += payload[i] >= 32 && payload[i] < 127 ? static_cast<char>(payload[i]) : '.';
    }
    text += " " + letters;
  }
  return text;
}

/// What has no tip of its own is told as its bytes are read.
std::string of_reading(const EntryPlace& place) {
  const ChunkRecord& record = place.record();
  return reading_text(chunk_reading(record.tag, raw_payload(record), place.window.document.kind));
}

struct TipRow {
  ChunkTag tag;
  std::string (*tip)(const EntryPlace&);
};

constexpr TipRow kTips[] = {
    {tag::IHDR, of_header},
    {tag::MHDR, of_mng_header},
    {tag::PLTE, of_palette},
    {tag::fcTL, of_frame_control},
    {tag::acTL, of_animation},
    {tag::tEXt, of_text},
    {tag::zTXt, of_text},
    {tag::iTXt, of_text},
    {tag::tIME, of_time},
    {tag::gAMA, of_gamma},
    {tag::tRNS, of_transparency},
    {tag::bKGD, of_background},
    {tag::BACK, of_mng_background},
    {tag::TERM, of_termination},
    {tag::LOOP, of_loop},
    {tag::ENDL, of_loop_end},
    {tag::FRAM, of_framing},
    {tag::DEFI, of_definition},
    {tag::MOVE, of_move},
    {tag::SHOW, of_show},
    {tag::WEBH, of_webp_header},
    {tag::MEND, of_end},
    {tag::IEND, of_end},
};

/// Tags without fields whose tip doesn't depend on how the payload is laid out.
constexpr ChunkTag kAlwaysTold[] = {tag::PLTE, tag::tRNS, tag::MEND, tag::IEND};

/// Chunks of a tag that this kind of document holds as raw bytes are told as unknown ones.
bool is_understood(const EntryPlace& place) {
  const bool raw_in_mng =
      place.window.document.kind == DocumentKind::MING &&
      (place.record().tag == tag::IEND || place.record().tag == tag::PLTE || place.record().tag == tag::tRNS);
  return (std::ranges::find(kAlwaysTold, place.record().tag) != std::end(kAlwaysTold) && !raw_in_mng) ||
         !chunk_fields(place.window, place.index).empty();
}

std::string whole_tip(const EntryPlace& place) {
  if (is_image_entry(place.window.document.kind, place.record().tag)) return of_image(place);
  const auto row = std::ranges::find(kTips, place.record().tag, &TipRow::tag);
  if (!is_understood(place)) return of_unknown(place);
  if (row == std::end(kTips)) return of_reading(place);
  return row->tip(place);
}

/// The first characters of UTF-8.
std::string_view first_characters(std::string_view line) {
  std::size_t characters = 0, end = 0;
  for (; end < line.size(); ++end)
    if ((static_cast<unsigned char>(line[end]) & 0xC0) != 0x80 && characters++ == kMostCharacters) break;
  return line.substr(0, end);
}

std::string loop_note(const EntryPlace& place, StringId found, StringId missing) {
  const std::size_t partner = loop_partner(place.window.list, place.index);
  if (partner == kNoEntry) return std::string(string_text(missing));
  return format_text(string_text(found).data(), static_cast<unsigned>(partner + 1));
}

}  // namespace

std::string chunk_tip(const DocumentWindow& window, std::size_t index) {
  if (index >= window.list.size()) return {};
  const std::string whole = whole_tip({window, index});
  std::string tip;
  std::string_view rest = whole;
  for (std::size_t line = 0; line < kMostLines && !rest.empty(); ++line)
    tip.append(line == 0 ? "" : "\n").append(first_characters(take_line(rest)));
  return tip;
}

std::string chunk_note(const DocumentWindow& window, std::size_t index) {
  const EntryPlace place{window, index};
  switch (place.record().tag) {
    case tag::LOOP:
      return loop_note(place, StringId::LoopEndsAt, StringId::NoMatchingEnd);
    case tag::ENDL:
      return loop_note(place, StringId::LoopBeginsAt, StringId::NoMatchingBeginning);
    case tag::TERM:
      return std::string(string_text(StringId::ViewerRepeats));
    case tag::FRAM:
    case tag::PNGI:
      return std::string(string_text(StringId::NameNotReadBack));
    case tag::tIME:
      return settings::AutoUpdateTime ? std::string(string_text(StringId::TimeSetAnew)) : std::string();
    case tag::IEND:
    case tag::MEND:
      return std::string(string_text(StringId::EndNoContent));
    default:
      return {};
  }
}

}  // namespace vellum
