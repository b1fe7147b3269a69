#include "image/rotate.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>

#include "image/fine_canvas.h"
#include "image/orientation.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

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
constexpr int kOverDiagonal = 5;

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

/// With 32 bits nothing lies around a picture.
Picture canvas_of(std::uint32_t width, std::uint32_t height, std::size_t bytes, Colour background) {
  Picture canvas = PictureCreate(width, height, nullptr, static_cast<std::uint32_t>(8 * bytes));
  if (canvas && bytes == 3)
    PictureFillRect(canvas, 0, 0, static_cast<std::int32_t>(width), static_cast<std::int32_t>(height),
                    background);
  return canvas;
}

/// A pixel of 3 or 4 bytes whose part has moved on to its neighbor.
template <std::size_t kBytes>
void mix(std::uint8_t* out, const std::uint8_t* here, const std::uint8_t* before, std::uint32_t part) {
  for (std::size_t c = 0; c < kBytes; ++c)
    out[c] = static_cast<std::uint8_t>((here[c] * (256 - part) + before[c] * part + 128) >> 8);
}

/// The same for the bytes of many pixels.
void mix_run(std::uint8_t* __restrict out, const std::uint8_t* __restrict here,
             const std::uint8_t* __restrict before, std::size_t bytes, std::uint32_t part) {
  for (std::size_t i = 0; i < bytes; ++i)
    out[i] = static_cast<std::uint8_t>((here[i] * (256 - part) + before[i] * part + 128) >> 8);
}

template <std::size_t kBytes>
Picture sheared_rows(const Picture& picture, double factor, Colour background) {
  const std::uint32_t width = picture.width(), height = picture.height(), margin = margin_of(factor, height);
  Picture result = canvas_of(width + 2 * margin, height, kBytes, background);
  const EditRows rows(result);
  if (!rows) return {};
  for (std::uint32_t y = 0; y < height; ++y) {
    const Shift shift = shift_of(factor, y, height);
    std::uint8_t* out = rows[y] + kBytes * static_cast<std::size_t>(margin + shift.whole);
    const std::uint8_t *in = picture.row(y), *ground = rows[y];
    std::uint8_t edge[kBytes];
    std::memcpy(edge, ground, kBytes);
    mix<kBytes>(out, in, edge, shift.part);
    mix_run(out + kBytes, in + kBytes, in, kBytes * (std::size_t{width} - 1), shift.part);
    mix<kBytes>(out + kBytes * width, edge, in + kBytes * (width - 1), shift.part);
  }
  return result;
}

/// Columns as rows: loops along rows are so much faster that it pays to turn the picture over its diagonal
/// and back.
template <std::size_t kBytes>
Picture sheared_columns(const Picture& picture, double factor, Colour background) {
  Picture result = oriented(picture, kOverDiagonal);
  if (result) result = sheared_rows<kBytes>(result, factor, background);
  return result ? oriented(result, kOverDiagonal) : result;
}

Picture cut_to_middle(const Picture& picture, std::uint32_t width, std::uint32_t height) {
  const auto left = static_cast<std::int32_t>((picture.width() - width) / 2),
             top = static_cast<std::int32_t>((picture.height() - height) / 2);
  return PictureCrop(
      picture, {left, top, left + static_cast<std::int32_t>(width), top + static_cast<std::int32_t>(height)});
}

/// Colors multiplied by their alpha, so that what can't be seen mixes with nothing.
Picture weighted(const Picture& picture) {
  Picture result = PictureDuplicate(picture);
  const EditRows rows(result);
  if (!rows) return {};
  for (std::uint32_t y = 0; y < result.height(); ++y)
    for (std::uint8_t *at = rows[y], *end = at + std::size_t{4} * result.width(); at != end; at += 4)
      for (int c = 0; c < 3; ++c) at[c] = static_cast<std::uint8_t>((at[c] * at[3] + 127) / 255);
  return result;
}

template <std::size_t kBytes>
Picture turned_rest(const Picture& picture, double rest, Colour background) {
  const double along = -std::tan(rest / 2), across = std::sin(rest);
  Picture result = sheared_rows<kBytes>(picture, along, background);
  if (result) result = sheared_columns<kBytes>(result, across, background);
  return result ? sheared_rows<kBytes>(result, along, background) : result;
}

Picture sheared_once(const Picture& picture, double factor, bool columns, Colour background) {
  if (picture.bits() == 32)
    return columns ? sheared_columns<4>(picture, factor, background)
                   : sheared_rows<4>(picture, factor, background);
  return columns ? sheared_columns<3>(picture, factor, background)
                 : sheared_rows<3>(picture, factor, background);
}

double shear_factor(int degrees) { return std::tan(degrees * std::numbers::pi / 180); }

std::uint32_t sheared_side(std::uint32_t side, std::uint32_t other, int degrees) {
  return side + static_cast<std::uint32_t>(std::ceil(std::abs(shear_factor(degrees)) * other));
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
  if (picture.bits() < 24) return {};
  const Turn turn = turn_of(degrees);
  Picture result = oriented(picture, kOrientations[turn.quarters]);
  if (!result || turn.rest == 0) return result;
  const bool deep = picture.bits() == 32;
  if (deep) result = weighted(result);
  if (!result) return {};
  result =
      deep ? turned_rest<4>(result, turn.rest, background) : turned_rest<3>(result, turn.rest, background);
  if (!result) return {};
  const auto [width, height] = rotated_size(picture.width(), picture.height(), degrees);
  result = cut_to_middle(result, width, height);
  return deep && result ? straight_picture({result, {}}) : result;
}

Picture sheared(const Picture& picture, int degrees, bool columns, Colour background) {
  if (picture.bits() < 24 || std::abs(degrees) > 60) return {};
  if (degrees == 0) return picture;
  const bool deep = picture.bits() == 32;
  Picture result = deep ? weighted(picture) : picture;
  // Positive degrees move the top to the right, and the left side up.
  if (result)
    result =
        sheared_once(result, columns ? shear_factor(degrees) : -shear_factor(degrees), columns, background);
  if (!result) return {};
  const std::uint32_t w = picture.width(), h = picture.height();
  result = columns ? cut_to_middle(result, w, sheared_side(h, w, degrees))
                   : cut_to_middle(result, sheared_side(w, h, degrees), h);
  return deep && result ? straight_picture({result, {}}) : result;
}

}  // namespace vellum
