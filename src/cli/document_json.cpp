#include "cli/document_json.h"

#include <nlohmann/json.hpp>

#include "base/text.h"
#include "core/chunks/chunk_fields.h"
#include "core/model/chunk_description.h"
#include "core/model/frame_values.h"

namespace vellum::cli {
namespace {

using Json = nlohmann::ordered_json;

/// "dispose" and "blend" as the animated PNG names them.
const char* dispose_name(std::uint32_t dispose) {
  static constexpr const char* names[] = {"none", "background", "previous"};
  return names[std::min(dispose, 2u)];
}

/// A denominator of 0 means hundredths of a second (APNG extension, "fcTL").
double delay_ms(const FrameControl& control) {
  return control.delayNum * 1000.0 / (control.delayDen == 0 ? 100 : control.delayDen);
}

void put_number(Json& entry, const char* name, double value) {
  if (value == static_cast<double>(static_cast<std::int64_t>(value)))
    entry[name] = static_cast<std::int64_t>(value);
  else
    entry[name] = value;
}

void put_header(Json& entry, const ChunkRecord& record) {
  entry["width"] = record.width;
  entry["height"] = record.height;
  entry["bitDepth"] = record.bitDepth;
  entry["colorType"] = record.colorType;
  entry["interlace"] = record.interlace;
}

void put_animation_control(Json& entry, const ChunkRecord& record) {
  entry["numFrames"] = record.numFrames;
  entry["numPlays"] = record.numPlays;
}

void put_mng_header(Json& entry, const ChunkRecord& record) {
  entry["width"] = record.frameWidth;
  entry["height"] = record.frameHeight;
  entry["ticksPerSecond"] = record.ticksPerSecond;
  entry["layerCount"] = record.layerCount;
  entry["frameCount"] = record.frameCount;
  entry["playTime"] = record.playTime;
  entry["simplicityProfile"] = record.simplicityProfile;
}

/// How often a loop runs its body; 2147483647 means for ever (MNG 1.0, "LOOP").
void put_loop(Json& entry, const ChunkRecord& record) {
  entry["level"] = payload_byte(record, 0);
  entry["loopCount"] = payload_be32(record, 1);
}

/// Ticks to a second of an MNG.
std::uint32_t ticks_of(const ChunkList& list) {
  const std::size_t header = chunk_find_first(list, tag::MHDR);
  return header == kNoEntry ? 1000 : list.record(header).ticksPerSecond;
}

void put_webp_header(Json& entry, const ChunkRecord& record) {
  entry["width"] = record.webpHeader.canvasWidth;
  entry["height"] = record.webpHeader.canvasHeight;
  entry["loopCount"] = record.webpHeader.loopCount;
  entry["frameCount"] = record.webpHeader.frameCount;
  entry["colorType"] = record.webpHeader.colorType;
  entry["bits"] = record.webpHeader.bitsPerPixel;
  entry["background"] =
      format_text("#%06X", swap_red_and_blue(record.webpHeader.backgroundColor) & 0xFFFFFFu);
}

/// What an image entry says of its frame, by kind.
struct FrameManner {
  double delay = 0;  ///< milliseconds
  std::uint32_t dispose = 0;
  bool over = false;
};

FrameManner manner_of(const ChunkRecord& record, DocumentKind kind, std::uint32_t ticks) {
  const FrameControl& control = record.frameControl;
  if (kind == DocumentKind::APNG) return {delay_ms(control), control.dispose, control.blend == 1};
  if (kind == DocumentKind::WEBP)
    return {static_cast<double>(record.webpImage.delay), record.webpImage.dispose, false};
  if (kind == DocumentKind::MING) {
    const bool clears = (record.flags & CRF_FRAM) && record.image->framBlock.framingMode >= 3;
    return {static_cast<double>(frame_delay_ms(record, kind, ticks)), clears ? 1u : 0u, true};
  }
  return {};
}

void put_image(Json& entry, const ChunkRecord& record, DocumentKind kind, std::uint32_t ticks) {
  const Picture picture = picture_of(record);
  if (!picture) return;
  const FrameOffset offset = GetFrameOffset(record, kind);
  const FrameManner manner = manner_of(record, kind, ticks);
  entry["width"] = picture.width();
  entry["height"] = picture.height();
  entry["x"] = offset.x;
  entry["y"] = offset.y;
  put_number(entry, "delay_ms", manner.delay);
  entry["dispose"] = dispose_name(manner.dispose);
  entry["blend"] = manner.over ? "over" : "source";
  entry["bits"] = picture.bits();
}

/// Without the blanks that set the columns of the window apart.
std::string stripped(const std::string& text) {
  const auto first = text.find_first_not_of(' ');
  return first == std::string::npos ? std::string() : text.substr(first);
}

/// A value in the form that JSON has for it; what can be typed for others.
Json value_json(const Field& field, const FieldValue& value) {
  const auto* number = std::get_if<std::int64_t>(&value);
  if (number && field.type == FieldType::Flag) return *number != 0;
  if (number && field.type == FieldType::Whole && field.look != FieldLook::Bits) return *number;
  if (const auto* real = std::get_if<double>(&value)) return *real;
  const std::string text = field_value_text(field, value);
  if (number && text == std::to_string(*number)) return *number;  // a choice among numbers
  return text;
}

/// What `vellum edit --set-field` sets, under the same names.
Json fields_json(const DocumentWindow& window, std::size_t index) {
  Json json = Json::object();
  const FieldValues values = read_chunk_fields(window, index);
  const std::vector<Field> fields = chunk_fields(window, index);
  for (const Field& field : fields) {
    if (field.option || field.locked || !field_enabled(fields, field, values)) continue;
    if (const FieldValue* value = values.find(field.name)) json[field.name] = value_json(field, *value);
  }
  if (const auto data = chunk_data_text(window, index)) json["data"] = *data;
  return json;
}

Json entry_json(const DocumentWindow& window, std::size_t index, std::uint32_t ticks) {
  const ChunkRecord& record = window.list.record(index);
  const auto parting = record.description.find('?');
  Json entry;
  entry["index"] = index + 1;
  entry["tag"] = tag_letters(record.tag);
  entry["size"] = record.size;
  entry["label"] = record.description.substr(0, parting);
  entry["text"] =
      parting == std::string::npos ? std::string() : stripped(record.description.substr(parting + 1));
  if (record.tag == tag::IHDR) put_header(entry, record);
  if (record.tag == tag::MHDR) put_mng_header(entry, record);
  if (record.tag == tag::LOOP) put_loop(entry, record);
  if (record.tag == tag::WEBH) put_webp_header(entry, record);
  if (record.tag == tag::acTL) put_animation_control(entry, record);
  if (is_image_entry(window.document.kind, record.tag)) put_image(entry, record, window.document.kind, ticks);
  entry["fields"] = fields_json(window, index);
  return entry;
}

}  // namespace

std::string document_json(const DocumentWindow& window) {
  const Extent size = document_size(window.list, window.document);
  Json document;
  document["kind"] = kind_letters(window.document.kind);
  document["width"] = size.width;
  document["height"] = size.height;
  if (const Picture image(window.document.defaultImage); image)
    document["defaultImage"] = {{"width", image.width()}, {"height", image.height()}, {"bits", image.bits()}};
  document["notes"] = window.document.notes;
  document["entries"] = Json::array();
  const std::uint32_t ticks = ticks_of(window.list);
  for (std::size_t i = 0; i < window.list.size(); ++i)
    document["entries"].push_back(entry_json(window, i, ticks));
  return document.dump(2, ' ', false, Json::error_handler_t::replace);
}

}  // namespace vellum::cli
