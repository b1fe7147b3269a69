// Settings of plugins and themes.
#pragma once

#include <string>

namespace vellum::settings {

inline int HidePlugins = 0;        ///< flag: the menu has no plugins
inline int SortPlugins = 1;        ///< flag: plugins stand in the menu by name
inline int ShowPluginMessage = 1;  ///< flag: plugins that could not be loaded are told, once a run
inline std::string ThemeCurrent = "THEME_Carbon Medium.dll";  ///< name of a theme

// Kept for files that hold them; nothing reads them.
inline int ShowDriverMessage = 1;           ///< flag
inline int ShowPluginAdvertBanner = 1;      ///< flag
inline int ShowPluginAdvertButton = 1;      ///< flag
inline int ShowPluginAdvertSigns = 1;       ///< flag
inline int ShowPluginAdvertSpin = 1;        ///< flag
inline int ShowPluginAdvertTransition = 1;  ///< flag

}  // namespace vellum::settings
