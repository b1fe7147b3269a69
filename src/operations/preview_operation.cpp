#include "operations/preview_operation.h"

#include "operations/one_picture.h"

namespace vellum {

Picture preview_operation(const Operation& operation, const Picture& picture, const FieldValues& values,
                          const DocumentWindow& document) {
  if (operation.previewFrame) return operation.previewFrame(picture, values, document);
  Host nobody;
  return operate_on_picture(
      operation, picture, [&](const DocumentWindow&) { return std::optional(values); }, nobody,
      document.document.fileName);
}

}  // namespace vellum
