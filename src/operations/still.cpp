// Animation to PNG: what one frame shows, as a still.
#include <algorithm>

#include "core/build/convert_records.h"
#include "core/edit/insert_chunk.h"
#include "operations/operation_rows.h"
#include "operations/reconstruct.h"

namespace vellum {
namespace {

enum GroundChoice { kOverBackground, kTransparent };
constexpr FieldChoice kGrounds[] = {{kOverBackground, "Over the background color", "background"},
                                    {kTransparent, "Transparent"}};

constexpr Field kFields[] = {
    {.name = "frame", .label = "Frame", .least = 1, .most = 1'000'000, .initial = 1},
    {.name = "ground",
     .label = "Background",
     .type = FieldType::Choice,
     .choices = kGrounds,
     .look = FieldLook::Radio,
     .initial = kTransparent},
};

constexpr const char* kGround[] = {"ground"};
constexpr CompoundOption kOptions[] = {{.name = "opaque",
                                        .form = nullptr,
                                        .help = "Over the background color",
                                        .fields = kGround,
                                        .value = kOverBackground}};

/// The frame at the caret, and transparency where there is some.
void fit(std::vector<Field>& fields, const DocumentWindow& window) {
  const auto entries = frame_entries(window);
  const auto caret = std::ranges::find(entries, caret_entry(window));
  fields[0].most = std::max<std::int64_t>(std::ssize(entries), 1);
  fields[0].initial = caret == entries.end() ? 1 : caret - entries.begin() + 1;
  fields[1].initial = has_transparency(window) ? kTransparent : kOverBackground;
}

bool run(OperationRun& run) {
  const bool opaque = run.number("ground") == kOverBackground;
  return replace_draft(run, [&](DocumentWindow& made) {
    return still_of_frame(run.draft, made, static_cast<std::size_t>(run.number("frame") - 1), opaque,
                          run.host);
  });
}

}  // namespace

bool still_of_frame(const DocumentWindow& from, DocumentWindow& to, std::size_t frame, bool opaque,
                    Host& host) {
  Picture shown;
  const CanvasDepth depth = opaque ? CanvasDepth::TrueColor : CanvasDepth::AsNeeded;
  const bool whole = for_each_canvas(from, depth, host, [&](std::size_t number, const Picture& canvas) {
    if (number == frame) shown = canvas;
    return number < frame;
  });
  return whole && shown && make_still(to, from, shown);
}

constinit const Operation kStill{
    .parameters = {.name = "still",
                   .title = "Animation to PNG",
                   .help = "What one frame of an animation shows as a PNG",
                   .command = 270,
                   .kinds = kAnimatedKinds,
                   .fields = kFields,
                   .options = kOptions,
                   .fit = fit},
    .result = OperationResult::NewWindow,
    .makes = DocumentKind::PING,
    .prefix = StringId::ConvertedPrefix,
    .run = run,
};

}  // namespace vellum
