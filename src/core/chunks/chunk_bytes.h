// Bytes as people type them: "hex:" and pairs of digits, or "@" and the name of a file.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vellum {

/// Blanks between digits are passed over; a file holds at most what a chunk can. Nothing, with the reason
/// (English, one sentence part), for other texts and for a file that can't be read.
std::optional<std::vector<std::uint8_t>> parse_bytes(std::string_view text, std::string& reason);

/// "hex:0A1B".
std::string bytes_text(std::span<const std::uint8_t> bytes);

}  // namespace vellum
