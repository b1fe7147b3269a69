#include "generators/transition_effects.h"

#include "image/picture_operations.h"

namespace vellum {
namespace {

constexpr std::uint32_t kMostLight = 255;

/// Levels 0, step, twice the step and so on below the first multiple above 255.
std::uint64_t dissolve_frames(Extent, const TransitionSteps& steps) {
  return (kMostLight - kMostLight % steps.dissolve + steps.dissolve) / steps.dissolve;
}

bool dissolve(Picture& work, const TransitionScene& scene, std::uint64_t step) {
  const auto level = static_cast<std::uint32_t>(step) * scene.steps.dissolve;
  work = PictureCrossFade(scene.leaving, scene.arriving, std::min(level, kMostLight));
  return static_cast<bool>(work);
}

std::uint64_t one_frame(Extent, const TransitionSteps&) { return 1; }
bool paint_nothing(Picture&, const TransitionScene&, std::uint64_t) { return true; }

constexpr TransitionEffect kDissolve{.still = true,
                                     .pauses = false,
                                     .overLeaving = true,
                                     .frames = dissolve_frames,
                                     .since = since_itself,
                                     .paint = dissolve};
constexpr TransitionEffect kNone{.still = false,
                                 .pauses = true,
                                 .overLeaving = true,
                                 .frames = one_frame,
                                 .since = since_itself,
                                 .paint = paint_nothing};

}  // namespace

std::span<const TransitionEffect> transition_effects() {
  static const TransitionEffect effects[] = {
      kBlocks,          kDissolve,   kSpinnerDown, kSpinnerUp, kInterlace,        kHorizontalRaster,
      kHorizontalSplit, kNone,       kRadar,       kSandstorm, kTileEffect,       kVerticalRaster,
      kRollDown,        kRollLeft,   kRollRight,   kRollUp,    kSpinnerClockwise, kSpinnerCounterclockwise,
      kVerticalSplit,   kWipeBottom, kWipeLeft,    kWipeRight, kWipeTop};
  static_assert(std::size(effects) == std::size(kTransitionNames));
  return effects;
}

}  // namespace vellum
