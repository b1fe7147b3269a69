// Shared libraries of others: where they are looked for, and which are taken.
#pragma once

#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace vellum {

/// The folder `name` beside the program, and in the libraries of an installation around it.
std::vector<std::filesystem::path> library_folders(const char* name);

struct LibraryFiles {
  std::vector<std::filesystem::path> files;
  std::vector<std::string> refused;  ///< folders that others can write to, a sentence each
};

/// What is named PREFIX*_x64*.so (or .dll) in these folders, in any case; `prefix` is in small letters. Of
/// one file name the first.
LibraryFiles library_files(std::span<const std::filesystem::path> folders, const char* prefix);
bool is_library_name(const std::string& name, const char* prefix);

/// Nobody but its owner, who is the user or the system, may write there.
bool is_ours(const std::filesystem::path& path);

/// Loads it, and holds it until the last copy goes. Null, with why behind the name of the file.
std::shared_ptr<void> load_library(const std::filesystem::path& path, std::string& reason);

void* library_symbol(void* library, const char* name);

/// The function of this name, or null.
template <class Function>
Function* library_function(const std::shared_ptr<void>& library, const char* name) {
  return reinterpret_cast<Function*>(library_symbol(library.get(), name));
}

}  // namespace vellum
