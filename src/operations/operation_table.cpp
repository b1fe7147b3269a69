#include "operations/operation_rows.h"

namespace vellum {
namespace {

constexpr const Operation* kOperations[] = {
    &kStill,   &kAdjust,   &kBalance,       &kToMono, &kToGrey,  &kToPalette,  &kToTrueColor,
    &kToAlpha, &kToApng,   &kToMng,         &kToWebp, &kCrop,    &kDepopulate, &kExtract,
    &kFlip,    &kFrame,    &kReconstruct,   &kResize, &kReverse, &kShadow,     &kTile,
    &kTitles,  &kTrim,     &kSupercompress, &kMerge,  &kCaption, &kOverlay,    &kSocial,
    &kText,    &kUnderlay, &kWatermark,     &kMove,   &kCopy,    &kProtect};

}  // namespace

std::span<const Operation* const> operation_table() { return kOperations; }

}  // namespace vellum
