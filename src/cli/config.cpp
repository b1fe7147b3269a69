#include <cstdio>
#include <nlohmann/json.hpp>

#include "base/translation.h"
#include "cli/command.h"
#include "configuration/config_file.h"
#include "configuration/setting_values.h"

namespace vellum::cli {
namespace {

using Json = nlohmann::ordered_json;

struct ConfigOptions {
  std::string key, value;
  bool json = false;
};

using Action = int (*)(const ConfigOptions&, Host&);

Json json_value(const SettingRow& row, const SettingValue& value) {
  return row.text ? Json(value.text) : Json(value.number);
}

void print_json() {
  Json settings = Json::object();
  for (const SettingRow& row : setting_table())
    if (!is_repeated(row))
      settings[std::string(row.name)] = {{"value", json_value(row, setting_value(row))},
                                         {"default", json_value(row, default_value(row))}};
  std::puts(settings.dump(2, ' ', false, Json::error_handler_t::replace).c_str());
}

void print_lines() {
  for (const SettingRow& row : setting_table()) {
    if (is_repeated(row)) continue;
    const SettingValue value = setting_value(row);
    std::string line = std::string(row.name) + " = " + setting_text(row, value);
    if (value != default_value(row)) line += "  (default: " + setting_text(row, default_value(row)) + ")";
    std::puts(line.c_str());
  }
}

int list_settings(const ConfigOptions& options, Host&) {
  options.json ? print_json() : print_lines();
  return std::fflush(stdout) == 0 ? kDone : kFailed;
}

const SettingRow* row_of(const std::string& key) {
  const SettingRow* row = find_setting(key);
  if (!row) std::fprintf(stderr, translated("vellum: there is no setting \"%s\"\n"), key.c_str());
  return row;
}

int get_setting(const ConfigOptions& options, Host&) {
  const SettingRow* row = row_of(options.key);
  if (!row) return kWrongUsage;
  std::puts(setting_text(*row, setting_value(*row)).c_str());
  return std::fflush(stdout) == 0 ? kDone : kFailed;
}

int change_stored_setting(const ConfigOptions& options, Host& host) {
  const SettingRow* row = row_of(options.key);
  if (!row) return kWrongUsage;
  std::string reason;
  const auto value = parse_setting(*row, options.value, reason);
  if ((row->flags & (kUnstored | kInformation)) != 0)
    reason = options.key + translated(" is not read from the file");
  if (!reason.empty()) {
    std::fprintf(stderr, "vellum: %s\n", reason.c_str());
    return kWrongUsage;
  }
  change_setting(*row, *value);
  if (config_save(config_file())) return kDone;
  host.show(StringId::FileNotWritten, StringId::ErrorWritingFile, config_file().string());
  return kFailed;
}

}  // namespace

Run prepare_config(CLI::App& app) {
  const auto options = std::make_shared<ConfigOptions>();
  const auto chosen = std::make_shared<Action>(nullptr);
  const auto add = [&](const char* name, const char* help, Action action) {
    CLI::App* part = app.add_subcommand(name, help);
    part->callback([chosen, action] { *chosen = action; });
    return part;
  };
  add("list", "All settings and, where they differ, their defaults", list_settings)
      ->add_flag("--json", options->json, "Values and defaults as JSON");
  add("get", "One setting's value", get_setting)->add_option("KEY", options->key)->required();
  CLI::App* set = add("set", "Change a setting in the file", change_stored_setting);
  set->add_option("KEY", options->key)->required();
  set->add_option("VALUE", options->value, "A whole number or a text")->required();
  app.require_subcommand(1);
  return [options, chosen](Host& host) { return (*chosen)(*options, host); };
}

}  // namespace vellum::cli
