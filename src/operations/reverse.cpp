// Reverse: frames in the opposite order, or there and back.
#include <algorithm>

#include "base/limits.h"
#include "base/translation.h"
#include "core/edit/edit_closing.h"
#include "operations/operation_rows.h"

namespace vellum {
namespace {

constexpr FieldChoice kWays[] = {{0, "Reverse"}, {1, "There and back"}};
constexpr Field kFields[] = {{.name = "way",
                              .label = "Order",
                              .type = FieldType::Choice,
                              .choices = kWays,
                              .look = FieldLook::Radio,
                              .stateId = 1}};
constexpr const char* kWay[] = {"way"};
constexpr CompoundOption kOptions[] = {{.name = "there-and-back",
                                        .form = nullptr,
                                        .help = "The frames stay and come again in the opposite order",
                                        .fields = kWay}};

unsigned needs(const DocumentWindow&, const FieldValues&, const FrameList&) { return kWholeCanvases; }

/// Only pictures, places and times change their positions: what stands between images stays there.
void reverse_frames(DocumentWindow& draft, const FrameList& frames) {
  const auto entries = frame_entries(draft);
  const ChunkList before = draft.list;
  for (std::size_t i = 0; i < frames.size(); ++i) {
    const std::size_t from = entries[frames[frames.size() - 1 - i]];
    draft.list.replace(entries[frames[i]], before.entry(from).record);
  }
}

/// Behind the last of them all but the first and the last, in the opposite order.
bool append_way_back(DocumentWindow& draft, const FrameList& frames) {
  const auto entries = frame_entries(draft);
  std::vector<std::shared_ptr<const ChunkRecord>> back;
  for (std::size_t i = frames.size(); i-- > 2;)
    back.push_back(draft.list.entry(entries[frames[i - 1]]).record);
  if (draft.list.size() + back.size() > kMaximumEntries) return false;
  draft.list.insert(entries[frames.back()] + 1, back);
  return true;
}

bool run(OperationRun& run) {
  if (run.frames.size() < 2) return true;
  const bool there_and_back = run.number("way") == 1;
  if (!there_and_back)
    reverse_frames(run.draft, run.frames);
  else if (!append_way_back(run.draft, run.frames))
    return run.host.fail({FaultKind::Limit, 0, -1, -1, translated("the list would have too many entries")});
  finish_edit(run.draft, there_and_back);
  return true;
}

}  // namespace

constinit const Operation kReverse{
    .parameters =
        {
            .name = "reverse",
            .title = "Reverse",
            .help = "Frames in the opposite order, or there and back",
            .command = 314,
            .kinds = kAnimatedKinds,
            .stateFile = "ReverseState.txt",
            .fields = kFields,
            .options = kOptions,
        },
    .batch = 7,
    .batchPrefix = "Reverse_",
    .scoped = true,
    .needs = needs,
    .run = run,
};

}  // namespace vellum
