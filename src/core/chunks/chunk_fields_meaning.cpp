// Fields of the chunks of a PNG that tell what its samples mean, or how large it is (PNG standard, third
// edition).
#include <algorithm>
#include <charconv>
#include <cmath>

#include "base/limits.h"
#include "base/text.h"
#include "core/chunks/chunk_bytes.h"
#include "core/chunks/chunk_field_sets.h"
#include "core/chunks/chunk_table.h"
#include "core/chunks/exif_orientation.h"
#include "core/chunks/text_chunk.h"
#include "image/deflate.h"
#include "image/inflate.h"

namespace vellum {
namespace {

std::string_view as_text(std::span<const std::uint8_t> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}
std::span<const std::uint8_t> as_bytes(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

template <std::size_t Bytes>
bool has_bytes(const EntryPlace& place) {
  return raw_payload(place.record()).size() == Bytes;
}

/// A number of the payload that counts in parts of a unit.
template <std::size_t At, std::size_t Bytes, int PerUnit>
FieldValue get_parts(const ChunkRecord& record) {
  return static_cast<double>(std::get<std::int64_t>(get_payload<At, Bytes, Sign::None>(record))) / PerUnit;
}
template <std::size_t At, std::size_t Bytes, int PerUnit>
void put_parts(ChunkRecord& record, const FieldValue& value) {
  put_payload_number<At, Bytes>(record, std::int64_t{std::llround(std::get<double>(value) * PerUnit)});
}
template <std::size_t At, std::size_t Bytes, int PerUnit>
constexpr ChunkField parts_field(const char* name, const char* label, double most, int decimals) {
  const Field field = {
      .name = name, .label = label, .type = FieldType::Real, .mostReal = most, .decimals = decimals};
  return {field, get_parts<At, Bytes, PerUnit>, put_parts<At, Bytes, PerUnit>};
}

// ---------------------------------------------------------------------------------------------------------
// pHYs, sRGB, cICP, cLLI, mDCV, cHRM

constexpr FieldChoice kUnits[] = {{0, "Unknown"}, {1, "Meter"}};
constexpr ChunkField kPhysicalRows[] = {
    payload_field<0, 4>(whole_field("x", "Pixels per unit across", 0, kMost31)),
    payload_field<4, 4>(whole_field("y", "Pixels per unit down", 0, kMost31)),
    payload_field<8, 1>(choice_field("unit", "Unit", kUnits)),
};

constexpr FieldChoice kIntents[] = {
    {0, "Perceptual"}, {1, "Relative colorimetric"}, {2, "Saturation"}, {3, "Absolute colorimetric"}};
constexpr ChunkField kIntentRows[] = {
    payload_field<0, 1>(choice_field("intent", "Rendering intent", kIntents))};

constexpr ChunkField kCodeRows[] = {
    payload_field<0, 1>(whole_field("primaries", "Color primaries", 0, 255)),
    payload_field<1, 1>(whole_field("transfer", "Transfer function", 0, 255)),
    payload_field<2, 1>(whole_field("matrix", "Matrix coefficients", 0, 0)),  // a PNG is RGB
    payload_field<3, 1>(flag_field("fullRange", "Full range")),
};

constexpr int kLightParts = 10'000;  // of a candela per square meter
constexpr double kMostLight = static_cast<double>(kMost31) / kLightParts;
constexpr ChunkField kLightRows[] = {
    parts_field<0, 4, kLightParts>("maximum", "Highest light level", kMostLight, 4),
    parts_field<4, 4, kLightParts>("average", "Highest frame average", kMostLight, 4),
};

constexpr int kDisplayParts = 50'000;  // a chromaticity counts in steps of 0.00002
constexpr double kMostDisplay = 65535.0 / kDisplayParts;
template <std::size_t At>
constexpr ChunkField display_field(const char* name, const char* label) {
  return parts_field<At, 2, kDisplayParts>(name, label, kMostDisplay, 5);
}
constexpr ChunkField kDisplayRows[] = {
    display_field<0>("redX", "Red x"),
    display_field<2>("redY", "Red y"),
    display_field<4>("greenX", "Green x"),
    display_field<6>("greenY", "Green y"),
    display_field<8>("blueX", "Blue x"),
    display_field<10>("blueY", "Blue y"),
    display_field<12>("whiteX", "White x"),
    display_field<14>("whiteY", "White y"),
    parts_field<16, 4, kLightParts>("maximum", "Highest luminance", kMostLight, 4),
    parts_field<20, 4, kLightParts>("minimum", "Lowest luminance", kMostLight, 4),
};

constexpr int kChromaticityParts = 100'000;
template <std::size_t At>
constexpr ChunkField chromaticity_field(const char* name, const char* label) {
  return parts_field<At, 4, kChromaticityParts>(name, label, 1.0, 5);
}
constexpr ChunkField kChromaticityRows[] = {
    chromaticity_field<0>("whiteX", "White x"),  chromaticity_field<4>("whiteY", "White y"),
    chromaticity_field<8>("redX", "Red x"),      chromaticity_field<12>("redY", "Red y"),
    chromaticity_field<16>("greenX", "Green x"), chromaticity_field<20>("greenY", "Green y"),
    chromaticity_field<24>("blueX", "Blue x"),   chromaticity_field<28>("blueY", "Blue y"),
};

/// Fractions of a whole: x and y together are at most 1, and white is not without light.
std::optional<FieldFault> check_chromaticities(const EntryPlace&, const FieldValues& values) {
  static constexpr std::pair<const char*, const char*> points[] = {
      {"whiteX", "whiteY"}, {"redX", "redY"}, {"greenX", "greenY"}, {"blueX", "blueY"}};
  for (const auto& [x, y] : points)
    if (std::llround((values.real(x) + values.real(y)) * kChromaticityParts) > kChromaticityParts)
      return fault_of(y, StringId::ChromaticityRule, {});
  if (values.real("whiteX") == 0) return fault_of("whiteX", StringId::WhiteRule, {});
  if (values.real("whiteY") == 0) return fault_of("whiteY", StringId::WhiteRule);
  return std::nullopt;
}

// ---------------------------------------------------------------------------------------------------------
// sBIT, hIST

struct SampleName {
  const char* name;
  const char* label;
};
constexpr SampleName kSampleNames[] = {
    {"grey", "Grey"}, {"red", "Red"}, {"green", "Green"}, {"blue", "Blue"}, {"alpha", "Alpha"}};

constexpr ChunkField kSignificantRows[] = {
    {whole_field("grey", "Grey bits", 1, 16)},   {whole_field("red", "Red bits", 1, 16)},
    {whole_field("green", "Green bits", 1, 16)}, {whole_field("blue", "Blue bits", 1, 16)},
    {whole_field("alpha", "Alpha bits", 1, 16)},
};

/// The samples of a color type in the order of the chunk.
std::vector<const char*> samples_of(std::uint8_t colorType) {
  std::vector<const char*> names;
  for (const SampleName& sample : kSampleNames) {
    const std::string_view name = sample.name;
    const bool grey = colorType % 4 == 0;
    if (name == "alpha" ? colorType >= 4 : grey == (name == "grey")) names.push_back(sample.name);
  }
  return names;
}

bool has_sample_bits(const EntryPlace& place) {
  const auto header = ruling_header(place);
  return header && raw_payload(place.record()).size() == samples_of(header->colorType).size();
}

void adapt_sample_bits(const EntryPlace& place, std::vector<Field>& fields) {
  const PngHeader header = ruling_header(place).value_or(PngHeader());
  const auto names = samples_of(header.colorType);
  std::erase_if(fields, [&](const Field& field) {
    return std::ranges::find(names, std::string_view(field.name)) == names.end();
  });
  for (Field& field : fields) field.most = header.colorType == 3 ? 8 : header.bitDepth;
}

void read_sample_bits(const EntryPlace& place, FieldValues& values) {
  const PngHeader header = ruling_header(place).value_or(PngHeader());
  const std::int64_t most = header.colorType == 3 ? 8 : header.bitDepth;
  std::size_t i = 0;
  for (const char* name : samples_of(header.colorType))
    values.set(name, std::clamp<std::int64_t>(payload_byte(place.record(), i++), 1, most));
}

bool finish_sample_bits(Applying& applying) {
  const PngHeader header = ruling_header({applying.window, applying.index}).value_or(PngHeader());
  std::vector<std::uint8_t> payload;
  for (const char* name : samples_of(header.colorType))
    payload.push_back(static_cast<std::uint8_t>(applying.values.number(name)));
  return put_payload(applying.record, payload);
}

/// Numbers with blanks, commas or line ends between; nothing where anything else stands among them.
std::optional<std::vector<std::uint32_t>> numbers_of(std::string_view text, std::uint32_t most) {
  std::vector<std::uint32_t> numbers;
  while (true) {
    text.remove_prefix(std::min(text.find_first_not_of(" ,\t\n"), text.size()));
    if (text.empty()) return numbers;
    std::uint32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || value > most) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    numbers.push_back(value);
  }
}

constexpr ChunkField kHistogramRows[] = {
    {{.name = "frequencies", .label = "Frequencies", .type = FieldType::Text, .look = FieldLook::Lines}}};

bool has_histogram(const EntryPlace& place) {
  const std::size_t size = raw_payload(place.record()).size();
  return size > 0 && size <= 512 && size % 2 == 0;
}

void read_histogram(const EntryPlace& place, FieldValues& values) {
  const auto payload = raw_payload(place.record());
  std::string text;
  for (std::size_t i = 0; i < payload.size(); i += 2)
    text.append(i == 0 ? "" : " ").append(std::to_string(read_be16(&payload[i])));
  values.set("frequencies", text);
}

std::optional<FieldFault> check_histogram(const EntryPlace& place, const FieldValues& values) {
  Palette palette;
  const std::uint32_t colors = chunk_find_palette(place.window.list, palette);
  const auto numbers = numbers_of(values.text("frequencies"), 65535);
  if (numbers && numbers->size() == colors) return std::nullopt;
  return fault_of("frequencies", StringId::HistogramRule, {std::to_string(colors)});
}

bool finish_histogram(Applying& applying) {
  std::vector<std::uint8_t> payload;
  const auto numbers = numbers_of(applying.values.text("frequencies"), 65535);
  if (!numbers) return false;
  for (const std::uint32_t number : *numbers) {
    payload.push_back(static_cast<std::uint8_t>(number >> 8));
    payload.push_back(static_cast<std::uint8_t>(number));
  }
  return put_payload(applying.record, payload);
}

// ---------------------------------------------------------------------------------------------------------
// sPLT: name, NUL, depth, rows of red, green, blue, alpha and frequency

constexpr FieldChoice kPaletteDepths[] = {{8, "8"}, {16, "16"}};
constexpr ChunkField kSuggestedRows[] = {
    {{.name = "name", .label = "Name", .type = FieldType::Text, .most = 79}},
    {choice_field("depth", "Bits", kPaletteDepths)},
    {{.name = "colors",
      .label = "Colors",
      .type = FieldType::Text,
      .look = FieldLook::Lines,
      .tip = "A line each: red, green, blue, alpha, how often it is used"}},
};
constexpr std::size_t kColorNumbers = 5;

struct Suggested {
  std::string_view name;
  unsigned depth = 8;
  std::span<const std::uint8_t> colors;
};

std::optional<Suggested> suggested_of(const ChunkRecord& record) {
  const auto payload = raw_payload(record);
  const std::string_view name = as_text(payload).substr(0, as_text(payload).find('\0'));
  if (name.size() + 2 > payload.size()) return std::nullopt;
  const Suggested parts{name, payload[name.size() + 1], payload.subspan(name.size() + 2)};
  if ((parts.depth != 8 && parts.depth != 16) || parts.colors.size() % (parts.depth == 8 ? 6 : 10) != 0)
    return std::nullopt;
  return parts;
}

bool has_suggested(const EntryPlace& place) { return suggested_of(place.record()).has_value(); }

void read_suggested(const EntryPlace& place, FieldValues& values) {
  const Suggested parts = suggested_of(place.record()).value_or(Suggested());
  std::string text;
  for (std::size_t at = 0, column = 0; at < parts.colors.size(); column = (column + 1) % kColorNumbers) {
    const bool wide = parts.depth == 16 || column == kColorNumbers - 1;
    text += std::to_string(wide ? read_be16(&parts.colors[at]) : parts.colors[at]);
    text += column == kColorNumbers - 1 ? '\n' : ' ';
    at += wide ? 2 : 1;
  }
  values.set("name", utf8_from_latin1(parts.name));
  values.set("depth", std::int64_t{parts.depth});
  values.set("colors", text);
}

std::optional<FieldFault> check_name(const FieldValues& values) {
  const std::string& name = values.text("name");
  if (!first_beyond_latin1(name) && is_valid_keyword(latin1_from_utf8(name))) return std::nullopt;
  return fault_of("name", StringId::KeywordRule, {});
}

std::optional<FieldFault> check_suggested(const EntryPlace&, const FieldValues& values) {
  if (auto wrong = check_name(values)) return wrong;
  const std::uint32_t most = values.number("depth") == 8 ? 255 : 65535;
  const auto numbers = numbers_of(values.text("colors"), 65535);
  bool good = numbers && numbers->size() % kColorNumbers == 0;
  for (std::size_t i = 0; good && i < numbers->size(); ++i)
    good = i % kColorNumbers == kColorNumbers - 1 || (*numbers)[i] <= most;
  if (good) return std::nullopt;
  return fault_of("colors", StringId::SuggestedRule, {std::to_string(most)});
}

bool finish_suggested(Applying& applying) {
  const std::string name = latin1_from_utf8(applying.values.text("name"));
  const bool deep = applying.values.number("depth") == 16;
  std::vector<std::uint8_t> payload(name.begin(), name.end());
  payload.insert(payload.end(), {0, static_cast<std::uint8_t>(deep ? 16 : 8)});
  std::size_t column = 0;
  const auto numbers = numbers_of(applying.values.text("colors"), 65535);
  if (!numbers) return false;
  for (const std::uint32_t number : *numbers) {
    if (deep || column == kColorNumbers - 1) payload.push_back(static_cast<std::uint8_t>(number >> 8));
    payload.push_back(static_cast<std::uint8_t>(number));
    column = (column + 1) % kColorNumbers;
  }
  return put_payload(applying.record, payload);
}

// ---------------------------------------------------------------------------------------------------------
// iCCP: name, NUL, method 0, the profile deflated

constexpr ChunkField kProfileRows[] = {
    {{.name = "name", .label = "Name", .type = FieldType::Text, .most = 79}},
    {{.name = "profile", .label = "Profile", .type = FieldType::Text, .look = FieldLook::Bytes}},
};

std::optional<std::string> profile_of(const ChunkRecord& record) {
  const auto payload = raw_payload(record);
  const std::size_t name = as_text(payload).find('\0');
  if (name == std::string_view::npos || name + 2 > payload.size()) return std::nullopt;
  if (name + 2 == payload.size()) return std::string();  // one that has to be given yet
  bool over_limit = false;
  return inflate_text(payload.subspan(name + 2), kMaximumTextBytes, over_limit);
}

bool has_profile(const EntryPlace& place) { return profile_of(place.record()).has_value(); }

void read_profile(const EntryPlace& place, FieldValues& values) {
  const std::string_view payload = as_text(raw_payload(place.record()));
  values.set("name", utf8_from_latin1(payload.substr(0, payload.find('\0'))));
  values.set("profile", bytes_text(as_bytes(profile_of(place.record()).value_or(""))));
}

/// ICC.1:2022, 7.2: 128 bytes of header, the color space at 16, "acsp" at 36.
std::optional<FieldFault> check_profile(const EntryPlace& place, const FieldValues& values) {
  if (auto wrong = check_name(values)) return wrong;
  std::string reason;
  const auto profile = parse_bytes(values.text("profile"), reason);
  if (!profile) return fault_of("profile", StringId::ProfileRule, {reason});
  if (profile->size() < 132 || as_text(*profile).substr(36, 4) != "acsp")
    return fault_of("profile", StringId::ProfileRule, {std::string(string_text(StringId::NoProfile))});
  const auto header = ruling_header(place);
  const std::string_view space = as_text(*profile).substr(16, 4);
  const std::string_view wanted = header && header->colorType % 4 == 0 ? "GRAY" : "RGB ";
  if (!header || space == wanted) return std::nullopt;
  return fault_of("profile", StringId::ProfileSpace, {std::string(trimmed(wanted))});
}

bool finish_profile(Applying& applying) {
  std::string reason;
  const auto profile = parse_bytes(applying.values.text("profile"), reason);
  if (!profile) return false;
  constexpr int kLevel = 9;
  const std::string name = latin1_from_utf8(applying.values.text("name"));
  std::vector<std::uint8_t> payload(name.begin(), name.end());
  payload.resize(payload.size() + 2);
  const auto packed = deflate_bytes(*profile, kLevel);
  payload.insert(payload.end(), packed.begin(), packed.end());
  return put_payload(applying.record, payload);
}

// ---------------------------------------------------------------------------------------------------------
// eXIf: the orientation among what a camera told

constexpr FieldChoice kOrientations[] = {
    {0, "Not told"},
    {1, "Upright"},
    {2, "Mirrored"},
    {3, "Upside down"},
    {4, "Mirrored, upside down"},
    {5, "Mirrored, turned left"},
    {6, "Turned right"},
    {7, "Mirrored, turned right"},
    {8, "Turned left"},
};
constexpr ChunkField kExifRows[] = {{choice_field("orientation", "Orientation", kOrientations)}};

bool has_directory(const EntryPlace& place) {
  return exif_orientation(raw_payload(place.record())).has_value();
}

/// One that is told can't be taken back.
void adapt_exif(const EntryPlace& place, std::vector<Field>& fields) {
  if (exif_orientation(raw_payload(place.record())).value_or(0) != 0)
    fields.front().choices = fields.front().choices.subspan(1);
}

void read_exif(const EntryPlace& place, FieldValues& values) {
  values.set("orientation", std::int64_t{exif_orientation(raw_payload(place.record())).value_or(0)});
}

bool finish_exif(Applying& applying) {
  const auto value = static_cast<std::uint16_t>(applying.values.number("orientation"));
  return put_payload(applying.record, with_exif_orientation(raw_payload(applying.record), value));
}

constexpr ChunkFieldSet kSets[] = {
    {.tag = tag::pHYs, .kinds = kChunked, .rows = kPhysicalRows, .fits = has_bytes<9>},
    {.tag = tag::sRGB, .kinds = kChunked, .rows = kIntentRows, .fits = has_bytes<1>},
    {.tag = tag::cICP, .kinds = kChunked, .rows = kCodeRows, .fits = has_bytes<4>},
    {.tag = tag::cLLI, .kinds = kChunked, .rows = kLightRows, .fits = has_bytes<8>},
    {.tag = tag::mDCV, .kinds = kChunked, .rows = kDisplayRows, .fits = has_bytes<24>},
    {.tag = tag::cHRM,
     .kinds = kChunked,
     .rows = kChromaticityRows,
     .fits = has_bytes<32>,
     .check = check_chromaticities},
    {.tag = tag::sBIT,
     .kinds = kPng,
     .rows = kSignificantRows,
     .fits = has_sample_bits,
     .adapt = adapt_sample_bits,
     .read = read_sample_bits,
     .finish = finish_sample_bits},
    {.tag = tag::hIST,
     .kinds = kPng,
     .rows = kHistogramRows,
     .fits = has_histogram,
     .read = read_histogram,
     .check = check_histogram,
     .finish = finish_histogram},
    {.tag = tag::sPLT,
     .kinds = kChunked,
     .rows = kSuggestedRows,
     .fits = has_suggested,
     .read = read_suggested,
     .check = check_suggested,
     .finish = finish_suggested},
    {.tag = tag::iCCP,
     .kinds = kChunked,
     .rows = kProfileRows,
     .fits = has_profile,
     .read = read_profile,
     .check = check_profile,
     .finish = finish_profile},
    {.tag = tag::eXIf,
     .kinds = kChunked,
     .rows = kExifRows,
     .fits = has_directory,
     .adapt = adapt_exif,
     .read = read_exif,
     .finish = finish_exif},
};

}  // namespace

std::span<const ChunkFieldSet> meaning_field_sets() { return kSets; }

}  // namespace vellum
