// The two passes of resampling, each a weighted sum along one axis.
#pragma once

#include "image/picture.h"
#include "image/resample_filter.h"

namespace vellum {

enum class PassOrder { DownFirst, AcrossFirst };

/// A picture of 24 or 32 bits with the sizes of both axes. Each channel is rounded to 8 bits between the
/// passes; the colors of 32 bits are weighted by their alpha. Null when memory is exhausted.
Picture resample_passes(const Picture& source, const ResampleAxis& across, const ResampleAxis& down,
                        PassOrder order);

}  // namespace vellum
