// Merge: the frames of another animation among those of this one.
#include <algorithm>

#include "core/edit/paste_chunks.h"
#include "operations/field_rows.h"
#include "operations/operation_rows.h"
#include "operations/second_file.h"

namespace vellum {
namespace {

constexpr std::int64_t kMostImages = 1'000'000'000;

constexpr Field kFields[] = {
    kept(file_field("with", "File"), 2),
    {.name = "after",
     .label = "Insert after image",
     .most = kMostImages,
     .tip = "0: in front of all",
     .initial = kMostImages},
    {.name = "text", .label = "Include text chunks", .type = FieldType::Flag, .most = 1, .stateId = 1},
};

/// The image of the caret at first, else the last one.
void fit(std::vector<Field>& fields, const DocumentWindow& window) {
  const auto entries = frame_entries(window);
  const auto count = static_cast<std::int64_t>(entries.size());
  fields[1].most = count;
  const auto caret = static_cast<std::size_t>(std::max(window.document.caret, 0));
  const auto behind = std::ranges::upper_bound(entries, caret) - entries.begin();
  const bool on_image = std::ranges::binary_search(entries, caret);
  fields[1].initial = on_image ? std::int64_t{behind} : count;
}

std::optional<FieldFault> check(const FieldValues& values, const DocumentWindow&) {
  return check_file(values, "with");
}

bool run(OperationRun& run) {
  DocumentWindow other;
  run.told = true;
  if (!open_second_file(other, run.values.text("with"), run.host)) return false;
  if (frame_entries(other).empty()) return run.refuse(StringId::NoImagesHere);
  const MergeRequest request{static_cast<std::size_t>(run.number("after")), run.number("text") != 0};
  return merge_document(run.draft, other, request, run.host);
}

}  // namespace

constinit const Operation kMerge{
    .parameters =
        {
            .name = "merge",
            .title = "Merge",
            .help = "The frames of another animation among those of this one",
            .command = 304,
            .kinds = kAnimatedKinds,
            .stateFile = "MergeState.txt",
            .fields = kFields,
            .second = "with",
            .fit = fit,
            .check = check,
        },
    .run = run,
};

}  // namespace vellum
