#include <algorithm>
#include <map>

#include "base/text.h"
#include "base/translation.h"
#include "extension/theme.h"

namespace fs = std::filesystem;

namespace vellum {
namespace {

constexpr const char* kPrefix = "theme_";

/// "Light" of "THEME_Light_x64.so".
std::string name_of(const std::string& file) {
  const std::size_t begin = std::string_view(kPrefix).size();
  const std::string name = file.substr(begin, lower_case(file).find("_x64") - std::min(begin, file.size()));
  return name.empty() || !is_utf8(name) ? file : name;
}

ThemeCalls calls_of(const std::shared_ptr<void>& library) {
  const auto find = [&]<class Function>(Function*& call, const char* name) {
    call = library_function<Function>(library, name);
  };
  ThemeCalls calls;
  find(calls.init, "THEMEInit");
  find(calls.end, "THEMEDeInit");
  find(calls.bitmap, "THEMEGetBitmap");
  find(calls.support, "THEMEGetSupport");
  find(calls.button, "THEMEDrawButton");
  find(calls.small_button, "THEMEDrawSmallButton");
  find(calls.tool, "THEMEDrawTool");
  find(calls.toolbar, "THEMEDrawToolbarBackground");
  find(calls.metric, "THEMEGetMetric");
  find(calls.configure, "THEMEConfigure");
  find(calls.color, "THEMEGetColor");
  return calls;
}

bool can_be_used(const ThemeCalls& calls) {
  return calls.support && calls.button && calls.small_button && calls.tool && calls.toolbar && calls.metric;
}

bool names_all_colors(const ThemeCalls& calls) {
  std::uint32_t color = 0;
  for (std::uint32_t number = 0; number < VELLUM_COLOR_COUNT; ++number)
    if (!calls.color || calls.color(number, &color) == 0) return false;
  return true;
}

/// What keeps a theme started: of one library there is one at a time, whoever asks for it.
std::shared_ptr<void> start(const std::shared_ptr<void>& library, const ThemeCalls& calls) {
  static std::map<void*, std::weak_ptr<void>> started;
  std::weak_ptr<void>& kept = started[library.get()];
  if (std::shared_ptr<void> running = kept.lock()) return running;
  if (calls.init(VELLUM_THEME_VERSION) == 0) return nullptr;
  std::shared_ptr<void> running(library.get(), [library, end = calls.end](void*) { end(); });
  kept = running;
  return running;
}

/// Empty, or why it isn't taken.
std::string load(const fs::path& path, Theme& theme) {
  std::string reason;
  const std::shared_ptr<void> library = load_library(path, reason);
  if (!library) return reason;
  theme.file = path.filename().string();
  theme.name = name_of(theme.file);
  theme.calls = calls_of(library);
  if (!theme.calls.init || !theme.calls.end || !theme.calls.bitmap)
    return translated("it lacks a function of themes");
  theme.running = start(library, theme.calls);
  if (!theme.running) return translated("it doesn't work with this program");
  if (!can_be_used(theme.calls)) {
    theme.incomplete = translated("it lacks a function that draws");
    return {};
  }
  theme.supported = theme.calls.support();
  theme.colors = names_all_colors(theme.calls);
  return {};
}

}  // namespace

std::uint32_t Theme::color(int number) const {
  std::uint32_t color = 0;
  calls.color(static_cast<std::uint32_t>(number), &color);
  return color & 0xFFFFFF;
}

std::vector<fs::path> theme_folders() { return library_folders("theme"); }

std::optional<Theme> load_theme(const std::string& file, std::span<const fs::path> folders,
                                std::string& reason) {
  reason = translated("it is no name of a theme");
  if (file.find('/') != std::string::npos || !is_library_name(file, kPrefix)) return std::nullopt;
  const LibraryFiles there = library_files(folders, kPrefix);
  reason = there.refused.empty() ? translated("it isn't there") : there.refused.front();
  for (const fs::path& path : there.files) {
    if (path.filename() != file) continue;
    Theme theme;
    reason = load(path, theme);
    if (reason.empty()) reason = theme.incomplete;
    if (reason.empty()) return theme;
    return std::nullopt;
  }
  return std::nullopt;
}

ThemesFound find_themes(std::span<const fs::path> folders) {
  ThemesFound found;
  LibraryFiles there = library_files(folders, kPrefix);
  found.refused = std::move(there.refused);
  for (const fs::path& path : there.files) {
    Theme theme;
    if (const std::string reason = load(path, theme); reason.empty())
      found.themes.push_back(std::move(theme));
    else
      found.refused.push_back(path.string() + ": " + reason + ".");
  }
  std::ranges::sort(found.themes, {}, [](const Theme& theme) { return lower_case(theme.name); });
  return found;
}

}  // namespace vellum
