// Wipes push both images, rolls lay one over the other; splits and rasters do so in bands that move against
// each other.
#include <cstring>

#include "generators/transition_effects.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

/// How a line of pixels is put together while the arriving image has still `left` pixels to go.
enum class Motion {
  PushBack,  ///< both move to the beginning of the line
  PushOn,    ///< both move to its end
  RollBack,  ///< the arriving image moves to the beginning, over the other
  RollOn,
};

/// Pixels in front of `at` are those of one image from `first` on, the others those of the other image from
/// `second` on.
struct Cut {
  std::uint32_t at;
  bool arrivingFirst;
  std::uint32_t first, second;
};

Cut cut_of(Motion motion, std::uint32_t size, std::uint32_t left) {
  const std::uint32_t come = size - left;
  switch (motion) {
    case Motion::PushBack:
      return {left, false, come, 0};
    case Motion::PushOn:
      return {come, true, left, 0};
    case Motion::RollBack:
      return {come, true, left, come};
    default:
      return {left, false, 0, 0};
  }
}

enum class Bands { One, Halves, Raster };

/// Lines are rows; in an upright slide they are columns.
struct Slide {
  bool upright;
  Motion even, odd;
  Bands bands;
};

std::uint32_t step_of(const Slide& slide, const TransitionSteps& steps) {
  return slide.upright ? steps.vertical : steps.horizontal;
}

/// Copies `count` pixels of a row.
void copy(std::uint8_t* to, std::uint32_t x, const std::uint8_t* from, std::uint32_t from_x,
          std::uint32_t count) {
  std::memcpy(to + 3 * std::size_t{x}, from + 3 * std::size_t{from_x}, 3 * std::size_t{count});
}

void paint_row(std::uint8_t* row, std::uint32_t y, const TransitionScene& scene, const Cut& cut) {
  const std::uint8_t *leaving = scene.leaving.row(y), *arriving = scene.arriving.row(y);
  copy(row, 0, cut.arrivingFirst ? arriving : leaving, cut.first, cut.at);
  copy(row, cut.at, cut.arrivingFirst ? leaving : arriving, cut.second, scene.canvas().width - cut.at);
}

/// Of an odd number of rows the last one belongs to neither half.
bool paint_rows(Picture& work, const TransitionScene& scene, const Slide& slide, std::uint32_t left) {
  const EditRows rows(work);
  if (!rows) return false;
  const Extent canvas = scene.canvas();
  const std::uint32_t width = canvas.width, height = canvas.height;
  const Cut even = cut_of(slide.even, width, left), odd = cut_of(slide.odd, width, left);
  const std::uint32_t half = height / 2, raster = scene.steps.raster;
  for_each_row(height, rows.stride, [&](std::uint32_t y) {
    if (slide.bands == Bands::Halves && y >= 2 * half) return;
    const bool second = slide.bands == Bands::Halves   ? y >= half
                        : slide.bands == Bands::Raster ? y / raster % 2 != 0
                                                       : false;
    paint_row(rows[y], y, scene, second ? odd : even);
  });
  return true;
}

/// The row that row y of a line shows.
const std::uint8_t* moved_row(const TransitionScene& scene, const Cut& cut, std::uint32_t y) {
  const bool first = y < cut.at;
  const Picture& image = first == cut.arrivingFirst ? scene.arriving : scene.leaving;
  return image.row(first ? cut.first + y : cut.second + y - cut.at);
}

bool paint_columns(Picture& work, const TransitionScene& scene, const Slide& slide, std::uint32_t left) {
  const EditRows rows(work);
  if (!rows) return false;
  const Extent canvas = scene.canvas();
  const std::uint32_t width = canvas.width, height = canvas.height;
  const Cut even = cut_of(slide.even, height, left), odd = cut_of(slide.odd, height, left);
  const std::uint32_t band = slide.bands == Bands::Raster ? scene.steps.raster : width;
  for_each_row(height, rows.stride, [&](std::uint32_t y) {
    const std::uint8_t* from[] = {moved_row(scene, even, y), moved_row(scene, odd, y)};
    if (slide.bands == Bands::Halves) {
      copy(rows[y], 0, from[0], 0, width / 2);
      copy(rows[y], width / 2, from[1], width / 2, width - width / 2);
      return;
    }
    for (std::uint32_t x = 0, i = 0; x < width; x += band, ++i)
      copy(rows[y], x, from[i % 2], x, std::min(band, width - x));
  });
  return true;
}

template <Slide kSlide>
std::uint64_t frames(Extent canvas, const TransitionSteps& steps) {
  return rounds_of(kSlide.upright ? canvas.height : canvas.width, step_of(kSlide, steps));
}

template <Slide kSlide>
bool paint(Picture& work, const TransitionScene& scene, std::uint64_t step) {
  const Extent canvas = scene.canvas();
  const std::uint32_t width = canvas.width, height = canvas.height;
  const auto gone = static_cast<std::uint32_t>(step * step_of(kSlide, scene.steps));
  return kSlide.upright ? paint_columns(work, scene, kSlide, height - gone)
                        : paint_rows(work, scene, kSlide, width - gone);
}

template <Slide kSlide>
constexpr TransitionEffect kEffect{.still = true,
                                   .pauses = false,
                                   .overLeaving = false,
                                   .frames = frames<kSlide>,
                                   .since = since_itself,
                                   .paint = paint<kSlide>};

}  // namespace

using enum Motion;
constinit const TransitionEffect kWipeLeft = kEffect<Slide{false, PushOn, PushOn, Bands::One}>;
constinit const TransitionEffect kWipeRight = kEffect<Slide{false, PushBack, PushBack, Bands::One}>;
constinit const TransitionEffect kWipeTop = kEffect<Slide{true, PushOn, PushOn, Bands::One}>;
constinit const TransitionEffect kWipeBottom = kEffect<Slide{true, PushBack, PushBack, Bands::One}>;
constinit const TransitionEffect kRollLeft = kEffect<Slide{false, RollBack, RollBack, Bands::One}>;
constinit const TransitionEffect kRollRight = kEffect<Slide{false, RollOn, RollOn, Bands::One}>;
constinit const TransitionEffect kRollUp = kEffect<Slide{true, RollOn, RollOn, Bands::One}>;
constinit const TransitionEffect kRollDown = kEffect<Slide{true, RollBack, RollBack, Bands::One}>;
constinit const TransitionEffect kHorizontalSplit = kEffect<Slide{false, PushBack, PushOn, Bands::Halves}>;
constinit const TransitionEffect kVerticalSplit = kEffect<Slide{true, PushBack, PushOn, Bands::Halves}>;
constinit const TransitionEffect kHorizontalRaster = kEffect<Slide{false, PushBack, PushOn, Bands::Raster}>;
constinit const TransitionEffect kVerticalRaster = kEffect<Slide{true, PushBack, PushOn, Bands::Raster}>;

}  // namespace vellum
