// `vellum reconstruct` and `vellum still`.
#include "operations/reconstruct.h"

#include "cli/command.h"
#include "cli/document_kinds.h"
#include "cli/frame_options.h"
#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "operations/frames.h"

namespace vellum::cli {
namespace {

struct ReconstructOptions {
  std::string in, out;
  bool mergeEqual = false, opaque = false;
  int depth = 0;
  std::size_t frame = 1;
};

int tell_failure(Host& host) {
  host.show(StringId::FileNotWritten, StringId::ErrorWritingFile, host.take_fault());
  return kFailed;
}

/// Opens IN, an animation with images.
bool open_animation(DocumentWindow& window, const std::string& path, Host& host) {
  if (!open_document(window, path, host)) return false;
  if (is_animation(window.document.kind) && !frame_entries(window).empty()) return true;
  host.show(StringId::NoImagesHere);
  return false;
}

int run_reconstruct(const ReconstructOptions& options, Host& host) {
  DocumentWindow window;
  if (!open_animation(window, options.in, host)) return kFailed;
  if (!name_fits_kind(options.out, window.document.kind)) return kWrongUsage;
  const CanvasDepth depth = options.depth == 24   ? CanvasDepth::TrueColor
                            : options.depth == 32 ? CanvasDepth::TrueColorAlpha
                                                  : CanvasDepth::AsNeeded;
  if (!reconstruct_frames(window, depth, host, options.mergeEqual)) return tell_failure(host);
  return save_document(window, options.out, host) ? kDone : kFailed;
}

int run_still(const ReconstructOptions& options, Host& host) {
  if (!name_fits_kind(options.out, DocumentKind::PING)) return kWrongUsage;
  DocumentWindow window, still;
  if (!open_animation(window, options.in, host)) return kFailed;
  if (options.frame > frame_entries(window).size()) {
    wrong_usage("--frame is not one of the images");
    return kWrongUsage;
  }
  if (!still_of_frame(window, still, options.frame - 1, options.opaque, host)) return tell_failure(host);
  return save_document(still, options.out, host) ? kDone : kFailed;
}

}  // namespace

Run prepare_reconstruct(CLI::App& app) {
  const auto options = std::make_shared<ReconstructOptions>();
  app.add_option("IN", options->in, "An animation")->required();
  app.add_option("OUT", options->out, "The file to write, of the same kind")->required();
  app.add_flag("--merge-equal", options->mergeEqual, "Frames that show the same become one");
  app.add_option("--depth", options->depth, "Bits of a pixel; as needed otherwise")
      ->check(CLI::IsMember({24, 32}));
  return [options](Host& host) { return run_reconstruct(*options, host); };
}

Run prepare_still(CLI::App& app) {
  const auto options = std::make_shared<ReconstructOptions>();
  app.add_option("IN", options->in, "An animation")->required();
  app.add_option("OUT", options->out, "The PNG to write")->required();
  app.add_option("--frame", options->frame, "Which image is shown, from 1")
      ->check(CLI::Range(1, 1'000'000))
      ->capture_default_str();
  app.add_flag("--opaque", options->opaque, "Over the background color");
  return [options](Host& host) { return run_still(*options, host); };
}

}  // namespace vellum::cli
