// Settings that the core reads. Plain variables of the interface thread; who uses one clamps it to its range.
#pragma once

#include <string>

#include "image/settings.h"

namespace vellum::settings {

// Reading
inline int APNGOpen = 1;               ///< flag: animated PNG files open as animations
inline int APNGIncludeTextChunks = 1;  ///< flag: text chunks of animated PNG files are read and written
inline int AutomaticMngToPng = 0;      ///< flag: an MNG that is opened becomes an unsaved animated PNG
inline int WarnBadPalChunk = 1;        ///< flag: a palette at a wrong place is told
inline int WarnBadFileCRC = 1;         ///< flag of a warning; holds for the run, never stored

// Writing
inline int AutoUpdateTime = 1;          ///< flag: tIME gets the local time at each save
inline int CreateBackups = 0;           ///< flag
inline int IdentifyFiles = 1;           ///< flag: a comment in saved files tells who made them
inline int KeepStoredImages = 1;        ///< flag: images that nobody changed are written as they were stored
inline std::string IdentificationFile;  ///< text of that comment; empty: name and organization of the user

// New documents and chunks
inline int AddInstructionsToNew = 1;  ///< flag: new documents begin with a comment that says how to go on
inline int DefaultAnimationType = 1;  ///< 0 animated PNG, 1 MNG, 2 WebP
inline int DefaultWidth = 160;        ///< pixels, 1 to 1000000
inline int DefaultDepth = 100;        ///< height in pixels, 1 to 1000000
inline int DefaultDelay = 100;        ///< ms, 0 to 60000: of images that are inserted, pasted or dropped
inline int DefaultPalette = 5;        ///< id of a built-in palette, 0 to 8
inline int DefaultViewMode = 5;       ///< index into the thumbnail scales, 0 to 7
inline int InterlacedImage = 0;       ///< flag: new still images are interlaced
inline std::string ForRent = "This space for rent...";  ///< comment of new text chunks

// Pictures that come into a document
inline int AllowAdvancedPalettes = 0;  ///< flag: ask what happens to colors that the palette lacks
inline int WidePaletteDither = 1;      ///< flag: a picture that brings its own palette is dithered to it
inline int WidePaletteInterlace = 0;   ///< flag: ... and makes the header interlaced
inline int PngPaletteOption = 2;       ///< 0 replace the palette, 1 dither to it, 2 remap to it
inline int InitialAlphaLevel = 255;    ///< 0 to 255: alpha of pixels that had none

// Playing and composing
inline int ClassicPlayback = 0;  ///< flag: frames are composed by the rules of earlier versions

// Editing the list
inline int UndoLevels = 10;         ///< 4 to 32
inline int WarnKillChunk = 1;       ///< flag: chunks that can't be deleted are told
inline int WarnKillIDAT = 1;        ///< flag
inline int WarnKillPLTE = 1;        ///< flag
inline int WarnMultipleDelete = 1;  ///< flag: deleting several chunks is asked about
inline int WarnMerge = 1;           ///< flag: merging different color types is told

}  // namespace vellum::settings
