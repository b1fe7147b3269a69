#include <algorithm>
#include <cstddef>
#include <cstring>

#include "base/text.h"
#include "base/translation.h"
#include "base/user_folders.h"
#include "extension/library_folder.h"
#include "extension/plugin.h"

namespace fs = std::filesystem;

namespace vellum {
namespace {

static_assert(sizeof(VellumPluginParams) == 600 && offsetof(VellumPluginParams, name) == 8 &&
              offsetof(VellumPluginParams, description) == 269 && offsetof(VellumPluginParams, flags) == 532);

/// The text of a field that need not be ended.
template <std::size_t Size>
std::string field_text(const char (&field)[Size]) {
  std::string text(field, strnlen(field, Size - 1));
  return is_utf8(text) ? text : utf8_from_latin1(text);
}

/// Empty, or why it isn't taken.
std::string load(const fs::path& path, std::vector<Plugin>& plugins) {
  std::string reason;
  const std::shared_ptr<void> library = load_library(path, reason);
  if (!library) return reason;
  auto* const get = library_function<decltype(PLUGIN15GetPluginParams)>(library, "PLUGIN15GetPluginParams");
  auto* const build = library_function<decltype(PLUGIN15DoBuild)>(library, "PLUGIN15DoBuild");
  if (!get || !build) return translated("it lacks a function of plugins");
  VellumPluginParams params{};
  params.size = sizeof params;
  params.version = VELLUM_PLUGIN_VERSION;
  if (get(&params, 0) == 0) return translated("it doesn't work with this program");
  Plugin plugin{path, field_text(params.name), field_text(params.description), params.flags, library, build};
  if (plugin.name.empty()) plugin.name = path.stem().string();
  plugins.push_back(std::move(plugin));
  return {};
}

}  // namespace

std::vector<fs::path> plugin_folders() {
  std::vector<fs::path> folders = library_folders("plugin");
  folders.push_back(user_folder("XDG_DATA_HOME", ".local/share") / "Tarnwick" / "Animation Plugins");
  return folders;
}

PluginsFound find_plugins(std::span<const fs::path> folders, bool sorted) {
  PluginsFound found;
  LibraryFiles there = library_files(folders, "qdxpl");
  found.refused = std::move(there.refused);
  for (const fs::path& file : there.files)
    if (const std::string reason = load(file, found.plugins); !reason.empty())
      found.refused.push_back(file.string() + ": " + reason + ".");
  if (sorted)
    std::ranges::sort(found.plugins, [](const Plugin& a, const Plugin& b) {
      return std::pair(lower_case(a.name), a.path) < std::pair(lower_case(b.name), b.path);
    });
  return found;
}

}  // namespace vellum
