#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/file.h"
#include "base/file_attributes.h"
#include "base/string_table.h"
#include "base/temporary_file.h"
#include "base/text.h"
#include "base/translation.h"

namespace vellum {
namespace {

constexpr std::size_t kWriteBuffer = std::size_t{256} << 10;

/// The permissions that this process takes from new files. Asking means setting, which all threads would see:
/// it is done before there are any.
const mode_t kMask = [] {
  const mode_t mask = umask(0);
  umask(mask);
  return mask;
}();

/// The file that a link at `path` leads to, also where that file does not exist yet.
std::filesystem::path without_links(std::filesystem::path path) {
  std::error_code error;
  for (int hops = 0; hops < 40 && std::filesystem::is_symlink(path, error); ++hops) {
    const auto next = std::filesystem::read_symlink(path, error);
    if (error) break;
    path = next.is_absolute() ? next : path.parent_path() / next;
  }
  return path;
}

std::filesystem::path folder_of(const std::filesystem::path& file) {
  return file.has_parent_path() ? file.parent_path() : std::filesystem::path(".");
}

bool write_all(int fd, std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(fd, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
  return true;
}

}  // namespace

SafeFile::SafeFile(const std::filesystem::path& target) : target_(without_links(target)) {
  struct stat old {};
  const bool exists = stat(target.c_str(), &old) == 0;
  const std::filesystem::path folder = folder_of(target_);
  if (exists && !S_ISREG(old.st_mode))
    reason_ = S_ISDIR(old.st_mode) ? translated("it is a folder")
                                   : translated("it is no regular file, and is not replaced");
  else if (access(exists ? target_.c_str() : folder.c_str(), exists ? W_OK : W_OK | X_OK) != 0)
    fail("open", errno);
  if (exists) like_ = target_;
  if (exists && old.st_nlink > 1)
    notes_.push_back(with_value(string_text(StringId::NamesParted), std::to_string(old.st_nlink)));
}

SafeFile::SafeFile(const std::filesystem::path& target, const std::filesystem::path& like)
    : target_(target), like_(like) {}

bool SafeFile::open_temporary() {
  if (descriptor_ >= 0) return true;
  sweep_temporaries(folder_of(target_));
  descriptor_ = create_temporary(target_.parent_path(), temporary_);
  if (descriptor_ < 0) return fail("create", errno);
  struct stat old {};
  const bool alike = !like_.empty() && stat(like_.c_str(), &old) == 0;
  if (!(alike ? take_attributes(descriptor_, like_, old, notes_) : fchmod(descriptor_, 0666 & ~kMask) == 0))
    return fail("set the permissions of", errno);
  buffer_.reserve(kWriteBuffer);
  return true;
}

SafeFile::~SafeFile() { discard(); }

bool SafeFile::fail(const char* action, int error) {
  if (reason_.empty())
    reason_ = format_text(translated("could not %s the file: %s"), translated(action), std::strerror(error));
  error_ = std::error_code(error, std::generic_category());
  discard();
  return false;
}

void SafeFile::discard() {
  if (!temporary_.empty()) unlink(temporary_.c_str());
  temporary_.clear();
  if (descriptor_ >= 0) close(descriptor_);
  descriptor_ = -1;
}

bool SafeFile::flush() {
  if (!write_all(descriptor_, buffer_)) return fail("write", errno);
  buffer_.clear();
  return true;
}

bool SafeFile::write(std::span<const std::uint8_t> bytes) {
  if (!ok() || !open_temporary()) return false;
  if (buffer_.size() + bytes.size() > kWriteBuffer && !flush()) return false;
  if (bytes.size() > kWriteBuffer) return write_all(descriptor_, bytes) || fail("write", errno);
  buffer_.insert(buffer_.end(), bytes.begin(), bytes.end());
  return true;
}

bool SafeFile::rewrite(std::uint64_t offset, std::span<const std::uint8_t> bytes) {
  if (!ok() || !open_temporary() || !flush()) return false;
  while (!bytes.empty()) {
    const ssize_t put = pwrite(descriptor_, bytes.data(), bytes.size(), static_cast<off_t>(offset));
    if (put < 0 && errno == EINTR) continue;
    if (put < 0) return fail("write", errno);
    offset += static_cast<std::uint64_t>(put);
    bytes = bytes.subspan(static_cast<std::size_t>(put));
  }
  return true;
}

bool SafeFile::commit() {
  if (!ok() || !open_temporary() || !flush()) return false;
  if (fsync(descriptor_) != 0) return fail("write", errno);
  // Open, and so locked, until it has its name: nobody may take it for what a killed program left.
  if (rename(temporary_.c_str(), target_.c_str()) != 0) return fail("rename", errno);
  temporary_.clear();
  close(descriptor_);
  descriptor_ = -1;
  const int folder = open(folder_of(target_).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder < 0) return true;
  fsync(folder);  // best effort: the file itself is safe already
  close(folder);
  return true;
}

bool replace_by_copy(const std::filesystem::path& source, const std::filesystem::path& target,
                     std::error_code& error) {
  error.clear();
  const int from = open(source.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  struct stat status {};
  if (from < 0 || fstat(from, &status) != 0 || !S_ISREG(status.st_mode)) {
    error = std::error_code(from < 0 ? errno : EINVAL, std::generic_category());
    if (from >= 0) close(from);
    return false;
  }
  SafeFile file(target, source);
  std::vector<std::uint8_t> bytes(kWriteBuffer);
  ssize_t got = 0;
  do {
    got = read(from, bytes.data(), bytes.size());
    if (got < 0 && errno != EINTR) error = std::error_code(errno, std::generic_category());
  } while (!error && got != 0 &&
           (got < 0 || file.write(std::span(bytes).first(static_cast<std::size_t>(got)))));
  close(from);
  if (!error && file.commit()) return true;
  if (!error) error = file.error();
  return false;
}

}  // namespace vellum
