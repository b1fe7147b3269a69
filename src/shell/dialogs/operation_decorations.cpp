#include "shell/dialogs/operation_decorations.h"

#include <string_view>

#include "shell/dialogs/operation_dialog.h"

namespace vellum {
namespace {

struct DecorationRow {
  std::string_view operation;
  void (*decorate)(OperationDialog&);
};
constexpr DecorationRow kDecorations[] = {{"crop", decorate_crop}, {"resize", decorate_resize}};

}  // namespace

void decorate_operation(OperationDialog& dialog) {
  for (const DecorationRow& row : kDecorations)
    if (row.operation == dialog.operation().parameters.name) row.decorate(dialog);
}

}  // namespace vellum
