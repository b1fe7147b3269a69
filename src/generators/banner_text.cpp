#include "generators/banner_text.h"

#include <cctype>
#include <cmath>

namespace vellum {

std::int64_t BannerValues::number(std::string_view name) const {
  std::string full = type + std::string(name);
  full[type.size()] = static_cast<char>(std::toupper(static_cast<unsigned char>(full[type.size()])));
  return values.number(full);
}

BannerMovement::BannerMovement(const BannerText& banner, const BannerValues& values)
    : width(banner.canvas().width),
      rest(banner.margin),
      text(banner.ink().width),
      cells(values.number("cells")),
      delay(values.number("delay")),
      pause(rest_delay(values)),
      rolling(values.flag("rolling")) {}

std::int64_t BannerMovement::left(std::size_t frame) const {
  const auto way = [&](std::int64_t length, std::int64_t step) {
    return std::llround(static_cast<double>(length) * static_cast<double>(step) / static_cast<double>(cells));
  };
  const auto step = static_cast<std::int64_t>(frame) + 1;
  return step <= cells ? width - way(width - rest, step) : rest - way(rest + text, step - cells);
}

std::uint32_t BannerMovement::delay_of(std::size_t frame) const {
  return static_cast<std::uint32_t>(static_cast<std::int64_t>(frame) + 1 == cells ? pause : delay);
}

std::uint32_t rest_delay(const BannerValues& values) {
  const std::int64_t pause = values.number("pause");
  return static_cast<std::uint32_t>(pause != 0 ? pause : values.number("delay"));
}

}  // namespace vellum
