#include <algorithm>

#include "base/parallel.h"
#include "cli/command.h"
#include "cli/document_kinds.h"
#include "core/files/save_document.h"
#include "operations/build_stills.h"
#include "operations/convert_colors.h"
#include "operations/manage_frames.h"

namespace vellum::cli {
namespace {

struct BuildOptions {
  std::string out;
  std::vector<std::string> files;
  StillsBuild build;
  std::uint32_t colors = 0;  ///< of one palette; 0: as the files are
  bool dither = false;
};

/// The pictures of all files; none, after a message, when one can't be read.
std::vector<Picture> read_stills(const std::vector<std::string>& files, Host& host) {
  const Progress progress(host, string_text(StringId::Loading));
  std::vector<Picture> pictures(files.size());
  const std::size_t step = 4 * parallel_width();
  for (std::size_t first = 0; first < files.size(); first += step) {
    const std::size_t count = std::min(step, files.size() - first);
    std::vector<GraphicReading> readings(count);
    parallel_for(count, [&](std::size_t i) { readings[i] = read_still(files[first + i]); });
    progress.step(first + count, files.size());
    for (std::size_t i = 0; i < count; ++i)
      if (!(pictures[first + i] = told_reading(files[first + i], readings[i], host))) return {};
  }
  return pictures;
}

int run_build(const BuildOptions& options, Host& host) {
  if (!name_fits_kind(options.out, options.build.kind)) return kWrongUsage;
  const auto pictures = read_stills(options.files, host);
  if (pictures.empty()) return kFailed;
  DocumentWindow window;
  bool built = build_from_stills(window, pictures, options.build, host);
  if (built && options.colors > 0)
    built = convert_colors(window, {.colorType = 3, .most = options.colors, .dither = options.dither}, host);
  if (!built) {
    host.show(StringId::AllocationError, {}, host.take_fault());
    return kFailed;
  }
  return save_document(window, options.out, host) ? kDone : kFailed;
}

}  // namespace

Run prepare_build(CLI::App& app) {
  const auto options = std::make_shared<BuildOptions>();
  app.add_option("-o,--out", options->out, "The file to write")->required();
  app.add_option("--kind", options->build.kind, "The kind of the file")
      ->required()
      ->transform(CLI::CheckedTransformer(animation_kinds(), CLI::ignore_case).description("apng|mng|webp"));
  app.add_option("--delay", options->build.delay, "Delay of each frame in milliseconds")
      ->check(CLI::Range(0, static_cast<int>(kMostDelayMs)))
      ->type_name("MS")
      ->capture_default_str();
  app.add_option("--plays,--loop", options->build.plays, "Plays of the animation, 0 for ever")
      ->check(CLI::Range(0, 65535))
      ->capture_default_str();
  app.add_option("--colors", options->colors, "One palette of at most this many colors")
      ->check(CLI::Range(2, 256));
  app.add_flag("--dither", options->dither, "with --colors: spread the error of each pixel");
  app.add_flag("--whole", options->build.whole, "apng: whole frames, not what changes alone");
  app.add_option("FILE", options->files, "Pictures, in their order")->required();
  return [options](Host& host) { return run_build(*options, host); };
}

}  // namespace vellum::cli
