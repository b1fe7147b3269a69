// Settings that the history lists and the configuration file itself read. Plain variables of the interface
// thread; who uses one clamps it to its range.
#pragma once

#include <string>

namespace vellum::settings {

inline int HistoryEnable = 1;              ///< flag: fields remember what was typed into them
inline int HistoryMaximumCount = 10;       ///< 4 to 64 lines
inline int EditListMaximum = 10;           ///< 2 to 128 lines, where a line is a set of values
inline int RememberFileHistoryCount = 10;  ///< 0 to 20 files; 0: no history

// Written to the file, never read from it.
inline int VersionMajor = 15;
inline int VersionLetter = 'a';  ///< a character's code
inline int VersionRevision = 1;

}  // namespace vellum::settings
