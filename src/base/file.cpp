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
#include "base/translation.h"

namespace vellum {
namespace {

/// Longest name of a backup, in bytes.
constexpr std::size_t kMaximumFileName = 259;
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
    reason = S_ISDIR(status.st_mode) ? std::strerror(EISDIR) : translated("not a regular file");
    return std::nullopt;
  }
  file.size = static_cast<std::uint64_t>(status.st_size);
  if (file.size > limit) {
    reason = translated("the file is too long");
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

Sink file_sink(SafeFile& file) {
  return {[&file](std::span<const std::uint8_t> bytes) { return file.write(bytes); },
          [&file] { return file.commit(); }, [&file] { return file.reason(); },
          [&file](std::uint64_t offset, std::span<const std::uint8_t> bytes) {
            return file.rewrite(offset, bytes);
          }};
}

Sink memory_sink(std::vector<std::uint8_t>& bytes) {
  const std::size_t begin = bytes.size();
  return {[&bytes](std::span<const std::uint8_t> more) {
            bytes.insert(bytes.end(), more.begin(), more.end());
            return true;
          },
          [] { return true; }, [] { return std::string(); },
          [&bytes, begin](std::uint64_t offset, std::span<const std::uint8_t> other) {
            std::ranges::copy(other, bytes.begin() + static_cast<std::ptrdiff_t>(begin + offset));
            return true;
          }};
}

Sink counting_sink(std::uint64_t& count, std::function<bool()> stop) {
  return {[&count, stop = std::move(stop)](std::span<const std::uint8_t> bytes) {
            count += bytes.size();
            return !stop || !stop();
          },
          [] { return true; }, [] { return std::string("stopped"); },
          [](std::uint64_t, std::span<const std::uint8_t>) { return true; }};
}

}  // namespace vellum
