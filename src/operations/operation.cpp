#include "operations/operation.h"

#include <algorithm>

#include "base/translation.h"
#include "core/edit/deep_samples.h"
#include "core/model/kind_table.h"
#include "operations/convert_colors.h"
#include "operations/manage_frames.h"
#include "operations/reconstruct.h"

namespace vellum {
namespace {

bool has_indexed_frames(const DocumentWindow& window) {
  return std::ranges::any_of(frame_entries(window), [&](std::size_t entry) {
    const Picture picture = picture_of(window.list.record(entry));
    return picture && picture.bits() <= 8;
  });
}

/// Gives the draft what the operation needs first.
bool prepare_draft(DocumentWindow& draft, unsigned needs, Host& host) {
  if (needs & kWholeCanvases && !reconstruct_frames(draft, CanvasDepth::AsNeeded, host)) return false;
  if (!(needs & kTrueColor)) return true;
  return convert_colors(draft, {.colorType = has_transparency(draft) ? std::uint8_t{6} : std::uint8_t{2}},
                        host);
}

/// "it takes animated PNG, MNG".
std::string kinds_of(const Parameters& parameters) {
  std::string names;
  for (const DocumentKind kind : parameters.kinds)
    names.append(names.empty() ? translated("it takes ") : ", ").append(kind_row(kind).name);
  return names;
}

bool work_on(const Operation& operation, DocumentWindow& draft, OperationRun& run, unsigned needs) {
  const QuietList quiet(draft.list);
  return prepare_draft(draft, needs, run.host) && operation.run(run);
}

}  // namespace

const Operation* find_operation(std::string_view name) {
  const auto rows = operation_table();
  const auto found =
      std::ranges::find_if(rows, [&](const Operation* row) { return row->parameters.name == name; });
  return found == rows.end() ? nullptr : *found;
}

const Operation* find_operation(int command) {
  const auto rows = operation_table();
  const auto found =
      std::ranges::find_if(rows, [&](const Operation* row) { return row->parameters.command == command; });
  return found == rows.end() ? nullptr : *found;
}

unsigned operation_needs(const Operation& operation, const DocumentWindow& window, const FieldValues& values,
                         const FrameList& frames) {
  unsigned needs = operation.needs ? operation.needs(window, values, frames) : 0;
  if (needs & kWholeCanvases && (!is_animation(window.document.kind) || is_independent(window)))
    needs &= ~kWholeCanvases;
  if (needs & kTrueColor && !has_indexed_frames(window)) needs &= ~kTrueColor;
  return needs;
}

bool makes_whole_canvases(const Operation& operation, const DocumentWindow& window, const FieldValues& values,
                          const FrameList& frames) {
  return (operation_needs(operation, window, values, frames) & (kWholeCanvases | kTellsCanvases)) != 0;
}

bool replace_draft(OperationRun& run, const std::function<bool(DocumentWindow& made)>& make) {
  DocumentWindow made;
  made.document.fileName = run.draft.document.fileName;
  made.document.thumbScale = run.draft.document.thumbScale;
  if (!make(made)) return false;
  run.draft.document = made.document;
  run.draft.list = made.list;
  return true;
}

bool run_operation(const Operation& operation, DocumentWindow& window, const FieldValues& values,
                   const FrameList& frames, Host& host) {
  const auto tell = [&host](StringId id, std::string more = {}) {
    host.show(id, {}, std::move(more));
    return false;
  };
  if (frame_entries(window).empty()) return tell(StringId::NoImagesHere);
  if (!takes_kind(operation.parameters, window.document.kind))
    return tell(StringId::WrongKindOfDocument, kinds_of(operation.parameters));
  if (const auto fault = check_values(operation.parameters, values, window)) {
    if (host.message) host.message({fault->id, {}, fault->text, {}, nullptr});
    return false;
  }
  const unsigned needs = operation_needs(operation, window, values, frames);
  DocumentWindow draft{window.document, window.list, {}};
  OperationRun run{draft, values, frames, host};
  if (!work_on(operation, draft, run, needs)) {
    std::string reason = host.take_fault();
    return run.told || host.stopped() ? false : tell(operation.failure, std::move(reason));
  }
  if (operation.makes == DocumentKind::None) {
    note_deep_images(window.list, draft.list, window.document, host);
    take_draft(window, draft);
  } else {
    window.document = draft.document;
    window.list = draft.list;
  }
  return true;
}

}  // namespace vellum
