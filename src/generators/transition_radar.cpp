// Radar: a sector sweeps around the middle and leaves the arriving image behind it.
//
// Places are twice as fine as pixels, from the middle of the picture, y up, so that the middle of a pixel is
// a whole number. The arms of a sector end at whole pixels on a circle around the picture; its outline is
// three pixels wide.
#include <chrono>
#include <cmath>
#include <thread>

#include "generators/transition_effects.h"
#include "image/picture_operations.h"

namespace vellum {
namespace {

/// Single precision, as the angles of stored animations had it.
constexpr double kTwoPi = 6.283185005187988;
constexpr std::uint32_t kWholeTurn = 360;
constexpr std::int64_t kPen = 3;  ///< from an arm to its edge: one and a half pixels

struct Point {
  std::int64_t x, y;
};

std::int64_t cross(Point a, Point b) { return a.x * b.y - a.y * b.x; }
std::int64_t dot(Point a, Point b) { return a.x * b.x + a.y * b.y; }

std::int64_t floor_div(std::int64_t a, std::int64_t b) { return a / b - (a % b != 0 && (a < 0) != (b < 0)); }

/// Pixels of one row, from `begin` up to in front of `end`, seen from the middle.
struct Run {
  std::int64_t begin, end;  ///< columns
  std::int64_t half;        ///< columns left of the middle
  std::int64_t y;           ///< of their middles

  /// Keeps those whose middle (x, y) has a * x + b * y >= least.
  void keep(std::int64_t a, std::int64_t b, std::int64_t least) {
    // x = 2 * column + 1 - 2 * half, so 2a * column >= rest.
    const std::int64_t rest = least - b * y - a * (1 - 2 * half);
    if (a > 0) begin = std::max(begin, -floor_div(-rest, 2 * a));
    if (a < 0) end = std::min(end, floor_div(rest, 2 * a) + 1);
    if (a == 0 && rest > 0) end = begin;
  }
};

/// What arms and their sector are in one row, painted.
struct Sweep {
  Picture& work;
  const Picture& arriving;
  std::uint32_t row;
  Run all;

  void paint(const Run& run) const {
    if (run.begin >= run.end) return;
    const auto x = static_cast<std::int32_t>(run.begin), y = static_cast<std::int32_t>(row);
    PictureBlit(work, x, y, arriving, x, y, static_cast<std::int32_t>(run.end - run.begin), 1);
  }
  /// To the left of an arm, or on it.
  static void keep_left(Run& run, Point arm) { run.keep(-arm.y, arm.x, 0); }
  static void keep_right(Run& run, Point arm) { run.keep(arm.y, -arm.x, 0); }

  /// The sector from one arm counterclockwise to the other.
  void sector(Point from, Point to, bool large) const {
    Run first = all, second = all;
    keep_left(first, from);
    const std::int64_t turn = cross(from, to);
    const bool same = turn == 0 && dot(from, to) >= 0;
    if (same && large) return paint(all);
    if (same) return;
    if (turn >= 0) {
      keep_right(first, to);
      return paint(first);
    }
    keep_right(second, to);
    paint(first);
    paint(second);
  }

  /// The pen along an arm, and around the middle.
  void arm(Point end) const {
    if (const std::int64_t length = dot(end, end); length > 0) {
      Run band = all;
      auto reach = static_cast<std::int64_t>(std::sqrt(static_cast<double>(kPen * kPen * length)));
      while (reach * reach > kPen * kPen * length) --reach;
      while ((reach + 1) * (reach + 1) <= kPen * kPen * length) ++reach;
      band.keep(-end.y, end.x, -reach);
      band.keep(end.y, -end.x, -reach);
      band.keep(end.x, end.y, 0);
      paint(band);
    }
    for (std::int64_t x = -kPen; x <= kPen; ++x) {
      if (x * x + all.y * all.y > kPen * kPen) continue;
      Run dot = all;
      dot.keep(1, 0, x);
      dot.keep(-1, 0, -x);
      paint(dot);
    }
  }
};

/// The end of an arm, truncated to whole pixels.
Point arm_at(std::uint32_t degrees, std::int64_t radius) {
  const double angle = degrees * kTwoPi / kWholeTurn;
  return {static_cast<std::int64_t>(std::cos(angle) * static_cast<double>(radius)),
          static_cast<std::int64_t>(std::sin(angle) * static_cast<double>(radius))};
}

std::uint64_t frames(Extent, const TransitionSteps& steps) {
  return steps.radarStep == 0 ? kEndlessFrames : rounds_of(kWholeTurn, steps.radarStep);
}

bool paint(Picture& work, const TransitionScene& scene, std::uint64_t step) {
  const auto [width, height] = scene.canvas();
  const TransitionSteps& steps = scene.steps;
  // Where it stands still all frames share one picture, and nothing is gained by a million of them before
  // somebody can stop it.
  if (steps.radarStep == 0 && step > 0) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return true;
  }
  if (!work.edit_block()) return false;
  const std::int64_t half = width / 2, tall = height / 2;
  const auto radius =
      static_cast<std::int64_t>(std::ceil(std::sqrt(static_cast<double>(half * half + tall * tall))));
  const std::uint32_t from = steps.radarStart + static_cast<std::uint32_t>(step) * steps.radarStep;
  const Point first = arm_at(from, radius), second = arm_at(from + steps.radarStep, radius);
  for (std::uint32_t y = 0; y < height; ++y) {
    const std::int64_t up = 2 * tall - (2 * std::int64_t{y} + 1);
    const Sweep sweep{work, scene.arriving, y, {0, width, half, up}};
    sweep.sector(first, second, steps.radarStep > kWholeTurn / 2);
    sweep.arm(first);
    sweep.arm(second);
  }
  return true;
}

}  // namespace

constinit const TransitionEffect kRadar{.still = true,
                                        .pauses = false,
                                        .overLeaving = true,
                                        .frames = frames,
                                        .since = since_first,
                                        .paint = paint};

}  // namespace vellum
