#include "base/fields.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "base/text.h"
#include "base/translation.h"

namespace vellum {
namespace {

std::optional<std::int64_t> parse_whole(std::string_view text) {
  int base = 10;
  if (text.starts_with("0x") || text.starts_with("0X")) {
    text.remove_prefix(2);
    base = 16;
  } else if (text.starts_with('+')) {
    text.remove_prefix(1);
  }
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
  if (error != std::errc() || end != text.data() + text.size() || (base == 16 && value < 0))
    return std::nullopt;
  return value;
}

std::optional<double> parse_real(std::string_view text) {
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) return std::nullopt;
  return value;
}

std::optional<std::int64_t> parse_flag(std::string_view text) {
  static constexpr std::pair<std::string_view, int> words[] = {
      {"0", 0}, {"1", 1}, {"no", 0}, {"yes", 1}, {"off", 0}, {"on", 1}, {"false", 0}, {"true", 1}};
  for (const auto& [word, value] : words)
    if (equal_ignoring_case(word, text)) return value;
  return std::nullopt;
}

std::optional<std::int64_t> parse_choice(const Field& field, std::string_view text) {
  for (const FieldChoice& choice : field.choices)
    if (equal_ignoring_case(choice.name, text) || (*choice.word && equal_ignoring_case(choice.word, text)))
      return choice.value;
  return parse_whole(text);
}

std::uint32_t reversed_bytes(std::uint32_t value) {
  return value << 24 | (value & 0xFF00) << 8 | (value >> 8 & 0xFF00) | value >> 24;
}

/// "#RRGGBB" or "#RRGGBBAA"; the value has red in its low byte.
std::optional<std::int64_t> parse_color(std::string_view text, bool alpha) {
  if (!text.starts_with('#')) return parse_whole(text);
  text.remove_prefix(1);
  std::uint32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  if (text.size() == 6) return reversed_bytes(value << 8 | (alpha ? 0xFF : 0));
  if (text.size() == 8) return reversed_bytes(value);
  return std::nullopt;
}

std::int64_t most_of(const Field& field) { return field.type == FieldType::Flag ? 1 : field.most; }

std::optional<std::int64_t> parse_number(const Field& field, std::string_view text) {
  switch (field.type) {
    case FieldType::Flag:
      return parse_flag(text);
    case FieldType::Choice:
      return parse_choice(field, text);
    case FieldType::Color:
      return parse_color(text, field.most > 0xFFFFFF);
    default:
      if (field.special && equal_ignoring_case(field.special, text)) return field.specialValue;
      return parse_whole(text);
  }
}

const FieldChoice* choice_of(const Field& field, std::int64_t value) {
  const auto found = std::ranges::find(field.choices, value, &FieldChoice::value);
  return found == field.choices.end() ? nullptr : &*found;
}

std::string real_text(const Field& field, double value) { return format_text("%.*f", field.decimals, value); }

FieldFault range_fault(const Field& field, StringId id, std::string least, std::string most) {
  return fault_of(field.name, id, {translated(field.label), std::move(least), std::move(most)});
}

FieldFault choice_fault(const Field& field) {
  std::string names;
  for (const FieldChoice& choice : field.choices) names.append(names.empty() ? "" : ", ").append(choice.name);
  return fault_of(field.name, StringId::ChoiceRange, {translated(field.label), names});
}

std::size_t characters(std::string_view utf8) {
  return static_cast<std::size_t>(
      std::ranges::count_if(utf8, [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

std::optional<FieldFault> check_number(const Field& field, const FieldValue& value) {
  const auto* number = std::get_if<std::int64_t>(&value);
  if (field.type == FieldType::Choice)
    return number && choice_of(field, *number) ? std::nullopt : std::optional(choice_fault(field));
  if (number && *number >= field.least && *number <= most_of(field)) return std::nullopt;
  return range_fault(field, StringId::WholeRange, field_value_text(field, field.least),
                     field_value_text(field, most_of(field)));
}

std::optional<FieldFault> check_real(const Field& field, const FieldValue& value) {
  const auto* number = std::get_if<double>(&value);
  if (number && *number >= field.leastReal && *number <= field.mostReal) return std::nullopt;
  return range_fault(field, StringId::RealRange, real_text(field, field.leastReal),
                     real_text(field, field.mostReal));
}

std::optional<FieldFault> check_text(const Field& field, const FieldValue& value) {
  const auto* text = std::get_if<std::string>(&value);
  if (text && (field.most == 0 || characters(*text) <= static_cast<std::size_t>(field.most)))
    return std::nullopt;
  return FieldFault{field.name, StringId::TextTooLong,
                    filled(StringId::TextTooLong, {translated(field.label), std::to_string(field.most)}),
                    false, static_cast<std::size_t>(field.most)};
}

}  // namespace

const FieldValue* FieldValues::find(std::string_view name) const {
  const auto item = std::ranges::find(items_, name, [](const auto& i) { return std::string_view(i.first); });
  return item == items_.end() ? nullptr : &item->second;
}

void FieldValues::set(std::string_view name, FieldValue value) {
  const auto item = std::ranges::find(items_, name, [](const auto& i) { return std::string_view(i.first); });
  if (item == items_.end())
    items_.emplace_back(name, std::move(value));
  else
    item->second = std::move(value);
}

std::int64_t FieldValues::number(std::string_view name) const {
  const FieldValue* value = find(name);
  const auto* number = value ? std::get_if<std::int64_t>(value) : nullptr;
  return number ? *number : 0;
}

double FieldValues::real(std::string_view name) const {
  const FieldValue* value = find(name);
  const auto* number = value ? std::get_if<double>(value) : nullptr;
  return number ? *number : 0;
}

const std::string& FieldValues::text(std::string_view name) const {
  static const std::string none;
  const FieldValue* value = find(name);
  const auto* text = value ? std::get_if<std::string>(value) : nullptr;
  return text ? *text : none;
}

FieldFault fault_of(std::string field, StringId id, std::initializer_list<std::string> values) {
  return {std::move(field), id, filled(id, values), false, 0};
}

const Field* find_field(std::span<const Field> fields, std::string_view name) {
  const auto found =
      std::ranges::find(fields, name, [](const Field& field) { return std::string_view(field.name); });
  return found == fields.end() ? nullptr : &*found;
}

bool field_enabled(std::span<const Field> fields, const Field& field, const FieldValues& values) {
  if (!field.enabledBy) return true;
  const std::int64_t value = values.number(field.enabledBy);
  if (field.enabledAt < 0 ? value == 0 : value != field.enabledAt) return false;
  const Field* by = find_field(fields, field.enabledBy);
  return !by || field_enabled(fields, *by, values);
}

void enable_field(std::span<const Field> fields, const Field& field, FieldValues& values) {
  if (field_enabled(fields, field, values)) return;
  const std::int64_t value = values.number(field.enabledBy);
  if (field.enabledAt >= 0)
    values.set(field.enabledBy, field.enabledAt);
  else if (value == 0)
    values.set(field.enabledBy, std::int64_t{1});
  if (const Field* by = find_field(fields, field.enabledBy)) enable_field(fields, *by, values);
}

FieldValue parse_field_value(const Field& field, std::string_view text) {
  if (field.type == FieldType::Text) return std::string(text);
  const std::string_view inner = trimmed(text);
  if (field.type == FieldType::Real) {
    if (const auto value = parse_real(inner)) return *value;
  } else if (const auto value = parse_number(field, inner)) {
    return *value;
  }
  return std::string(text);
}

std::string field_value_text(const Field& field, const FieldValue& value) {
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  if (const auto* real = std::get_if<double>(&value)) return real_text(field, *real);
  const std::int64_t number = std::get<std::int64_t>(value);
  const auto unsigned_number = static_cast<std::uint32_t>(number);
  if (field.look == FieldLook::Bits) return format_text("0x%08X", unsigned_number);
  if (field.type == FieldType::Color)
    return field.most > 0xFFFFFF ? format_text("#%08X", reversed_bytes(unsigned_number))
                                 : format_text("#%06X", reversed_bytes(unsigned_number) >> 8);
  if (field.type == FieldType::Choice)
    if (const FieldChoice* choice = choice_of(field, number)) return choice->name;
  return std::to_string(number);
}

FieldValue initial_value(const Field& field) {
  if (field.type == FieldType::Text) return std::string(field.initialText);
  if (field.type == FieldType::Real) return field.initialReal;
  return field.initial;
}

FieldValues initial_values(std::span<const Field> fields) {
  FieldValues values;
  for (const Field& field : fields) values.set(field.name, initial_value(field));
  return values;
}

namespace {

/// What the setting says of a field that may be some of its bits.
std::int64_t stored_number(const Field& field) {
  if (field.settingBits == 0) return *field.setting;
  const int bits = *field.setting & field.settingBits;
  return field.type == FieldType::Flag ? bits != 0 : bits;
}

void store_number(const Field& field, std::int64_t number) {
  int bits = static_cast<int>(number);
  if (field.settingBits != 0) {
    if (field.type == FieldType::Flag && number != 0) bits = field.settingBits;
    bits = (*field.setting & ~field.settingBits) | (bits & field.settingBits);
  }
  *field.setting = bits;
}

}  // namespace

FieldValues setting_values(std::span<const Field> fields) {
  FieldValues values;
  for (const Field& field : fields) {
    FieldValue value = initial_value(field);
    if (field.setting && field.type == FieldType::Real)
      value = clamped(field, double(*field.setting));
    else if (field.setting)
      value = clamped(field, stored_number(field));
    if (field.textSetting) value = clamped(field, *field.textSetting);
    values.set(field.name, std::move(value));
  }
  return values;
}

void keep_in_settings(std::span<const Field> fields, const FieldValues& values) {
  for (const Field& field : fields) {
    if (field.setting && field.type == FieldType::Real)
      *field.setting = static_cast<int>(std::lround(values.real(field.name)));
    else if (field.setting)
      store_number(field, values.number(field.name));
    if (field.textSetting) *field.textSetting = values.text(field.name);
  }
}

FieldValue clamped(const Field& field, FieldValue value) {
  if (auto* real = std::get_if<double>(&value)) return std::clamp(*real, field.leastReal, field.mostReal);
  auto* number = std::get_if<std::int64_t>(&value);
  if (!number || field.locked) return value;
  if (field.type == FieldType::Choice)
    return choice_of(field, *number) || field.choices.empty() ? *number : field.choices.front().value;
  return std::clamp(*number, field.least, std::max(field.least, most_of(field)));
}

std::optional<FieldFault> check_field(const Field& field, const FieldValue& value) {
  if (field.type == FieldType::Text) return check_text(field, value);
  return field.type == FieldType::Real ? check_real(field, value) : check_number(field, value);
}

std::optional<FieldFault> check_fields(std::span<const Field> fields, const FieldValues& values) {
  for (const Field& field : fields) {
    const FieldValue* value = values.find(field.name);
    if (!value || field.locked || !field_enabled(fields, field, values)) continue;
    if (auto fault = check_field(field, *value)) return fault;
  }
  return std::nullopt;
}

std::string filled(StringId id, std::initializer_list<std::string> values) {
  const std::string_view format = string_text(id);
  std::string text;
  auto value = values.begin();
  for (std::size_t i = 0; i < format.size(); ++i) {
    if (format[i] != '%' || i + 1 == format.size())
      text += format[i];
    else if (format[++i] == '%')
      text += '%';
    else if (value != values.end())
      text += *value++;
  }
  return text;
}

std::string count_text(StringId one, std::uint64_t count) {
  return with_value(string_text(static_cast<int>(one) + (count == 1 ? 0 : 1)), grouped(count));
}

}  // namespace vellum
