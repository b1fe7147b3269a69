// Two programs that change a file of one folder do so one after the other.
#pragma once

#include <filesystem>

namespace vellum {

/// Held for as long as it lives; the system gives it up when the process ends. Whoever waits does so for two
/// seconds at most and then goes on without it: a program that was stopped must not stop all others. Nothing
/// is left in the folder.
class FolderLock {
 public:
  explicit FolderLock(const std::filesystem::path& folder);
  ~FolderLock();
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

 private:
  int descriptor_;
};

}  // namespace vellum
