// The folders in which running programs keep copies of changed documents: one for each process, with a lock
// that the system gives up when the process ends, however it ends.
#pragma once

#include <filesystem>
#include <optional>
#include <vector>

namespace vellum {

/// An open file with a lock on it that no other process has; released when the object goes.
class FileLock {
 public:
  /// Makes the file where there is none. Empty when another process has the lock, or on any failure.
  static std::optional<FileLock> take(const std::filesystem::path& path);
  ~FileLock();
  FileLock(FileLock&& other) noexcept;
  FileLock& operator=(FileLock&&) = delete;

 private:
  explicit FileLock(int descriptor) : descriptor_(descriptor) {}
  int descriptor_;
};

/// $XDG_STATE_HOME/Tarnwick/recovery.
std::filesystem::path recovery_store();

/// A folder below the store that belongs to this process as long as the object lives. When it goes, an empty
/// folder goes too; one with copies stays, and is then found as abandoned.
class RecoveryFolder {
 public:
  /// A new one. Empty when it can't be made, or not at this moment.
  static std::optional<RecoveryFolder> create(const std::filesystem::path& store);
  /// Those of processes that have ended and left copies, which now belong to this one. What such a process
  /// left without copies is removed.
  static std::vector<RecoveryFolder> abandoned(const std::filesystem::path& store);
  ~RecoveryFolder();
  RecoveryFolder(RecoveryFolder&&) = default;
  RecoveryFolder& operator=(RecoveryFolder&&) = delete;

  /// Where the copy with this number lies, or would lie.
  std::filesystem::path copy_path(std::uint64_t number) const;
  /// The copies that are there, by name.
  std::vector<std::filesystem::path> copies() const;

 private:
  RecoveryFolder(std::filesystem::path store, std::filesystem::path path, FileLock lock)
      : store_(std::move(store)), path_(std::move(path)), lock_(std::move(lock)) {}
  void remove_leavings() const;

  std::filesystem::path store_, path_;
  FileLock lock_;
};

}  // namespace vellum
