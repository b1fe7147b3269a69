#include "core/edit/new_document_fields.h"

#include <algorithm>

#include "core/chunks/chunk_field_sets.h"
#include "core/model/kind_table.h"
#include "core/settings.h"

namespace vellum {
namespace {

constexpr std::int64_t kMostPixels = 1'000'000;

void add_png_fields(std::vector<Field>& fields, DocumentKind kind) {
  fields.push_back(choice_field("colorType", "Color type", color_types()));
  fields.push_back(choice_field("bitDepth", "Bits", bit_depths(kind, 2)));
  fields.push_back(flag_field("interlace", "Interlaced"));
  if (kind == DocumentKind::APNG)
    fields.push_back(special_field(whole_field("plays", "Plays", 0, kMost31), 0, "For ever"));
}

void add_mng_fields(std::vector<Field>& fields) {
  fields.push_back(whole_field("ticks", "Ticks per second", 1, kMost31));
  fields.push_back(flag_field("loop", "Loop for ever"));
}

void add_webp_fields(std::vector<Field>& fields) {
  fields.push_back(special_field(whole_field("plays", "Loops", 0, 65535), 0, "For ever"));
  fields.push_back(
      {.name = "background", .label = "Background color", .type = FieldType::Color, .most = 0xFFFFFF});
}

/// The number of a field; what there is now without that field.
template <class Number>
void take(const FieldValues& values, const char* name, Number& number) {
  if (values.find(name)) number = static_cast<Number>(values.number(name));
}

}  // namespace

std::vector<Field> new_document_fields(DocumentKind kind) {
  const std::int64_t most = std::min(kind_row(kind).mostPixels, kMostPixels);
  std::vector<Field> fields = {whole_field("width", "Width", 1, most),
                               whole_field("height", "Height", 1, most)};
  if (kind == DocumentKind::PING || kind == DocumentKind::APNG) add_png_fields(fields, kind);
  if (kind == DocumentKind::MING) add_mng_fields(fields);
  if (kind == DocumentKind::WEBP) add_webp_fields(fields);
  return fields;
}

FieldValues new_document_values(const NewDocument& parameters) {
  FieldValues values;
  const std::pair<const char*, std::int64_t> numbers[] = {
      {"width", parameters.width},          {"height", parameters.height},
      {"colorType", parameters.colorType},  {"bitDepth", parameters.bitDepth},
      {"interlace", parameters.interlaced}, {"plays", parameters.plays},
      {"ticks", parameters.ticks},          {"loop", parameters.plays == 0},
      {"background", parameters.background}};
  for (const auto& [name, number] : numbers) values.set(name, number);
  return values;
}

NewDocument new_document_of(const FieldValues& values, NewDocument parameters) {
  take(values, "width", parameters.width);
  take(values, "height", parameters.height);
  take(values, "colorType", parameters.colorType);
  take(values, "bitDepth", parameters.bitDepth);
  take(values, "interlace", parameters.interlaced);
  take(values, "plays", parameters.plays);
  take(values, "ticks", parameters.ticks);
  take(values, "background", parameters.background);
  if (values.find("loop")) parameters.plays = values.number("loop") != 0 ? 0 : 1;
  return parameters;
}

void keep_new_document(const NewDocument& parameters) {
  settings::DefaultWidth = static_cast<int>(parameters.width);
  settings::DefaultDepth = static_cast<int>(parameters.height);
  if (parameters.kind == DocumentKind::PING || parameters.kind == DocumentKind::APNG)
    settings::InterlacedImage = parameters.interlaced ? 1 : 0;
}

}  // namespace vellum
