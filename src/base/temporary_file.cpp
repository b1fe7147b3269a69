#include "base/temporary_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <map>
#include <mutex>
#include <new>
#include <string>

namespace vellum {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr const char* kPrefix = ".vellum-save-";

bool is_due(const fs::path& folder) {
  constexpr std::chrono::minutes kRest(1);
  constexpr std::size_t kMostFolders = 256;
  static std::mutex lock;
  static std::map<fs::path, Clock::time_point> swept;
  const auto now = Clock::now();
  const std::lock_guard guard(lock);
  if (swept.size() >= kMostFolders) swept.clear();
  const auto [at, first] = swept.try_emplace(folder, now);
  if (!first && now - at->second < kRest) return false;
  at->second = now;
  return true;
}

/// Whoever made it is gone when nobody has its lock.
void remove_abandoned(const fs::path& file) {
  const int descriptor = open(file.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
  if (descriptor < 0) return;
  struct stat status {};
  if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && flock(descriptor, LOCK_EX | LOCK_NB) == 0)
    unlink(file.c_str());
  close(descriptor);
}

/// False when somebody swept the file in the moment before it was locked.
bool lock_own(int descriptor) {
  while (flock(descriptor, LOCK_EX) != 0)
    if (errno != EINTR) return true;  // a file system without locks: nobody can sweep there either
  struct stat status {};
  return fstat(descriptor, &status) != 0 || status.st_nlink > 0;
}

}  // namespace

int create_temporary(const fs::path& folder, fs::path& made) {
  constexpr int kTries = 16;
  for (int i = 0; i < kTries; ++i) {
    std::string pattern = (folder / (std::string(kPrefix) + "XXXXXX")).string();
    const int descriptor = mkostemp(pattern.data(), O_CLOEXEC);
    if (descriptor < 0) return -1;
    try {
      made = pattern;
    } catch (const std::bad_alloc&) {  // nobody else knows its name
      unlink(pattern.c_str());
      close(descriptor);
      throw;
    }
    if (lock_own(descriptor)) return descriptor;
    close(descriptor);
  }
  errno = EAGAIN;
  return -1;
}

void sweep_temporaries(const fs::path& folder) {
  if (!is_due(folder)) return;
  std::error_code error;
  for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error))
    if (at->path().filename().string().starts_with(kPrefix)) remove_abandoned(at->path());
}

}  // namespace vellum
