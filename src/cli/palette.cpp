// `vellum palette`: the operation of that name, and the palette of a document as a file.
#include "base/translation.h"
#include "cli/command.h"
#include "cli/frame_options.h"
#include "cli/operation_command.h"
#include "core/files/open_document.h"
#include "image/palette_from_pictures.h"
#include "image/settings.h"

namespace vellum::cli {
namespace {

struct PaletteOptions {
  std::string exported;
  bool fast = false;
};

/// The colors that the document has: its PLTE, else those that its images have or that stand for them.
PaletteColors document_palette(const DocumentWindow& window, std::uint32_t most, Host& host) {
  PaletteColors colors;
  if ((colors.count = chunk_find_palette(window.list, colors.palette)) > 0) return colors;
  std::vector<Picture> pictures;
  for (const std::size_t entry : frame_entries(window))
    pictures.push_back(picture_of(window.list.record(entry)));
  return palette_from_pictures(pictures, most, &host);
}

int export_palette(const std::string& in, const std::string& exported, std::uint32_t most, Host& host) {
  DocumentWindow window;
  if (!open_document(window, in, host)) return kFailed;
  const PaletteColors colors = document_palette(window, most, host);
  std::string reason;
  if (colors.count > 0 && write_palette_file(exported, colors, reason)) return kDone;
  host.show(colors.count == 0 ? StringId::NoImagesHere : StringId::ErrorWritingFile, {}, reason);
  return kFailed;
}

}  // namespace

Run prepare_palette(CLI::App& app) {
  const auto options = std::make_shared<PaletteOptions>();
  const Run convert = prepare_operation(app, *find_operation("palette"));
  CLI::Option* out = app.get_option("OUT")->required(false);
  app.add_option("--export", options->exported,
                 "Write the palette to a file: cmp, gpl or pal by its extension")
      ->type_name("FILE");
  app.add_flag("--fast", options->fast, "Match colors by 5 bits of each channel");
  return [options, convert, &app, out](Host& host) -> int {
    const std::string written = out->count() > 0 ? out->as<std::string>() : "";
    if (written.empty() && options->exported.empty()) {
      wrong_usage(translated("give OUT, or --export"));
      return kWrongUsage;
    }
    if (options->fast) settings::FastRemap = 1;
    if (const int status = written.empty() ? int{kDone} : convert(host); status != kDone) return status;
    if (options->exported.empty()) return kDone;
    const auto most = app.get_option("--colors")->as<std::uint32_t>();
    return export_palette(written.empty() ? app.get_option("IN")->as<std::string>() : written,
                          options->exported, most, host);
  };
}

}  // namespace vellum::cli
