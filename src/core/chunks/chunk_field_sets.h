// The tables behind chunk_fields.h: for each tag its fields, where they lie in the record, and what setting
// them brings along.
#pragma once

#include "base/byte_order.h"
#include "core/chunks/chunk_fields.h"

namespace vellum {

/// An entry that is looked at.
struct EntryPlace {
  const DocumentWindow& window;
  std::size_t index;
  const ChunkRecord& record() const { return window.list.record(index); }
};

/// Values that are being put into an entry.
struct Applying {
  DocumentWindow& window;
  std::size_t index;
  const FieldValues &before, &values;
  ChunkRecord& record;  ///< prepared; becomes the entry when all went well
  Host& host;

  bool changed(std::string_view name) const;
};

/// A field and where it lies. Null `get` and `put`: the set reads and writes it.
struct ChunkField {
  Field field;
  FieldValue (*get)(const ChunkRecord& prepared) = nullptr;
  void (*put)(ChunkRecord& prepared, const FieldValue& value) = nullptr;
};

/// The fields of a tag in documents of some kinds. Functions may be null.
struct ChunkFieldSet {
  ChunkTag tag = 0;
  std::span<const DocumentKind> kinds = {};
  std::span<const ChunkField> rows = {};
  /// Whether the payload is laid out so that the fields can be found.
  bool (*fits)(const EntryPlace& place) = nullptr;
  /// Makes room for every field: fields are read from, and put into, a record that was prepared.
  void (*prepare)(ChunkRecord& record) = nullptr;
  /// Takes fields out and sets ranges as the document wants them.
  void (*adapt)(const EntryPlace& place, std::vector<Field>& fields) = nullptr;
  void (*read)(const EntryPlace& place, FieldValues& values) = nullptr;
  /// Beyond the ranges of single fields.
  std::optional<FieldFault> (*check)(const EntryPlace& place, const FieldValues& values) = nullptr;
  /// Turns the prepared record with its new values into the entry, and sees to other entries.
  bool (*finish)(Applying& applying) = nullptr;
};

std::span<const ChunkFieldSet> png_field_sets();
std::span<const ChunkFieldSet> meaning_field_sets();
std::span<const ChunkFieldSet> text_field_sets();
std::span<const ChunkFieldSet> mng_field_sets();
std::span<const ChunkFieldSet> framing_field_sets();
std::span<const ChunkFieldSet> webp_field_sets();
/// All of them.
std::array<std::span<const ChunkFieldSet>, 6> all_field_sets();

inline constexpr DocumentKind kPng[] = {DocumentKind::PING, DocumentKind::APNG};
inline constexpr DocumentKind kApng[] = {DocumentKind::APNG};
inline constexpr DocumentKind kMng[] = {DocumentKind::MING};
inline constexpr DocumentKind kWebp[] = {DocumentKind::WEBP};
inline constexpr DocumentKind kChunked[] = {DocumentKind::PING, DocumentKind::APNG, DocumentKind::MING};

inline constexpr std::int64_t kMost31 = 0x7FFFFFFF;  // a number of PNG and MNG: 31 bits
inline constexpr std::int64_t kLeastSigned = -0x80000000LL;

constexpr Field whole_field(const char* name, const char* label, std::int64_t least, std::int64_t most) {
  return {.name = name, .label = label, .least = least, .most = most};
}
constexpr Field flag_field(const char* name, const char* label) {
  return {.name = name, .label = label, .type = FieldType::Flag};
}
constexpr Field choice_field(const char* name, const char* label, std::span<const FieldChoice> choices) {
  return {.name = name, .label = label, .type = FieldType::Choice, .choices = choices};
}
constexpr Field shown_field(const char* name, const char* label) {
  return {.name = name, .label = label, .most = 0xFFFFFFFF, .locked = true};
}
constexpr Field special_field(Field field, std::int64_t value, const char* word) {
  field.specialValue = value;
  field.special = word;
  return field;
}
constexpr Field enabled_by(Field field, const char* by, std::int64_t at = -1) {
  field.enabledBy = by;
  field.enabledAt = at;
  return field;
}

/// A number that is a member of the record, reached through members of members.
template <auto... Path>
FieldValue get_member(const ChunkRecord& record) {
  return static_cast<std::int64_t>((record.*....*Path));
}
template <auto... Path>
void put_member(ChunkRecord& record, const FieldValue& value) {
  auto& member = (record.*....*Path);
  member = static_cast<std::remove_reference_t<decltype(member)>>(std::get<std::int64_t>(value));
}
template <auto... Path>
constexpr ChunkField member_field(Field field) {
  return {field, get_member<Path...>, put_member<Path...>};
}

enum class Sign { None, Signed };

/// A big-endian number of the payload.
template <std::size_t At, std::size_t Bytes, Sign Signed>
FieldValue get_payload(const ChunkRecord& record) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < Bytes; ++i) value = value << 8 | payload_byte(record, At + i);
  if constexpr (Signed == Sign::Signed) return std::int64_t{static_cast<std::int32_t>(value)};
  return std::int64_t{value};
}
template <std::size_t At, std::size_t Bytes>
void put_payload_number(ChunkRecord& record, const FieldValue& value) {
  std::uint8_t* bytes = record.data.edit();
  if (!bytes || record.data.size() < At + Bytes) return;
  const auto number = static_cast<std::uint32_t>(std::get<std::int64_t>(value));
  for (std::size_t i = 0; i < Bytes; ++i)
    bytes[At + i] = static_cast<std::uint8_t>(number >> (8 * (Bytes - 1 - i)));
}
template <std::size_t At, std::size_t Bytes, Sign Signed = Sign::None>
constexpr ChunkField payload_field(Field field) {
  return {field, get_payload<At, Bytes, Signed>, put_payload_number<At, Bytes>};
}

/// Zeros behind a payload that is shorter than this.
template <std::size_t Bytes>
void lengthen_payload(ChunkRecord& record) {
  const auto payload = raw_payload(record);
  std::vector<std::uint8_t> bytes(payload.begin(), payload.end());
  if (bytes.size() < Bytes) bytes.resize(Bytes);
  put_payload(record, bytes);
}
/// Cuts the payload; false when memory is exhausted.
bool cut_payload(ChunkRecord& record, std::size_t bytes);

// ---------------------------------------------------------------------------------------------------------
// what several sets need

/// The header that rules a bKGD or tRNS.
std::optional<PngHeader> ruling_header(const EntryPlace& place);
std::size_t first_image(const DocumentWindow& window);
bool has_images(const DocumentWindow& window);
/// How many colors the document lets an indexed image use.
std::uint32_t usable_colors(const DocumentWindow& window, const ChunkRecord& image);
/// The canvas that all frames need; 0 x 0 without frames.
Extent frames_extent(const DocumentWindow& window);
/// Pads the first image to the right and below, so that the canvas has this size: transparent at 32 bits,
/// with the background color otherwise.
bool enlarge_first_image(DocumentWindow& window, Extent size);
/// "The header must hold all frames", where width or height don't.
std::optional<FieldFault> check_holds_frames(const DocumentWindow& window, std::int64_t width,
                                             std::int64_t height, const char* widthName,
                                             const char* heightName);
/// The same for a header's set: enlarges the first image where the box is checked and the size is larger.
bool apply_canvas_size(Applying& applying, const char* widthName, const char* heightName);

constexpr Field kEnlargeField = {
    .name = "enlarge",
    .label = "Enlarge the first image to this size",
    .type = FieldType::Flag,
    .option = true,
};
/// Takes the box out where there is no image to enlarge.
void adapt_enlarge(const EntryPlace& place, std::vector<Field>& fields);

/// Layer, frame and play counts of an MNG's header, and its profile, become unknown (0).
void forget_mng_counts(DocumentWindow& window);

void remove_field(std::vector<Field>& fields, std::string_view name);
Field* edit_field(std::vector<Field>& fields, std::string_view name);

}  // namespace vellum
