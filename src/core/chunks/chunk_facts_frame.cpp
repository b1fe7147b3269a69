// Facts of pictures, and of the chunks that say how they are laid and played.
#include <algorithm>

#include "base/text.h"
#include "base/translation.h"
#include "core/chunks/chunk_facts_of.h"
#include "core/model/frame_values.h"
#include "core/model/header_record.h"

namespace vellum {
namespace {

std::string counted(std::uint64_t count, const char* one, const char* many) {
  return grouped(count) + ' ' + (count == 1 ? one : many);
}

/// Where a part of the canvas lies, and how large it is.
struct FramePart {
  std::uint32_t width = 0, height = 0;
  FrameOffset offset;
};

bool is_whole(const FramePart& part, Extent canvas) {
  return part.offset.x == 0 && part.offset.y == 0 && part.width == canvas.width &&
         part.height == canvas.height;
}

std::string place_text(const FramePart& part) {
  return format_text(translated("at %d, %d"), part.offset.x, part.offset.y);
}

std::string size_text(const FramePart& part, Extent canvas) {
  const std::string size = format_text("%u x %u", part.width, part.height);
  return is_whole(part, canvas) ? size : size + ' ' + place_text(part);
}

const char* dispose_text(std::uint32_t dispose) {
  static constexpr const char* texts[] = {"", "dispose background", "dispose previous"};
  return translated(texts[std::min<std::uint32_t>(dispose, 2)]);
}

const char* colors_text(const Picture& picture) {
  switch (picture.bits()) {
    case 1:
      return translated("2 colors");
    case 4:
      return translated("16 colors");
    case 8:
      return translated("256 colors");
    default:
      return picture.bits() == 32 ? translated("true color with alpha") : translated("true color");
  }
}

/// An image of an MNG tells its size and colors in its description.
ChunkFacts of_mng_image(const EntryPlace& place, const FramePart& part) {
  const ChunkRecord& record = place.record();
  const std::uint32_t ms = frame_delay_ms(record, DocumentKind::MING, ticks_per_second(place.window.list));
  const Extent canvas = document_size(place.window.list, place.window.document);
  const bool told = !is_whole(part, canvas);
  return {joined_facts({grouped(ms) + " ms", told ? place_text(part) : std::string(),
                        clears_canvas(record) ? translated("clears the canvas") : "",
                        picture_of(record).bits() == 32 ? translated("with alpha") : ""}),
          {}};
}

/// "3 times", "for ever".
std::string times_text(const EntryPlace& place, const char* field) {
  const std::string count = shown_value(place.window, place.index, field, true);
  const bool number = !count.empty() && count.find_first_not_of("0123456789,") == std::string::npos;
  return number ? count + (count == "1" ? translated(" time") : translated(" times")) : count;
}

std::uint16_t be16(const ChunkRecord& record, std::size_t at) {
  return static_cast<std::uint16_t>(payload_byte(record, at) << 8 | payload_byte(record, at + 1));
}

/// A frame control that stands in a still picture's list, as its bytes have it.
FrameControl control_of(const ChunkRecord& record) {
  if (raw_payload(record).size() != 26) return record.frameControl;
  return {payload_be32(record, 0),  payload_be32(record, 4),  payload_be32(record, 8),
          payload_be32(record, 12), payload_be32(record, 16), be16(record, 20),
          be16(record, 22),         payload_byte(record, 24), payload_byte(record, 25)};
}

}  // namespace

ChunkFacts facts_of_image(const EntryPlace& place) {
  const ChunkRecord& record = place.record();
  const DocumentKind kind = place.window.document.kind;
  const Picture picture = picture_of(record);
  if (!picture) return {};
  const FramePart part{picture.width(), picture.height(), GetFrameOffset(record, kind)};
  if (kind == DocumentKind::MING) return of_mng_image(place, part);
  const Extent canvas = document_size(place.window.list, place.window.document);
  if (!is_animation(kind)) return {joined_facts({size_text(part, canvas), colors_text(picture)}), {}};
  const bool apng = kind == DocumentKind::APNG;
  const std::uint32_t dispose = apng ? record.frameControl.dispose : record.webpImage.dispose;
  // The one image of a still WebP has no time.
  const bool still = kind == DocumentKind::WEBP && place.window.list.record(0).webpHeader.frameCount == 1;
  const std::string time = still ? std::string() : grouped(frame_delay_ms(record, kind, 0)) + " ms";
  return {joined_facts({time, size_text(part, canvas), dispose_text(dispose),
                        apng && record.frameControl.blend ? translated("over") : "", colors_text(picture)}),
          {}};
}

/// The description tells the size.
ChunkFacts facts_of_frame_control(const EntryPlace& place) {
  ChunkRecord frame;
  frame.tag = tag::fcTL;
  frame.frameControl = control_of(place.record());
  const FrameControl& control = frame.frameControl;
  const FramePart part{control.frameWidth, control.frameHeight, GetFrameOffset(frame, DocumentKind::APNG)};
  return {joined_facts({grouped(frame_delay_ms(frame, DocumentKind::APNG, 0)) + " ms", size_text(part, {}),
                        dispose_text(control.dispose), control.blend ? translated("over") : ""}),
          {}};
}

ChunkFacts facts_of_stored_frame(const EntryPlace& place) {
  if (place.record().tag != tag::fdAT) return facts_of_bytes(place);
  return {joined_facts({translated("sequence ") + grouped(payload_be32(place.record(), 0)),
                        facts_of_bytes(place).text}),
          {}};
}

/// That of a delta image in an MNG is a raw chunk, whose description has no size to tell.
ChunkFacts facts_of_header(const EntryPlace& place) {
  const ChunkRecord& record = place.record();
  const bool raw = record.bitDepth == 0 && raw_payload(record).size() == 13;
  const std::uint8_t depth = raw ? payload_byte(record, 8) : record.bitDepth;
  const std::uint8_t type = raw ? payload_byte(record, 9) : record.colorType;
  std::string form;
  for (const FieldChoice& choice : color_types())
    if (choice.value == type) form = inside_sentence(choice.name);
  return {joined_facts({raw ? format_text("%u x %u", payload_be32(record, 0), payload_be32(record, 4)) : "",
                        form, counted(depth, translated("bit"), translated("bits")) + translated(" a sample"),
                        record.interlace ? translated("interlaced") : ""}),
          {}};
}

ChunkFacts facts_of_mng_header(const EntryPlace& place) {
  const ChunkRecord& record = place.record();
  return {joined_facts(
              {counted(record.ticksPerSecond, translated("tick a second"), translated("ticks a second")),
               record.frameCount ? counted(record.frameCount, translated("frame"), translated("frames")) : "",
               record.playTime && record.playTime < 0x7FFFFFFF
                   ? counted(record.playTime, translated("tick long"), translated("ticks long"))
                   : ""}),
          {}};
}

ChunkFacts facts_of_webp_header(const EntryPlace& place) {
  const WebpHeaderFields& header = place.record().webpHeader;
  if (header.frameCount <= 1) return {header.colorType == 6 ? translated("with alpha") : "", {}};
  return {joined_facts({counted(header.frameCount, translated("frame"), translated("frames")),
                        header.loopCount == 0
                            ? translated("for ever")
                            : counted(header.loopCount, translated("play"), translated("plays")),
                        header.colorType == 6 ? translated("with alpha") : ""}),
          {}};
}

ChunkFacts facts_of_animation(const EntryPlace& place) {
  const ChunkRecord& record = place.record();
  const bool raw = place.window.document.kind != DocumentKind::APNG;
  return {
      counted(raw ? payload_be32(record, 0) : record.numFrames, translated("frame"), translated("frames")),
      {}};
}

ChunkFacts facts_of_termination(const EntryPlace& place) {
  const std::string action = shown_value(place.window, place.index, "action", true);
  return {joined_facts({action, payload_byte(place.record(), 0) == 3 ? times_text(place, "iterations") : ""}),
          {}};
}

ChunkFacts facts_of_loop(const EntryPlace& place) { return {times_text(place, "count"), {}}; }

ChunkFacts facts_of_framing(const EntryPlace& place) {
  const FieldValues values = read_chunk_fields(place.window, place.index);
  const auto* delay = values.find("delay");
  const std::string mode = format_text(translated("mode %u"), payload_byte(place.record(), 0));
  if (!delay) return {mode, {}};
  const auto ticks = static_cast<std::uint64_t>(std::get<std::int64_t>(*delay));
  return {joined_facts({mode, grouped(ticks * 1000 / ticks_per_second(place.window.list)) + " ms"}), {}};
}

ChunkFacts facts_of_definition(const EntryPlace& place) {
  const ChunkRecord& record = place.record();
  if (record.size < 12) return {};
  return {format_text(translated("at %d, %d"), static_cast<int>(payload_be32(record, 4)),
                      static_cast<int>(payload_be32(record, 8))),
          {}};
}

namespace {

std::string objects_text(const EntryPlace& place) {
  const auto first = be16(place.record(), 0), last = be16(place.record(), 2);
  return first == last ? format_text(translated("object %u"), first)
                       : format_text(translated("objects %u to %u"), first, last);
}

}  // namespace

ChunkFacts facts_of_move(const EntryPlace& place) {
  const ChunkRecord& record = place.record();
  const bool by = payload_byte(record, 4) == 1;
  return {
      joined_facts({objects_text(place), format_text("%s %d, %d", by ? translated("by") : translated("to"),
                                                     static_cast<int>(payload_be32(record, 5)),
                                                     static_cast<int>(payload_be32(record, 9)))}),
      {}};
}

ChunkFacts facts_of_show(const EntryPlace& place) {
  if (place.record().size < 4) return {};
  return {joined_facts({objects_text(place), shown_value(place.window, place.index, "mode", true)}), {}};
}

}  // namespace vellum
