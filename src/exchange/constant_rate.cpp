#include "exchange/constant_rate.h"

#include <algorithm>
#include <numeric>

namespace vellum {

std::uint32_t constant_period(std::span<const std::uint32_t> delays) {
  constexpr std::uint32_t kLeast = 10, kMost = 1000;
  std::uint32_t common = 0;
  for (const std::uint32_t delay : delays) common = std::gcd(common, delay);
  return std::clamp(common, kLeast, kMost);
}

std::vector<std::int64_t> lengths_in(std::span<const std::uint32_t> delays, std::uint32_t period) {
  std::vector<std::int64_t> lengths;
  std::int64_t milliseconds = 0, ticks = 0;
  for (const std::uint32_t delay : delays) {
    milliseconds += delay;
    const std::int64_t end = std::max(ticks + 1, (milliseconds + period / 2) / period);
    lengths.push_back(end - ticks);
    ticks = end;
  }
  return lengths;
}

}  // namespace vellum
