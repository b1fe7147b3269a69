// An interlaced still image on its way: what is known of it after each of the seven passes.
#pragma once

#include "core/model/document.h"

namespace vellum {

inline constexpr unsigned kInterlacePasses = 7;

/// Whether the header says Adam7.
bool is_interlaced(const ChunkList& list);

/// The picture after passes 1 to `pass` (PNG standard, "Interlaced data order"): a pixel that has come stands
/// for those around it that have not. After the last pass, and for a null picture, the picture itself.
Picture picture_after_pass(const Picture& picture, unsigned pass);

}  // namespace vellum
