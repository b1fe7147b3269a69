// The orientation that camera data tells (TIFF 6.0, tag 274; PNG standard, "eXIf").
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace vellum {

/// 1 to 8; 0 where none is told. Nothing where the payload has no readable first directory.
std::optional<std::uint16_t> exif_orientation(std::span<const std::uint8_t> payload);

/// The payload with another orientation. One that told none gets a copy of its directory at its end with the
/// entry in it; everything else keeps its place, since such data is found by offsets.
std::vector<std::uint8_t> with_exif_orientation(std::span<const std::uint8_t> payload, std::uint16_t value);

}  // namespace vellum
