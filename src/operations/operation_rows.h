// The rows of all operations. Each stands in the file of its name, beside the function that does its work.
#pragma once

#include "operations/operation.h"

namespace vellum {

extern const Operation kBalance, kCrop, kDepopulate, kFlip, kResize, kReverse, kTile;

}  // namespace vellum
