// "First frame" and "Last frame": what of an animation an operation works on beside what is selected.
#pragma once

#include "operations/frames.h"
#include "operations/operation.h"

namespace vellum {

inline constexpr std::int64_t kMostFrames = 1'000'000;

constexpr Field first_frame_field() {
  return {.name = "first", .label = "First frame", .least = 1, .most = kMostFrames, .initial = 1};
}
constexpr Field last_frame_field() {
  return {.name = "last", .label = "Last frame", .least = 1, .most = kMostFrames, .initial = kMostFrames};
}

/// For `fit` and `check`.
void fit_frame_range(std::vector<Field>& fields, const DocumentWindow& window);
std::optional<FieldFault> check_frame_range(const FieldValues& values, const DocumentWindow& window);

/// Those of the frames that lie in the range.
FrameList frames_in_range(const FieldValues& values, const FrameList& frames);

}  // namespace vellum
