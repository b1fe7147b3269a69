// HeldPicture: a picture that waits for somebody to work on it. Of one that came from a file the rows may be
// let go meanwhile, so that many large files fit into the memory budget.
#pragma once

#include <filesystem>
#include <span>
#include <vector>

#include "base/host.h"
#include "image/picture.h"

namespace vellum {

struct HeldPicture {
  HeldPicture() = default;
  HeldPicture(const Picture& picture) : block(picture.handle()) {}

  /// Its rows stay in memory as long as what is given here. The first look at a row may read the file again,
  /// and throws std::bad_alloc where that fails; size and colors never do.
  Picture picture() const { return Picture(block); }
  explicit operator bool() const { return static_cast<bool>(block); }

  ChunkHandle block;
};

/// A picture that was just made, as one of the memory budget: its rows are packed when room is wanted.
inline HeldPicture hold_picture(const Picture& picture) {
  HeldPicture held;
  held.block = block_to_keep(picture);
  return held;
}

inline std::vector<HeldPicture> hold_pictures(std::span<const Picture> pictures) {
  std::vector<HeldPicture> held;
  for (const Picture& picture : pictures) held.push_back(hold_picture(picture));
  return held;
}

/// Bytes of rows that stay in memory of pictures that are gathered one after the other.
inline std::uint64_t gatheredBytes = std::uint64_t{256} << 20;

/// Counts what was gathered.
class GatheredRows {
 public:
  /// Whether the rows of another picture may stay.
  bool take(std::uint64_t bytes) {
    if (bytes > gatheredBytes || taken_ > gatheredBytes - bytes) return false;
    taken_ += bytes;
    return true;
  }

 private:
  std::uint64_t taken_ = 0;
};

/// As `read_picture_file`.
HeldPicture hold_picture_file(const std::filesystem::path& path, Host& host);

/// Why rows could not be read again ("a.png: ..."); empty as long as that never happened. A file that is not
/// the one that was read, by its length and time, is none of this picture.
std::string held_picture_fault(const HeldPicture& picture);

}  // namespace vellum
