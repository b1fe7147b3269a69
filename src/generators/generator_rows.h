// The rows of all generators. Each stands in the file of its name.
#pragma once

#include "generators/generator.h"

namespace vellum {

extern const Generator kSpin;
extern const Generator kTransition;

}  // namespace vellum
