// How a cell of the graphic matrix passes from one picture to another.
#pragma once

#include "generators/random15.h"
#include "image/picture.h"

namespace vellum {

/// The numbers of the effects' own fields: pixels, frames or per cent, see the fields of the matrix.
struct MatrixSteps {
  std::uint32_t blinds = 12, block = 12, blockStep = 8, diamond = 24, diamondStep = 3, disappear = 80,
                dissolve = 10, dot = 16, dotStep = 2, duststorm = 16, expand = 10, panes = 32, panesSteps = 8;
};

struct MatrixEffect {
  /// Frames that a cell of this size takes; the last one shows the new picture.
  std::uint32_t (*frames)(std::uint32_t width, std::uint32_t height, const MatrixSteps& steps);
  /// Paints frame `number`, from 1, but not the last, over `cell`, which is the old picture; `next` is the
  /// new one; all have 24 bits and one size. `seed` is that of this change. False without memory.
  bool (*paint)(Picture& cell, const Picture& next, std::uint32_t number, const MatrixSteps& steps,
                std::uint32_t seed);
};

/// None, Blinds, Blocks, Diamonds, Disappear, Dissolve, Dots, Duststorm, Expand, Panes.
inline constexpr std::size_t kMatrixEffects = 10;
const MatrixEffect& matrix_effect(std::size_t number);

}  // namespace vellum
