#include "base/file.h"
#include "base/limits.h"
#include "base/text.h"
#include "base/translation.h"
#include "cli/command.h"
#include "core/files/open_document.h"
#include "core/files/open_unchecked.h"
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

std::string step_line(std::uint64_t step, const ShownFrame& frame) {
  return format_text("%llu\t%zu\t%u\t%llu\t%u\n", static_cast<unsigned long long>(step), frame.entry + 1,
                     frame.ordinal, static_cast<unsigned long long>(frame.start), frame.delay);
}

/// Prints the steps; holds them back as long as frames are unchecked.
class StepPrinter {
 public:
  explicit StepPrinter(const UncheckedImages& unchecked) : unchecked_(unchecked) {}

  /// False where a frame turns out not to be sound: then nothing was printed.
  bool print(const std::string& line) {
    held_ += line;
    return (++steps_ < unchecked_.streams.size() && !printed_) || flush();
  }
  bool flush() {
    if (!printed_ && !all_sound(unchecked_)) return false;
    printed_ = true;
    std::fwrite(held_.data(), 1, held_.size(), stdout);
    held_.clear();
    return true;
  }
  bool has_printed() const { return printed_; }

 private:
  const UncheckedImages& unchecked_;
  std::size_t steps_ = 0;
  bool printed_ = false;
  std::string held_;
};

bool play(Compositor& compositor, const PlayOptions& options, StepPrinter& printer, Host& host) {
  const std::uint64_t most = options.steps == 0 ? kMaximumSteps : options.steps;
  const auto rounds = options.steps == 0 ? Compositor::Rounds::One : Compositor::Rounds::All;
  for (std::uint64_t step = 0; step < most; ++step) {
    const auto frame = compositor.next(rounds);
    if (!frame) return true;
    if (!printer.print(step_line(step, *frame))) return false;
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

int play_document(const DocumentWindow& window, const PlayOptions& options, StepPrinter& printer,
                  Host& host) {
  Compositor compositor(window.list, window.document, kMostKept);
  const bool played = play(compositor, options, printer, host) && printer.flush();
  return std::fflush(stdout) == 0 && played ? kDone : kFailed;
}

/// Checks frames by showing them, as sound files allow: each is unpacked once. Nothing, and nothing was
/// printed, where the file isn't one.
std::optional<int> play_at_once(const PlayOptions& options, Host& host) {
  UncheckedImages unchecked;
  StepPrinter printer(unchecked);
  try {
    DocumentWindow window;
    if (!open_unchecked(window, options.file, unchecked, host)) return std::nullopt;
    const int result = play_document(window, options, printer, host);
    if (result == kDone || printer.has_printed()) return result;
  } catch (const std::bad_alloc&) {
    // What there is to say about that, opening says.
    if (printer.has_printed()) throw;
  }
  return std::nullopt;
}

int run_play(const PlayOptions& options, Host& host) {
  // A canvas is not written before all are known to be right.
  if (options.folder.empty())
    if (const auto result = play_at_once(options, host)) return *result;
  DocumentWindow window;
  if (!open_document(window, options.file, host)) return kFailed;
  std::error_code error;
  if (!options.folder.empty()) std::filesystem::create_directories(options.folder, error);
  const UncheckedImages none;
  StepPrinter printer(none);
  return play_document(window, options, printer, host);
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
