// Names of temporary files.
#pragma once

#include <filesystem>
#include <string_view>

namespace vellum {

/// `name` in the private temporary folder ($XDG_CACHE_HOME/Tarnwick/temp, made on first use with mode 0700).
std::filesystem::path TempFolderPath(std::string_view name);
/// `name` beside the running program.
std::filesystem::path ProgramFolderPath(std::string_view name);
/// The first of the names "Temp%s_%05d%s" (stem, counter from `start`, extension) in the temporary folder
/// that does not exist; the file is created empty, so that nobody else takes the name. After the 99,999th try
/// the last name is returned whether it exists or not.
std::filesystem::path NextTempName(std::string_view stem, std::string_view extension, int start);

}  // namespace vellum
