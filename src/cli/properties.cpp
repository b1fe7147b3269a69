#include <cstdio>

#include "cli/command.h"
#include "configuration/property_limits.h"
#include "core/files/open_document.h"

namespace vellum::cli {
namespace {

struct PropertiesOptions {
  std::string file;
  bool json = false;
};

int run_properties(const PropertiesOptions& options, Host& host) {
  DocumentWindow window;
  if (!open_document(window, options.file, host)) return kFailed;
  AnimationProperties properties = animation_properties(window);
  properties.fileSize = settings::PropertiesFileSizeEnable != 0
                            ? size_when_written(window, save_options(), host)
                            : size_on_disk(window.document);
  sort_frames(properties.frames, frame_column(settings::PropertiesSort));
  const std::string text = options.json ? properties_json(properties, property_limits())
                                        : properties_text(properties, property_limits());
  std::fputs(text.c_str(), stdout);
  return std::fflush(stdout) == 0 ? kDone : kFailed;
}

}  // namespace

Run prepare_properties(CLI::App& app) {
  const auto options = std::make_shared<PropertiesOptions>();
  app.add_option("FILE", options->file, "A PNG, animated PNG, MNG or WebP")->required();
  app.add_flag("--json", options->json, "As JSON");
  return [options](Host& host) { return run_properties(*options, host); };
}

}  // namespace vellum::cli
