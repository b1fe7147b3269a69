#include "extension/library_folder.h"

#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <set>

#include "base/text.h"
#include "base/translation.h"

namespace fs = std::filesystem;

namespace vellum {

std::vector<fs::path> library_folders(const char* name) {
  std::error_code error;
  const fs::path program = fs::read_symlink("/proc/self/exe", error).parent_path();
  if (error) return {};
  std::vector<fs::path> folders = {program / name};
  for (const char* libraries : {"lib", "lib64", "lib/x86_64-linux-gnu", "lib/aarch64-linux-gnu"})
    folders.push_back(program.parent_path() / libraries / "vellumcraft" / name);
  return folders;
}

bool is_library_name(const std::string& name, const char* prefix) {
  const std::string lower = lower_case(name);
  return lower.starts_with(prefix) && lower.find("_x64") != std::string::npos &&
         (lower.ends_with(".so") || lower.ends_with(".dll"));
}

bool is_ours(const fs::path& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && (status.st_uid == 0 || status.st_uid == geteuid()) &&
         (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

LibraryFiles library_files(std::span<const fs::path> folders, const char* prefix) {
  LibraryFiles found;
  std::set<fs::path> names;
  for (const fs::path& folder : folders) {
    std::vector<fs::path> files;
    std::error_code error;
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error))
      if (is_library_name(at->path().filename().string(), prefix) && at->is_regular_file(error))
        files.push_back(at->path());
    if (files.empty()) continue;
    if (!is_ours(folder)) {
      found.refused.push_back(folder.string() + translated(": others can write to this folder."));
      continue;
    }
    for (fs::path& file : files)
      if (names.insert(file.filename()).second) found.files.push_back(std::move(file));
  }
  return found;
}

std::shared_ptr<void> load_library(const fs::path& path, std::string& reason) {
  if (!is_ours(path)) {
    reason = translated("others can write to it");
    return nullptr;
  }
  std::shared_ptr<void> library(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL), [](void* handle) {
    if (handle) dlclose(handle);
  });
  if (library) return library;
  reason = translated("it can't be loaded");
  return nullptr;
}

void* library_symbol(void* library, const char* name) { return dlsym(library, name); }

}  // namespace vellum
