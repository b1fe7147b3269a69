// The CRC of a PNG chunk (PNG standard, "Cyclic redundancy code algorithm"): over the type and the data.
#pragma once

#include <cstdint>
#include <span>

namespace vellum {

/// CRC-32 over `bytes`, going on from `crc` (0 to begin).
std::uint32_t crc32_of(std::span<const std::uint8_t> bytes, std::uint32_t crc = 0);

/// CRC of a chunk with the type `tag` (big-endian reading of its four letters) and `data`.
std::uint32_t chunk_crc(std::uint32_t tag, std::span<const std::uint8_t> data);

}  // namespace vellum
