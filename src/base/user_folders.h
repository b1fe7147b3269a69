// Where a user's own files lie, after the XDG Base Directory standard.
#pragma once

#include <filesystem>
#include <string_view>

namespace vellum {

/// The folder that `variable` ("XDG_STATE_HOME") names; `usual` (".local/state") below the home folder where
/// it is unset or, as that standard says, not absolute. It need not exist.
std::filesystem::path user_folder(const char* variable, std::string_view usual);

}  // namespace vellum
