// The local time as chunks hold it.
#pragma once

#include <array>
#include <cstdint>

namespace vellum {

/// The payload of a tIME chunk for now, in local time: year (big-endian), month, day, hour, minute, second.
std::array<std::uint8_t, 7> local_time_payload();

/// "January" for 1 and below, up to "December" for 12 and above.
const char* month_name(int month);
/// Days of a month (1 to 12) in the Gregorian calendar.
unsigned days_of_month(unsigned year, unsigned month);

}  // namespace vellum
