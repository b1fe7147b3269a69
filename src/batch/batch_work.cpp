#include "batch/batch_work.h"

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

}  // namespace

BatchWork operation_work(const Operation& operation, const ValuesFor& values, bool promote) {
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
