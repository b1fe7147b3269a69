#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "base/text.h"
#include "extension/plugin.h"

namespace fs = std::filesystem;

namespace vellum {
namespace {

static_assert(sizeof(VellumPluginParams) == 600 && offsetof(VellumPluginParams, name) == 8 &&
              offsetof(VellumPluginParams, description) == 269 && offsetof(VellumPluginParams, flags) == 532);

bool is_plugin_name(const std::string& name) {
  const std::string lower = lower_case(name);
  return lower.starts_with("qdxpl") && lower.find("_x64") != std::string::npos &&
         (lower.ends_with(".so") || lower.ends_with(".dll"));
}

/// Nobody but its owner, who is the user or the system, may write there.
bool is_ours(const fs::path& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && (status.st_uid == 0 || status.st_uid == geteuid()) &&
         (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

/// The text of a field that need not be ended.
template <std::size_t Size>
std::string field_text(const char (&field)[Size]) {
  std::string text(field, strnlen(field, Size - 1));
  return is_utf8(text) ? text : utf8_from_latin1(text);
}

/// Empty, or why it isn't taken.
std::string load(const fs::path& path, std::vector<Plugin>& plugins) {
  if (!is_ours(path)) return "others can write to it";
  const std::shared_ptr<void> library(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL), [](void* handle) {
    if (handle) dlclose(handle);
  });
  if (!library) return "it can't be loaded";
  const auto get =
      reinterpret_cast<decltype(&PLUGIN15GetPluginParams)>(dlsym(library.get(), "PLUGIN15GetPluginParams"));
  const auto build = reinterpret_cast<decltype(&PLUGIN15DoBuild)>(dlsym(library.get(), "PLUGIN15DoBuild"));
  if (!get || !build) return "it lacks a function of plugins";
  VellumPluginParams params{};
  params.size = sizeof params;
  params.version = VELLUM_PLUGIN_VERSION;
  if (get(&params, 0) == 0) return "it doesn't work with this program";
  Plugin plugin{path, field_text(params.name), field_text(params.description), params.flags, library, build};
  if (plugin.name.empty()) plugin.name = path.stem().string();
  plugins.push_back(std::move(plugin));
  return {};
}

std::vector<fs::path> files_of(const fs::path& folder) {
  std::vector<fs::path> files;
  std::error_code error;
  for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error))
    if (is_plugin_name(at->path().filename().string()) && at->is_regular_file(error))
      files.push_back(at->path());
  return files;
}

}  // namespace

std::vector<fs::path> plugin_folders() {
  std::error_code error;
  const fs::path program = fs::read_symlink("/proc/self/exe", error).parent_path();
  if (error) return {};
  std::vector<fs::path> folders = {program / "plugin"};
  for (const char* libraries : {"lib", "lib64", "lib/x86_64-linux-gnu", "lib/aarch64-linux-gnu"})
    folders.push_back(program.parent_path() / libraries / "vellumcraft/plugin");
  return folders;
}

PluginsFound find_plugins(std::span<const fs::path> folders, bool sorted) {
  PluginsFound found;
  for (const fs::path& folder : folders) {
    const std::vector<fs::path> files = files_of(folder);
    const bool ours = files.empty() || is_ours(folder);
    if (!ours) found.refused.push_back(folder.string() + ": others can write to this folder.");
    if (!ours) continue;
    for (const fs::path& file : files)
      if (const std::string reason = load(file, found.plugins); !reason.empty())
        found.refused.push_back(file.string() + ": " + reason + ".");
  }
  if (sorted)
    std::ranges::sort(found.plugins, [](const Plugin& a, const Plugin& b) {
      return std::pair(lower_case(a.name), a.path) < std::pair(lower_case(b.name), b.path);
    });
  return found;
}

}  // namespace vellum
