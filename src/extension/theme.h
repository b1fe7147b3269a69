// Themes: shared libraries that draw the toolbar and the buttons of the desktop program and name its colors.
// The interface between both is data/themes/vellum_theme.h.
#pragma once

#include <optional>

#include "extension/library_folder.h"
#include "vellum_theme.h"

namespace vellum {

/// The look of the desktop itself, which needs no file: what `ThemeCurrent` holds where nothing was chosen.
inline constexpr const char* kDefaultTheme = "THEME_Carbon Medium.dll";

/// Functions of a theme; null where it hasn't got one.
struct ThemeCalls {
  decltype(THEMEInit)* init = nullptr;
  decltype(THEMEDeInit)* end = nullptr;
  decltype(THEMEGetBitmap)* bitmap = nullptr;
  decltype(THEMEGetSupport)* support = nullptr;
  decltype(THEMEDrawButton)* button = nullptr;
  decltype(THEMEDrawSmallButton)* small_button = nullptr;
  decltype(THEMEDrawTool)* tool = nullptr;
  decltype(THEMEDrawToolbarBackground)* toolbar = nullptr;
  decltype(THEMEGetMetric)* metric = nullptr;
  decltype(THEMEConfigure)* configure = nullptr;
  decltype(THEMEGetColor)* color = nullptr;
};

/// A theme that is started; it ends with the last record that holds it.
struct Theme {
  std::string file;  ///< name of the file, without its folder
  std::string name;  ///< for people
  ThemeCalls calls;
  std::shared_ptr<void> running = {};
  std::string incomplete = {};  ///< why it can be listed and not used; empty where it can
  std::uint32_t supported = 0;  ///< VELLUM_SUPPORT_...; of one that can be used
  bool colors = false;          ///< it names all colors

  bool draws(std::uint32_t what) const { return (supported & what) != 0; }
  std::uint32_t color(int number) const;  ///< 0xRRGGBB; of one with colors
};

std::vector<std::filesystem::path> theme_folders();

/// Starts a theme of these folders. `file` is a name without a folder. Nothing, with the reason, where it
/// isn't there, isn't taken (as of plugins), lacks what is needed to use it, or doesn't start.
std::optional<Theme> load_theme(const std::string& file, std::span<const std::filesystem::path> folders,
                                std::string& reason);

struct ThemesFound {
  std::vector<Theme> themes;         ///< by their names; of one file name the first
  std::vector<std::string> refused;  ///< file and reason, a sentence each
};

/// All themes that have what is needed to be listed.
ThemesFound find_themes(std::span<const std::filesystem::path> folders);

}  // namespace vellum
