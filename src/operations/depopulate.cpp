// Depopulate: some frames of each group go, and the running time may stay.
#include <algorithm>

#include "base/text.h"
#include "core/edit/edit_closing.h"
#include "core/model/chunk_description.h"
#include "core/model/first_frame.h"
#include "core/model/frame_time.h"
#include "core/model/frame_values.h"
#include "operations/operation_rows.h"
#include "operations/settings.h"

namespace vellum {
namespace {

constexpr FieldChoice kModes[] = {{0, "Keep, then skip"}, {1, "Skip, then keep"}};

constexpr Field kFields[] = {
    {.name = "mode",
     .label = "Order",
     .type = FieldType::Choice,
     .choices = kModes,
     .look = FieldLook::Radio,
     .setting = &settings::DepopulateMode},
    {.name = "keep",
     .label = "Frames to keep",
     .least = 1,
     .most = 1000,
     .initial = 1,
     .setting = &settings::DepopulateKeepValue},
    {.name = "skip",
     .label = "Frames to skip",
     .least = 1,
     .most = 1000,
     .initial = 1,
     .setting = &settings::DepopulateSkipValue},
    {.name = "preserve",
     .label = "Preserve running time",
     .type = FieldType::Flag,
     .tip = "A frame that goes leaves its time to the one in front of it",
     .initial = 1,
     .setting = &settings::DepopulatePreserve},
};

constexpr const char* kMode[] = {"mode"};
constexpr CompoundOption kOptions[] = {{.name = "skip-first",
                                        .form = nullptr,
                                        .help = "Each group begins with the frames that go",
                                        .fields = kMode}};

std::vector<bool> kept_frames(const FieldValues& values, std::size_t count) {
  const auto keep = static_cast<std::size_t>(values.number("keep")),
             skip = static_cast<std::size_t>(values.number("skip"));
  std::vector<bool> kept(count);
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t place = i % (keep + skip);
    kept[i] = values.number("mode") == 0 ? place < keep : place >= skip;
  }
  return kept;
}

std::string remaining_text(const std::vector<bool>& kept) {
  return filled(StringId::FramesRemain,
                {std::to_string(std::ranges::count(kept, true)), std::to_string(kept.size())});
}

std::string note(const FieldValues& values, const DocumentWindow& window) {
  return remaining_text(kept_frames(values, frame_entries(window).size()));
}

std::optional<FieldFault> check(const FieldValues& values, const DocumentWindow& window) {
  const auto kept = kept_frames(values, frame_entries(window).size());
  if (std::ranges::find(kept, true) != kept.end()) return std::nullopt;
  return fault_of("skip", StringId::KeepOneImage);
}

unsigned needs(const DocumentWindow&, const FieldValues&, const FrameList&) { return kWholeCanvases; }

/// Gives the times of the frames that go to the kept one in front of each; those in front of all to the
/// first.
void hand_times_on(DocumentWindow& draft, const std::vector<std::size_t>& entries,
                   const std::vector<bool>& kept) {
  const DocumentKind kind = draft.document.kind;
  const std::uint32_t ticks = ticks_per_second(draft.list);
  std::size_t heir = static_cast<std::size_t>(std::ranges::find(kept, true) - kept.begin());
  ChunkRecord record;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    if (kept[i]) {
      heir = i;
      continue;
    }
    chunk_list_get(draft.list, entries[heir], record);
    add_frame_time(record, draft.list.record(entries[i]), kind, ticks);
    record.description = chunk_description(record);
    chunk_list_put(draft.list, entries[heir], record);
  }
}

bool run(OperationRun& run) {
  const auto entries = frame_entries(run.draft);
  const auto kept = kept_frames(run.values, entries.size());
  if (run.number("preserve") != 0) hand_times_on(run.draft, entries, kept);
  std::vector<bool> goes(run.draft.list.size());
  for (std::size_t i = 0; i < entries.size(); ++i) goes[entries[i]] = !kept[i];
  run.draft.list.remove_marked(goes);
  if (!pad_first_frame(run.draft)) return false;
  finish_edit(run.draft, true);
  run.host.set_status(remaining_text(kept));
  return true;
}

}  // namespace

constinit const Operation kDepopulate{
    .parameters =
        {
            .name = "depopulate",
            .title = "Depopulate",
            .help = "Some frames of each group go, and the running time may stay",
            .command = 322,
            .kinds = kAnimatedKinds,
            .fields = kFields,
            .options = kOptions,
            .check = check,
            .note = note,
        },
    .result = OperationResult::NewWindow,
    .prefix = StringId::DepopulatedPrefix,
    .batch = 2,
    .batchPrefix = "Depopulate_",
    .needs = needs,
    .run = run,
};

}  // namespace vellum
