// Delays in a format whose frames all have one length.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace vellum {

/// The milliseconds of such a frame: what all delays are multiples of, 10 to 1000.
std::uint32_t constant_period(std::span<const std::uint32_t> delays);

/// How many of `period` milliseconds each delay takes, one at least. What rounding takes from one frame the
/// next ones get.
std::vector<std::int64_t> lengths_in(std::span<const std::uint32_t> delays, std::uint32_t period);

}  // namespace vellum
