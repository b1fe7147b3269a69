// Reading a whole file, and writing one so that what stood there before survives any failure.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <system_error>
#include <vector>

#include "base/chunk_handle.h"

namespace vellum {

class FileMapping;

/// The bytes of a file, in memory or, of a long one, mapped; reads as a span. Other bytes that somebody keeps
/// may lie in one, too.
class FileContent {
 public:
  explicit FileContent(ChunkHandle block) : block_(std::move(block)) {}
  explicit FileContent(std::shared_ptr<const FileMapping> mapping);
  operator std::span<const std::uint8_t>() const { return span(); }
  const std::uint8_t* data() const { return span().data(); }
  std::size_t size() const { return span().size(); }
  /// Whether the bytes still are those of the file as it was read. Of a mapped one that another program
  /// changed they may not be, and where it was cut they read as zeros.
  bool intact() const;

 private:
  std::span<const std::uint8_t> span() const;
  ChunkHandle block_;
  std::shared_ptr<const FileMapping> mapping_;
};

/// Files from this size on may be mapped. Smaller ones are read, so that they may change on the disk.
inline constexpr std::uint64_t kWorthMapping = std::uint64_t{64} << 20;

/// All bytes of a regular file of at most `limit` bytes. Empty, with `reason` set, when it cannot be opened
/// or read whole or is too long.
std::optional<FileContent> read_file(const std::filesystem::path& path, std::string& reason,
                                     std::uint64_t limit);

/// The same, where a file of at least `worth_mapping` bytes is mapped: its bytes take no memory.
std::optional<FileContent> map_file(const std::filesystem::path& path, std::string& reason,
                                    std::uint64_t limit, std::uint64_t worth_mapping = kWorthMapping);

/// The first bytes of a regular file, `most` or what is there. Empty as above.
std::optional<FileContent> read_start(const std::filesystem::path& path, std::string& reason,
                                      std::size_t most);

/// The sibling "Backup of NAME".
std::filesystem::path backup_path(const std::filesystem::path& path);

/// Puts a copy of `source`, with its permissions and attributes, in the place of `target`, where at each
/// moment the old file or the whole copy stands. False, with `error` set and nothing changed, when that
/// fails.
bool replace_by_copy(const std::filesystem::path& source, const std::filesystem::path& target,
                     std::error_code& error);

/// A file that comes into being at `commit()`: bytes go to a temporary sibling of the target, which is synced
/// and renamed over it. Without a commit nothing is left and the target is untouched. A link at the path is
/// followed; permissions, owner and extended attributes of an existing target are kept, a new one has the
/// permissions of the mask that the program was started with. Further names of a target (hard links) keep the
/// old content: writing through them would mean a moment in which neither stands. What stands there and is no
/// regular file (a folder, a pipe, a device) is refused at once. What killed programs left beside the target
/// goes.
class SafeFile {
 public:
  explicit SafeFile(const std::filesystem::path& target);
  /// Takes the place of what stands at `target`, a link too, with permissions and attributes of `like`.
  SafeFile(const std::filesystem::path& target, const std::filesystem::path& like);
  ~SafeFile();
  SafeFile(const SafeFile&) = delete;
  SafeFile& operator=(const SafeFile&) = delete;

  /// False once anything has failed; `reason()` then tells what the system said.
  bool ok() const { return reason_.empty(); }
  const std::string& reason() const { return reason_; }
  std::error_code error() const { return error_; }
  /// What of the old file can't be kept: sentences for people.
  const std::vector<std::string>& notes() const { return notes_; }

  bool write(std::span<const std::uint8_t> bytes);
  /// Other bytes in place of those that were written from `offset` on.
  bool rewrite(std::uint64_t offset, std::span<const std::uint8_t> bytes);
  /// Flushes, syncs, closes and renames; false and nothing left behind on any failure.
  bool commit();

 private:
  bool fail(const char* action, int error);
  bool open_temporary();
  bool flush();
  void discard();

  std::filesystem::path target_;
  std::filesystem::path like_;  ///< whose attributes the new file gets; empty: those of a new one
  std::filesystem::path temporary_;
  int descriptor_ = -1;
  std::vector<std::uint8_t> buffer_;
  std::string reason_;
  std::error_code error_;
  std::vector<std::string> notes_;
};

/// Where a writer's bytes go, one block after the other. Nothing counts before `finish`. Either may fail, and
/// `reason` then tells why.
struct Sink {
  std::function<bool(std::span<const std::uint8_t>)> write;
  std::function<bool()> finish;
  std::function<std::string()> reason;
  /// Other bytes in place of those that were written from the offset on.
  std::function<bool(std::uint64_t offset, std::span<const std::uint8_t>)> rewrite = {};
};

/// Into the file, which outlives the sink.
Sink file_sink(SafeFile& file);
/// Behind the bytes that are there, which outlive the sink.
Sink memory_sink(std::vector<std::uint8_t>& bytes);
/// Nowhere: the bytes are added up, to find how long a file will be. `stop`, where it is given, is asked with
/// every write; true fails it.
Sink counting_sink(std::uint64_t& count, std::function<bool()> stop = {});

}  // namespace vellum
