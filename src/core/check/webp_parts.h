// Names and sizes of the parts of a WebP (WebP container), as checking and repairing look at them.
#pragma once

#include <algorithm>

#include "base/limits.h"
#include "core/model/tags.h"

namespace vellum::webp {

inline constexpr ChunkTag kExtended = make_tag("VP8X"), kAnimation = make_tag("ANIM"),
                          kFrame = make_tag("ANMF"), kAlpha = make_tag("ALPH"), kLossy = make_tag("VP8 "),
                          kLossless = make_tag("VP8L");
inline constexpr std::size_t kFormHead = 12;   ///< "RIFF", size, "WEBP"
inline constexpr std::size_t kChunkHead = 8;   ///< name, size
inline constexpr std::size_t kFrameHead = 16;  ///< of an ANMF, in front of its own chunks

/// Whether a chunk is a part of an image.
constexpr bool is_part(ChunkTag tag) { return tag == kAlpha || tag == kLossy || tag == kLossless; }

/// Numbers of 24 bits, as sizes, places and times of frames are.
constexpr std::uint32_t read_le24(const std::uint8_t* p) {
  return std::uint32_t{p[0]} | std::uint32_t{p[1]} << 8 | std::uint32_t{p[2]} << 16;
}

/// What images of a file may be decoded to: small streams can mean large pictures, and many of them much
/// time.
struct WebpBudget {
  std::uint64_t fileBytes = 0, decoded = 0;

  bool allows(std::uint64_t width, std::uint64_t height) {
    const std::uint64_t bytes = width * height * 4;
    decoded += bytes;
    return !decoding_fault(bytes, fileBytes) &&
           decoded <= std::max(kUnquestionedCanvasBytes, fileBytes * kMaximumExpansion);
  }
};

}  // namespace vellum::webp
