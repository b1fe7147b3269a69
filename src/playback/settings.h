// Settings of playback.
#pragma once

namespace vellum::settings {

inline int DisplayInterlace = 0;  ///< flag: a still image is shown pass by pass
inline int InterlaceDelay = 4;    ///< ms between two passes, 1 to 10000
inline int ViewStackSize = 1024;  ///< nested loops of an MNG, 1024 to 32700

}  // namespace vellum::settings
