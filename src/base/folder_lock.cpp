#include "base/folder_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>

namespace vellum {

FolderLock::FolderLock(const std::filesystem::path& folder)
    : descriptor_(open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  constexpr int kTries = 200;
  constexpr std::chrono::milliseconds kRest(10);
  for (int i = 0; descriptor_ >= 0 && i < kTries && flock(descriptor_, LOCK_EX | LOCK_NB) != 0; ++i) {
    if (errno != EWOULDBLOCK && errno != EINTR) break;
    std::this_thread::sleep_for(kRest);
  }
}

FolderLock::~FolderLock() {
  if (descriptor_ >= 0) close(descriptor_);
}

}  // namespace vellum
