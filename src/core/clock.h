// The local time as chunks hold it.
#pragma once

#include <array>
#include <cstdint>

namespace vellum {

/// The payload of a tIME chunk for now, in local time: year (big-endian), month, day, hour, minute, second.
std::array<std::uint8_t, 7> local_time_payload();

}  // namespace vellum
