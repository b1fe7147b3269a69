// The rows of all generators. Each stands in the file of its name.
#pragma once

#include "generators/generator.h"

namespace vellum {

extern const Generator kBanner;
extern const Generator kButton;
extern const Generator kLedSign;
extern const Generator kPhotoStack;
extern const Generator kMatrix;
extern const Generator kSpin;
extern const Generator kStatusPanel;
extern const Generator kThrobber;
extern const Generator kTransition;

}  // namespace vellum
