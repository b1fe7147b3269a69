#include "cli/command.h"
#include "cli/document_kinds.h"
#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "core/settings.h"
#include "operations/convert_colors.h"
#include "operations/convert_kind.h"

namespace vellum::cli {
namespace {

enum class Colors { Kept, Mono, Grey, Palette, True, Alpha };

const std::map<std::string, Colors> kColors = {{"mono", Colors::Mono},
                                               {"grey", Colors::Grey},
                                               {"palette", Colors::Palette},
                                               {"true", Colors::True},
                                               {"alpha", Colors::Alpha}};

struct ConvertOptions {
  std::string in, out;
  DocumentKind kind = DocumentKind::None;  ///< None: as it is
  Colors colors = Colors::Kept;
  int threshold = 128;
  std::uint32_t most = 256;
  bool dither = false;
};

ColorConversion color_conversion(const ConvertOptions& options, const DocumentWindow& window) {
  switch (options.colors) {
    case Colors::Mono:
      return black_and_white(options.threshold, options.dither);
    case Colors::Grey:
      return grey_scale(window);
    case Colors::Palette:
      return {.colorType = 3, .most = options.most, .dither = options.dither};
    case Colors::True:
      return {.colorType = 2};
    default:
      return {.colorType = 6, .alphaLevel = std::clamp(settings::InitialAlphaLevel, 0, 255)};
  }
}

int tell_failure(Host& host) {
  host.show(StringId::FileNotWritten, StringId::ErrorWritingFile, host.take_fault());
  return kFailed;
}

int run_convert(const ConvertOptions& options, Host& host) {
  DocumentWindow window;
  if (!open_document(window, options.in, host)) return kFailed;
  const DocumentKind kind = options.kind == DocumentKind::None ? window.document.kind : options.kind;
  if (!name_fits_kind(options.out, kind)) return kWrongUsage;
  DocumentWindow converted;
  const bool same = window.document.kind == kind;
  if (!same && !convert_kind(window, converted, {kind, options.dither}, host)) return tell_failure(host);
  DocumentWindow& result = same ? window : converted;
  if (options.colors != Colors::Kept && !convert_colors(result, color_conversion(options, result), host))
    return tell_failure(host);
  return save_document(result, options.out, host) ? kDone : kFailed;
}

}  // namespace

Run prepare_convert(CLI::App& app) {
  const auto options = std::make_shared<ConvertOptions>();
  app.add_option("IN", options->in, "The file to read")->required();
  app.add_option("OUT", options->out, "The file to write")->required();
  app.add_option("--kind", options->kind, "The kind of the new file; without it, that of IN")
      ->transform(CLI::CheckedTransformer(kKinds, CLI::ignore_case).description("png|apng|mng|webp"));
  app.add_option("--color", options->colors, "What the images hold")
      ->transform(
          CLI::CheckedTransformer(kColors, CLI::ignore_case).description("mono|grey|palette|true|alpha"));
  app.add_option("--threshold", options->threshold, "mono: grey from here on is white")
      ->check(CLI::Range(1, 254))
      ->capture_default_str();
  app.add_option("--colors", options->most, "palette: the most colors")
      ->check(CLI::Range(2, 256))
      ->capture_default_str();
  app.add_flag("--dither", options->dither, "Where colors go into a palette: spread the error of each pixel");
  return [options](Host& host) { return run_convert(*options, host); };
}

}  // namespace vellum::cli
