#include "batch/batch_work.h"

#include "batch/settings.h"
#include "operations/one_picture.h"
#include "operations/supercompress.h"

namespace vellum {
namespace {

bool apply(const Operation& operation, const ValuesFor& values_for, bool promote, DocumentWindow& window,
           Host& host) {
  const auto values = values_for(window);
  if (!values) return false;
  const FrameList frames = all_frames(frame_entries(window).size());
  if (!promote && operation_needs(operation, window, *values, frames) & (kTrueColor | kAsksTrueColor)) {
    host.show(StringId::NotPromoted);
    return false;
  }
  return run_operation(operation, window, *values, frames, host);
}

/// By the numbers of the operations.
constexpr const std::string* kPrefixes[] = {
    &settings::BPPrefixCaption,     &settings::BPPrefixColorbal, &settings::BPPrefixDepopulate,
    &settings::BPPrefixFlipRot,     &settings::BPPrefixFrame,    &settings::BPPrefixReconstruct,
    &settings::BPPrefixResize,      &settings::BPPrefixReverse,  &settings::BPPrefixShadow,
    &settings::BPPrefixTextOverlay, &settings::BPPrefixTile,     &settings::BPPrefixTrim};

}  // namespace

std::string batch_prefix(const Operation& operation, bool stored) {
  if (stored && operation.batch >= 0 && operation.batch < static_cast<int>(std::size(kPrefixes)))
    return *kPrefixes[operation.batch];
  if (*operation.batchPrefix != 0) return operation.batchPrefix;
  std::string name = operation.parameters.name;
  if (!name.empty() && name[0] >= 'a' && name[0] <= 'z') name[0] = static_cast<char>(name[0] - 'a' + 'A');
  return name + '_';
}

BatchWork operation_work(const Operation& operation, ValuesFor values, bool promote) {
  BatchWork work;
  work.kinds = operation.parameters.kinds;
  work.apply = [&operation, values, promote](DocumentWindow& window, Host& host) {
    return apply(operation, values, promote, window, host);
  };
  if (operation.neverGrows) {
    work.save = save_supercompressed;
    return work;
  }
  work.applyToPicture = [&operation, values](const Picture& picture, Host& host) {
    return operate_on_picture(operation, picture, values, host);
  };
  return work;
}

}  // namespace vellum
