// The stream of an image that is not packed.
#pragma once

#include <cstdint>
#include <functional>
#include <span>

#include "base/chunk_handle.h"

namespace vellum {

/// Takes the bytes of a part in their order, as many at a time as it is given.
using TakeBytes = std::function<void(std::span<const std::uint8_t>)>;

/// The zlib stream of stored blocks that pieces of level 0 would be joined to, made in its place: nothing
/// else is as large. `part_bytes` tells how many bytes each part has; give(i, take) hands those of part i
/// over. Parts are asked on all cores. Null when memory is exhausted.
ChunkHandle stored_stream(std::span<const std::size_t> part_bytes,
                          const std::function<void(std::size_t, const TakeBytes&)>& give);

}  // namespace vellum
