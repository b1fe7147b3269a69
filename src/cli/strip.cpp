// `vellum strip` and `vellum unstrip`.
#include "base/translation.h"
#include "cli/command.h"
#include "cli/document_kinds.h"
#include "cli/frame_options.h"
#include "cli/parameter_options.h"
#include "cli/words.h"
#include "core/edit/insert_chunk.h"
#include "core/edit/new_document.h"
#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "image/graphic_file.h"
#include "operations/film_strip.h"
#include "operations/manage_frames.h"

namespace vellum::cli {
namespace {

struct StripOptions {
  std::string in, out;
  GivenParameters given;
  DocumentKind kind = DocumentKind::None;
  std::optional<std::uint32_t> delay;  ///< ms
};

int run_strip(const StripOptions& options, Host& host) {
  if (GraphicFileType(options.out) == kNoGraphicFile) {
    wrong_usage(translated("OUT has no extension of a picture"));
    return kWrongUsage;
  }
  DocumentWindow window;
  if (!open_document(window, options.in, host)) return kFailed;
  const auto values = parameter_values(kSaveStrip, options.given, window);
  if (!values) return kWrongUsage;
  const Picture picture = film_strip(window, film_strip_of(*values), host);
  if (!picture) return kFailed;
  if (GraphicFileWrite(options.out, picture)) return kDone;
  host.show(StringId::FileNotWritten, StringId::ErrorWritingFile, options.out);
  return kFailed;
}

/// A new document of these pictures alone.
bool build_document(DocumentWindow& window, const StripOptions& options, const CutStrip& cut, Host& host) {
  NewDocument parameters = default_new_document(options.kind);
  parameters.width = cut.cells.front().width();
  parameters.height = cut.cells.front().height();
  if (!new_document(window, parameters) || !insert_pictures(window, cut.cells, host)) return false;
  delete_texts(window);
  if (options.delay) set_delays(window, all_frames(cut.cells.size()), *options.delay);
  return true;
}

int run_unstrip(const StripOptions& options, Host& host) {
  const auto values = parameter_values(kCutStrip, options.given, {});
  if (!values || !name_fits_kind(options.out, options.kind)) return kWrongUsage;
  const FilmStrip strip = film_strip_of(*values);
  const Picture picture = read_picture_file(options.in, host);
  if (!picture) return kFailed;
  const CutStrip cut = cut_strip(picture, strip.cellWidth, strip.cellHeight);
  if (cut.cells.empty()) {
    host.show(StringId::SmallerThanCell);
    return kFailed;
  }
  DocumentWindow window;
  if (!build_document(window, options, cut, host) || !save_document(window, options.out, host))
    return kFailed;
  if (cut.incomplete > 0)
    host.set_status(filled(StringId::CellsLeftOut, {count_text(StringId::OneImage, cut.cells.size()),
                                                    count_text(StringId::OneCell, cut.incomplete)}));
  return kDone;
}

}  // namespace

Run prepare_strip(CLI::App& app) {
  const auto options = std::make_shared<StripOptions>();
  app.add_option("IN", options->in, "An animation")->required();
  app.add_option("OUT", options->out, "The picture to write, by its extension")->required();
  add_parameter_options(app, kSaveStrip, options->given);
  add_stored_option(app, kSaveStrip, options->given);
  return [options](Host& host) { return run_strip(*options, host); };
}

Run prepare_unstrip(CLI::App& app) {
  const auto options = std::make_shared<StripOptions>();
  app.add_option("IN", options->in, "A picture of cells")->required();
  app.add_option("OUT", options->out, "The animation to write")->required();
  add_parameter_options(app, kCutStrip, options->given);
  add_stored_option(app, kCutStrip, options->given);
  app.add_option("--kind", options->kind, "The kind of the file")
      ->required()
      ->transform(one_of(animation_kinds(), "apng|mng|webp"));
  app.add_option("--delay", options->delay, "Delay of each frame in milliseconds; as DefaultDelay otherwise")
      ->check(CLI::Range(0, static_cast<int>(kMostDelayMs)))
      ->type_name("MS");
  return [options](Host& host) { return run_unstrip(*options, host); };
}

}  // namespace vellum::cli
