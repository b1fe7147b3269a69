// A PNG, animated PNG or MNG file as a sequence of chunks: gathering them from bytes, and writing them.
// Judging what a chunk holds is the reader's affair.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "base/file.h"

namespace vellum {

/// PNG standard, "PNG signature".
inline constexpr std::array<std::uint8_t, 8> kPngSignature = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};

/// MNG 1.0, "MNG signature".
inline constexpr std::array<std::uint8_t, 8> kMngSignature = {0x8A, 'M', 'N', 'G', '\r', '\n', 0x1A, '\n'};

/// One chunk as it lies in the file.
struct StreamChunk {
  std::uint32_t tag = 0;  ///< big-endian number of the type's four letters
  std::span<const std::uint8_t> data;
  std::uint32_t storedCrc = 0;
  std::uint64_t offset = 0;  ///< of the length field, from the start of the file
};

/// The chunks from `start` up to and with the first one tagged `last`. A chunk that claims more than the file
/// holds, or the end of the file before `last`, makes `complete` false; what was whole before is there.
struct GatheredChunks {
  std::vector<StreamChunk> chunks;
  bool complete = false;
  std::uint64_t end = 0;  ///< offset behind the last chunk, or of the one that could not be read
};
GatheredChunks gather_chunks(std::span<const std::uint8_t> file, std::size_t start, std::uint32_t last);

/// Whether the stored CRC is the one of type and data.
bool crc_agrees(const StreamChunk& chunk);
/// The same over the type alone, as for end chunks.
bool crc_agrees_with_type(const StreamChunk& chunk);
/// Those of the chunks whose CRC is wrong, in their order; looked for on all cores. That of a chunk with one
/// of the types in `ends` is the one of its type.
std::vector<const StreamChunk*> wrong_crcs(std::span<const StreamChunk* const> chunks,
                                           std::span<const std::uint32_t> ends);

/// Length, type, payload and CRC, to a sink or to the end of a block.
bool write_chunk(const Sink& sink, std::uint32_t tag, std::span<const std::uint8_t> payload);
void append_chunk(std::vector<std::uint8_t>& out, std::uint32_t tag, std::span<const std::uint8_t> payload);

}  // namespace vellum
