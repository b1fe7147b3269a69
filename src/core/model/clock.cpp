#include "core/model/clock.h"

#include <algorithm>
#include <ctime>

#include "base/byte_order.h"

namespace vellum {

std::array<std::uint8_t, 7> local_time_payload() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  std::array<std::uint8_t, 7> payload{};
  write_be16(payload.data(), static_cast<std::uint32_t>(local.tm_year + 1900));
  payload[2] = static_cast<std::uint8_t>(local.tm_mon + 1);
  payload[3] = static_cast<std::uint8_t>(local.tm_mday);
  payload[4] = static_cast<std::uint8_t>(local.tm_hour);
  payload[5] = static_cast<std::uint8_t>(local.tm_min);
  payload[6] = static_cast<std::uint8_t>(local.tm_sec);
  return payload;
}

const char* month_name(int month) {
  static constexpr const char* names[] = {"January",   "February", "March",    "April",
                                          "May",       "June",     "July",     "August",
                                          "September", "October",  "November", "December"};
  return names[std::clamp(month, 1, 12) - 1];
}

unsigned days_of_month(unsigned year, unsigned month) {
  if (month == 2) return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0 ? 29 : 28;
  return month == 4 || month == 6 || month == 9 || month == 11 ? 30 : 31;
}

}  // namespace vellum
