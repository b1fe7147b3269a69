#include "base/file.h"
#include "base/limits.h"
#include "base/text.h"
#include "base/translation.h"
#include "cli/command.h"
#include "core/files/open_document.h"
#include "core/settings.h"
#include "image/png_file.h"
#include "playback/compositor.h"

namespace vellum::cli {
namespace {

/// Most animations are walked once here: frames need not be kept for a second round.
constexpr std::uint64_t kMostKept = 0;

struct PlayOptions {
  std::string file, folder;
  std::uint64_t steps = 0;  ///< 0: to the end, or one round of what has none
};

bool write_canvas(const std::string& folder, std::uint64_t step, const Picture& picture) {
  const std::string name = format_text("frame_%05llu.png", static_cast<unsigned long long>(step));
  const auto bytes = encode_png_picture(picture, std::clamp(settings::PngCompression, 0, 9));
  SafeFile file(std::filesystem::path(folder) / name);
  return !bytes.empty() && file.write(bytes) && file.commit();
}

void print_step(std::uint64_t step, const ShownFrame& frame) {
  std::printf("%llu\t%zu\t%u\t%llu\t%u\n", static_cast<unsigned long long>(step), frame.entry + 1,
              frame.ordinal, static_cast<unsigned long long>(frame.start), frame.delay);
}

bool play(Compositor& compositor, const PlayOptions& options, Host& host) {
  const std::uint64_t most = options.steps == 0 ? kMaximumSteps : options.steps;
  for (std::uint64_t step = 0; step < most; ++step) {
    const auto frame = compositor.next();
    if (!frame || (options.steps == 0 && compositor.repeats())) return true;
    print_step(step, *frame);
    if (options.folder.empty() || !frame->picture || write_canvas(options.folder, step, frame->picture))
      continue;
    host.show(StringId::FileNotWritten, StringId::ErrorWritingFile, options.folder);
    return false;
  }
  if (options.steps == 0)
    std::fprintf(stderr, translated("vellum: ended after %s steps; --steps N shows as many as are wanted\n"),
                 grouped(kMaximumSteps).c_str());
  return true;
}

int run_play(const PlayOptions& options, Host& host) {
  DocumentWindow window;
  if (!open_document(window, options.file, host)) return kFailed;
  std::error_code error;
  if (!options.folder.empty()) std::filesystem::create_directories(options.folder, error);
  Compositor compositor(window.list, window.document, kMostKept);
  const bool played = play(compositor, options, host);
  return std::fflush(stdout) == 0 && played ? kDone : kFailed;
}

}  // namespace

Run prepare_play(CLI::App& app) {
  const auto options = std::make_shared<PlayOptions>();
  app.add_option("FILE", options->file, "An animated PNG, MNG or WebP")->required();
  app.add_option("--steps", options->steps,
                 "Show so many frames; otherwise to the end, or one round of what plays for ever")
      ->check(CLI::Range(std::uint64_t{1}, std::uint64_t{1'000'000'000}));
  app.add_option("--png", options->folder,
                 "Write each shown canvas to this folder as frame_00000.png and so on");
  return [options](Host& host) { return run_play(*options, host); };
}

}  // namespace vellum::cli
