// Nine places on a canvas, for what is laid on it.
#pragma once

#include "base/fields.h"

namespace vellum {

inline constexpr FieldChoice kPlaces[] = {{0, "Top left", "top-left"},
                                          {1, "Top", "top"},
                                          {2, "Top right", "top-right"},
                                          {3, "Left", "left"},
                                          {4, "Center", "center"},
                                          {5, "Right", "right"},
                                          {6, "Bottom left", "bottom-left"},
                                          {7, "Bottom", "bottom"},
                                          {8, "Bottom right", "bottom-right"}};
enum { kCenterPlace = 4, kBottomPlace = 7 };

inline constexpr std::int64_t kMostDistance = 32767;

/// The fields "at", "offsetX" and "offsetY", without settings; `offset` gives the two their option.
constexpr Field place_field(std::int64_t initial) {
  return {.name = "at",
          .label = "Place",
          .type = FieldType::Choice,
          .most = 8,
          .choices = kPlaces,
          .initial = initial};
}
constexpr Field distance_field(const char* name, const char* label) {
  return {.name = name, .label = label, .least = -kMostDistance - 1, .most = kMostDistance};
}

/// The left edge (the top one, with the row in place of the column) of something in a length, `margin` away
/// from the side where it stands; odd remainders are truncated toward zero.
constexpr std::int64_t place_in(std::int64_t third, std::int64_t length, std::int64_t part,
                                std::int64_t margin) {
  return third == 0 ? margin : third == 1 ? (length - part) / 2 : length - part - margin;
}

}  // namespace vellum
