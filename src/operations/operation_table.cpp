#include "operations/operation_rows.h"

namespace vellum {
namespace {

constexpr const Operation* kOperations[] = {
    &kStill,  &kBalance, &kToMono,     &kToGrey, &kToPalette,   &kToTrueColor, &kToAlpha, &kToApng, &kToMng,
    &kToWebp, &kCrop,    &kDepopulate, &kFlip,   &kReconstruct, &kResize,      &kReverse, &kTile};

}  // namespace

std::span<const Operation* const> operation_table() { return kOperations; }

}  // namespace vellum
