// The stream of an image that is not packed.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "base/chunk_handle.h"

namespace vellum {

/// Takes the bytes of a part in their order, as many at a time as it is given.
using TakeBytes = std::function<void(std::span<const std::uint8_t>)>;
/// Hands over the bytes of a part.
using GivePart = std::function<void(std::size_t part, const TakeBytes&)>;

/// The zlib stream of stored blocks that pieces of level 0 would be joined to. Its parts, one behind the
/// other, are laid each by itself.
class StoredStream {
 public:
  /// `part_bytes`, of one part at least, tells how many bytes each has before they are laid.
  explicit StoredStream(std::vector<std::size_t> part_bytes);

  std::size_t parts() const { return bytes_.size(); }
  /// Bytes of the stream in front of a part, or with `parts()` all.
  std::size_t begin(std::size_t part) const { return begins_[part]; }
  std::size_t length(std::size_t part) const { return begin(part + 1) - begin(part); }

  /// Lays a part at `out`. Different ones at the same time, too.
  void lay(std::size_t part, std::uint8_t* out, const GivePart& give);
  /// Closes the last part, which lies at `out`, when all parts were laid.
  void close(std::uint8_t* out) const;

 private:
  std::vector<std::size_t> bytes_, begins_;
  std::vector<std::uint32_t> adlers_;
};

/// The whole stream, made in its place: nothing else is as large. Parts are asked on all cores. Null when
/// memory is exhausted.
ChunkHandle stored_stream(StoredStream stream, const GivePart& give);

/// The whole stream, in pieces that `write` takes one after the other while the next ones are laid: nothing
/// is as large. Parts are asked and written one at a time, on any thread. False where `write` was.
bool write_stored_stream(StoredStream stream, const GivePart& give,
                         const std::function<bool(std::span<const std::uint8_t>)>& write);

}  // namespace vellum
