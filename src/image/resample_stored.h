// Resampling a large image while its stream is unpacked: only some of its rows are in memory.
#pragma once

#include "image/picture.h"
#include "image/resample_filter.h"

namespace vellum {

/// What `resample_passes`, down first, makes of a picture of 24 or 32 bits whose rows are not in memory. Null
/// where there is nothing to win (they are, or the image is small), and where the stream is not as it should
/// be or memory is exhausted.
Picture resample_stored(const Picture& source, const ResampleAxis& across, const ResampleAxis& down);

}  // namespace vellum
