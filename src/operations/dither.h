// The flag "Dither" of conversions, which have one setting together.
#pragma once

#include "operations/operation.h"
#include "operations/settings.h"

namespace vellum {

inline constexpr Field kDither{.name = "dither",
                               .label = "Dither",
                               .type = FieldType::Flag,
                               .tip = "Spreads the error of each pixel to its neighbors",
                               .initial = 1,
                               .setting = &settings::ConvertPaletteDither};

/// On a command line nothing is dithered unless that is asked for.
inline constexpr const char* kDitherFields[] = {"dither"};
inline constexpr CompoundOption kDitherOption{.name = "dither",
                                              .form = nullptr,
                                              .help = "Spread the error of each pixel to its neighbors",
                                              .fields = kDitherFields,
                                              .otherwise = 0};

}  // namespace vellum
