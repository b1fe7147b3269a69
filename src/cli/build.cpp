#include <algorithm>

#include "base/memory_budget.h"
#include "base/parallel.h"
#include "cli/command.h"
#include "cli/document_kinds.h"
#include "cli/parameter_options.h"
#include "core/files/save_document.h"
#include "operations/build_stills.h"

namespace vellum::cli {
namespace {

struct BuildOptions {
  std::string out;
  std::vector<std::string> files;
  DocumentKind kind = DocumentKind::None;
  GivenParameters parameters;
};

/// The pictures of all files; none, after a message, when one can't be read.
std::vector<HeldPicture> read_stills(const std::vector<std::string>& files, Host& host) {
  const Progress progress(host, string_text(StringId::Loading));
  std::vector<HeldPicture> pictures(files.size());
  const std::size_t step = 4 * parallel_width();
  GatheredRows rows;
  for (std::size_t first = 0; first < files.size(); first += step) {
    const std::size_t count = std::min(step, files.size() - first);
    std::vector<GraphicReading> readings(count);
    parallel_for(count, [&](std::size_t i) { readings[i] = read_still(files[first + i]); });
    progress.step(first + count, files.size());
    for (std::size_t i = 0; i < count; ++i) {
      HeldPicture& held = pictures[first + i];
      if (!(held = hold_picture(told_reading(files[first + i], readings[i], host)))) return {};
      readings[i] = {};
      if (!rows.take(held.block.size())) let_go(held.block);
    }
  }
  return pictures;
}

int run_build(const BuildOptions& options, Host& host) {
  const DocumentKind kind = kind_of_result(options.kind, options.out);
  if (!name_fits_kind(options.out, kind)) return kWrongUsage;
  const auto values = parameter_values(kBuild, options.parameters, {});
  if (!values) return kWrongUsage;
  const auto pictures = read_stills(options.files, host);
  if (pictures.empty()) return kFailed;
  DocumentWindow window;
  if (!build_from_stills(window, pictures, *values, kind, host)) {
    host.show(StringId::AllocationError, {}, host.take_fault());
    return kFailed;
  }
  return save_document(window, options.out, host) ? kDone : kFailed;
}

}  // namespace

Run prepare_build(CLI::App& app) {
  const auto options = std::make_shared<BuildOptions>();
  app.add_option("-o,--out", options->out, "The file to write")->required()->type_name("OUT");
  app.add_option("FILE", options->files, "Pictures, in their order")->required();
  add_kind_option(app, options->kind);
  add_parameter_options(app, kBuild, options->parameters);
  return [options](Host& host) { return run_build(*options, host); };
}

}  // namespace vellum::cli
