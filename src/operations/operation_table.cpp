#include "operations/operation_rows.h"

namespace vellum {
namespace {

constexpr const Operation* kOperations[] = {&kBalance, &kCrop,    &kDepopulate, &kFlip,
                                            &kResize,  &kReverse, &kTile};

}  // namespace

std::span<const Operation* const> operation_table() { return kOperations; }

}  // namespace vellum
