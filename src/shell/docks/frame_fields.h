// What several frames have in common, as fields that change all of them.
#pragma once

#include "base/fields.h"
#include "operations/frames.h"
#include "operations/manage_frames.h"

namespace vellum {

/// Delay, place, disposal and blending, as far as the kind of the document has them.
std::vector<Field> frame_fields(DocumentKind kind);

/// The value of a field that all of these frames have; nothing where they differ.
std::optional<FieldValue> common_value(const DocumentWindow& window, const FrameList& frames,
                                       const Field& field);

/// Gives all of them a checked value of the field. What is wrong with the value where it can't be read.
std::optional<FieldFault> apply_to_frames(DocumentWindow& window, const FrameList& frames, const Field& field,
                                          const FieldValue& value);

}  // namespace vellum
