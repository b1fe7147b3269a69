#include "operations/preview_operation.h"

#include "core/build/build_animation.h"
#include "core/edit/frame_layer.h"

namespace vellum {
namespace {

/// An MNG, since that holds a picture of any form.
bool build_single(DocumentWindow& window, const Picture& picture) {
  const QuietList quiet(window.list);
  return BeginAnimation(window, kNoLoop, 0, *build_number(DocumentKind::MING)) &&
         AddFrame(window, picture, -1, nullptr, 100, 0, 0, 0, nullptr) != 0 && EndAnimation(window, kNoLoop);
}

}  // namespace

Picture preview_operation(const Operation& operation, const Picture& picture, const FieldValues& values,
                          const DocumentWindow& document) {
  if (operation.previewFrame) return operation.previewFrame(picture, values, document);
  DocumentWindow window;
  if (!picture || !takes_kind(operation.parameters, DocumentKind::MING) || !build_single(window, picture))
    return {};
  Host nobody;
  const FrameList frames{0};
  OperationRun run{window, values, frames, nobody};
  if (operation.parameters.check && operation.parameters.check(values, window)) return {};
  if (!operation.run(run)) return {};
  const auto entries = frame_entries(window);
  if (entries.empty()) return {};
  return frame_layer_of(frame_source_of(window), window.list.record(entries.front())).picture;
}

}  // namespace vellum
