// The image data of a picture as they are written, kept for who writes it again in the same form.
#pragma once

#include <memory>
#include <vector>

#include "base/chunk_handle.h"
#include "image/png_header.h"

namespace vellum {

/// The zlib stream that the IDAT chunks of an image hold together. It stands for one picture in one form: who
/// writes another picture, or under another header, makes his own. Shared, and never changed.
struct StoredStream {
  ChunkHandle picture;  ///< the block whose rows these are
  PngHeader header;     ///< that they fit
  std::vector<std::uint8_t> bytes;

  bool fits(const ChunkHandle& block, const PngHeader& wanted) const {
    return header == wanted && picture.shares_with(block);
  }
};
using KeptStream = std::shared_ptr<const StoredStream>;

}  // namespace vellum
