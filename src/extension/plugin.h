// Animation plugins: shared libraries that make pictures, for which the program makes the documents. The
// interface between both is data/plugins/vellum_plugin.h.
#pragma once

#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "base/host.h"
#include "core/model/document.h"
#include "vellum_plugin.h"

namespace vellum {

struct Plugin {
  std::filesystem::path path;
  std::string name, description;  ///< UTF-8
  std::uint32_t flags = 0;
  std::shared_ptr<void> library;  ///< stays loaded while a plugin of it is held
  std::uint32_t (*build)(void* window, VellumBuild* build, std::uint32_t reserved) = nullptr;
};

struct PluginsFound {
  std::vector<Plugin> plugins;
  std::vector<std::string> refused;  ///< file and reason, a sentence each
};

/// The folders that are searched: beside the program, in the libraries of an installation around it, and the
/// person's own, $XDG_DATA_HOME/Tarnwick/Animation Plugins.
std::vector<std::filesystem::path> plugin_folders();

/// Loads what is named QDXPL*_x64*.so (or .dll), in any case, in these folders, sorted by its name or as it
/// is found; of one file name the first. A folder or file that others than its owner can write to, or that
/// belongs to another user, is refused; so is a library that doesn't export both functions or doesn't take
/// our record.
PluginsFound find_plugins(std::span<const std::filesystem::path> folders, bool sorted);

/// Runs a plugin on this thread and takes the documents of `kind` that it builds, named "NAME1" and so on;
/// the host shows the progress and may stop it. One without an end is ended where it has frames, and given up
/// else. `window` is a token for the plugin, which may be null. Empty when the plugin built nothing. Calls of
/// the plugin's that come too late, from another thread, twice, or with values out of range do nothing and
/// give 0. One plugin runs at a time; another that is asked for meanwhile builds nothing.
std::vector<DocumentWindow> run_plugin(const Plugin& plugin, DocumentKind kind, void* window, Host& host);

}  // namespace vellum
