#include "shell/docks/frame_fields.h"

#include <algorithm>

#include "operations/manage_actions.h"

namespace vellum {
namespace {

struct FrameFieldRow {
  const char* action;  ///< of Manage
  const char* label;
  FieldValue (*get)(const ChunkRecord& record, DocumentKind kind, std::uint32_t ticks);
};

constexpr FrameFieldRow kRows[] = {
    {"delay", "Delay (ms)",
     [](const ChunkRecord& record, DocumentKind kind, std::uint32_t ticks) {
       return FieldValue(std::int64_t{frame_delay_ms(record, kind, ticks)});
     }},
    {"position", "Place (X, Y)",
     [](const ChunkRecord& record, DocumentKind kind, std::uint32_t) {
       const FrameOffset place = GetFrameOffset(record, kind);
       return FieldValue(std::to_string(place.x) + ", " + std::to_string(place.y));
     }},
    {"dispose", "Dispose",
     [](const ChunkRecord& record, DocumentKind kind, std::uint32_t) {
       return FieldValue(std::int64_t{GetFrameDispose(record, kind)});
     }},
    {"blend", "Blend",
     [](const ChunkRecord& record, DocumentKind, std::uint32_t) {
       return FieldValue(std::int64_t{record.frameControl.blend});
     }},
};

}  // namespace

std::vector<Field> frame_fields(DocumentKind kind) {
  std::vector<Field> fields;
  for (const FrameFieldRow& row : kRows)
    if (auto field = manage_field(manage_action(row.action), kind)) {
      field->label = row.label;
      fields.push_back(*field);
    }
  return fields;
}

std::optional<FieldValue> common_value(const DocumentWindow& window, const FrameList& frames,
                                       const Field& field) {
  const auto row = std::ranges::find(kRows, std::string_view(field.name),
                                     [](const FrameFieldRow& one) { return std::string_view(one.action); });
  const auto entries = frame_entries(window);
  const std::uint32_t ticks = ticks_per_second(window.list);
  std::optional<FieldValue> common;
  for (const std::size_t frame : frames) {
    const FieldValue value = row->get(window.list.record(entries.at(frame)), window.document.kind, ticks);
    if (common && *common != value) return std::nullopt;
    common = value;
  }
  return common;
}

std::optional<FieldFault> apply_to_frames(DocumentWindow& window, const FrameList& frames, const Field& field,
                                          const FieldValue& value) {
  if (auto fault = check_field(field, value)) return fault;
  const ManageAction& action = manage_action(field.name);
  if (action.apply(window, frames, value)) return std::nullopt;
  return fault_of(field.name, action.rule);
}

}  // namespace vellum
