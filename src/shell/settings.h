// Settings that the desktop program reads. Plain variables of the interface thread; who uses one clamps it to
// its range.
#pragma once

#include <string>

namespace vellum::settings {

/// A window edge that was never stored.
inline constexpr int kUnsetEdge = 0x7FFFFFFF;

inline int FileWindowX = 420;           ///< least width of a document window, in pixels
inline int FileWindowY = 0;             ///< height of a new document window in pixels; 0: free
inline int OptimumVerticalWindows = 1;  ///< flag: new document windows take the full height
inline int StartMaximized = 1;          ///< flag: the main window was maximized when the program ended
inline int StickyWindowLeft = kUnsetEdge, StickyWindowTop = kUnsetEdge;  ///< outer edges of the main window
inline int StickyWindowRight = kUnsetEdge, StickyWindowBottom = kUnsetEdge;
inline std::string OpenPath;  ///< folder of the open dialog; empty: the documents folder

}  // namespace vellum::settings
