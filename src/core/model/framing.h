// FRAM and DEFI chunks (MNG 1.0) as an image record holds them.
#pragma once

#include <span>
#include <vector>

#include "core/model/chunk_record.h"

namespace vellum {

/// Reads a FRAM payload into `block`. Fields are taken from fixed positions, as if the subframe name were
/// empty, and the clip values from four bytes later than `framing_payload` puts them; fields that the payload
/// does not reach keep what they held. The name is always replaced.
void parse_framing(std::span<const std::uint8_t> payload, FramBlock& block);
/// The payload of a FRAM: mode, name, NUL; behind a mode other than 0 the four change flags; then delay,
/// timeout, clip values and sync value, each only under the flag of its own and of all before it.
std::vector<std::uint8_t> framing_payload(const FramBlock& block);

/// Reads a FRAM payload as `framing_payload` lays it out: the fields behind the name, one after the other.
/// False, with `block` undefined, when the payload ends inside a field or goes on behind the last one.
bool parse_laid_out_framing(std::span<const std::uint8_t> payload, FramBlock& block);

/// Reads at most 28 bytes of a DEFI payload; fields behind its end become 0. Returns the bytes taken.
std::uint32_t parse_definition(std::span<const std::uint8_t> payload, DefiBlock& block);
/// The payload of a DEFI of `bytes` bytes, cut down to a length that the format knows (3, 4, 12, 28); empty
/// below 3.
std::vector<std::uint8_t> definition_payload(const DefiBlock& block, std::uint32_t bytes);

/// A value of these blocks, which keep the byte order of the file.
std::uint32_t from_file_order(std::uint32_t value);
inline std::uint32_t to_file_order(std::uint32_t value) { return from_file_order(value); }
inline std::int32_t from_file_order(std::int32_t value) {
  return static_cast<std::int32_t>(from_file_order(static_cast<std::uint32_t>(value)));
}

}  // namespace vellum
