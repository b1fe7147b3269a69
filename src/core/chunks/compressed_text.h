// zTXt: held inflated in a record, deflated in a file.
#pragma once

#include <optional>
#include <vector>

#include "base/host.h"
#include "core/model/chunk_record.h"

namespace vellum {

/// Bytes of the keyword when the payload of a zTXt is one that is inflated: 1 to 259, then a NUL. Otherwise
/// nothing: such a chunk stays as it is in the file, and goes back so.
std::optional<std::size_t> inflatable_keyword(std::span<const std::uint8_t> payload);

/// Why a compressed text isn't inflated.
struct TextFault {
  FaultKind kind = FaultKind::Damaged;
  const char* reason = nullptr;
};

/// Keyword, NUL and inflated text (up to a NUL in it) of a compressed payload, as a block that knows a valid
/// payload for as long as nobody changes it. `budget`, the bytes that texts may still take, is lowered. Null,
/// with `fault` set, when the stream is damaged or too long. Throws std::bad_alloc.
ChunkHandle inflate_text_chunk(std::span<const std::uint8_t> payload, std::size_t keyword,
                               std::size_t& budget, TextFault& fault);

/// The payload to write for a record tagged zTXt: the one that it came from, where it has one and `as_stored`
/// is true; else keyword, NUL, method 0 and the text deflated at `level`; or the raw bytes of one that was
/// kept compressed.
std::vector<std::uint8_t> compressed_text_payload(const ChunkRecord& record, int level, bool as_stored);

}  // namespace vellum
