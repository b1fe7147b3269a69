// `vellum strip` and `vellum unstrip`.
#include <algorithm>

#include "cli/command.h"
#include "cli/document_kinds.h"
#include "cli/frame_options.h"
#include "core/edit/insert_chunk.h"
#include "core/edit/new_document.h"
#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "image/graphic_file.h"
#include "operations/film_strip.h"
#include "operations/manage_frames.h"
#include "operations/settings.h"

namespace vellum::cli {
namespace {

struct StripOptions {
  std::string in, out, cell;
  std::uint32_t columns = 0;
  DocumentKind kind = DocumentKind::None;
  std::optional<std::uint32_t> delay;  ///< ms
};

/// "WxH"; the settings where nothing is given, which may say 0.
bool take_cell(const std::string& text, std::uint32_t& width, std::uint32_t& height) {
  const auto held = [](int side) { return static_cast<std::uint32_t>(std::clamp(side, 0, kMostCell)); };
  width = held(settings::CellWide);
  height = held(settings::CellDeep);
  if (text.empty()) return true;
  const auto size = number_pair(text, 'x', 1, kMostCell);
  if (!size) return wrong_usage("--cell is not WxH with sides from 1 to " + std::to_string(kMostCell));
  width = static_cast<std::uint32_t>(size->first);
  height = static_cast<std::uint32_t>(size->second);
  return true;
}

int run_strip(const StripOptions& options, Host& host) {
  FilmStrip strip{options.columns, 0, 0};
  if (!take_cell(options.cell, strip.cellWidth, strip.cellHeight)) return kWrongUsage;
  if (GraphicFileType(options.out) == kNoGraphicFile) {
    wrong_usage("OUT has no extension of a picture");
    return kWrongUsage;
  }
  DocumentWindow window;
  if (!open_document(window, options.in, host)) return kFailed;
  const Picture picture = film_strip(window, strip, host);
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
  std::uint32_t width = 0, height = 0;
  if (!take_cell(options.cell, width, height) || !name_fits_kind(options.out, options.kind))
    return kWrongUsage;
  const Picture picture = read_picture_file(options.in, host);
  if (!picture) return kFailed;
  const CutStrip cut = cut_strip(picture, width, height);
  if (cut.cells.empty()) {
    host.show(StringId::SmallerThanCell);
    return kFailed;
  }
  DocumentWindow window;
  if (!build_document(window, options, cut, host) || !save_document(window, options.out, host))
    return kFailed;
  if (cut.incomplete > 0)
    host.set_status(
        filled(StringId::CellsLeftOut, {std::to_string(cut.cells.size()), std::to_string(cut.incomplete)}));
  return kDone;
}

}  // namespace

Run prepare_strip(CLI::App& app) {
  const auto options = std::make_shared<StripOptions>();
  app.add_option("IN", options->in, "An animation")->required();
  app.add_option("OUT", options->out, "The picture to write, by its extension")->required();
  app.add_option("--columns", options->columns, "Cells of a row; all frames in one row otherwise")
      ->check(CLI::Range(1, 1'000'000));
  app.add_option("--cell", options->cell, "Size of a cell; as the canvas otherwise")->type_name("WxH");
  return [options](Host& host) { return run_strip(*options, host); };
}

Run prepare_unstrip(CLI::App& app) {
  const auto options = std::make_shared<StripOptions>();
  app.add_option("IN", options->in, "A picture of cells")->required();
  app.add_option("OUT", options->out, "The animation to write")->required();
  app.add_option("--cell", options->cell, "Size of a cell")->required()->type_name("WxH");
  app.add_option("--kind", options->kind, "The kind of the file")
      ->required()
      ->transform(CLI::CheckedTransformer(animation_kinds(), CLI::ignore_case).description("apng|mng|webp"));
  app.add_option("--delay", options->delay, "Delay of each frame in milliseconds; as DefaultDelay otherwise")
      ->check(CLI::Range(0, static_cast<int>(kMostDelayMs)))
      ->type_name("MS");
  return [options](Host& host) { return run_unstrip(*options, host); };
}

}  // namespace vellum::cli
