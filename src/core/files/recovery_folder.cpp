#include "core/files/recovery_folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <utility>

#include "base/user_folders.h"

namespace vellum {
namespace {

namespace fs = std::filesystem;

constexpr const char* kLockName = "lock";
constexpr const char* kExtension = ".copy";

}  // namespace

std::optional<FileLock> FileLock::take(const fs::path& path) {
  const int descriptor = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
  if (descriptor < 0) return std::nullopt;
  FileLock lock(descriptor);
  if (flock(descriptor, LOCK_EX | LOCK_NB) != 0) return std::nullopt;
  return lock;
}

FileLock::~FileLock() {
  if (descriptor_ >= 0) close(descriptor_);
}

FileLock::FileLock(FileLock&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}

fs::path recovery_store() { return user_folder("XDG_STATE_HOME", ".local/state") / "Tarnwick" / "recovery"; }

// Whoever makes, looks for or removes folders has the store's own lock for that moment: so none is met half
// made.

std::optional<RecoveryFolder> RecoveryFolder::create(const fs::path& store) {
  std::error_code error;
  fs::create_directories(store.parent_path(), error);
  mkdir(store.c_str(), 0700);  // documents may be private
  const auto store_lock = FileLock::take(store / kLockName);
  if (!store_lock) return std::nullopt;
  std::string path = (store / "run-XXXXXX").string();
  if (!mkdtemp(path.data())) return std::nullopt;
  auto lock = FileLock::take(fs::path(path) / kLockName);
  if (lock) return RecoveryFolder(store, path, std::move(*lock));
  rmdir(path.c_str());
  return std::nullopt;
}

std::vector<RecoveryFolder> RecoveryFolder::abandoned(const fs::path& store) {
  std::error_code error;
  std::vector<RecoveryFolder> found;
  if (!fs::is_directory(store, error)) return found;
  auto store_lock = FileLock::take(store / kLockName);
  if (!store_lock) return found;
  for (const auto& item : fs::directory_iterator(store, error)) {
    if (!item.is_directory(error) || item.is_symlink(error)) continue;
    auto lock = FileLock::take(item.path() / kLockName);
    if (!lock) continue;
    RecoveryFolder folder(store, item.path(), std::move(*lock));
    // What was being written when the process ended.
    for (const auto& file : fs::directory_iterator(item.path(), error))
      if (file.path().filename().string().starts_with(".vellum-save-")) fs::remove(file.path(), error);
    if (folder.copies().empty())
      folder.remove_leavings();
    else
      found.push_back(std::move(folder));
  }
  return found;
}

void RecoveryFolder::remove_leavings() const {
  unlink((path_ / kLockName).c_str());
  rmdir(path_.c_str());
}

RecoveryFolder::~RecoveryFolder() {
  if (path_.empty() || !copies().empty()) return;
  if (const auto store_lock = FileLock::take(store_ / kLockName)) remove_leavings();
}

fs::path RecoveryFolder::copy_path(std::uint64_t number) const {
  return path_ / (std::to_string(number) + kExtension);
}

std::vector<fs::path> RecoveryFolder::copies() const {
  std::error_code error;
  std::vector<fs::path> found;
  for (const auto& item : fs::directory_iterator(path_, error))
    if (item.path().extension() == kExtension && item.is_regular_file(error)) found.push_back(item.path());
  std::ranges::sort(found);
  return found;
}

}  // namespace vellum
