// FileMapping: a long file as memory that the system fills in when it is read.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <memory>
#include <span>

namespace vellum {

/// A private mapping of a whole file, for reading. Reading from it never ends the program: where the file was
/// cut, or its disk fails, its pages read as zeros and the mapping is intact no longer. The file itself may
/// be renamed, replaced or removed; one that is written to in place shows through, and `intact` tells.
class FileMapping {
 public:
  /// Of an open regular file; null where it can't be mapped. The descriptor may be closed behind this.
  static std::shared_ptr<const FileMapping> of(int descriptor);
  ~FileMapping();
  FileMapping(const FileMapping&) = delete;
  FileMapping& operator=(const FileMapping&) = delete;

  std::span<const std::uint8_t> bytes() const { return bytes_; }
  /// Whether the file has the length and the time of its last change that it had at first, and all of it
  /// could be read.
  bool intact() const;

 private:
  FileMapping() = default;
  std::span<const std::uint8_t> bytes_;
  int descriptor_ = -1;
  int watch_ = -1;  ///< its place among the mappings that are watched
  struct stat status_ {};
};

}  // namespace vellum
