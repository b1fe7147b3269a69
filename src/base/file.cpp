#include "base/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <utility>

#include "base/file_mapping.h"
#include "base/string_table.h"
#include "base/text.h"

namespace vellum {
namespace {

/// Longest name of a backup, in bytes.
constexpr std::size_t kMaximumFileName = 259;
constexpr std::size_t kWriteBuffer = std::size_t{256} << 10;

/// The permissions that this process takes from new files. Asking means setting, which all threads would see:
/// it is done before there are any.
const mode_t kMask = [] {
  const mode_t mask = umask(0);
  umask(mask);
  return mask;
}();

class Descriptor {
 public:
  explicit Descriptor(int fd) : fd_(fd) {}
  ~Descriptor() {
    if (fd_ >= 0) close(fd_);
  }
  Descriptor(Descriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  Descriptor& operator=(Descriptor&&) = delete;
  int get() const { return fd_; }

 private:
  int fd_;
};

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

/// A regular file of at most `limit` bytes that is open, and how long it is.
struct OpenFile {
  Descriptor descriptor;
  std::uint64_t size = 0;
};

std::optional<OpenFile> open_file(const std::filesystem::path& path, std::string& reason,
                                  std::uint64_t limit) {
  // Not blocking: a name of a pipe must not hang the program.
  OpenFile file{Descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK))};
  struct stat status {};
  if (file.descriptor.get() < 0 || fstat(file.descriptor.get(), &status) != 0) {
    reason = std::strerror(errno);
    return std::nullopt;
  }
  if (!S_ISREG(status.st_mode)) {
    reason = S_ISDIR(status.st_mode) ? std::strerror(EISDIR) : "not a regular file";
    return std::nullopt;
  }
  file.size = static_cast<std::uint64_t>(status.st_size);
  if (file.size > limit) {
    reason = "the file is too long";
    return std::nullopt;
  }
  return file;
}

/// The first `most` bytes, or what is there.
std::optional<FileContent> read_bytes(const OpenFile& file, std::string& reason, std::uint64_t most) {
  ChunkHandle block = ChunkHandle::create_for_overwrite(static_cast<std::size_t>(std::min(file.size, most)));
  if (!block) {
    reason = std::strerror(ENOMEM);
    return std::nullopt;
  }
  std::size_t have = 0;
  while (have < block.size()) {
    const ssize_t got = read(file.descriptor.get(), block.edit() + have, block.size() - have);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) {
      reason = std::strerror(errno);
      return std::nullopt;
    }
    if (got == 0)
      return FileContent(ChunkHandle::copy_of(block.bytes().first(have), 0));  // cut while it was read
    have += static_cast<std::size_t>(got);
  }
  return FileContent(std::move(block));
}

}  // namespace

FileContent::FileContent(std::shared_ptr<const FileMapping> mapping) : mapping_(std::move(mapping)) {}

std::span<const std::uint8_t> FileContent::span() const {
  return mapping_ ? mapping_->bytes() : block_.bytes();
}

bool FileContent::intact() const { return !mapping_ || mapping_->intact(); }

std::optional<FileContent> read_file(const std::filesystem::path& path, std::string& reason,
                                     std::uint64_t limit) {
  const auto file = open_file(path, reason, limit);
  return file ? read_bytes(*file, reason, limit) : std::nullopt;
}

std::optional<FileContent> map_file(const std::filesystem::path& path, std::string& reason,
                                    std::uint64_t limit, std::uint64_t worth_mapping) {
  const auto file = open_file(path, reason, limit);
  if (!file) return std::nullopt;
  if (file->size >= std::max<std::uint64_t>(worth_mapping, 1))
    if (auto mapping = FileMapping::of(file->descriptor.get())) return FileContent(std::move(mapping));
  return read_bytes(*file, reason, limit);
}

std::optional<FileContent> read_start(const std::filesystem::path& path, std::string& reason,
                                      std::size_t most) {
  const auto file = open_file(path, reason, std::numeric_limits<std::uint64_t>::max());
  return file ? read_bytes(*file, reason, most) : std::nullopt;
}

std::filesystem::path backup_path(const std::filesystem::path& path) {
  std::string name = with_value(string_text(StringId::BackupName), path.filename().string());
  return path.parent_path() / cut_utf8(std::move(name), kMaximumFileName);
}

bool replace_by_copy(const std::filesystem::path& source, const std::filesystem::path& target,
                     std::error_code& error) {
  std::filesystem::remove(target, error);
  return std::filesystem::copy_file(source, target, error);
}

SafeFile::SafeFile(const std::filesystem::path& target) : target_(without_links(target)) {
  struct stat old {};
  exists_ = stat(target.c_str(), &old) == 0;
  const std::filesystem::path folder = folder_of(target_);
  if (exists_ && !S_ISREG(old.st_mode))
    reason_ = S_ISDIR(old.st_mode) ? "it is a folder" : "it is no regular file, and is not replaced";
  else if (access(exists_ ? target_.c_str() : folder.c_str(), exists_ ? W_OK : W_OK | X_OK) != 0)
    fail("open", errno);
  mode_ = exists_ ? old.st_mode & 07777 : 0666 & ~kMask;
  owner_ = old.st_uid;
  group_ = old.st_gid;
}

bool SafeFile::open_temporary() {
  if (descriptor_ >= 0) return true;
  std::string pattern = (target_.parent_path() / ".vellum-save-XXXXXX").string();
  descriptor_ = mkostemp(pattern.data(), O_CLOEXEC);
  if (descriptor_ < 0) return fail("create", errno);
  temporary_ = pattern;
  if (exists_ && fchown(descriptor_, owner_, group_) != 0) {
    // Not ours to give away: the new file then belongs to whoever saves it.
  }
  if (fchmod(descriptor_, mode_) != 0) return fail("set the permissions of", errno);
  buffer_.reserve(kWriteBuffer);
  return true;
}

SafeFile::~SafeFile() { discard(); }

bool SafeFile::fail(const char* action, int error) {
  if (reason_.empty()) reason_ = std::string("could not ") + action + " the file: " + std::strerror(error);
  discard();
  return false;
}

void SafeFile::discard() {
  if (descriptor_ >= 0) close(descriptor_);
  descriptor_ = -1;
  if (!temporary_.empty()) unlink(temporary_.c_str());
  temporary_.clear();
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

bool SafeFile::commit() {
  if (!ok() || !open_temporary() || !flush()) return false;
  if (fsync(descriptor_) != 0) return fail("write", errno);
  if (close(descriptor_) != 0) {
    descriptor_ = -1;
    return fail("write", errno);
  }
  descriptor_ = -1;
  if (rename(temporary_.c_str(), target_.c_str()) != 0) return fail("rename", errno);
  temporary_.clear();
  const Descriptor directory(open(folder_of(target_).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (directory.get() >= 0) fsync(directory.get());  // best effort: the file itself is safe already
  return true;
}

Sink file_sink(SafeFile& file) {
  return {[&file](std::span<const std::uint8_t> bytes) { return file.write(bytes); },
          [&file] { return file.commit(); }, [&file] { return file.reason(); }};
}

Sink memory_sink(std::vector<std::uint8_t>& bytes) {
  return {[&bytes](std::span<const std::uint8_t> more) {
            bytes.insert(bytes.end(), more.begin(), more.end());
            return true;
          },
          [] { return true; }, [] { return std::string(); }};
}

Sink counting_sink(std::uint64_t& count, std::function<bool()> stop) {
  return {[&count, stop = std::move(stop)](std::span<const std::uint8_t> bytes) {
            count += bytes.size();
            return !stop || !stop();
          },
          [] { return true; }, [] { return std::string("stopped"); }};
}

}  // namespace vellum
