#include "operations/one_picture.h"

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

Picture operate_on_picture(const Operation& operation, const Picture& picture,
                           const std::function<std::optional<FieldValues>(const DocumentWindow&)>& values,
                           Host& host, const std::filesystem::path& name) {
  DocumentWindow window;
  if (!picture || !takes_kind(operation.parameters, DocumentKind::MING) || !build_single(window, picture))
    return {};
  window.document.fileName = name;
  const auto wanted = values(window);
  const FrameList frames{0};
  if (!wanted || (operation.parameters.check && operation.parameters.check(*wanted, window))) return {};
  OperationRun run{window, *wanted, frames, host};
  if (!operation.run(run)) return {};
  const auto entries = frame_entries(window);
  if (entries.empty()) return {};
  return frame_layer_of(frame_source_of(window), window.list.record(entries.front())).picture;
}

}  // namespace vellum
