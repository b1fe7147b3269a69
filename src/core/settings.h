// Settings that the core reads. Plain variables of the interface thread; who uses one clamps it to its range.
#pragma once

#include <string>

#include "image/settings.h"

namespace vellum::settings {

inline int APNGOpen = 1;               ///< flag: animated PNG files open as animations
inline int APNGIncludeTextChunks = 1;  ///< flag: text chunks of animated PNG files are read and written
inline int AutoUpdateTime = 1;         ///< flag: tIME gets the local time at each save
inline int CreateBackups = 0;          ///< flag
inline int IdentifyFiles = 1;          ///< flag: MNG files get a comment that tells who made them
inline std::string
    IdentificationFile;          ///< a file whose text goes into that comment; empty: the account's name
inline int WarnBadPalChunk = 1;  ///< flag of a warning
inline int WarnBadFileCRC = 1;   ///< flag of a warning; holds for the run, never stored
inline int DefaultWidth = 160;   ///< pixels, 1 to 1000000
inline int DefaultDepth = 100;   ///< height in pixels, 1 to 1000000
inline int DefaultPalette = 5;   ///< id of a built-in palette, 0 to 8
inline int DefaultViewMode = 5;  ///< index into the thumbnail scales, 0 to 7
inline std::string ForRent = "This space for rent...";  ///< comment of new text chunks

}  // namespace vellum::settings
