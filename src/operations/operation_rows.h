// The rows of all operations. Each stands in the file of its name, beside the function that does its work.
#pragma once

#include "operations/operation.h"

namespace vellum {

extern const Operation kAdjust, kBalance, kCrop, kDepopulate, kExtract, kFlip, kFrame, kReconstruct, kResize,
    kReverse, kShadow, kStill, kSupercompress, kTile, kTrim;
/// In the order in which `vellum convert` names them.
extern const Operation kToMono, kToGrey, kToPalette, kToTrueColor, kToAlpha, kToApng, kToMng, kToWebp;

}  // namespace vellum
