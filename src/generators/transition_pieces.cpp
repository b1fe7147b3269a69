// Effects that bring the arriving image in pieces, which stay.
#include <cstring>
#include <numeric>

#include "generators/random15.h"
#include "generators/transition_effects.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

// ------------------------------------------------------------------------------------ squares that grow

std::uint64_t block_frames(Extent, const TransitionSteps& steps) {
  const std::uint32_t half = steps.spacing / 2;
  return half >= 2 ? half / 2 : 0;
}

/// Squares around all points of a grid, which reaches one mesh beyond the picture. Each covers those in front
/// of it.
bool paint_blocks(Picture& work, const TransitionScene& scene, std::uint64_t step) {
  if (!work.edit_block()) return false;
  const auto [width, height] = scene.canvas();
  const std::int64_t half = scene.steps.spacing / 2, i = static_cast<std::int64_t>(step);
  const auto side = static_cast<std::int32_t>(2 + 2 * i);
  for (std::int64_t y = 0; y <= height - height % half + half; y += half)
    for (std::int64_t x = 0; x <= width - width % half + half; x += half) {
      const auto left = static_cast<std::int32_t>(x - 1 - i), top = static_cast<std::int32_t>(y - 1 - i);
      PictureBlit(work, left, top, scene.arriving, left, top, side, side);
    }
  return true;
}

// ------------------------------------------------------------------------------------ interlacing

struct Pass {
  std::uint32_t row, column, rows, columns;
};

/// The passes of an interlaced PNG but the last one: the arriving image itself completes them.
constexpr Pass kPasses[] = {{0, 0, 8, 8}, {0, 4, 8, 8}, {4, 0, 8, 4},
                            {0, 2, 4, 4}, {2, 0, 4, 2}, {0, 1, 2, 2}};

std::uint64_t pass_frames(Extent, const TransitionSteps&) { return std::size(kPasses); }

bool paint_pass(Picture& work, const TransitionScene& scene, std::uint64_t step) {
  const EditRows rows(work);
  if (!rows) return false;
  const Pass& pass = kPasses[step];
  const auto [width, height] = scene.canvas();
  for (std::uint32_t y = pass.row; y < height; y += pass.rows)
    for (std::uint32_t x = pass.column; x < width; x += pass.columns)
      copy_pixels(rows[y], x, scene.arriving.row(y), x, 1, 24);
  return true;
}

// ------------------------------------------------------------------------------------ lots

/// Calls use(place) for the lots of a step.
template <class Use>
void for_each_lot(const TransitionScene& scene, std::uint64_t step, std::uint32_t at_once, const Use& use) {
  const std::uint64_t end = std::min<std::uint64_t>((step + 1) * at_once, scene.order.size());
  for (std::uint64_t i = step * at_once; i < end; ++i) use(scene.order[i]);
}

std::uint64_t grains(Extent canvas, const TransitionSteps&) {
  return std::uint64_t{canvas.width} * canvas.height;
}

std::uint64_t sand_frames(Extent canvas, const TransitionSteps& steps) {
  return rounds_of(grains(canvas, steps), steps.grainsAtOnce);
}

bool paint_sand(Picture& work, const TransitionScene& scene, std::uint64_t step) {
  const EditRows rows(work);
  if (!rows) return false;
  const std::uint32_t width = scene.canvas().width;
  for_each_lot(scene, step, scene.steps.grainsAtOnce, [&](std::uint32_t place) {
    const std::uint32_t y = place / width;
    const std::size_t x = 3 * std::size_t{place % width};
    std::memcpy(rows[y] + x, scene.arriving.row(y) + x, 3);
  });
  return true;
}

/// Cells in a row of them: the last one lies beyond the picture where its size is a multiple of the cell's.
std::uint64_t cells_along(std::uint32_t size, const TransitionSteps& steps) { return size / steps.tile + 1; }

std::uint64_t cells(Extent canvas, const TransitionSteps& steps) {
  return cells_along(canvas.width, steps) * cells_along(canvas.height, steps);
}

std::uint64_t tile_frames(Extent canvas, const TransitionSteps& steps) {
  return rounds_of(cells(canvas, steps), steps.tilesAtOnce);
}

bool paint_tiles(Picture& work, const TransitionScene& scene, std::uint64_t step) {
  if (!work.edit_block()) return false;
  const auto across = static_cast<std::uint32_t>(cells_along(scene.canvas().width, scene.steps));
  const std::uint32_t side = scene.steps.tile;
  for_each_lot(scene, step, scene.steps.tilesAtOnce, [&](std::uint32_t place) {
    const auto x = static_cast<std::int32_t>(place % across * side),
               y = static_cast<std::int32_t>(place / across * side);
    PictureBlit(work, x, y, scene.arriving, x, y, static_cast<std::int32_t>(side),
                static_cast<std::int32_t>(side));
  });
  return true;
}

}  // namespace

std::vector<std::uint32_t> drawn_lots(std::uint32_t places, Random15 random) {
  std::vector<std::uint32_t> left(places), order(places);
  std::iota(left.begin(), left.end(), 0u);
  for (std::uint32_t drawn = 0; drawn < places; ++drawn) {
    const std::uint32_t remaining = places - drawn, lot = random.next() % remaining;
    order[drawn] = left[lot];
    left[lot] = left[remaining - 1];
  }
  return order;
}

constinit const TransitionEffect kBlocks{.still = false,
                                         .pauses = false,
                                         .overLeaving = true,
                                         .frames = block_frames,
                                         .since = since_itself,
                                         .paint = paint_blocks};
constinit const TransitionEffect kInterlace{.still = true,
                                            .pauses = false,
                                            .overLeaving = true,
                                            .frames = pass_frames,
                                            .since = since_first,
                                            .paint = paint_pass};
constinit const TransitionEffect kSandstorm{.still = true,
                                            .pauses = false,
                                            .overLeaving = true,
                                            .frames = sand_frames,
                                            .since = since_first,
                                            .paint = paint_sand,
                                            .places = grains};
constinit const TransitionEffect kTileEffect{.still = true,
                                             .pauses = false,
                                             .overLeaving = true,
                                             .frames = tile_frames,
                                             .since = since_first,
                                             .paint = paint_tiles,
                                             .places = cells};

}  // namespace vellum
