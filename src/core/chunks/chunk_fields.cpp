#include "core/chunks/chunk_fields.h"

#include <algorithm>

#include "base/limits.h"
#include "base/text.h"
#include "base/translation.h"
#include "core/chunks/chunk_bytes.h"
#include "core/chunks/chunk_field_sets.h"
#include "core/chunks/chunk_payload.h"
#include "core/chunks/chunk_table.h"
#include "core/chunks/chunk_validity.h"
#include "core/model/chunk_description.h"

namespace vellum {
namespace {

const ChunkFieldSet* find_set(const EntryPlace& place) {
  if (place.index >= place.window.list.size()) return nullptr;
  for (const auto sets : all_field_sets())
    for (const ChunkFieldSet& set : sets)
      if (set.tag == place.record().tag &&
          std::ranges::find(set.kinds, place.window.document.kind) != set.kinds.end())
        return set.fits && !set.fits(place) ? nullptr : &set;
  return nullptr;
}

std::vector<Field> fields_of(const ChunkFieldSet& set, const EntryPlace& place) {
  std::vector<Field> fields;
  for (const ChunkField& row : set.rows) fields.push_back(row.field);
  if (set.adapt) set.adapt(place, fields);
  return fields;
}

ChunkRecord prepared(const ChunkFieldSet& set, const EntryPlace& place) {
  ChunkRecord record = place.record();
  if (set.prepare) set.prepare(record);
  return record;
}

FieldValues read_fields(const ChunkFieldSet& set, const EntryPlace& place, std::span<const Field> fields) {
  const ChunkRecord record = prepared(set, place);
  FieldValues values;
  for (const ChunkField& row : set.rows)
    if (const Field* field = find_field(fields, row.field.name); field && row.get)
      values.set(field->name, clamped(*field, row.get(record)));
  if (set.read) set.read(place, values);
  for (const Field& field : fields)
    if (field.option && !values.find(field.name)) values.set(field.name, std::int64_t{1});
  return values;
}

bool differs(const FieldValues& a, const FieldValues& b, const Field& field) {
  const FieldValue* first = a.find(field.name);
  const FieldValue* second = b.find(field.name);
  return first && second && *first != *second;
}

void put_fields(const ChunkFieldSet& set, std::span<const Field> fields, const FieldValues& values,
                ChunkRecord& record) {
  for (const ChunkField& row : set.rows) {
    const Field* field = find_field(fields, row.field.name);
    const FieldValue* value = values.find(row.field.name);
    if (field && value && row.put && !field->locked) row.put(record, *value);
  }
}

/// Chunks whose content rules how long an MNG plays.
bool rules_running_time(ChunkTag tag) {
  return tag == tag::LOOP || tag == tag::ENDL || tag == tag::TERM || tag == tag::FRAM;
}

bool put_data(DocumentWindow& window, std::size_t index, std::span<const std::uint8_t> bytes, Host& host,
              std::string& reason) {
  ChunkRecord record = window.list.record(index);
  if (!put_payload(record, bytes)) {
    reason = string_text(StringId::AllocationError);
    return false;
  }
  if (!keeps_anyway(window, index, record, host)) {
    reason = string_text(*record_fault(window, index, record));
    return false;
  }
  record.description = chunk_description(record);
  chunk_list_put(window.list, index, record);
  window.document.dirty = true;
  return true;
}

/// Chunks of unknown content; images, headers and ends are none.
bool has_free_data(const EntryPlace& place) {
  const ChunkTag tag = place.record().tag;
  const DocumentKind kind = place.window.document.kind;
  const ChunkPlace where = place_of(tag, kind);
  return where != ChunkPlace::Fixed && where != ChunkPlace::Image && !is_image_entry(kind, tag) &&
         tag != tag::PLTE;
}

bool set_data(DocumentWindow& window, std::size_t index, std::string_view text, Host& host,
              std::string& reason) {
  const auto bytes = parse_bytes(text, reason);
  return bytes && put_data(window, index, *bytes, host, reason);
}

std::string names_of(std::span<const Field> fields) {
  std::string names;
  for (const Field& field : fields) names.append(names.empty() ? "" : ", ").append(field.name);
  return names;
}

}  // namespace

std::array<std::span<const ChunkFieldSet>, 6> all_field_sets() {
  return {png_field_sets(), meaning_field_sets(), text_field_sets(),
          mng_field_sets(), framing_field_sets(), webp_field_sets()};
}

bool Applying::changed(std::string_view name) const {
  const FieldValue* now = values.find(name);
  const FieldValue* then = before.find(name);
  return now && then && *now != *then;
}

std::vector<Field> chunk_fields(const DocumentWindow& window, std::size_t index) {
  const EntryPlace place{window, index};
  const ChunkFieldSet* set = find_set(place);
  return set ? fields_of(*set, place) : std::vector<Field>();
}

FieldValues read_chunk_fields(const DocumentWindow& window, std::size_t index) {
  const EntryPlace place{window, index};
  const ChunkFieldSet* set = find_set(place);
  return set ? read_fields(*set, place, fields_of(*set, place)) : FieldValues();
}

std::optional<std::string> chunk_data_text(const DocumentWindow& window, std::size_t index) {
  const EntryPlace place{window, index};
  if (index >= window.list.size() || !chunk_fields(window, index).empty() || !has_free_data(place))
    return std::nullopt;
  return bytes_text(raw_payload(place.record()));
}

std::optional<FieldFault> check_chunk_fields(const DocumentWindow& window, std::size_t index,
                                             const FieldValues& values) {
  const EntryPlace place{window, index};
  const ChunkFieldSet* set = find_set(place);
  if (!set) return std::nullopt;
  if (auto fault = check_fields(fields_of(*set, place), values)) return fault;
  return set->check ? set->check(place, values) : std::nullopt;
}

Applied apply_chunk_fields(DocumentWindow& window, std::size_t index, const FieldValues& values, Host& host) {
  const EntryPlace place{window, index};
  const ChunkFieldSet* set = find_set(place);
  if (!set) return Applied::Failed;
  const std::vector<Field> fields = fields_of(*set, place);
  const FieldValues before = read_fields(*set, place, fields);
  if (std::ranges::none_of(fields, [&](const Field& field) {
        return !field.option && !field.locked && differs(before, values, field);
      }))
    return Applied::Same;
  ChunkRecord record = prepared(*set, place);
  put_fields(*set, fields, values, record);
  Applying applying{window, index, before, values, record, host};
  if (set->finish && !set->finish(applying)) return Applied::Failed;
  record.description = chunk_description(record);
  chunk_list_put(window.list, index, record);
  if (window.document.kind == DocumentKind::MING &&
      (rules_running_time(record.tag) || (record.tag == tag::PNGI && applying.changed("delay"))))
    forget_mng_counts(window);
  window.document.dirty = true;
  window.document.PartialRedraw = true;
  return Applied::Changed;
}

bool set_chunk_field(DocumentWindow& window, std::size_t index, std::string_view name, std::string_view text,
                     Host& host, std::string& reason) {
  if (index >= window.list.size()) {
    reason = translated("there is no entry ") + std::to_string(index + 1);
    return false;
  }
  const std::vector<Field> fields = chunk_fields(window, index);
  const std::string tag = tag_letters(window.list.record(index).tag);
  const Field* field = find_field(fields, name);
  if (!field && fields.empty() && name == "data" && has_free_data({window, index}))
    return set_data(window, index, text, host, reason);
  if (!field) {
    reason = tag + translated(" has no field ") + std::string(name);
    reason += fields.empty() ? "" : "; it has " + names_of(fields);
    return false;
  }
  if (field->locked) {
    reason = field->tip ? field->tip : filled(StringId::FieldLocked, {field->label});
    return false;
  }
  FieldValues values = read_chunk_fields(window, index);
  enable_field(fields, *field, values);
  values.set(name, parse_field_value(*field, text));
  if (const auto fault = check_chunk_fields(window, index, values)) {
    reason = fault->id == StringId::Latin1Question && name == "text"
                 ? std::string(string_text(StringId::Latin1Only))
                 : fault->text;
    return false;
  }
  if (apply_chunk_fields(window, index, values, host) != Applied::Failed) return true;
  reason = host.take_fault();
  if (reason.empty()) reason = string_text(StringId::ErrorAccessingChunk);
  return false;
}

std::optional<FieldAssignment> parse_field_assignment(std::string_view text) {
  const std::size_t dot = text.find('.');
  const std::size_t equals = text.find('=');
  if (dot == std::string_view::npos || equals == std::string_view::npos || equals <= dot + 1)
    return std::nullopt;
  const Field number{.name = "N", .least = 1, .most = static_cast<std::int64_t>(kMaximumEntries)};
  const FieldValue entry = parse_field_value(number, text.substr(0, dot));
  if (check_field(number, entry)) return std::nullopt;
  return FieldAssignment{static_cast<std::size_t>(std::get<std::int64_t>(entry) - 1),
                         std::string(text.substr(dot + 1, equals - dot - 1)),
                         std::string(text.substr(equals + 1))};
}

void remove_field(std::vector<Field>& fields, std::string_view name) {
  std::erase_if(fields, [name](const Field& field) { return field.name == name; });
}

Field* edit_field(std::vector<Field>& fields, std::string_view name) {
  const auto found =
      std::ranges::find(fields, name, [](const Field& field) { return std::string_view(field.name); });
  return found == fields.end() ? nullptr : &*found;
}

bool cut_payload(ChunkRecord& record, std::size_t bytes) {
  const auto payload = raw_payload(record);
  const std::vector<std::uint8_t> kept(
      payload.begin(), payload.begin() + static_cast<std::ptrdiff_t>(std::min(bytes, payload.size())));
  return put_payload(record, kept);
}

}  // namespace vellum
