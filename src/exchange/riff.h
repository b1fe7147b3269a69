// Chunks of RIFF files: four letters, a length in little-endian order, the bytes, and one more where the
// length is odd.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace vellum {

struct RiffChunk {
  std::string_view tag;                ///< four letters
  std::string_view form;               ///< of RIFF and LIST: what the list holds; else empty
  std::span<const std::uint8_t> data;  ///< behind the form
  bool cut = false;                    ///< the file ends in front of its end
};

/// The chunks that lie one behind the other; the last one may be cut.
std::vector<RiffChunk> riff_chunks(std::span<const std::uint8_t> bytes);

/// The first of a tag (and a form); null without one.
const RiffChunk* find_chunk(std::span<const RiffChunk> chunks, std::string_view tag,
                            std::string_view form = {});

/// A chunk's head: its length is that of its bytes, the form of a list among them.
void put_riff_head(std::vector<std::uint8_t>& out, std::string_view tag, std::uint32_t length);

}  // namespace vellum
