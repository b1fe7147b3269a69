// Black and white, grey scale, palette color, true color without and with alpha, as rows.
#include <algorithm>
#include <charconv>

#include "base/text.h"
#include "base/translation.h"
#include "core/edit/insert_chunk.h"
#include "core/settings.h"
#include "image/builtin_palette.h"
#include "image/load_palette.h"
#include "operations/convert_colors.h"
#include "operations/dither.h"
#include "operations/operation_rows.h"
#include "operations/reconstruct.h"

namespace vellum {
namespace {

constexpr std::uint32_t kMostColors = 256;

/// What the values say; nothing after the reason was told.
using ConversionOf = std::optional<ColorConversion>(const FieldValues&, const DocumentWindow&, Host&);

template <ConversionOf conversion_of>
bool run(OperationRun& run) {
  const auto conversion = conversion_of(run.values, run.draft, run.host);
  run.told = !conversion;
  return conversion && convert_colors(run.draft, *conversion, run.host);
}

template <ConversionOf conversion_of>
Picture preview_frame(const Picture& frame, const FieldValues& values, const DocumentWindow& window) {
  Host nobody;
  const auto conversion = conversion_of(values, window, nobody);
  if (!conversion || (conversion->colorType == 3 && conversion->palette.count == 0)) return {};
  return convert_picture(frame, *conversion, document_background(window.list, window.document));
}

/// What has no transparency is made of whole canvases over the background.
unsigned needs_opaque(const DocumentWindow& window, const FieldValues&, const FrameList&) {
  const bool composes = is_animation(window.document.kind) && has_transparency(window);
  return composes && !is_independent(window) ? unsigned{kTellsCanvases} : 0;
}

constexpr Operation color_row(const char* name, const char* title, const char* help, int command) {
  return {.parameters = {.name = name,
                         .title = title,
                         .help = help,
                         .command = command,
                         .kinds = kEveryKind,
                         .page = "convert"},
          .convertOption = "color",
          .result = OperationResult::NewWindow,
          .prefix = StringId::ConvertedPrefix};
}

// Black and white

constexpr Field kMonoFields[] = {{.name = "threshold",
                                  .label = "Threshold",
                                  .least = 1,
                                  .most = 254,
                                  .enabledBy = "dither",
                                  .enabledAt = 0,
                                  .tip = "Greys from here on become white",
                                  .initial = 128,
                                  .setting = &settings::ConvertMonoThreshold},
                                 kDither};

std::optional<ColorConversion> mono_of(const FieldValues& values, const DocumentWindow&, Host&) {
  return black_and_white(static_cast<int>(values.number("threshold")), values.number("dither") != 0);
}

constexpr Operation mono_row() {
  Operation row = color_row("mono", "Black and white", "Two colors, black and white", 258);
  row.preview = OperationPreview::Reduced;
  row.parameters.fields = kMonoFields;
  row.parameters.options = {&kDitherOption, 1};
  row.needs = needs_opaque;
  row.previewFrame = preview_frame<mono_of>;
  row.run = run<mono_of>;
  return row;
}

// Grey scale, true color

std::optional<ColorConversion> grey_of(const FieldValues&, const DocumentWindow& window, Host&) {
  return ColorConversion{.colorType = has_transparency(window) ? std::uint8_t{4} : std::uint8_t{0}};
}

std::optional<ColorConversion> opaque_of(const FieldValues&, const DocumentWindow&, Host&) {
  return ColorConversion{.colorType = 2};
}

std::optional<ColorConversion> alpha_of(const FieldValues&, const DocumentWindow&, Host&) {
  return ColorConversion{.colorType = 6, .alphaLevel = std::clamp(settings::InitialAlphaLevel, 0, 255)};
}

template <ConversionOf conversion_of>
constexpr Operation plain_row(Operation row) {
  row.run = run<conversion_of>;
  return row;
}

constexpr Operation opaque_row() {
  Operation row = color_row("true", "True color", "Neither a palette nor transparency", 261);
  row.needs = needs_opaque;
  return plain_row<opaque_of>(row);
}

// Palette color

enum Source { kComputed, kBuiltIn, kFile, kTable };
constexpr FieldChoice kSources[] = {{kComputed, "Computed from the images", "computed"},
                                    {kBuiltIn, "Built in", "built-in"},
                                    {kFile, "From a file", "file"},
                                    {kTable, "These colors", "table"}};
constexpr FieldChoice kBuiltInPalettes[] = {
    {0, "Black and white"}, {1, "16 colors"},  {2, "32 colors"},  {3, "64 colors"},
    {4, "128 colors"},      {5, "216 colors"}, {6, "256 colors"}, {7, "256 colors with 32 greys"},
    {8, "256 greys"},       {9, "True color"}, {10, "16 greys"},  {11, "8 greys"},
    {12, "4 greys"}};

constexpr Field text_of_source(const char* name, const char* label, Source source) {
  return {.name = name, .label = label, .type = FieldType::Text, .enabledBy = "source", .enabledAt = source};
}

constexpr Field palette_file() {
  Field field = text_of_source("file", "Palette file or picture", kFile);
  field.look = FieldLook::Path;
  return field;
}

constexpr Field flag(const char* name, const char* label, int initial, int& setting) {
  return {.name = name, .label = label, .type = FieldType::Flag, .initial = initial, .setting = &setting};
}

constexpr Field kPaletteFields[] = {
    {.name = "source", .label = "Palette", .type = FieldType::Choice, .choices = kSources},
    {.name = "colors",
     .label = "Most colors",
     .least = 2,
     .most = kMostColors,
     .enabledBy = "source",
     .enabledAt = kComputed,
     .initial = kMostColors,
     .setting = &settings::WidePaletteSize},
    {.name = "id",
     .label = "Built-in palette",
     .type = FieldType::Choice,
     .choices = kBuiltInPalettes,
     .enabledBy = "source",
     .enabledAt = kBuiltIn},
    palette_file(),
    text_of_source("table", "Colors (RRGGBB,RRGGBB,...)", kTable),
    flag("sorted", "Dark colors first", 1, settings::WidePaletteSorted),
    flag("fifteenBits", "Count at 15 bits", 0, settings::WidePaletteQ15),
    flag("sketch", "For drawings", 0, settings::WidePaletteSketch),
    flag("best", "Best colors", 0, settings::WidePaletteBest),
    kDither};

constexpr const char* kSortedFields[] = {"sorted"};
/// Unless an order is asked for, colors that all fit stay as they are, each with its transparency.
constexpr CompoundOption kPaletteOptions[] = {kDitherOption,
                                              {.name = "sorted",
                                               .form = nullptr,
                                               .help = "Dark colors first",
                                               .fields = kSortedFields,
                                               .otherwise = 0}};

/// "FF0000,00FF00"; nothing for another text.
std::optional<PaletteColors> colors_of_table(std::string_view text) {
  PaletteColors colors;
  for (std::size_t at = 0; at <= text.size(); at += 7) {
    const std::string_view part = text.substr(at, 6);
    std::uint32_t color = 0;
    const auto [end, error] = std::from_chars(part.data(), part.data() + part.size(), color, 16);
    const bool parted = at + 6 == text.size() || (at + 6 < text.size() && text[at + 6] == ',');
    if (colors.count == kMostColors || part.size() != 6 || error != std::errc() ||
        end != part.data() + part.size() || !parted)
      return std::nullopt;
    std::uint8_t* entry = &colors.palette[3 * std::size_t{colors.count++}];
    for (unsigned i = 0; i < 3; ++i) entry[i] = static_cast<std::uint8_t>(color >> (16 - 8 * i));
  }
  return colors;
}

std::optional<ColorConversion> palette_of(const FieldValues& values, const DocumentWindow&, Host& host) {
  const auto on = [&](const char* name) { return values.number(name) != 0; };
  ColorConversion conversion{.colorType = 3,
                             .most = static_cast<std::uint32_t>(values.number("colors")),
                             .method = {on("fifteenBits"), on("sketch"), on("sorted"), on("best")},
                             .dither = on("dither")};
  std::optional<PaletteColors> colors;
  switch (values.number("source")) {
    case kComputed:
      return conversion;
    case kBuiltIn:
      colors.emplace().count =
          BuiltInPalette(&colors->palette, nullptr, static_cast<int>(values.number("id")));
      if (colors->count > kMostColors) return ColorConversion{.colorType = 2};
      break;
    case kFile:
      colors = load_palette(values.text("file"), host);
      if (colors && colors->cut) host.add_note(filled(StringId::PaletteCut, {std::to_string(colors->count)}));
      break;
    default:
      colors = colors_of_table(values.text("table"));
  }
  if (!colors) return std::nullopt;
  conversion.palette = *colors;
  return conversion;
}

std::optional<FieldFault> check_palette(const FieldValues& values, const DocumentWindow&) {
  if (values.number("source") != kTable || colors_of_table(values.text("table"))) return std::nullopt;
  return fault_of("table", StringId::NoPaletteInFile);
}

const char* settle_palette(FieldValues&, const DocumentWindow&, const GivenFields& given) {
  std::size_t ways = 0;
  for (const char* name : {"colors", "id", "file", "table"}) ways += given.count(name);
  return ways == 1 ? nullptr : translated("give one of --colors, --id, --file and --table");
}

constexpr Operation palette_row() {
  Operation row = color_row("palette", "Palette color", "The colors of a palette", 260);
  row.preview = OperationPreview::Reduced;
  row.parameters.fields = kPaletteFields;
  row.parameters.options = kPaletteOptions;
  row.parameters.settle = settle_palette;
  row.parameters.check = check_palette;
  row.previewFrame = preview_frame<palette_of>;
  row.run = run<palette_of>;
  return row;
}

}  // namespace

FieldValues palette_values(std::span<const Field> fields, const PaletteColors& colors) {
  std::string table;
  for (std::uint32_t i = 0; i < colors.count; ++i) {
    const std::uint8_t* entry = &colors.palette[3 * std::size_t{i}];
    table += format_text("%s%02x%02x%02x", i > 0 ? "," : "", entry[0], entry[1], entry[2]);
  }
  FieldValues values = setting_values(fields);
  values.set("source", std::int64_t{kTable});
  values.set("table", table);
  return values;
}

constinit const Operation kToMono = mono_row();
constinit const Operation kToGrey =
    plain_row<grey_of>(color_row("grey", "Grey scale", "Brightness alone; transparency stays", 259));
constinit const Operation kToPalette = palette_row();
constinit const Operation kToTrueColor = opaque_row();
constinit const Operation kToAlpha =
    plain_row<alpha_of>(color_row("alpha", "True color with alpha", "All colors, with transparency", 262));

}  // namespace vellum
