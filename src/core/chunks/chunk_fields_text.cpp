// Fields of tEXt, zTXt and iTXt.
#include <algorithm>

#include "base/text.h"
#include "core/chunks/chunk_field_sets.h"
#include "core/chunks/chunk_table.h"
#include "core/chunks/text_chunk.h"

namespace vellum {
namespace {

constexpr FieldChoice kKeywords[] = {
    {0, "Title"},         {1, "Author"},   {2, "Description"}, {3, "Copyright"},
    {4, "Creation Time"}, {5, "Software"}, {6, "Disclaimer"},  {7, "Warning"},
    {8, "Source"},        {9, "Comment"},  {10, "Collection"},
};

constexpr Field text_field(const char* name, const char* label, FieldLook look) {
  return {.name = name, .label = label, .type = FieldType::Text, .look = look};
}

constexpr Field keyword_field() {
  Field field = text_field("keyword", "Keyword", FieldLook::Suggestions);
  field.choices = kKeywords;
  return field;
}

constexpr ChunkField kLatin1Rows[] = {
    {keyword_field()},
    {text_field("text", "Text", FieldLook::Lines)},
    {flag_field("compressed", "Compressed")},
};
constexpr ChunkField kInternationalRows[] = {
    {keyword_field()},
    {text_field("language", "Language", FieldLook::Plain)},
    {text_field("translatedKeyword", "Translated keyword", FieldLook::Plain)},
    {text_field("text", "Text", FieldLook::Lines)},
    {flag_field("compressed", "Compressed")},
};

bool has_text(const EntryPlace& place) { return read_text_chunk(place.record()).has_value(); }

void read_texts(const EntryPlace& place, FieldValues& values) {
  const TextChunk text = read_text_chunk(place.record()).value_or(TextChunk());
  values.set("keyword", text.keyword);
  values.set("text", text.text);
  values.set("compressed", std::int64_t{text.compressed});
  if (place.record().tag != tag::iTXt) return;
  values.set("language", text.language);
  values.set("translatedKeyword", text.translatedKeyword);
}

bool is_language_tag(std::string_view text) {
  std::size_t word = 0;
  for (const char c : text) {
    const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    if (c == '-' ? word == 0 : !letter || word == 8) return false;
    word = c == '-' ? 0 : word + 1;
  }
  return text.empty() || word > 0;
}

FieldFault fault(const char* field, StringId id) {
  return {field, id, std::string(string_text(id)), false, 0};
}

std::optional<FieldFault> check_nul(const FieldValues& values, const char* name, const char* label) {
  if (values.text(name).find('\0') == std::string::npos) return std::nullopt;
  return FieldFault{name, StringId::TextHasNul, filled(StringId::TextHasNul, {label}), false,
                    values.text(name).find('\0')};
}

std::optional<FieldFault> check_keyword(const FieldValues& values) {
  const std::string& keyword = values.text("keyword");
  if (!first_beyond_latin1(keyword) && is_valid_keyword(latin1_from_utf8(keyword))) return std::nullopt;
  return fault("keyword", StringId::KeywordRule);
}

std::optional<FieldFault> check_latin1(const EntryPlace&, const FieldValues& values) {
  if (auto wrong = check_keyword(values)) return wrong;
  if (auto wrong = check_nul(values, "text", "Text")) return wrong;
  const auto beyond = first_beyond_latin1(values.text("text"));
  if (!beyond) return std::nullopt;
  FieldFault question = fault("text", StringId::Latin1Question);
  question.question = true;
  question.at = *beyond;
  return question;
}

std::optional<FieldFault> check_international(const EntryPlace&, const FieldValues& values) {
  if (auto wrong = check_keyword(values)) return wrong;
  if (!is_language_tag(values.text("language"))) return fault("language", StringId::LanguageRule);
  if (auto wrong = check_nul(values, "translatedKeyword", "Translated keyword")) return wrong;
  return check_nul(values, "text", "Text");
}

bool write_texts(Applying& applying) {
  const FieldValues& values = applying.values;
  return write_text_chunk(applying.record,
                          {values.text("keyword"), values.text("text"), values.number("compressed") != 0,
                           values.text("language"), values.text("translatedKeyword")});
}

constexpr ChunkFieldSet text_set(ChunkTag tag) {
  return {.tag = tag,
          .kinds = kChunked,
          .rows = kLatin1Rows,
          .fits = has_text,
          .read = read_texts,
          .check = check_latin1,
          .finish = write_texts};
}

constexpr ChunkFieldSet kSets[] = {
    text_set(tag::tEXt),
    text_set(tag::zTXt),
    {.tag = tag::iTXt,
     .kinds = kChunked,
     .rows = kInternationalRows,
     .fits = has_text,
     .read = read_texts,
     .check = check_international,
     .finish = write_texts},
};

}  // namespace

std::span<const ChunkFieldSet> text_field_sets() { return kSets; }

std::span<const FieldChoice> known_keywords() { return kKeywords; }

void repair_chunk_fields(FieldValues& values) {
  for (const char* name : {"text", "name"})
    if (values.find(name)) values.set(name, within_latin1(values.text(name)));
}

}  // namespace vellum
