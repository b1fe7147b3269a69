// An image of an MNG as its file holds it, for the writer of MNGs.
#pragma once

#include <memory>
#include <span>
#include <vector>

#include "core/model/chunk_record.h"
#include "image/png_header.h"

namespace vellum {

/// The bytes of an image, and what its record says while they still mean the same. They may be written again
/// behind those of the image that stood in front of it, and for the first image in front of all.
struct StoredMngImage {
  std::span<const std::uint8_t>
      front;  ///< chunks that no entry stands for: framing, place, global palette ...
  std::span<const std::uint8_t> image;  ///< from its IHDR to its IEND
  std::vector<ChunkHandle> texts;       ///< of chunks inside it that have entries, which stand in front of it
  std::span<const std::uint8_t> behind;  ///< of the last image: chunks without an entry in front of the end
  std::uint32_t flags = 0;
  PngHeader header;
  CopyOnWrite<EmbeddedImage> fields;
  std::weak_ptr<const StoredMngImage> before;
  bool first = false;
};

}  // namespace vellum
