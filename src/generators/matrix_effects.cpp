#include "generators/matrix_effects.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>

#include "image/picture_operations.h"
#include "image/resample.h"

namespace vellum {
namespace {

constexpr std::size_t kPixel = 3;

std::uint32_t steps_to(std::uint32_t whole, std::uint32_t step) {
  return std::max(1u, (whole + step - 1) / step);
}

/// Copies the pixels of a row from `left` on.
void take_row(Picture& cell, const Picture& next, std::uint32_t y, std::uint32_t left, std::uint32_t count) {
  std::memcpy(cell.edit_row(y) + kPixel * left, next.row(y) + kPixel * left, kPixel * count);
}

/// Copies the pixels that `shown` says.
template <class Shown>
bool take_where(Picture& cell, const Picture& next, Shown shown) {
  if (!cell.edit_block()) return false;
  for (std::uint32_t y = 0; y < cell.height(); ++y)
    for (std::uint32_t x = 0; x < cell.width(); ++x)
      if (shown(x, y)) take_row(cell, next, y, x, 1);
  return true;
}

/// The numbers below `count` in an order by chance.
std::vector<std::uint32_t> shuffled(std::uint32_t count, std::uint32_t seed) {
  std::vector<std::uint32_t> order(count);
  std::iota(order.begin(), order.end(), 0u);
  Random15 random(seed);
  for (std::uint32_t i = count; i > 1; --i) {
    const std::uint32_t high = random.next(), low = random.next();
    std::swap(order[i - 1], order[(high << 15 | low) % i]);
  }
  return order;
}

/// `small`, scaled to this size, in the middle of the cell.
bool lay_in_middle(Picture& cell, const Picture& small, std::uint32_t width, std::uint32_t height) {
  const Picture scaled = PictureResample(small, width, height, ResampleFilter::Box);
  if (!scaled || !cell.edit_block()) return false;
  PictureBlit(cell, static_cast<std::int32_t>(cell.width() - width) / 2,
              static_cast<std::int32_t>(cell.height() - height) / 2, scaled, 0, 0,
              static_cast<std::int32_t>(width), static_cast<std::int32_t>(height));
  return true;
}

std::uint32_t none_frames(std::uint32_t, std::uint32_t, const MatrixSteps&) { return 1; }
bool paint_none(Picture&, const Picture&, std::uint32_t, const MatrixSteps&, std::uint32_t) { return true; }

std::uint32_t blinds_frames(std::uint32_t, std::uint32_t height, const MatrixSteps& steps) {
  return std::min(steps.blinds, height);
}
bool paint_blinds(Picture& cell, const Picture& next, std::uint32_t number, const MatrixSteps& steps,
                  std::uint32_t) {
  if (!cell.edit_block()) return false;
  for (std::uint32_t y = 0; y < cell.height(); ++y)
    if (y % steps.blinds < number) take_row(cell, next, y, 0, cell.width());
  return true;
}

std::uint32_t block_count(std::uint32_t width, std::uint32_t height, std::uint32_t side) {
  return steps_to(width, side) * steps_to(height, side);
}
std::uint32_t blocks_frames(std::uint32_t width, std::uint32_t height, const MatrixSteps& steps) {
  return steps_to(block_count(width, height, steps.block), steps.blockStep);
}
bool paint_blocks(Picture& cell, const Picture& next, std::uint32_t number, const MatrixSteps& steps,
                  std::uint32_t seed) {
  const std::uint32_t side = steps.block, across = steps_to(cell.width(), side);
  const auto order = shuffled(block_count(cell.width(), cell.height(), side), seed);
  if (!cell.edit_block()) return false;
  const std::size_t open = std::min<std::size_t>(std::uint64_t{number} * steps.blockStep, order.size());
  for (std::size_t i = 0; i < open; ++i) {
    const std::uint32_t left = order[i] % across * side, top = order[i] / across * side;
    for (std::uint32_t y = top; y < std::min(top + side, cell.height()); ++y)
      take_row(cell, next, y, left, std::min(side, cell.width() - left));
  }
  return true;
}

/// How far a pixel is from the middle of its cell of a grid.
std::uint32_t from_middle(std::uint32_t at, std::uint32_t side) {
  const std::uint32_t place = at % side, middle = side / 2;
  return place > middle ? place - middle : middle - place;
}
std::uint32_t farthest(std::uint32_t length, std::uint32_t side) {
  std::uint32_t most = 0;
  for (std::uint32_t i = 0; i < std::min(length, side); ++i) most = std::max(most, from_middle(i, side));
  return most;
}

std::uint32_t diamonds_frames(std::uint32_t width, std::uint32_t height, const MatrixSteps& steps) {
  return steps_to(farthest(width, steps.diamond) + farthest(height, steps.diamond), steps.diamondStep);
}
bool paint_diamonds(Picture& cell, const Picture& next, std::uint32_t number, const MatrixSteps& steps,
                    std::uint32_t) {
  return take_where(cell, next, [&](std::uint32_t x, std::uint32_t y) {
    return from_middle(x, steps.diamond) + from_middle(y, steps.diamond) <= number * steps.diamondStep;
  });
}

std::uint32_t dots_frames(std::uint32_t width, std::uint32_t height, const MatrixSteps& steps) {
  const double far = std::hypot(farthest(width, steps.dot), farthest(height, steps.dot));
  return steps_to(static_cast<std::uint32_t>(std::ceil(far)), steps.dotStep);
}
bool paint_dots(Picture& cell, const Picture& next, std::uint32_t number, const MatrixSteps& steps,
                std::uint32_t) {
  const std::uint64_t radius = std::uint64_t{number} * steps.dotStep;
  return take_where(cell, next, [&](std::uint32_t x, std::uint32_t y) {
    const std::uint64_t dx = from_middle(x, steps.dot), dy = from_middle(y, steps.dot);
    return dx * dx + dy * dy <= radius * radius;
  });
}

/// The size of what shrinks after so many frames; 0 where it is gone.
std::uint32_t shrunk(std::uint32_t side, std::uint32_t number, std::uint32_t percent) {
  return static_cast<std::uint32_t>(side * std::pow(percent / 100.0, number));
}
std::uint32_t disappear_frames(std::uint32_t width, std::uint32_t height, const MatrixSteps& steps) {
  std::uint32_t frames = 1;
  while (std::min(shrunk(width, frames, steps.disappear), shrunk(height, frames, steps.disappear)) >= 2)
    ++frames;
  return frames;
}
bool paint_disappear(Picture& cell, const Picture& next, std::uint32_t number, const MatrixSteps& steps,
                     std::uint32_t) {
  const Picture old = cell;
  cell = next;
  return lay_in_middle(cell, old, shrunk(old.width(), number, steps.disappear),
                       shrunk(old.height(), number, steps.disappear));
}

std::uint32_t dissolve_frames(std::uint32_t, std::uint32_t, const MatrixSteps& steps) {
  return steps.dissolve;
}
bool paint_dissolve(Picture& cell, const Picture& next, std::uint32_t number, const MatrixSteps& steps,
                    std::uint32_t) {
  if (!cell.edit_block()) return false;
  const std::uint32_t old = steps.dissolve - number, half = steps.dissolve / 2;
  for (std::uint32_t y = 0; y < cell.height(); ++y) {
    std::uint8_t* out = cell.edit_row(y);
    const std::uint8_t* in = next.row(y);
    for (std::size_t i = 0; i < kPixel * cell.width(); ++i)
      out[i] = static_cast<std::uint8_t>((out[i] * old + in[i] * number + half) / steps.dissolve);
  }
  return true;
}

std::uint32_t duststorm_frames(std::uint32_t, std::uint32_t, const MatrixSteps& steps) {
  return steps.duststorm;
}
bool paint_duststorm(Picture& cell, const Picture& next, std::uint32_t number, const MatrixSteps& steps,
                     std::uint32_t seed) {
  const auto order = shuffled(cell.width() * cell.height(), seed);
  if (!cell.edit_block()) return false;
  const std::size_t open = std::uint64_t{order.size()} * number / steps.duststorm;
  for (std::size_t i = 0; i < open; ++i)
    take_row(cell, next, order[i] / cell.width(), order[i] % cell.width(), 1);
  return true;
}

std::uint32_t expand_frames(std::uint32_t, std::uint32_t, const MatrixSteps& steps) {
  return steps_to(100, steps.expand);
}
bool paint_expand(Picture& cell, const Picture& next, std::uint32_t number, const MatrixSteps& steps,
                  std::uint32_t) {
  const auto part = [&](std::uint32_t side) {
    return std::max<std::uint32_t>(
        1, static_cast<std::uint32_t>(std::uint64_t{side} * number * steps.expand / 100));
  };
  return lay_in_middle(cell, next, part(cell.width()), part(cell.height()));
}

std::uint32_t panes_frames(std::uint32_t, std::uint32_t, const MatrixSteps& steps) {
  return steps.panesSteps;
}
/// Each strip turns on its upright axis over black: what is seen of it gets narrower, then wider again.
bool paint_panes(Picture& cell, const Picture& next, std::uint32_t number, const MatrixSteps& steps,
                 std::uint32_t) {
  const Picture old = cell;
  if (!cell.edit_block()) return false;
  const std::uint32_t total = steps.panesSteps, twice = 2 * number;
  const Picture& seen = twice < total ? old : next;
  const std::uint32_t share = twice < total ? total - twice : twice - total;
  for (std::uint32_t left = 0; left < cell.width(); left += steps.panes) {
    const std::uint32_t strip = std::min(steps.panes, cell.width() - left);
    const auto width = static_cast<std::uint32_t>(std::uint64_t{strip} * share / total);
    const std::uint32_t begin = (strip - width) / 2;
    for (std::uint32_t y = 0; y < cell.height(); ++y) {
      std::uint8_t* out = cell.edit_row(y) + kPixel * left;
      const std::uint8_t* in = seen.row(y) + kPixel * left;
      std::memset(out, 0, kPixel * strip);
      for (std::uint32_t x = 0; x < width; ++x)
        std::memcpy(out + kPixel * (begin + x), in + kPixel * (std::uint64_t{x} * strip / width), kPixel);
    }
  }
  return true;
}

constexpr MatrixEffect kEffects[kMatrixEffects] = {
    {none_frames, paint_none},         {blinds_frames, paint_blinds},       {blocks_frames, paint_blocks},
    {diamonds_frames, paint_diamonds}, {disappear_frames, paint_disappear}, {dissolve_frames, paint_dissolve},
    {dots_frames, paint_dots},         {duststorm_frames, paint_duststorm}, {expand_frames, paint_expand},
    {panes_frames, paint_panes},
};

}  // namespace

const MatrixEffect& matrix_effect(std::size_t number) {
  return kEffects[std::min(number, kMatrixEffects - 1)];
}

}  // namespace vellum
