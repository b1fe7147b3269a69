#include "operations/frame_range.h"

#include <algorithm>

#include "base/translation.h"

namespace vellum {

void fit_frame_range(std::vector<Field>& fields, const DocumentWindow& window) {
  const auto count = static_cast<std::int64_t>(frame_entries(window).size());
  for (Field& field : fields)
    if (field.name == std::string_view("first") || field.name == std::string_view("last")) {
      field.most = std::max<std::int64_t>(count, 1);
      field.initial = std::min(field.initial, field.most);
    }
}

std::optional<FieldFault> check_frame_range(const FieldValues& values, const DocumentWindow& window) {
  if (values.number("last") >= values.number("first")) return std::nullopt;
  return fault_of("last", StringId::WholeRange,
                  {translated("Last frame"), std::to_string(values.number("first")),
                   std::to_string(frame_entries(window).size())});
}

FrameList frames_in_range(const FieldValues& values, const FrameList& frames) {
  FrameList some;
  for (const std::size_t frame : frames) {
    const auto number = static_cast<std::int64_t>(frame) + 1;
    if (number >= values.number("first") && number <= values.number("last")) some.push_back(frame);
  }
  return some;
}

}  // namespace vellum
