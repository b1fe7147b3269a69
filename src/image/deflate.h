// Packing bytes into zlib streams (RFC 1950, 1951).
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace vellum {

/// One piece of a stream that is packed apart from the others, so that pieces can be packed side by side.
struct DeflatePiece {
  std::vector<std::uint8_t>
      packed;  ///< deflate blocks; all but the last piece of a stream end at a byte boundary, not final
  std::uint32_t adler = 1;  ///< Adler-32 of the piece's bytes
  std::size_t bytes = 0;    ///< how many these are
};

/// Behind the levels that people choose from: as small as libdeflate can, however long that takes.
inline constexpr int kThoroughDeflate = 10;

/// Packs `bytes` at `level`, 0 (stored) to 9 (smallest), or kThoroughDeflate. Each level is no slower and no
/// larger than zlib's of that number. `last`: the piece ends the stream. An empty `packed` means that memory
/// was exhausted.
DeflatePiece deflate_piece(std::span<const std::uint8_t> bytes, int level, bool last);

/// The zlib stream of the pieces in order. The pieces are emptied.
std::vector<std::uint8_t> join_pieces(std::span<DeflatePiece> pieces, int level);

/// A whole stream from bytes that lie in memory. Empty when memory was exhausted.
std::vector<std::uint8_t> deflate_bytes(std::span<const std::uint8_t> bytes, int level);

}  // namespace vellum
