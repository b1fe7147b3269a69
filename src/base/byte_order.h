// Big- and little-endian numbers in byte blocks. PNG, APNG and MNG are big-endian; bitmaps and RIFF little.
#pragma once

#include <cstdint>

namespace vellum {

constexpr std::uint16_t read_be16(const std::uint8_t* p) {
  return static_cast<std::uint16_t>(p[0] << 8 | p[1]);
}

constexpr std::uint32_t read_be32(const std::uint8_t* p) {
  return std::uint32_t{p[0]} << 24 | std::uint32_t{p[1]} << 16 | std::uint32_t{p[2]} << 8 | p[3];
}

constexpr std::uint16_t read_le16(const std::uint8_t* p) {
  return static_cast<std::uint16_t>(p[1] << 8 | p[0]);
}

constexpr std::uint32_t read_le32(const std::uint8_t* p) {
  return std::uint32_t{p[3]} << 24 | std::uint32_t{p[2]} << 16 | std::uint32_t{p[1]} << 8 | p[0];
}

constexpr void write_be16(std::uint8_t* p, std::uint32_t value) {
  p[0] = static_cast<std::uint8_t>(value >> 8);
  p[1] = static_cast<std::uint8_t>(value);
}

constexpr void write_be32(std::uint8_t* p, std::uint32_t value) {
  write_be16(p, value >> 16);
  write_be16(p + 2, value);
}

constexpr void write_le16(std::uint8_t* p, std::uint32_t value) {
  p[0] = static_cast<std::uint8_t>(value);
  p[1] = static_cast<std::uint8_t>(value >> 8);
}

constexpr void write_le32(std::uint8_t* p, std::uint32_t value) {
  write_le16(p, value);
  write_le16(p + 2, value >> 16);
}

}  // namespace vellum
