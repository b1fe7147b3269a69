// `vellum gallery`.
#include "batch/gallery.h"

#include "base/fields.h"
#include "cli/command.h"
#include "cli/frame_options.h"
#include "cli/parameter_options.h"

namespace vellum::cli {
namespace {

struct Given {
  std::string folder;
  std::vector<std::string> files;
  GivenParameters parameters;
};

int run(const Given& given, Host& host) {
  auto values = parameter_values(kGallery, given.parameters, {});
  if (!values) return kWrongUsage;
  const std::vector<std::filesystem::path> files(given.files.begin(), given.files.end());
  const auto report = build_gallery(files, *values, host, [](const BatchRow& row) {
    std::printf("%s%s%s\n", batch_line(row).c_str(), row.reason.empty() ? "" : "\t", row.reason.c_str());
  });
  if (!report) return kFailed;
  std::printf("%s\n", batch_error_line(batch_errors(report->rows)).c_str());
  return batch_errors(report->rows) == 0 ? kDone : kFailed;
}

}  // namespace

Run prepare_gallery(CLI::App& app) {
  const auto given = std::make_shared<Given>();
  given->parameters.fields.resize(kGallery.fields.size());
  add_parameter_options(app, kGallery, given->parameters);
  const auto place =
      static_cast<std::size_t>(find_field(kGallery.fields, "destination") - kGallery.fields.data());
  app.remove_option(app.get_option("--destination"));
  app.add_option("-o,--out", given->parameters.fields[place], "The folder of the pages; it is made")
      ->required()
      ->type_name("DIR");
  app.add_option("FILE", given->files, "Pictures and animations, in their order")->required();
  add_stored_option(app, kGallery, given->parameters);
  return [given](Host& host) { return run(*given, host); };
}

}  // namespace vellum::cli
