#include "image/rotate.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>
#include <vector>

#include "image/orientation.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

constexpr std::size_t kBytes = 3;  // of a pixel

/// Clockwise: quarter turns, and the rest of -45 to 45 degrees.
struct Turn {
  int quarters;
  double rest;  ///< radians
};

Turn turn_of(int degrees) {
  int rest = 360 - degrees, quarters = 0;
  for (; rest < -45; rest += 90) --quarters;
  for (; rest > 45; rest -= 90) ++quarters;
  return {quarters & 3, rest * std::numbers::pi / 180};
}

/// The orientation of EXIF that a number of clockwise quarter turns undoes.
constexpr int kOrientations[] = {1, 6, 3, 8};

/// How far a row or column is moved: whole pixels, and 1/256 of the next one.
struct Shift {
  std::int64_t whole;
  std::uint32_t part;
};

/// Of the nth of `count` rows or columns, against their middle.
Shift shift_of(double factor, std::uint32_t n, std::uint32_t count) {
  const double pixels = factor * (n + 0.5 - count / 2.0), whole = std::floor(pixels);
  const auto part = static_cast<std::uint32_t>(std::lround((pixels - whole) * 256));
  return part == 256 ? Shift{static_cast<std::int64_t>(whole) + 1, 0}
                     : Shift{static_cast<std::int64_t>(whole), part};
}

/// The rim that a shear needs at each side.
std::uint32_t margin_of(double factor, std::uint32_t count) {
  return static_cast<std::uint32_t>(std::ceil(std::abs(factor) * count / 2)) + 1;
}

Picture canvas_of(std::uint32_t width, std::uint32_t height, Colour background) {
  Picture canvas = PictureCreate(width, height, nullptr, 24);
  if (canvas)
    PictureFillRect(canvas, 0, 0, static_cast<std::int32_t>(width), static_cast<std::int32_t>(height),
                    background);
  return canvas;
}

/// A pixel whose part has moved on to its neighbor.
void mix(std::uint8_t* out, const std::uint8_t* here, const std::uint8_t* before, std::uint32_t part) {
  for (std::size_t c = 0; c < kBytes; ++c)
    out[c] = static_cast<std::uint8_t>((here[c] * (256 - part) + before[c] * part + 128) >> 8);
}

Picture sheared_rows(const Picture& picture, double factor, Colour background) {
  const std::uint32_t width = picture.width(), height = picture.height(), margin = margin_of(factor, height);
  Picture result = canvas_of(width + 2 * margin, height, background);
  const EditRows rows(result);
  if (!rows) return {};
  for (std::uint32_t y = 0; y < height; ++y) {
    const Shift shift = shift_of(factor, y, height);
    std::uint8_t* out = rows[y] + kBytes * static_cast<std::size_t>(margin + shift.whole);
    const std::uint8_t *in = picture.row(y), *ground = rows[y];
    std::uint8_t edge[kBytes];
    std::memcpy(edge, ground, kBytes);
    mix(out, in, edge, shift.part);
    for (std::uint32_t x = 1; x < width; ++x)
      mix(out + kBytes * x, in + kBytes * x, in + kBytes * (x - 1), shift.part);
    mix(out + kBytes * width, edge, in + kBytes * (width - 1), shift.part);
  }
  return result;
}

Picture sheared_columns(const Picture& picture, double factor, Colour background) {
  const std::uint32_t width = picture.width(), height = picture.height(), margin = margin_of(factor, width);
  Picture result = canvas_of(width, height + 2 * margin, background);
  const EditRows rows(result);
  if (!rows) return {};
  std::vector<Shift> shifts(width);
  for (std::uint32_t x = 0; x < width; ++x) shifts[x] = shift_of(factor, x, width);
  std::uint8_t edge[kBytes];
  std::memcpy(edge, rows[0], kBytes);
  for (std::uint32_t y = 0; y < result.height(); ++y)
    for (std::uint32_t x = 0; x < width; ++x) {
      const std::int64_t from = std::int64_t{y} - margin - shifts[x].whole;
      if (from < 0 || from > height) continue;
      const auto pixel = [&](std::int64_t row) {
        const bool inside = row >= 0 && row < height;
        return inside ? picture.row(static_cast<std::uint32_t>(row)) + kBytes * x : edge;
      };
      mix(rows[y] + kBytes * x, pixel(from), pixel(from - 1), shifts[x].part);
    }
  return result;
}

Picture cut_to_middle(const Picture& picture, std::uint32_t width, std::uint32_t height) {
  const auto left = static_cast<std::int32_t>((picture.width() - width) / 2),
             top = static_cast<std::int32_t>((picture.height() - height) / 2);
  return PictureCrop(
      picture, {left, top, left + static_cast<std::int32_t>(width), top + static_cast<std::int32_t>(height)});
}

}  // namespace

std::pair<std::uint32_t, std::uint32_t> rotated_size(std::uint32_t width, std::uint32_t height, int degrees) {
  const Turn turn = turn_of(degrees);
  if (turn.quarters & 1) std::swap(width, height);
  if (turn.rest == 0) return {width, height};
  const double c = std::cos(turn.rest), s = std::abs(std::sin(turn.rest));
  return {static_cast<std::uint32_t>(std::ceil(width * c + height * s)),
          static_cast<std::uint32_t>(std::ceil(width * s + height * c))};
}

Picture rotated(const Picture& picture, int degrees, Colour background) {
  if (picture.bits() != 24) return {};
  const Turn turn = turn_of(degrees);
  Picture result = oriented(picture, kOrientations[turn.quarters]);
  if (!result || turn.rest == 0) return result;
  const double along = -std::tan(turn.rest / 2), across = std::sin(turn.rest);
  result = sheared_rows(result, along, background);
  if (result) result = sheared_columns(result, across, background);
  if (result) result = sheared_rows(result, along, background);
  if (!result) return {};
  const auto [width, height] = rotated_size(picture.width(), picture.height(), degrees);
  return cut_to_middle(result, width, height);
}

}  // namespace vellum
