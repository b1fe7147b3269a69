// Move to and Copy to: images go in front of another one, or behind it.
#include <algorithm>

#include "core/edit/move_chunks.h"
#include "core/model/first_frame.h"
#include "operations/manage_frames.h"
#include "operations/operation_rows.h"

namespace vellum {
namespace {

constexpr FieldChoice kSides[] = {{0, "After image", "after"}, {1, "Before image", "before"}};
constexpr std::int64_t kMostImages = 1'000'000'000;

constexpr Field kFields[] = {
    {.name = "side",
     .label = "Where to",
     .type = FieldType::Choice,
     .most = 1,
     .choices = kSides,
     .look = FieldLook::Radio},
    {.name = "image", .label = "Image", .least = 1, .most = kMostImages, .initial = 1},
};

constexpr const char* kImage[] = {"image"};
constexpr CompoundOption kOptions[] = {{.name = "after",
                                        .form = "N",
                                        .help = "They go behind image N",
                                        .fields = kImage,
                                        .alongside = "side",
                                        .alongsideValue = 0},
                                       {.name = "before",
                                        .form = "N",
                                        .help = "They go in front of image N",
                                        .fields = kImage,
                                        .alongside = "side",
                                        .alongsideValue = 1}};

/// The image of the caret at first.
void fit(std::vector<Field>& fields, const DocumentWindow& window) {
  const auto entries = frame_entries(window);
  fields[1].most = std::max<std::int64_t>(static_cast<std::int64_t>(entries.size()), 1);
  const auto caret = static_cast<std::size_t>(std::max(window.document.caret, 0));
  const auto behind = std::ranges::upper_bound(entries, caret);
  fields[1].initial = std::clamp<std::int64_t>(behind - entries.begin(), 1, fields[1].most);
}

const char* settle(FieldValues&, const DocumentWindow&, const GivenFields& given) {
  return given.contains("image") ? nullptr : "give one of --before and --after";
}

bool move_or_copy(OperationRun& run, bool copy) {
  DocumentWindow& draft = run.draft;
  const auto entries = frame_entries(draft);
  draft.list.select_all(false);
  for (const std::size_t frame : run.frames) draft.list.select(entries[frame], true);
  if (run.frames.empty()) return run.refuse(StringId::SelectImagesToMove);
  const MoveImages request{static_cast<std::size_t>(run.number("image")), run.number("side") == 1, copy};
  // All images move: they stay where they are.
  if (!copy && run.frames.size() == entries.size()) return true;
  Host listener;
  listener.message = [&](const Message& message) {
    run.told = true;
    if (run.host.message) run.host.message(message);
  };
  // Without a message they stand there already.
  if (!move_images(draft, request, listener)) return !run.told;
  return pad_first_frame(draft);
}

bool run_move(OperationRun& run) { return move_or_copy(run, false); }
bool run_copy(OperationRun& run) { return move_or_copy(run, true); }

}  // namespace

constinit const Operation kMove{
    .parameters =
        {
            .name = "move",
            .title = "Move to",
            .help = "Images to another place among the others",
            .command = 320,
            .kinds = kAnimatedKinds,
            .fields = kFields,
            .options = kOptions,
            .fit = fit,
            .settle = settle,
        },
    .scoped = true,
    .ofSelected = true,
    .run = run_move,
};

constinit const Operation kCopy{
    .parameters =
        {
            .name = "copy",
            .title = "Copy to",
            .help = "Copies of images at another place among the others",
            .command = 321,
            .kinds = kAnimatedKinds,
            .page = "move",
            .fields = kFields,
            .options = kOptions,
            .fit = fit,
            .settle = settle,
        },
    .scoped = true,
    .ofSelected = true,
    .run = run_copy,
};

}  // namespace vellum
