#include "base/text.h"
#include "cli/command.h"
#include "cli/frame_options.h"
#include "core/files/open_document.h"
#include "image/graphic_file.h"
#include "operations/extract_frames.h"

namespace vellum::cli {
namespace {

struct FramesOptions {
  std::string file, frames, stem;
  Extraction extraction;
};

/// "frame_00000.png" and so on; with a stem numbers begin at 1.
bool take_options(const FramesOptions& options, const DocumentWindow& window, Extraction& extraction) {
  extraction = options.extraction;
  extraction.extension = lower_case(extraction.extension);
  extraction.first = options.stem.empty() ? 0 : 1;
  extraction.stem = options.stem.empty() ? "frame" : options.stem;
  const std::size_t count = frame_entries(window).size();
  extraction.frames = all_frames(count);
  if (options.frames.empty()) return true;
  const auto chosen = parse_frame_list(options.frames, count);
  if (!chosen) return wrong_usage("--frames is not a list of images, such as 1,3-5");
  extraction.frames = *chosen;
  return true;
}

int run_frames(const FramesOptions& options, Host& host) {
  if (GraphicFileType("a." + options.extraction.extension) == kNoGraphicFile ||
      options.stem.find('/') != std::string::npos) {
    wrong_usage("--format is jpg, bmp, gif, pcx, tga, png or webp, and --stem has no slash");
    return kWrongUsage;
  }
  DocumentWindow window;
  if (!open_document(window, options.file, host)) return kFailed;
  Extraction extraction;
  if (!take_options(options, window, extraction)) return kWrongUsage;
  const std::size_t written = extract_frames(window, extraction, extracted_names(window, extraction), host);
  if (written < extraction.frames.size()) return kFailed;
  return kDone;
}

}  // namespace

Run prepare_frames(CLI::App& app) {
  const auto options = std::make_shared<FramesOptions>();
  app.add_option("FILE", options->file, "A PNG, animated PNG, MNG or WebP")->required();
  app.add_option("DIR", options->extraction.folder, "The folder for frame_00000.png and so on; it is made")
      ->required();
  app.add_flag("--composed", options->extraction.composed, "Whole canvases as they are shown");
  app.add_option("--format", options->extraction.extension, "jpg, bmp, gif, pcx, tga, png or webp")
      ->capture_default_str()
      ->type_name("EXT");
  app.add_option("--frames", options->frames, "Which images, from 1: 1,3-5")->type_name("LIST");
  app.add_option("--stem", options->stem, "Names are STEM_00001 and so on");
  return [options](Host& host) { return run_frames(*options, host); };
}

}  // namespace vellum::cli
