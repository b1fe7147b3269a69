// The effects of transitions: how many frames each one has, and what each of these shows.
#pragma once

#include <span>
#include <vector>

#include "base/fields.h"
#include "core/model/document.h"
#include "image/picture.h"

namespace vellum {

/// The numbers that effects are drawn with, within their ranges; pixels where nothing else is said.
struct TransitionSteps {
  std::uint32_t horizontal = 8, vertical = 8, spacing = 16, raster = 4, tile = 6;
  std::uint32_t tilesAtOnce = 45, grainsAtOnce = 500;  ///< a frame
  std::uint32_t dissolve = 24;                         ///< levels of 255
  std::uint32_t radarStart = 0, radarStep = 10;        ///< degrees; a step of 0 never comes around
};

/// Frames of an effect that never ends.
inline constexpr std::uint64_t kEndlessFrames = std::uint64_t{1} << 40;

/// What an effect passes between: both pictures have 24 bits and the size of the canvas.
struct TransitionScene {
  Picture leaving, arriving;
  TransitionSteps steps;
  std::vector<std::uint32_t> order;  ///< the places of an effect that draws lots, in the order of the draws

  Extent canvas() const { return {leaving.width(), leaving.height()}; }
};

struct TransitionEffect {
  /// The leaving image stands in front of the frames, for the pause.
  bool still;
  /// The first of its own frames stands for the pause, the others for the delay.
  bool pauses;
  /// Frames begin as the leaving image, and not black.
  bool overLeaving;
  /// Its own frames.
  std::uint64_t (*frames)(Extent canvas, const TransitionSteps& steps);
  /// The step that a frame is painted from on, over what it begins as: itself where it covers all that those
  /// in front of it left.
  std::uint64_t (*since)(Extent canvas, const TransitionSteps& steps, std::uint64_t step);
  /// Paints a step. False when memory is exhausted.
  bool (*paint)(Picture& work, const TransitionScene& scene, std::uint64_t step);
  /// The places that lots are drawn for; null: it draws none.
  std::uint64_t (*places)(Extent canvas, const TransitionSteps& steps) = nullptr;
};

/// The effects. Their order is that of the names, and stays: stored numbers refer to it.
std::span<const TransitionEffect> transition_effects();

inline constexpr FieldChoice kTransitionNames[] = {{0, "Blocks"},
                                                   {1, "Dissolve"},
                                                   {2, "Horizontal Spinner Down"},
                                                   {3, "Horizontal Spinner Up"},
                                                   {4, "Interlace"},
                                                   {5, "Horizontal Raster"},
                                                   {6, "Horizontal Split"},
                                                   {7, "None"},
                                                   {8, "Radar"},
                                                   {9, "Sandstorm"},
                                                   {10, "Tile"},
                                                   {11, "Vertical Raster"},
                                                   {12, "Roll Down"},
                                                   {13, "Roll Left"},
                                                   {14, "Roll Right"},
                                                   {15, "Roll Up"},
                                                   {16, "Vertical Spinner Clockwise"},
                                                   {17, "Vertical Spinner Counterclockwise"},
                                                   {18, "Vertical Split"},
                                                   {19, "Wipe in from Bottom"},
                                                   {20, "Wipe in from Left"},
                                                   {21, "Wipe in from Right"},
                                                   {22, "Wipe in from Top"}};

class Random15;
/// Draws lots: all numbers below `places`, each once. A lot is one of the first 32768 that are left; the last
/// one that is left takes its place, so early lots fall at the beginning. Throws std::bad_alloc.
std::vector<std::uint32_t> drawn_lots(std::uint32_t places, Random15 random);

// The effects of each file, for the table.
extern const TransitionEffect kBlocks, kInterlace, kSandstorm, kTileEffect, kRadar;
extern const TransitionEffect kWipeBottom, kWipeLeft, kWipeRight, kWipeTop, kRollDown, kRollLeft, kRollRight,
    kRollUp, kHorizontalSplit, kVerticalSplit, kHorizontalRaster, kVerticalRaster;
extern const TransitionEffect kSpinnerDown, kSpinnerUp, kSpinnerClockwise, kSpinnerCounterclockwise;

/// What rows of the table share: frames of which each covers all, and frames that add to each other.
inline std::uint64_t since_itself(Extent, const TransitionSteps&, std::uint64_t step) { return step; }
inline std::uint64_t since_first(Extent, const TransitionSteps&, std::uint64_t) { return 0; }
constexpr std::uint64_t rounds_of(std::uint64_t whole, std::uint64_t part) {
  return (whole + part - 1) / part;
}

}  // namespace vellum
