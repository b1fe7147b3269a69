// The rows of all operations. Each stands in the file of its name, beside the function that does its work.
#pragma once

#include "operations/operation.h"

namespace vellum {

extern const Operation kAdjust, kBalance, kCaption, kCopy, kCrop, kDepopulate, kExtract, kFlip, kFrame,
    kMerge, kMove, kOverlay, kProtect, kReconstruct, kResize, kReverse, kShadow, kSocial, kStill,
    kSupercompress, kText, kTile, kTitles, kTrim, kUnderlay, kWatermark;
/// In the order in which `vellum convert` names them.
extern const Operation kToMono, kToGrey, kToPalette, kToTrueColor, kToAlpha, kToApng, kToMng, kToWebp;

}  // namespace vellum
