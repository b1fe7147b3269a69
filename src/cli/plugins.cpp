#include <cstdio>
#include <nlohmann/json.hpp>

#include "base/text.h"
#include "base/translation.h"
#include "cli/command.h"
#include "cli/document_kinds.h"
#include "cli/frame_options.h"
#include "core/files/save_document.h"
#include "extension/plugin.h"
#include "extension/settings.h"

namespace vellum::cli {
namespace {

using Json = nlohmann::ordered_json;

PluginsFound find_all() { return find_plugins(plugin_folders(), settings::SortPlugins != 0); }

int list_plugins(bool json) {
  const PluginsFound found = find_all();
  Json all = Json::array();
  for (const Plugin& plugin : found.plugins) {
    if (!json)
      std::printf("%s\t%s\t%s\n", plugin.name.c_str(), plugin.description.c_str(), plugin.path.c_str());
    all.push_back(
        {{"name", plugin.name}, {"description", plugin.description}, {"path", plugin.path.string()}});
  }
  for (const std::string& reason : found.refused) std::fprintf(stderr, "vellum: %s\n", reason.c_str());
  if (json) std::puts(all.dump(2, ' ', false, Json::error_handler_t::replace).c_str());
  return std::fflush(stdout) == 0 ? kDone : kFailed;
}

struct PluginOptions {
  std::string name, out;
  DocumentKind kind = DocumentKind::None;
};

int run_named(const PluginOptions& options, Host& host) {
  const DocumentKind kind = kind_of_result(options.kind, options.out);
  if (!name_fits_kind(options.out, kind)) return kWrongUsage;
  const PluginsFound found = find_all();
  for (const Plugin& plugin : found.plugins) {
    if (!equal_ignoring_case(plugin.name, options.name)) continue;
    auto made = run_plugin(plugin, kind, nullptr, host);
    if (made.empty()) {
      std::fprintf(stderr, translated("vellum: the plugin made no animation\n"));
      return kFailed;
    }
    return save_document(made.front(), options.out, host) ? kDone : kFailed;
  }
  wrong_usage(translated("there is no plugin \"") + options.name + "\"");
  return kWrongUsage;
}

}  // namespace

Run prepare_plugins(CLI::App& app) {
  const auto json = std::make_shared<bool>(false);
  CLI::App* list = app.add_subcommand("list", "Name, description and file of each, with tabs between");
  list->add_flag("--json", *json, "As JSON");
  app.require_subcommand(1);
  return [json](Host&) { return list_plugins(*json); };
}

Run prepare_plugin(CLI::App& app) {
  const auto options = std::make_shared<PluginOptions>();
  app.add_option("NAME", options->name, "As `vellum plugins list` says it")->required();
  app.add_option("-o,--out", options->out, "The file to write")->required()->type_name("OUT");
  add_kind_option(app, options->kind);
  return [options](Host& host) { return run_named(*options, host); };
}

}  // namespace vellum::cli
