// `vellum palette`: a document in the colors of a palette, and the palette of a document as a file.
#include <algorithm>

#include "base/fields.h"
#include "cli/command.h"
#include "cli/document_kinds.h"
#include "cli/frame_options.h"
#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "image/builtin_palette.h"
#include "image/load_palette.h"
#include "image/settings.h"
#include "operations/convert_colors.h"
#include "operations/frames.h"
#include "operations/settings.h"

namespace vellum::cli {
namespace {

struct PaletteOptions {
  std::string in, out, file, exported;
  std::optional<int> id;
  std::optional<std::uint32_t> colors;
  bool dither = false, fast = false, fifteenBits = false, sketch = false;
};

constexpr int kLastPalette = 12;
constexpr std::uint32_t kMostColors = 256;

int fail(Host& host, StringId id, const std::string& more) {
  host.show(id, {}, more);
  return kFailed;
}

/// How the options choose the colors; nothing after the reason was told.
std::optional<ColorConversion> conversion_of(const PaletteOptions& options, Host& host) {
  ColorConversion conversion{.colorType = 3, .dither = options.dither};
  conversion.most = options.colors.value_or(
      static_cast<std::uint32_t>(std::clamp(settings::WidePaletteSize, 2, static_cast<int>(kMostColors))));
  conversion.method = {options.fifteenBits || settings::WidePaletteQ15 != 0,
                       options.sketch || settings::WidePaletteSketch != 0, settings::WidePaletteSorted != 0};
  if (!options.file.empty()) {
    const auto colors = load_palette(options.file, host);
    if (!colors) return std::nullopt;
    if (colors->cut) host.add_note(filled(StringId::PaletteCut, {std::to_string(colors->count)}));
    conversion.palette = *colors;
  }
  if (!options.id) return conversion;
  const std::uint32_t count = BuiltInPalette(&conversion.palette.palette, nullptr, *options.id);
  conversion.palette.count = std::min(count, kMostColors);
  if (count > kMostColors) conversion = {.colorType = 2};
  return conversion;
}

/// The colors that the document has: its PLTE, else those that its images have or that stand for them.
PaletteColors document_palette(const DocumentWindow& window, const ColorConversion& conversion, Host& host) {
  PaletteColors colors;
  if ((colors.count = chunk_find_palette(window.list, colors.palette)) > 0) return colors;
  std::vector<Picture> pictures;
  for (const std::size_t entry : frame_entries(window))
    pictures.push_back(picture_of(window.list.record(entry)));
  return palette_from_pictures(pictures, conversion.most, &host, conversion.method);
}

int export_palette(const DocumentWindow& window, const ColorConversion& conversion,
                   const PaletteOptions& options, Host& host) {
  const PaletteColors colors = document_palette(window, conversion, host);
  std::string reason;
  if (colors.count == 0) return fail(host, StringId::NoImagesHere, options.in);
  if (!write_palette_file(options.exported, colors, reason))
    return fail(host, StringId::ErrorWritingFile, reason);
  return kDone;
}

int run_palette(const PaletteOptions& options, Host& host) {
  const bool chosen = options.id || options.colors || !options.file.empty();
  if (options.out.empty() && options.exported.empty()) {
    wrong_usage("give OUT, or --export");
    return kWrongUsage;
  }
  if (!options.out.empty() && !chosen) {
    wrong_usage("give one of --id, --colors and --file");
    return kWrongUsage;
  }
  if (options.fast) settings::FastRemap = 1;
  DocumentWindow window;
  if (!open_document(window, options.in, host)) return kFailed;
  if (!options.out.empty() && !name_fits_kind(options.out, window.document.kind)) return kWrongUsage;
  const auto conversion = conversion_of(options, host);
  if (!conversion) return kFailed;
  if (!options.out.empty()) {
    if (!convert_colors(window, *conversion, host))
      return fail(host, frame_entries(window).empty() ? StringId::NoImagesHere : StringId::MemoryError,
                  host.take_fault());
    if (!save_document(window, options.out, host)) return kFailed;
  }
  return options.exported.empty() ? kDone : export_palette(window, *conversion, options, host);
}

}  // namespace

Run prepare_palette(CLI::App& app) {
  const auto options = std::make_shared<PaletteOptions>();
  app.add_option("IN", options->in, "The file to read")->required();
  app.add_option("OUT", options->out, "The file to write, with a palette");
  app.add_option("--export", options->exported,
                 "Write the palette to a file: cmp, gpl or pal by its extension")
      ->type_name("FILE");
  auto* id =
      app.add_option("--id", options->id,
                     "A built-in palette. 0: black and white; 1: 16 colors; 2, 3, 4: 32, 64, 128; 5: 216; "
                     "6: 256; 7: 256 with 32 greys; 8: 256 greys; 9: true color; 10, 11, 12: 16, 8, 4 greys")
          ->check(CLI::Range(0, kLastPalette));
  auto* colors = app.add_option("--colors", options->colors, "Compute a palette of at most so many colors")
                     ->check(CLI::Range(2u, kMostColors))
                     ->excludes(id);
  app.add_option("--file", options->file, "The colors of a palette file or of a picture")
      ->excludes(id)
      ->excludes(colors)
      ->type_name("FILE");
  app.add_flag("--dither", options->dither, "Spread the error of each pixel");
  app.add_flag("--fast", options->fast, "Match colors by 5 bits of each channel");
  app.add_flag("--fifteen-bits", options->fifteenBits, "--colors: count by 5 bits of each channel");
  app.add_flag("--sketch", options->sketch, "--colors: for drawings; frequent colors stay exactly");
  return [options](Host& host) { return run_palette(*options, host); };
}

}  // namespace vellum::cli
