// The list of recent files that all programs of a desktop share.
#pragma once

#include <filesystem>

namespace vellum {

/// Puts a file that was opened or saved onto it. Silent where the list can't be read or written.
void share_recent_file(const std::filesystem::path& file);

}  // namespace vellum
